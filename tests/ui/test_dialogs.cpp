#include "support/fake_windows.h"
#include "support/test_main.h"

#include "platform/window_controller.h"
#include "ui/dialog_hosts.h"
#include "ui/dialog_services.h"
#include "ui/dialogs.h"
#include "ui/theme_source.h"
#include "ui/wrapped_label.h"

#include <QAccessible>
#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSet>
#include <QShortcut>
#include <QSignalSpy>
#include <QWindow>

using namespace tavrel;
using namespace tavrel::ui;
using dialogs::DialogCard;
using dialogs::Icon;

namespace {

/// The card on the window's visible sheet.
DialogCard *shownCard(const QWidget &window)
{
    for (auto *sheet : window.findChildren<dialogs::DialogSheet *>()) {
        if (!sheet->isHidden())
            return sheet->card();
    }
    return nullptr;
}

dialogs::FloatingDialog *floating()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *dialog = qobject_cast<dialogs::FloatingDialog *>(widget);
        if (dialog && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

QString titleOf(const DialogCard *card)
{
    return card ? card->accessibleName() : QString();
}

void press(QWidget *widget, Qt::Key key)
{
    QTest::keyClick(widget, key);
}

} // namespace

class TestDialogs : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void confirmsOfOneWindowTakeTurns();
    void keysEndACard();
    void focusedButtonWinsOverTheDefault();
    void whatBeganBeforeADialogDoesNotEndIt();
    void askTextAnswersTextOrNothing();
    void pickColorAnswersTheColorOrNot();
    void theDialogIsGoneWhenItAnswers();
    void anAnswerMayAskAgainOrDeleteTheWindow();
    void aContextThatIsGoneHearsNothing();
    void closingTheWindowCancels();
    void aRefusedCloseAndHidingKeepTheSheet();
    void deletingTheWindowIsSilent();
    void cardsWithoutAWindowFloat_data();
    void cardsWithoutAWindowFloat();
    void aFloatClosedFromOutsideCancels();
    void theSheetKeepsItsWindowOutOfReach();
    void focusStaysInTheCardAndComesBack();
    void openDialogsFollowTheTheme();

private:
    void confirm(QWidget *parent, const QString &title, dialogs::Options options = {})
    {
        dialogs::confirm(
            parent, Icon::Question, title, QStringLiteral("text"), options,
            [this, title](bool yes) {
                m_answers.append(title + (yes ? QStringLiteral(" yes") : QStringLiteral(" no")));
            },
            m_context.get());
    }

    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<QObject> m_context;
    QStringList m_answers;
    QList<bool> m_suspended;
    std::shared_ptr<test::FakeWindows> m_controller;
};

void TestDialogs::init()
{
    m_answers.clear();
    m_suspended.clear();
    m_controller = std::make_shared<test::FakeWindows>();
    dialogs::setWindowController(m_controller);
    dialogs::setHotkeySuspender([this](bool suspended) { m_suspended.append(suspended); });
    m_context = std::make_unique<QObject>();
    m_window = std::make_unique<QWidget>();
    m_window->resize(800, 600);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void TestDialogs::cleanup()
{
    m_window.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    // Whatever a test did: no dialog is left, and the hotkeys are as often resumed as suspended, in turns.
    QCOMPARE(dialogs::openDialogCount(), 0);
    for (qsizetype i = 0; i < m_suspended.size(); ++i)
        QCOMPARE(m_suspended[i], i % 2 == 0);
    QCOMPARE(m_suspended.size() % 2, 0);
    dialogs::setHotkeySuspender({});
    dialogs::setWindowController(nullptr);
}

/// Sheets and floats, with their hosts, buttons and fields, while they are open.
void TestDialogs::openDialogsFollowTheTheme()
{
    ThemeSource themes(QStringLiteral("light"));
    dialogs::setThemeSource(&themes);
    const auto look = [](QWidget *window) { return window->grab().toImage(); };
    QList<QImage> shown;
    for (const auto &setting : {QStringLiteral("light"), QStringLiteral("dark")}) {
        themes.setSetting(setting);
        dialogs::askText(m_window.get(), QStringLiteral("a"), QStringLiteral("b"), {}, {});
        dialogs::confirm(nullptr, Icon::None, QStringLiteral("a"), {}, {}, {}, nullptr);
        QTRY_VERIFY(floating());
        floating()->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(floating()));
        shown += {look(m_window.get()), look(floating())};
        if (setting == u"light") {
            themes.setSetting(QStringLiteral("dark"));
            QCoreApplication::processEvents();
            shown += {look(m_window.get()), look(floating())};
        }
        floating()->close();
        m_window->findChild<DialogCard *>()->dismiss();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    dialogs::setThemeSource(nullptr);
    QVERIFY(shown[0] != shown[2] && shown[1] != shown[3]);
    QVERIFY(shown[2] == shown[4] && shown[3] == shown[5]);
}

void TestDialogs::confirmsOfOneWindowTakeTurns()
{
    QWidget other;
    other.resize(500, 400);
    other.show();
    for (const QString &title : {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")})
        confirm(m_window.get(), title);
    confirm(&other, QStringLiteral("x"));
    QCOMPARE(dialogs::openDialogCount(), 4);
    QCOMPARE(titleOf(shownCard(other)), QStringLiteral("x")); // windows do not wait for each other
    for (const QString &title : {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}) {
        QTRY_COMPARE(titleOf(shownCard(*m_window)), title);
        press(shownCard(*m_window), Qt::Key_Escape);
    }
    QTRY_VERIFY(!shownCard(*m_window));
    QCOMPARE(m_answers, (QStringList{QStringLiteral("a no"), QStringLiteral("b no"), QStringLiteral("c no")}));
    QCOMPARE(m_suspended, (QList<bool>{true})); // x is still open
}

void TestDialogs::keysEndACard()
{
    using B = dialogs::ButtonSpec;
    constexpr int kStays = -100;
    const B ok{QStringLiteral("ok"), B::Primary, true, 1};
    const B plain{QStringLiteral("plain"), B::Primary, false, 2};
    const B remove{QStringLiteral("remove"), B::Destructive, true, 3};
    const B cancel{QStringLiteral("cancel"), B::Cancel, false, 4};
    const std::tuple<QList<B>, Qt::Key, int> rows[]{{{cancel, ok}, Qt::Key_Enter, 1},
                                                    {{cancel, remove, ok}, Qt::Key_Return, 3}, // the first default
                                                    {{cancel, plain}, Qt::Key_Return, kStays}, // no default
                                                    {{ok, cancel}, Qt::Key_Escape, 4},
                                                    {{ok}, Qt::Key_Escape, 1},
                                                    {{ok, remove}, Qt::Key_Escape, kStays}, // two and no cancel
                                                    {{cancel, ok}, Qt::Key_Space, 1},       // it has the focus
                                                    {{ok}, Qt::Key_Q, kStays}};
    for (const auto &[buttons, key, id] : rows) {
        auto *card = new DialogCard(dialogs::themes());
        card->setButtons({{QStringLiteral("replaced"), B::Primary, true, 99}});
        card->setButtons(buttons);
        int ended = kStays;
        dialogs::showCard(m_window.get(), card, [&](int which) { ended = which; });
        press(m_window->focusWidget(), key);
        QCOMPARE(ended, id);
        QCOMPARE(dialogs::openDialogCount(), id == kStays ? 1 : 0);
        if (id == kStays)
            card->dismiss();
        QTRY_COMPARE(dialogs::openDialogCount(), 0);
    }
}

void TestDialogs::focusedButtonWinsOverTheDefault()
{
    confirm(m_window.get(), QStringLiteral("a"));
    press(m_window->focusWidget(), Qt::Key_Return); // cancel, unless told otherwise
    dialogs::Options options;
    options.cancelDefault = false;
    confirm(m_window.get(), QStringLiteral("b"), options);
    press(m_window->focusWidget(), Qt::Key_Return);
    confirm(m_window.get(), QStringLiteral("c"));
    press(m_window->focusWidget(), Qt::Key_Tab);
    press(m_window->focusWidget(), Qt::Key_Return);
    QCOMPARE(m_answers, (QStringList{QStringLiteral("a no"), QStringLiteral("b yes"), QStringLiteral("c yes")}));
}

void TestDialogs::whatBeganBeforeADialogDoesNotEndIt()
{
    confirm(m_window.get(), QStringLiteral("a"));
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
        QKeyEvent held(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
        QCoreApplication::sendEvent(m_window->focusWidget(), &held);
    }
    const auto secondClick = [this] {
        auto *button = shownCard(*m_window)->findChild<QPushButton *>();
        const QPointF middle = QRectF(button->rect()).center();
        for (const QEvent::Type type : {QEvent::MouseButtonDblClick, QEvent::MouseButtonRelease}) {
            const bool isDown = type == QEvent::MouseButtonDblClick;
            QMouseEvent event(type, middle, button->mapToGlobal(middle), Qt::LeftButton,
                              isDown ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
            QCoreApplication::sendEvent(button, &event);
        }
    };
    secondClick();
    QVERIFY(m_answers.isEmpty());
    // After a press that was meant for this dialog it is a click like any other.
    auto *button = shownCard(*m_window)->findChild<QPushButton *>();
    QTest::mousePress(button, Qt::LeftButton);
    QTest::mouseRelease(button, Qt::LeftButton, {}, QPoint(-50, -50));
    secondClick();
    QCOMPARE(m_answers, QStringList{QStringLiteral("a no")});
}

void TestDialogs::askTextAnswersTextOrNothing()
{
    for (const auto &[typed, key, answer] :
         {std::tuple(QStringLiteral("new"), Qt::Key_Return, std::optional(QStringLiteral("new"))), // over the selected
          {QString(), Qt::Key_Enter, QStringLiteral("old")},
          {QStringLiteral("new"), Qt::Key_Escape, std::nullopt}}) {
        std::optional<QString> got = QStringLiteral("no answer yet");
        dialogs::askText(m_window.get(), QStringLiteral("Rename"), QStringLiteral("text"), QStringLiteral("old"),
                         [&](const std::optional<QString> &text) { got = text; });
        auto *input = shownCard(*m_window)->findChild<QLineEdit *>(QStringLiteral("dlgInput"));
        QVERIFY(input && input->hasFocus());
        QTest::keyClicks(input, typed);
        press(input, key);
        QCOMPARE(got, answer);
    }
}

void TestDialogs::pickColorAnswersTheColorOrNot()
{
    for (const auto &[typed, key, answer] :
         {std::tuple(QString(), Qt::Key_Return, std::optional(QColor(10, 20, 30, 51))),
          {QStringLiteral("40D651"), Qt::Key_Return, QColor(0x40, 0xD6, 0x51, 51)}, // the opacity stays
          {QStringLiteral("40D651"), Qt::Key_Escape, std::nullopt}}) {
        std::optional<QColor> got;
        dialogs::pickColor(m_window.get(), QColor(10, 20, 30, 51), [&](const QColor &color) { got = color; });
        DialogCard *card = shownCard(*m_window);
        QVERIFY(card && card->isAncestorOf(m_window->focusWidget()));
        auto *field = card->findChild<QLineEdit *>(QStringLiteral("hexEdit"));
        if (!typed.isEmpty()) {
            field->setFocus();
            field->selectAll();
            QTest::keyClicks(field, typed);
            press(field, Qt::Key_Return); // ends the typing, not the dialog
            QCOMPARE(dialogs::openDialogCount(), 1);
        }
        QSet<QWidget *> stops; // Tab goes round the board and the buttons
        for (int i = 0; i < 40; ++i) {
            press(m_window->focusWidget(), Qt::Key_Tab);
            stops.insert(m_window->focusWidget());
            QVERIFY(card->isAncestorOf(m_window->focusWidget()));
        }
        QVERIFY(stops.contains(field) && stops.contains(card->findChild<QPushButton *>()));
        press(card, key);
        QCOMPARE(dialogs::openDialogCount(), 0);
        QCOMPARE(got, answer);
    }
}

void TestDialogs::theDialogIsGoneWhenItAnswers()
{
    for (QWidget *parent : {m_window.get(), static_cast<QWidget *>(nullptr)}) {
        bool answered = false;
        dialogs::message(parent, Icon::Information, QStringLiteral("a"), {}, [&] {
            answered = true;
            QVERIFY(!shownCard(*m_window) && !floating());
            QCOMPARE(dialogs::openDialogCount(), 0);
            QCOMPARE(m_suspended.last(), false);
        });
        DialogCard *card = parent ? shownCard(*m_window) : floating()->findChild<DialogCard *>();
        QTest::mouseClick(card->findChild<QPushButton *>(), Qt::LeftButton);
        QVERIFY(answered);
    }
}

void TestDialogs::anAnswerMayAskAgainOrDeleteTheWindow()
{
    QStringList order;
    const auto ask = [&](const QString &title, std::function<void()> then) {
        dialogs::message(m_window.get(), Icon::None, title, {}, [&order, title, then] {
            order.append(title);
            then();
        });
    };
    ask(QStringLiteral("first"), [&] {
        ask(QStringLiteral("third"), [&] { m_window.reset(); }); // behind the one that was waiting already
    });
    ask(QStringLiteral("second"), [] {});
    for (const QString &title : {QStringLiteral("first"), QStringLiteral("second"), QStringLiteral("third")}) {
        QTRY_COMPARE(titleOf(shownCard(*m_window)), title);
        press(shownCard(*m_window), Qt::Key_Return);
    }
    QCOMPARE(order.size(), 3);
    QVERIFY(!m_window);
}

void TestDialogs::aContextThatIsGoneHearsNothing()
{
    confirm(m_window.get(), QStringLiteral("a"));
    const QPointer<DialogCard> card = shownCard(*m_window);
    m_context.reset();
    press(card, Qt::Key_Escape);
    QCOMPARE(m_answers, QStringList());
    QTRY_VERIFY(!card);
}

void TestDialogs::closingTheWindowCancels()
{
    confirm(m_window.get(), QStringLiteral("a"));
    confirm(m_window.get(), QStringLiteral("b"));
    m_window->close();
    QTRY_COMPARE(m_answers.size(), 2);
    m_answers.sort();
    QCOMPARE(m_answers, (QStringList{QStringLiteral("a no"), QStringLiteral("b no")}));
    QTRY_VERIFY(!m_window->findChild<dialogs::DialogSheet *>());
}

/// A window that asks before it closes, as an editor with changes does.
class StubbornWindow final : public QWidget
{
protected:
    void closeEvent(QCloseEvent *event) override { event->ignore(); }
};

void TestDialogs::aRefusedCloseAndHidingKeepTheSheet()
{
    StubbornWindow window;
    window.resize(500, 400);
    window.show();
    confirm(&window, QStringLiteral("a"));
    const QPointer<DialogCard> card = shownCard(window);
    window.close();
    QCoreApplication::processEvents();
    window.hide(); // for a capture
    QCoreApplication::processEvents();
    window.show();
    QVERIFY(card && card->isVisible());
    QCOMPARE(m_answers, QStringList());
}

void TestDialogs::deletingTheWindowIsSilent()
{
    confirm(m_window.get(), QStringLiteral("a"));
    confirm(m_window.get(), QStringLiteral("b"));
    m_window.reset();
    QCoreApplication::processEvents();
    QCOMPARE(m_answers, QStringList());
    QCOMPARE(dialogs::openDialogCount(), 0);
    QCOMPARE(m_suspended, (QList<bool>{true, false}));
}

void TestDialogs::cardsWithoutAWindowFloat_data()
{
    QTest::addColumn<QString>("parent");
    for (const char *row : {"none", "hidden", "minimised", "too small", "floating"})
        QTest::newRow(row) << QString::fromLatin1(row);
}

void TestDialogs::cardsWithoutAWindowFloat()
{
    QFETCH(QString, parent);
    QWidget *asker = m_window.get();
    if (parent == u"none")
        asker = nullptr;
    else if (parent == u"hidden")
        m_window->hide();
    else if (parent == u"minimised")
        m_window->showMinimized();
    else if (parent == u"too small")
        m_window->resize(120, 60);
    QPointer<dialogs::FloatingDialog> below;
    if (parent == u"floating") {
        confirm(nullptr, QStringLiteral("below"));
        below = floating();
        asker = below;
    }
    confirm(asker, QStringLiteral("a"));
    QWidget *dialog = nullptr;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<dialogs::FloatingDialog *>(widget) && widget->windowTitle() == u"a")
            dialog = widget;
    }
    QVERIFY(dialog && dialog->isVisible());
    QVERIFY(dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QCOMPARE(m_controller->roles.value(dialog->windowHandle()), platform::WindowRole::Floating);
    QCOMPARE(m_controller->activated.last(), dialog->windowHandle());
    auto *card = dialog->findChild<DialogCard *>();
    QCOMPARE(card->pos(), QPoint(28, 24));
    card->setText(QString(400, u'字'));
    QTRY_COMPARE(dialog->size(), card->size() + QSize(56, 52));
    QTRY_VERIFY(card->height() > 200);
    const QPointer<QWidget> guard(dialog);
    press(card, Qt::Key_Escape);
    if (below)
        below->close();
    QTRY_VERIFY(!guard && !below);
    QCOMPARE(m_answers.first(), QStringLiteral("a no"));
}

void TestDialogs::aFloatClosedFromOutsideCancels()
{
    m_controller->composited = false; // no room for a shadow then
    confirm(nullptr, QStringLiteral("a"));
    QCOMPARE(floating()->size(), floating()->findChild<DialogCard *>()->size());
    floating()->close();
    QCOMPARE(m_answers, (QStringList{QStringLiteral("a no")}));
    // A card that Escape does not end answers with no button's id.
    auto *card = new DialogCard(dialogs::themes());
    card->setButtons({{QStringLiteral("one"), dialogs::ButtonSpec::Primary, true, 1},
                      {QStringLiteral("two"), dialogs::ButtonSpec::Primary, false, 2}});
    int ended = 0;
    dialogs::showCard(nullptr, card, [&](int id) { ended = id; });
    floating()->close();
    QCOMPARE(ended, DialogCard::kDismissed);
}

void TestDialogs::theSheetKeepsItsWindowOutOfReach()
{
    QPushButton button(QStringLiteral("below"), m_window.get());
    button.setGeometry(0, 0, 800, 600);
    button.show();
    QLineEdit field(m_window.get());
    field.show();
    QShortcut shortcut(QKeySequence(Qt::CTRL | Qt::Key_S), m_window.get());
    QSignalSpy clicked(&button, &QPushButton::clicked);
    QSignalSpy activated(&shortcut, &QShortcut::activated);

    confirm(m_window.get(), QStringLiteral("a"));
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
    QTest::keyClick(m_window->windowHandle(), Qt::Key_S, Qt::ControlModifier);
    QTest::keyClick(&field, Qt::Key_X); // sent to the window's own field, whoever has the focus
    QCOMPARE(clicked.size() + activated.size(), 0);
    QCOMPARE(field.text(), QString());
    field.setFocus();
    QTRY_VERIFY(shownCard(*m_window)->isAncestorOf(m_window->focusWidget()));

    press(shownCard(*m_window), Qt::Key_Escape);
    QTest::keyClick(m_window->windowHandle(), Qt::Key_S, Qt::ControlModifier);
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, {}, QPoint(400, 300));
    QCOMPARE(clicked.size(), 1);
    QCOMPARE(activated.size(), 1);
}

void TestDialogs::focusStaysInTheCardAndComesBack()
{
    QLineEdit before(m_window.get());
    QLineEdit after(m_window.get());
    before.show();
    after.show();
    before.setFocus();
    dialogs::askText(m_window.get(), QStringLiteral("a"), {}, {}, {});
    const DialogCard *card = shownCard(*m_window);
    QList<QWidget *> visited;
    for (int i = 0; i < 4; ++i) {
        visited.append(m_window->focusWidget());
        QVERIFY(card->isAncestorOf(visited.last()));
        press(visited.last(), Qt::Key_Tab);
    }
    QCOMPARE(visited[3], visited[0]); // field, cancel, ok, field
    QCOMPARE(QSet<QWidget *>(visited.begin(), visited.end()).size(), 3);
    QTest::keyClick(m_window->focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(m_window->focusWidget(), visited[0]);
    press(m_window->focusWidget(), Qt::Key_Escape);
    QVERIFY(before.hasFocus());
}

TAVREL_TEST_MAIN(QApplication, TestDialogs)
#include "test_dialogs.moc"
