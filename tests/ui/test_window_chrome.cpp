#include "support/test_main.h"

#include "ui/dialog_hosts.h"
#include "ui/dialogs.h"
#include "ui/theme_source.h"
#include "ui/window_border.h"
#include "ui/window_buttons.h"
#include "ui/window_chrome.h"
#include "ui/window_control_button.h"
#include "ui/window_drag_bar.h"
#include "ui/window_grip.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace tavrel::ui;

namespace {

constexpr int kTitle = 52;

WindowControlButton *control(const QWidget &window, const char *name)
{
    return window.findChild<WindowControlButton *>(QString::fromLatin1(name));
}

/// A press, a move by `by` and a release, all seen by whatever lies under `from`.
void drag(QWidget &window, const QPoint &from, const QPoint &by)
{
    QWidget *target = window.childAt(from);
    target = target ? target : &window;
    const QPoint local = target->mapFrom(&window, from);
    const QPoint global = window.mapToGlobal(from);
    const auto send = [&](QEvent::Type type, const QPoint &moved, Qt::MouseButton button, Qt::MouseButtons buttons) {
        QMouseEvent event(type, local + moved, global + moved, button, buttons, Qt::NoModifier);
        QApplication::sendEvent(target, &event);
    };
    send(QEvent::MouseButtonPress, {}, Qt::LeftButton, Qt::LeftButton);
    send(QEvent::MouseMove, by / 2, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseMove, by, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, by, Qt::LeftButton, Qt::NoButton);
}

} // namespace

class TestWindowChrome : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() { m_window.reset(); }
    void partsFollowTheWindow();
    void maximisedHasNoFrame();
    void titleBarMovesExceptOverWhatCanBeUsed();
    void resizedKeepsLimitsAndTheOtherEdges();
    void sheetLeavesSizeAndPlaceToTheUser();
    void aFixedSizeStays();
    void closingMayDeleteTheWindow();

private:
    ThemeSource m_themes{QStringLiteral("light")};
    std::unique_ptr<QWidget> m_window;
    WindowChrome *m_chrome = nullptr;
};

void TestWindowChrome::init()
{
    m_window = std::make_unique<QWidget>();
    m_window->setGeometry(100, 100, 600, 400);
    m_chrome = WindowChrome::install(m_window.get(), m_themes, kTitle);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QCoreApplication::processEvents();
}

void TestWindowChrome::partsFollowTheWindow()
{
    QVERIFY(m_window->windowFlags().testFlag(Qt::FramelessWindowHint));
    QCOMPARE(WindowChrome::of(m_window.get()), m_chrome);
    for (const QSize &size : {QSize(600, 400), QSize(820, 333)}) {
        m_window->resize(size);
        QTRY_COMPARE(m_chrome->border()->geometry(), m_window->rect());
        QCOMPARE(m_chrome->buttons()->geometry(), QRect(size.width() - 138, 10, 138, 32));
    }
    // What is put into the window later does not cover them, nor what raises itself at each change of size.
    auto *late = new QWidget(m_window.get());
    late->setGeometry(m_window->rect());
    late->show();
    QTRY_VERIFY(m_window->childAt(m_chrome->buttons()->geometry().center()) != late);
    late->raise();
    m_window->resize(700, 400);
    QTRY_VERIFY(control(*m_window, "windowClose")->isVisible() &&
                m_window->childAt(QPoint(700 - 20, 26)) == control(*m_window, "windowClose"));

    QWidget low;
    WindowChrome *chrome = WindowChrome::install(&low, m_themes, 20); // lower than the buttons
    low.resize(300, 100);
    low.show();
    QTRY_COMPARE(chrome->buttons()->y(), 0);
}

void TestWindowChrome::maximisedHasNoFrame()
{
    auto *maximize = control(*m_window, "windowMaximize");
    const QString before = maximize->accessibleName();
    m_window->showMaximized();
    QTRY_VERIFY(!m_chrome->border()->isVisible());
    QVERIFY(maximize->restores() && maximize->accessibleName() != before && m_chrome->buttons()->isVisible());
    for (const WindowGrip *grip : m_window->findChildren<WindowGrip *>())
        QVERIFY(!grip->isVisible());
    QTest::mouseClick(maximize, Qt::LeftButton);
    QTRY_VERIFY(m_chrome->border()->isVisible());
    QVERIFY(!m_window->isMaximized() && !maximize->restores());
    m_window->showFullScreen();
    QTRY_VERIFY(!m_chrome->buttons()->isVisible() && !m_chrome->border()->isVisible());
}

void TestWindowChrome::titleBarMovesExceptOverWhatCanBeUsed()
{
    auto *disabled = new QPushButton;
    disabled->setDisabled(true);
    auto *keptOut = new QWidget;
    keptOut->setProperty("noWindowDrag", true);
    const std::tuple<QWidget *, int, bool> rows[]{
        {nullptr, 20, true},   {nullptr, kTitle, false},   {new QLabel, 20, true}, {new QPushButton, 20, false},
        {disabled, 20, false}, {new QLineEdit, 20, false}, {keptOut, 20, false}};
    for (const auto &[child, y, moves] : rows) {
        if (child) {
            child->setParent(m_window.get());
            child->setGeometry(50, 5, 100, 40);
            child->show();
        }
        const QPoint before = m_window->pos();
        drag(*m_window, QPoint(100, y), QPoint(40, 30));
        QTRY_COMPARE(m_window->pos() - before, moves ? QPoint(40, 30) : QPoint());
        delete child;
    }
}

void TestWindowChrome::resizedKeepsLimitsAndTheOtherEdges()
{
    // from 100, 100, 300 x 200; least 200 x 150, most 400 x 400
    const std::tuple<Qt::Edges, QPoint, QRect> rows[]{{Qt::RightEdge, {50, 70}, {100, 100, 350, 200}},
                                                      {Qt::LeftEdge, {50, 70}, {150, 100, 250, 200}},
                                                      {Qt::TopEdge | Qt::LeftEdge, {-10, -20}, {90, 80, 310, 220}},
                                                      {Qt::LeftEdge, {500, 0}, {200, 100, 200, 200}}, // up to the least
                                                      {Qt::TopEdge, {0, -500}, {100, -100, 300, 400}}};
    for (const auto &[edges, delta, result] : rows)
        QCOMPARE(WindowGrip::resized(QRect(100, 100, 300, 200), edges, delta, QSize(200, 150), QSize(400, 400)),
                 result);
}

void TestWindowChrome::sheetLeavesSizeAndPlaceToTheUser()
{
    dialogs::message(m_window.get(), dialogs::Icon::Information, QStringLiteral("a"), {}, {});
    QCoreApplication::processEvents();
    QVERIFY(qobject_cast<WindowGrip *>(m_window->childAt(0, 200)));
    QVERIFY(qobject_cast<dialogs::DialogSheet *>(m_window->childAt(m_window->width() - 20, 26))); // not the buttons
    const QPoint before = m_window->pos();
    drag(*m_window, QPoint(20, 20), QPoint(25, 15));
    QTRY_COMPARE(m_window->pos() - before, QPoint(25, 15));
    drag(*m_window, QPoint(20, kTitle + 10), QPoint(25, 15));
    QCOMPARE(m_window->pos() - before, QPoint(25, 15));
}

void TestWindowChrome::aFixedSizeStays()
{
    QWidget fixed;
    fixed.setFixedSize(300, 200);
    WindowChrome::install(&fixed, m_themes, 40);
    fixed.show();
    QVERIFY(QTest::qWaitForWindowExposed(&fixed));
    QVERIFY(!qobject_cast<WindowGrip *>(fixed.childAt(0, 100)));
    QVERIFY(!control(fixed, "windowMaximize")->isEnabled());
    QTest::mouseDClick(&fixed, Qt::LeftButton, {}, QPoint(30, 20));
    QCoreApplication::processEvents();
    QVERIFY(!fixed.isMaximized());
}

void TestWindowChrome::closingMayDeleteTheWindow()
{
    auto *window = new QWidget;
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->resize(300, 200);
    const QPointer<WindowChrome> chrome = WindowChrome::install(window, m_themes, 40);
    window->show();
    QTest::mouseClick(control(*window, "windowClose"), Qt::LeftButton);
    QTRY_VERIFY(!chrome);
}

TAVREL_TEST_MAIN(QApplication, TestWindowChrome)
#include "test_window_chrome.moc"
