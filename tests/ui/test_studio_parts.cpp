#include "support/test_main.h"

#include "ui/action_button.h"
#include "ui/chip.h"
#include "ui/flow_layout.h"
#include "ui/group_card.h"
#include "ui/panel_frame.h"
#include "ui/panel_resize_handle.h"
#include "ui/rail_icon_button.h"
#include "ui/sidebar_title_label.h"
#include "ui/tool_tile.h"

#include <QAccessible>
#include <QApplication>
#include <QButtonGroup>
#include <QLabel>
#include <QSignalSpy>
#include <QVBoxLayout>

using namespace tavrel;
using namespace tavrel::ui;

namespace {

QWidget *block(int width, int height)
{
    auto *widget = new QWidget;
    widget->setFixedSize(width, height);
    return widget;
}

} // namespace

class TestStudioParts : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void buttonsWorkByKeyboardAndSayWhatTheyAre();
    void flowBreaksLines_data();
    void flowBreaksLines();
    void flowInAPanelIsAsHighAsItsLines();
    void handleAsksForWidths_data();
    void handleAsksForWidths();
};

void TestStudioParts::buttonsWorkByKeyboardAndSayWhatTheyAre()
{
    QWidget window;
    auto *column = new QVBoxLayout(&window);
    ActionButton bare(QStringLiteral("ed_pin"), QString(), ActionButton::Look::Plain, lightTheme());
    bare.setAccessibleName(QStringLiteral("Pin"));
    ActionButton action(QStringLiteral("ed_copy"), QStringLiteral("Copy"), ActionButton::Look::Primary, lightTheme());
    RailIconButton rail(QStringLiteral("ed_crop"), QStringLiteral("Crop"), darkTheme());
    ToolTile tile(ToolType::Arrow, QStringLiteral("Arrow"), lightTheme());
    Chip chip(QStringLiteral("16:9"), lightTheme());
    const QList<StudioButton *> buttons{&bare, &action, &rail, &tile, &chip};
    for (StudioButton *button : buttons)
        column->addWidget(button);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    bare.setFocus(Qt::TabFocusReason);
    for (StudioButton *button : buttons) {
        QVERIFY2(button->hasFocus(), qPrintable(button->text()));
        QSignalSpy clicked(button, &QAbstractButton::clicked);
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space})
            QTest::keyClick(button, key);
        QCOMPARE(clicked.size(), 3);
        QAccessibleInterface *access = QAccessible::queryAccessibleInterface(button);
        QVERIFY(access && !access->text(QAccessible::Name).isEmpty());
        QCOMPARE(bool(access->state().checkable), button->isCheckable());
        QCOMPARE(bool(access->state().checked), button->isCheckable()); // pressed an odd number of times
        QTest::keyClick(button, Qt::Key_Tab);
    }
    QVERIFY(bare.hasFocus()); // round
    QTest::mouseClick(&chip, Qt::LeftButton);
    QVERIFY(bare.hasFocus() && !chip.isChecked());
    QCOMPARE(tile.property("tavrelTool").toInt(), 4);

    // The ring shows where the keyboard is.
    const QImage with = bare.grab().toImage();
    bare.clearFocus();
    QVERIFY(bare.grab().toImage() != with);
    for (QWidget *button : buttons)
        button->setParent(nullptr);
}

void TestStudioParts::flowBreaksLines_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<QList<QRect>>("places");
    // Items of 60 x 20, 60 x 30, a hidden one, 60 x 20; 6 between.
    QTest::newRow("one line") << 192 << QList{QRect(0, 0, 60, 20), QRect(66, 0, 60, 30), QRect(132, 0, 60, 20)};
    QTest::newRow("a pixel short") << 191 << QList{QRect(0, 0, 60, 20), QRect(66, 0, 60, 30), QRect(0, 36, 60, 20)};
    QTest::newRow("one each") << 70 << QList{QRect(0, 0, 60, 20), QRect(0, 26, 60, 30), QRect(0, 62, 60, 20)};
}

void TestStudioParts::flowBreaksLines()
{
    QFETCH(int, width);
    QFETCH(QList<QRect>, places);
    QWidget window;
    window.setAttribute(Qt::WA_DontShowOnScreen);
    auto *flow = new FlowLayout(6, &window);
    const QList<QWidget *> items{block(60, 20), block(60, 30), block(60, 20)};
    auto *hidden = block(60, 20);
    for (QWidget *item : {items[0], items[1], hidden, items[2]})
        flow->addWidget(item);
    hidden->hide();
    window.setFixedWidth(width);
    window.show();
    flow->setGeometry(QRect(0, 0, width, 200));
    for (int i = 0; i < places.size(); ++i)
        QCOMPARE(items[i]->geometry(), places[i]);
    QCOMPARE(flow->heightForWidth(width), places.last().y() + std::max(places.last().height(), width > 191 ? 30 : 20));
    window.setLayoutDirection(Qt::RightToLeft);
    flow->setGeometry(QRect(0, 0, width, 200));
    QCOMPARE(items[0]->geometry().right(), width - 1);
    delete flow->takeAt(0);
    QCOMPARE(flow->count(), 3);
    QVERIFY(!flow->takeAt(3) && !flow->itemAt(3));
}

void TestStudioParts::flowInAPanelIsAsHighAsItsLines()
{
    const PanelFrame frame = makePanel(QString(80, u'M'), QStringLiteral("hint"));
    const std::unique_ptr<QWidget> panel(frame.panel);
    panel->setAttribute(Qt::WA_DontShowOnScreen);
    auto *chips = new QWidget;
    auto *flow = new FlowLayout(6, chips);
    for (int i = 0; i < 12; ++i)
        flow->addWidget(block(60, 62));
    frame.add(chips);
    auto *after = block(100, 40);
    frame.add(after);
    panel->resize(304, 700); // room for four in a line beside the margins
    panel->show();
    QTRY_COMPARE(chips->height(), 3 * 62 + 2 * 6);
    QCOMPARE(after->y(), 4 + chips->height() + 10);
    QCOMPARE(after->x(), 14);
    QCOMPARE(panel->width(), 304); // a long heading does not widen it
    panel->resize(304, 150);       // what has no room scrolls and is not squeezed
    QTRY_COMPARE(chips->height(), 3 * 62 + 2 * 6);
}

void TestStudioParts::handleAsksForWidths_data()
{
    QTest::addColumn<PanelResizeHandle::Side>("side");
    QTest::addColumn<int>("by");
    QTest::addColumn<int>("width");
    QTest::newRow("right edge outwards") << PanelResizeHandle::Side::Right << 40 << 340;
    QTest::newRow("right edge inwards") << PanelResizeHandle::Side::Right << -40 << 260;
    QTest::newRow("left edge outwards") << PanelResizeHandle::Side::Left << -40 << 340;
    QTest::newRow("left edge inwards") << PanelResizeHandle::Side::Left << 40 << 260;
}

void TestStudioParts::handleAsksForWidths()
{
    QFETCH(PanelResizeHandle::Side, side);
    QFETCH(int, by);
    QFETCH(int, width);
    QWidget window;
    window.resize(800, 300);
    auto *panel = new QWidget(&window);
    panel->setGeometry(0, 0, 300, 300);
    auto *handle = new PanelResizeHandle(panel, side, lightTheme(), &window);
    handle->setGeometry(300, 0, PanelResizeHandle::kWidth, 300);
    window.show();
    connect(handle, &PanelResizeHandle::widthAsked, panel,
            [panel](int asked) { panel->resize(qBound(250, asked, 500), 300); });
    QSignalSpy asked(handle, &PanelResizeHandle::widthAsked);
    QSignalSpy chosen(handle, &PanelResizeHandle::widthChosen);
    QTest::mouseMove(handle, QPoint(4, 100)); // not a drag yet
    QTest::mousePress(handle, Qt::LeftButton, {}, QPoint(4, 100));
    QTest::mouseMove(handle, QPoint(4 + by / 2, 100));
    QTest::mouseMove(handle, QPoint(4 + by, 100));
    QCOMPARE(chosen.size(), 0);
    QTest::mouseRelease(handle, Qt::LeftButton, {}, QPoint(4 + by, 100));
    QCOMPARE(asked.last().value(0).toInt(), width);
    QCOMPARE(chosen, (QList<QVariantList>{{width}}));
    QTest::mouseMove(handle, QPoint(200, 100));
    QCOMPARE(panel->width(), width);

    QTest::keyClick(handle, by > 0 ? Qt::Key_Right : Qt::Key_Left);
    QCOMPARE(panel->width(), width > 300 ? 348 : 252);
    QTest::keyClick(handle, by > 0 ? Qt::Key_Right : Qt::Key_Left);
    QCOMPARE(chosen.last().value(0).toInt(), width > 300 ? 356 : 250); // the owner's limit
}

TAVREL_TEST_MAIN(QApplication, TestStudioParts)
#include "test_studio_parts.moc"
