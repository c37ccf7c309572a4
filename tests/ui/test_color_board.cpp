#include "support/test_main.h"

#include "ui/color_alpha_bar.h"
#include "ui/color_board.h"
#include "ui/color_chip.h"
#include "ui/color_chip_row.h"
#include "ui/color_hue_bar.h"
#include "ui/color_library.h"
#include "ui/color_sv_area.h"
#include "ui/dialog_services.h"
#include "ui/dialogs.h"
#include "ui/hex_edit.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>

#include <cmath>

using namespace tavrel::ui;

namespace {

/// A window that tells which keys came through to it.
class Host final : public QWidget
{
public:
    QList<int> keys;
    int presses = 0;

protected:
    void keyPressEvent(QKeyEvent *event) override { keys.append(event->key()); }
    void mousePressEvent(QMouseEvent *) override { ++presses; }
};

QPoint at(const QWidget *widget, double x, double y)
{
    return {static_cast<int>(x * (widget->width() - 1)), static_cast<int>(y * (widget->height() - 1))};
}

QStringList texts(const QSignalSpy &spy)
{
    QStringList result;
    for (const QList<QVariant> &arguments : spy)
        result.append(arguments.value(0).toString());
    return result;
}

} // namespace

class TestColorBoard : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void setColor();
    void greyAndBlackKeepHueAndSaturation();
    void dragsChangeAndCommit();
    void keysStepAndCommitWhenLetGo();
    void hidingEndsADrag();
    void hexEditTakesSixDigits();
    void hexEditAppliesAtSixDigitsOnly();
    void typingSuspendsHotkeysInPairs();
    void thePaletteSection();
    void chipsByKey();
    void focusGoesBackWhenHidden();
    void nothingReachesTheWindowBelow();
    void thePopupStaysInTheWindowWhenItGrows();
    void deletedByWhoeverListens_data();
    void deletedByWhoeverListens();

private:
    template <typename T>
    T *part(const char *name = nullptr)
    {
        return m_board->findChild<T *>(name ? QString::fromLatin1(name) : QString());
    }
    ColorChip *chip(int index) { return part<ColorChipRow>()->chips().at(index); }

    std::unique_ptr<Host> m_host;
    std::unique_ptr<ColorLibrary> m_library;
    QPointer<ColorBoard> m_board;
};

void TestColorBoard::init()
{
    m_host = std::make_unique<Host>();
    m_host->resize(700, 600);
    m_host->setFocusPolicy(Qt::StrongFocus);
    m_host->show();
    m_host->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_host.get()));
    m_library = std::make_unique<ColorLibrary>();
    m_board = new ColorBoard(m_host.get(), m_library.get());
    m_board->setColor(QStringLiteral("#40D651"), false);
    m_board->popupAt(QRect(300, 20, 40, 20));
}

void TestColorBoard::cleanup()
{
    m_host.reset();
    QVERIFY(!m_board);
    dialogs::setHotkeySuspender({});
    QCOMPARE(dialogs::openDialogCount(), 0);
}

void TestColorBoard::setColor()
{
    const struct
    {
        QString text;
        bool keepAlpha; // of 0.4
        double alpha;
        QString hex;
    } rows[]{{u"#FF8C00"_qs, true, 0.4, u"#66FF8C00"_qs},
             {u"#80FF8C00"_qs, false, 128 / 255.0, u"#80FF8C00"_qs},
             {u"#00FF8C00"_qs, false, 0.05, u"#0DFF8C00"_qs}, // too transparent
             {u"#FFFF8C00"_qs, true, 1.0, u"#FF8C00"_qs},
             {u"chartreuse-ish"_qs, false, 1.0, u"#F93442"_qs}};
    for (const auto &row : rows) {
        m_board->setColor(QStringLiteral("#66123456"), false);
        QSignalSpy changed(m_board, &ColorBoard::colorChanged);
        m_board->setColor(row.text, row.keepAlpha);
        QCOMPARE(m_board->alpha(), row.alpha);
        QCOMPARE(m_board->currentHex(), row.hex);
        QCOMPARE(u'#' + part<HexEdit>()->text(), m_board->baseColor().name().toUpper());
        QCOMPARE(part<ColorAlphaBar>()->alpha(), m_board->alpha());
        QCOMPARE(changed.count(), 0); // only the user's changes are told
    }
}

void TestColorBoard::greyAndBlackKeepHueAndSaturation()
{
    m_board->setColor(QStringLiteral("#0000FF"), false);
    m_board->setColor(QStringLiteral("#808080"), false);
    QCOMPARE(part<ColorHueBar>()->hue(), 240 / 360.0);
    QCOMPARE(m_board->hsv().saturation, 0.0);

    // A host that answers every change with the colour it got must not move the handle.
    m_board->setColor(QStringLiteral("#2040C0"), false);
    connect(m_board, &ColorBoard::colorChanged, m_board, [this](const QString &hex) { m_board->setColor(hex, false); });
    auto *sv = part<ColorSvArea>();
    QTest::mousePress(sv, Qt::LeftButton, {}, at(sv, 0.7, 0.5));
    const double saturation = m_board->hsv().saturation;
    QTest::mouseMove(sv, QPoint(at(sv, 0.7, 0).x(), sv->height() + 40));
    QCOMPARE(m_board->currentHex(), QStringLiteral("#000000"));
    QCOMPARE(m_board->hsv().saturation, saturation);
    QVERIFY(m_board->hsv().hue > 0.5);
    QTest::mouseRelease(sv, Qt::LeftButton, {}, at(sv, 0.7, 1));

    auto *alpha = part<ColorAlphaBar>();
    QTest::mouseClick(alpha, Qt::LeftButton, {}, at(alpha, 0.4, 0.5));
    const double exact = alpha->alpha();
    QVERIFY(std::abs(exact * 255 - std::round(exact * 255)) > 0.01); // between two texts
    m_board->setColor(m_board->currentHex(), false);
    QCOMPARE(m_board->alpha(), exact);
}

void TestColorBoard::dragsChangeAndCommit()
{
    const std::tuple<const char *, QPointF, QString> rows[]{{"colorSvArea", {1, 0}, u"#00FF1D"_qs},
                                                            {"colorSvArea", {0.4, 1}, u"#000000"_qs},
                                                            {"colorHueBar", {1, 0.5}, u"#D64040"_qs},
                                                            {"colorAlphaBar", {-3, 0.5}, u"#0D40D651"_qs}};
    for (const auto &[name, to, hex] : rows) {
        m_board->setColor(QStringLiteral("#40D651"), false);
        auto *control = part<ColorSlider>(name);
        QSignalSpy changed(m_board, &ColorBoard::colorChanged);
        QSignalSpy committed(m_board, &ColorBoard::colorCommitted);
        QTest::mousePress(control, Qt::LeftButton, {}, at(control, 0.4, 0.4));
        QCOMPARE(changed.count(), 1);
        QTest::mouseMove(control, at(control, 0.5, 0.5));
        QTest::mouseMove(control, at(control, to.x(), to.y()));
        QCOMPARE(committed.count(), 0);
        QTest::mouseRelease(control, Qt::LeftButton, {}, at(control, to.x(), to.y()));
        QCOMPARE(m_board->currentHex(), hex);
        QCOMPARE(texts(committed), QStringList{hex});
        QTest::mouseMove(control, at(control, 0.5, 0.5));
        QCOMPARE(texts(changed).last(), hex); // it is over
    }
}

void TestColorBoard::keysStepAndCommitWhenLetGo()
{
    QSignalSpy changed(m_board, &ColorBoard::colorChanged);
    QSignalSpy committed(m_board, &ColorBoard::colorCommitted);
    auto *alpha = part<ColorAlphaBar>();
    alpha->setFocus(Qt::TabFocusReason);
    QTest::keyPress(alpha, Qt::Key_Left);
    QTest::keyPress(alpha, Qt::Key_Left);
    QCOMPARE(changed.count(), 2);
    QCOMPARE(committed.count(), 0);
    QTest::keyRelease(alpha, Qt::Key_Left);
    QCOMPARE(texts(committed), QStringList{QStringLiteral("#FA40D651")});
    QTest::keyClick(alpha, Qt::Key_Left, Qt::ShiftModifier);
    QCOMPARE(qRound(alpha->alpha() * 100), 88);
    QTest::keyClick(alpha, Qt::Key_Home);
    QCOMPARE(alpha->alpha(), 0.05);
    QTest::keyClick(alpha, Qt::Key_End);
    QCOMPARE(alpha->alpha(), 1.0);

    // A key that is held down while the keyboard goes elsewhere.
    auto *sv = part<ColorSvArea>();
    sv->setFocus(Qt::TabFocusReason);
    const Hsv before = sv->hsv();
    committed.clear();
    QTest::keyPress(sv, Qt::Key_Down);
    QTest::keyPress(sv, Qt::Key_Right);
    QCOMPARE(sv->hsv().value, before.value - 0.01);
    QCOMPARE(sv->hsv().saturation, before.saturation + 0.01);
    QCOMPARE(committed.count(), 0);
    part<ColorHueBar>()->setFocus();
    QCOMPARE(committed.count(), 1);

    QTest::keyClick(sv, Qt::Key_Right, Qt::ControlModifier); // the window's own key
    QCOMPARE(m_host->keys.last(), int(Qt::Key_Right));
}

void TestColorBoard::hidingEndsADrag()
{
    QSignalSpy committed(m_board, &ColorBoard::colorCommitted);
    auto *sv = part<ColorSvArea>();
    QTest::mousePress(sv, Qt::LeftButton, {}, at(sv, 0.5, 0.5));
    m_board->hide();
    QCOMPARE(committed.count(), 1);
    QVERIFY(!sv->isDragging());
}

void TestColorBoard::hexEditTakesSixDigits()
{
    const std::tuple<QString, bool, QString> rows[]{{u"fzg8-c .#0xyz0q0"_qs, false, u"F8C000"_qs},
                                                    {u"#ff8c00\n"_qs, true, u"FF8C00"_qs},
                                                    {u"#80ff8c00"_qs, true, {}}};
    auto *edit = part<HexEdit>();
    edit->setFocus();
    for (const auto &[typed, isPasted, expected] : rows) {
        edit->clear();
        QApplication::clipboard()->setText(typed);
        if (isPasted)
            QTest::keyClick(edit, Qt::Key_V, Qt::ControlModifier);
        else
            QTest::keyClicks(edit, typed);
        QCOMPARE(edit->text(), expected);
    }
    QVERIFY(m_host->keys.isEmpty());
}

void TestColorBoard::hexEditAppliesAtSixDigitsOnly()
{
    m_board->setColor(QStringLiteral("#80112233"), false);
    QSignalSpy changed(m_board, &ColorBoard::colorChanged);
    QSignalSpy committed(m_board, &ColorBoard::colorCommitted);
    auto *edit = part<HexEdit>();
    QTest::mouseClick(edit, Qt::LeftButton, {}, at(edit, 0.3, 0.5));
    QCOMPARE(edit->selectedText(), QStringLiteral("112233")); // so that typing replaces it
    QTest::keyClicks(edit, QStringLiteral("aabbc"));
    QCOMPARE(changed.count(), 0);
    QTest::keyClicks(edit, QStringLiteral("c"));
    QCOMPARE(texts(changed), QStringList{QStringLiteral("#80AABBCC")});
    QTest::keyClick(edit, Qt::Key_Backspace);
    QCOMPARE(m_board->currentHex(), QStringLiteral("#80AABBCC"));
    QCOMPARE(committed.count(), 0);
    part<ColorHueBar>()->setFocus();
    QCOMPARE(edit->text(), QStringLiteral("AABBCC")); // what is incomplete does not stay
    QCOMPARE(texts(committed), QStringList{QStringLiteral("#80AABBCC")});
    edit->setFocus();
    part<ColorHueBar>()->setFocus();
    QCOMPARE(committed.count(), 1); // nothing typed, nothing to commit
}

void TestColorBoard::typingSuspendsHotkeysInPairs()
{
    QList<bool> calls;
    dialogs::setHotkeySuspender([&](bool suspended) { calls.append(suspended); });
    std::optional<dialogs::OpenDialog> dialog;
    const std::function<void()> ends[]{[&] { chip(0)->setFocus(); },
                                       [&] { QTest::keyClick(part<HexEdit>(), Qt::Key_Return); },
                                       [&] {
                                           dialog.emplace();
                                           chip(0)->setFocus();
                                           QCOMPARE(calls, QList<bool>{true}); // one end is still open
                                           dialog.reset();
                                       },
                                       [&] { m_board->hide(); }, [&] { delete m_board; }};
    for (const auto &end : ends) {
        calls.clear();
        m_board->show();
        part<HexEdit>()->setFocus();
        QCOMPARE(calls, QList<bool>{true});
        end();
        QCOMPARE(calls, (QList<bool>{true, false}));
    }
}

void TestColorBoard::thePaletteSection()
{
    QSignalSpy changed(m_board, &ColorBoard::colorChanged);
    QSignalSpy committed(m_board, &ColorBoard::colorCommitted);
    auto *row = part<ColorChipRow>();
    auto *hint = part<QLabel>("paletteHint");
    QVERIFY(hint->isHidden());

    m_board->setColor(QStringLiteral("#80123456"), false);
    QTest::mouseClick(row->addChip(), Qt::LeftButton);
    QCOMPARE(m_library->colors().last(), QStringLiteral("#123456")); // without alpha
    QVERIFY(row->chips().last()->isSelected());
    QTest::mouseClick(row->addChip(), Qt::LeftButton);
    QCOMPARE(row->chips().size(), 11); // it is there

    QTest::mouseClick(chip(1), Qt::LeftButton);
    QCOMPARE(m_board->currentHex(), QStringLiteral("#80FF8C00"));
    QCOMPARE(texts(changed), QStringList{QStringLiteral("#80FF8C00")});
    QCOMPARE(texts(committed), QStringList{QStringLiteral("#80FF8C00")});
    QVERIFY(chip(1)->isSelected() && !row->chips().last()->isSelected());

    m_library->setColors({});
    QVERIFY(!hint->isHidden());
    QVERIFY(row->chips().isEmpty());
    QVERIFY(row->addChip()->isEnabled());
    QTest::mouseClick(part<QPushButton>("resetPalette"), Qt::LeftButton);
    QCOMPARE(m_library->colors(), ColorLibrary::defaults());
    QCOMPARE(row->chips().size(), 10);
    QVERIFY(hint->isHidden());

    for (int i = 0; !m_library->isFull(); ++i)
        m_library->add(QStringLiteral("#%1").arg(i, 6, 10, QLatin1Char('0')).toUpper());
    QVERIFY(!row->addChip()->isEnabled());
    QTest::mouseClick(row->addChip(), Qt::LeftButton);
    QCOMPARE(m_library->colors().size(), 30);
}

void TestColorBoard::chipsByKey()
{
    auto *row = part<ColorChipRow>();
    chip(2)->setFocus(Qt::TabFocusReason);
    QTest::keyClick(chip(2), Qt::Key_Return);
    QCOMPARE(m_board->currentHex(), QStringLiteral("#FFE103"));
    chip(3)->setFocus(Qt::TabFocusReason);
    QTest::keyClick(chip(3), Qt::Key_Space);
    QCOMPARE(m_board->currentHex(), QStringLiteral("#40D651"));

    // Delete leaves the keyboard where it was, so that it can be pressed again.
    QTest::keyClick(chip(3), Qt::Key_Delete);
    QCOMPARE(row->chips().size(), 9);
    QCOMPARE(m_library->colors().at(3), QStringLiteral("#2ECFC1"));
    QVERIFY(chip(3)->hasFocus());
    chip(8)->setFocus(Qt::TabFocusReason);
    QTest::keyClick(chip(8), Qt::Key_Delete);
    QVERIFY(chip(7)->hasFocus());
}

void TestColorBoard::focusGoesBackWhenHidden()
{
    auto *first = new QPushButton(m_host.get());
    auto *second = new QPushButton(m_host.get());
    first->show();
    second->show();
    m_board->hide();
    QVERIFY(!first->hasFocus() && !second->hasFocus()); // there was no focus before
    second->setFocus();
    m_board->popupAt(QRect(300, 20, 40, 20));
    part<HexEdit>()->setFocus();
    m_board->hide();
    QVERIFY(second->hasFocus());

    // The user has gone elsewhere in the meantime.
    m_board->popupAt(QRect(300, 20, 40, 20));
    first->setFocus();
    m_board->hide();
    QVERIFY(first->hasFocus());

    // What had it is gone.
    m_board->popupAt(QRect(300, 20, 40, 20));
    delete first;
    m_board->hide();
    QVERIFY(!second->hasFocus());
}

void TestColorBoard::nothingReachesTheWindowBelow()
{
    QTest::mouseClick(m_board, Qt::LeftButton, {}, QPoint(3, 3));
    QTest::mouseClick(part<QLabel>("alphaText"), Qt::RightButton);
    auto *sv = part<ColorSvArea>();
    QTest::mouseClick(sv, Qt::RightButton, {}, at(sv, 0.9, 0.1));
    QCOMPARE(m_board->currentHex(), QStringLiteral("#40D651"));
    QCOMPARE(m_host->presses, 0);
}

void TestColorBoard::thePopupStaysInTheWindowWhenItGrows()
{
    QCOMPARE(m_board->width(), 268);
    m_host->resize(700, 900);
    const QRect anchor(300, m_host->height() - 40 - m_board->height(), 40, 20);
    m_board->popupAt(anchor);
    QCOMPARE(m_board->y(), anchor.y() + 28);
    for (int i = 0; i < 15; ++i)
        m_library->add(QStringLiteral("#00%1").arg(1000 + i));
    QTRY_COMPARE(m_board->geometry().bottom(), anchor.top() - 9); // there is no more room below
    QCOMPARE(m_board->width(), 268);
}

void TestColorBoard::deletedByWhoeverListens_data()
{
    QTest::addColumn<int>("how");
    QTest::newRow("drag") << 0;
    QTest::newRow("key") << 1;
    QTest::newRow("digits") << 2;
    QTest::newRow("chip") << 3;
    QTest::newRow("escape") << 4;
    QTest::newRow("assistive tool") << 5;
}

void TestColorBoard::deletedByWhoeverListens()
{
    QFETCH(int, how);
    const auto drop = [this] { m_board->deleteLater(), m_board->hide(); };
    connect(m_board, &ColorBoard::colorChanged, m_host.get(), drop);
    connect(m_board, &ColorBoard::closeRequested, m_host.get(), drop);
    switch (how) {
    case 0:
        QTest::mousePress(part<ColorSvArea>(), Qt::LeftButton);
        break;
    case 1:
        QTest::keyPress(part<ColorHueBar>(), Qt::Key_Right);
        break;
    case 2:
        part<HexEdit>()->setFocus();
        part<HexEdit>()->clear();
        QTest::keyClicks(part<HexEdit>(), QStringLiteral("123456"));
        break;
    case 3:
        QTest::mouseClick(chip(1), Qt::LeftButton);
        break;
    case 4:
        QTest::keyClick(part<HexEdit>(), Qt::Key_Escape);
        break;
    default:
        part<ColorAlphaBar>()->setFraction(0.5);
    }
    QTRY_VERIFY(!m_board);
}

TAVREL_TEST_MAIN(QApplication, TestColorBoard)
#include "test_color_board.moc"
