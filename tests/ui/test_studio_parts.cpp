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
    void flowInAPanelIsAsHighAsItsLines();
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

    // The ring shows where the keyboard is.
    const QImage with = bare.grab().toImage();
    bare.clearFocus();
    QVERIFY(bare.grab().toImage() != with);
    for (QWidget *button : buttons)
        button->setParent(nullptr);
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

void TestStudioParts::handleAsksForWidths()
{
    using Side = PanelResizeHandle::Side;
    for (const auto &[side, by, width] :
         {std::tuple(Side::Right, 40, 340), {Side::Right, -40, 260}, {Side::Left, -40, 340}, {Side::Left, 40, 260}}) {
        QWidget window;
        window.resize(800, 300);
        auto *panel = new QWidget(&window);
        panel->setGeometry(0, 0, 300, 300);
        auto *handle = new PanelResizeHandle(panel, side, lightTheme(), &window);
        handle->setGeometry(300, 0, PanelResizeHandle::kWidth, 300);
        window.show();
        connect(handle, &PanelResizeHandle::widthAsked, panel, [panel](int asked) { panel->resize(asked, 300); });
        QSignalSpy chosen(handle, &PanelResizeHandle::widthChosen);
        QTest::mousePress(handle, Qt::LeftButton, {}, QPoint(4, 100));
        QTest::mouseMove(handle, QPoint(4 + by, 100));
        QTest::mouseRelease(handle, Qt::LeftButton, {}, QPoint(4 + by, 100));
        QTest::mouseMove(handle, QPoint(200, 100)); // it is over
        QCOMPARE(panel->width(), width);
        QCOMPARE(chosen, (QList<QVariantList>{{width}}));
        QTest::keyClick(handle, by > 0 ? Qt::Key_Right : Qt::Key_Left);
        QCOMPARE(panel->width(), width > 300 ? 348 : 252);
    }
}

TAVREL_TEST_MAIN(QApplication, TestStudioParts)
#include "test_studio_parts.moc"
