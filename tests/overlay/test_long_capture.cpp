#include "outcomes.h"
#include "overlay/long_capture_mode.h"
#include "overlay/long_capture_toolbar.h"
#include "overlay/long_preview_place.h"
#include "overlay/overlay_panels.h"
#include "overlay/toolbar_widget.h"
#include "overlay_input.h"
#include "support/test_main.h"

#include <QApplication>
#include <QPainter>
#include <QPushButton>
#include <QSignalSpy>
#include <QToolButton>

#include <functional>
#include <utility>
#include <vector>

using namespace tavrel;
using ui::CaptureOverlay;
using Action = CaptureOutcome::Action;
using ui::LongCaptureToolbar;

namespace {

constexpr QSize kSize(800, 600);
constexpr QRect kView(100, 100, 400, 300);

/// A page of lines that are all different.
QImage page()
{
    QImage image(kView.width(), 3000, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    quint32 seed = 7;
    for (int y = 0; y < image.height(); y += 3) {
        seed = seed * 1664525U + 1013904223U;
        painter.fillRect(static_cast<int>(seed >> 8U) % 300, y, 20 + static_cast<int>(seed >> 20U) % 80, 2,
                         QColor::fromRgb(seed | 0xff000000U));
    }
    return image;
}

/// The display with the page scrolled to a row.
platform::CapturedDisplay shot(const QImage &page, int row, quint32 id = 1)
{
    platform::CapturedDisplay display = flatDisplay(kSize, QColor(90, 100, 110));
    display.id = id;
    QPainter(&display.image).drawImage(kView.topLeft(), page, QRect(0, row, kView.width(), kView.height()));
    return display;
}

} // namespace

class LongCaptureTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePreviewFindsItsPlace()
    {
        const QSizeF high(400, 4000);
        const std::tuple<QRectF, QSizeF, QRectF> rows[]{
            {{100, 100, 400, 300}, {}, {508, 202, 264, 198}},
            {{100, 100, 400, 300}, {400, 600}, {508, 4, 264, 396}}, // grows upwards
            {{100, 100, 400, 300}, high, {508, 0, 264, 400}},
            {{100, 100, 540, 300}, high, {648, 0, 152, 400}}, // narrow space
            {{300, 100, 480, 300}, high, {28, 0, 264, 400}},
            {{20, 100, 760, 300}, high, {508, 0, 264, 400}}, // inside
            {{10, 100, 60, 300}, {}, {78, 0, 120, 400}},
            {{100, 100, 400, 300}, {4000, 10}, {508, 376, 264, 24}}};
        for (const auto &[selection, page, panel] : rows) {
            for (const double ratio : {1.0, 1.5}) {
                const ui::LongPreviewPlace place = ui::placeLongPreview(selection, page, kSize, ratio);
                QCOMPARE(place.panel, panel);
                QVERIFY(place.image.width() > 0 && place.image.height() > 0);
                QVERIFY(place.panel.adjusted(-1, -1, 1, 1).contains(place.image));
                QCOMPARE(place.image.left() * ratio, std::round(place.image.left() * ratio));
            }
        }
    }

    void theToolbarIsDraggedWithoutAClick()
    {
        QWidget owner;
        LongCaptureToolbar toolbar(&owner);
        toolbar.setBounds(QRect(0, 0, 800, 600));
        toolbar.move(100, 100);
        toolbar.show();
        QSignalSpy actions(&toolbar, &LongCaptureToolbar::actionTriggered);
        QSignalSpy moved(&toolbar, &LongCaptureToolbar::moved);
        QSignalSpy pressed(&toolbar, &LongCaptureToolbar::pressed);
        auto *copy = toolbar.findChildren<QToolButton *>().at(2);
        const auto send = [copy](QEvent::Type type, const QPoint &global) {
            const QPointF local = copy->mapFromGlobal(QPointF(global));
            QMouseEvent event(type, local, global, Qt::LeftButton,
                              type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(copy, &event);
        };
        const QPoint start = copy->mapToGlobal(QPoint(5, 5));
        send(QEvent::MouseButtonPress, start);
        send(QEvent::MouseMove, start + QPoint(3, 1)); // as steady as a hand is
        send(QEvent::MouseButtonRelease, start);
        QCOMPARE(actions.count(), 1);
        QCOMPARE(moved.count(), 0);
        send(QEvent::MouseButtonPress, start);
        send(QEvent::MouseMove, start + QPoint(30, 10));
        QCOMPARE(toolbar.pos(), QPoint(130, 110));
        send(QEvent::MouseMove, start + QPoint(3000, -3000));
        QCOMPARE(toolbar.pos(), QPoint(800 - toolbar.width(), 0));
        send(QEvent::MouseButtonRelease, start + QPoint(3000, -3000));
        QCOMPARE(actions.count(), 1);
        QVERIFY(!copy->isDown());
        QCOMPARE(pressed.count(), 2);
        for (const auto &[key, action] :
             {std::pair(Qt::Key_Return, Action::Edit), std::pair(Qt::Key_Escape, Action::Leave)}) {
            QTest::keyClick(&toolbar, key);
            QCOMPARE(actions.last().first().value<Action>(), action);
        }
    }

    /// Without a compositor a window is opaque: what it shows has to be all its own.
    void theToolbarHasNoBlackCorners()
    {
        QWidget owner;
        LongCaptureToolbar toolbar(&owner);
        toolbar.setTheme(ui::lightTheme());
        toolbar.setMixed(false);
        toolbar.show();
        QImage image(toolbar.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        toolbar.render(&image, {}, {}, QWidget::DrawChildren);
        const QRegion shown = toolbar.mask();
        QVERIFY(!shown.contains(QPoint(0, 0)) && shown.contains(image.rect().center()));
        for (const QRect &part : shown) {
            for (int y = part.top(); y <= part.bottom(); ++y) {
                for (int x = part.left(); x <= part.right(); ++x)
                    QCOMPARE(qAlpha(image.pixel(x, y)), 255);
            }
        }
        toolbar.setMixed(true);
        QVERIFY(toolbar.mask().isEmpty());
    }

    void theStitchedPageIsTheResult()
    {
        const QImage whole = page();
        CaptureOverlay overlay(shot(whole, 0), SettingsConfig());
        overlay.show();
        QVERIFY(QTest::qWaitForWindowExposed(&overlay));
        QSignalSpy started(&overlay, &CaptureOverlay::longCaptureStarted);
        QSignalSpy finished(&overlay, &CaptureOverlay::longCaptureFinished);
        const Outcomes outcomes(overlay);
        QVERIFY(!overlay.startLongMode()); // nothing is selected
        overlay.setSelectionRect({100, 100, 300, 150});
        QVERIFY(!overlay.startLongMode()); // too small
        QCOMPARE(started.count(), 0);
        overlay.setSelectionRect(kView);
        QVERIFY(overlay.startLongMode());
        QVERIFY(overlay.startLongMode()); // as it is
        QCOMPARE(started.count(), 1);
        QVERIFY(!overlay.panels().toolbar()->isVisible());
        QVERIFY(!overlay.mask().contains(kView.center()));
        QVERIFY(overlay.mask().contains(QPoint(50, 50)));
        overlay.showToast(QStringLiteral("a message that has to be read"));
        QVERIFY(overlay.mask().boundingRect().contains(overlay.rect()));

        for (int row = 40; row <= 400; row += 40)
            overlay.addLongFrame(shot(whole, row));
        overlay.addLongFrame(shot(whole, 430, 2)); // of another display
        QTest::keyClick(&overlay, Qt::Key_X);      // means nothing now
        QTest::mouseClick(&overlay, Qt::LeftButton, {}, {10, 10});
        QCOMPARE(overlay.selection(), QRectF(kView));
        QTest::keyClick(&overlay, Qt::Key_Return);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(outcomes.all.size(), 0);
        QVERIFY(overlay.mask().isEmpty());
        QVERIFY(overlay.panels().toolbar()->isVisible());
        overlay.addLongFrame(shot(whole, 440)); // was on its way
        QCOMPARE(overlay.snapshot().image.size(), QSize(400, 700));
        QCOMPARE(overlay.snapshot().selection, QRectF(0, 0, 400, 700));
        QTest::keyClick(&overlay, Qt::Key_Return);
        QCOMPARE(outcomes.count(Action::Copy), 1);
        QCOMPARE(outcomes.picture().convertToFormat(QImage::Format_RGB32),
                 whole.copy(0, 0, 400, 700).convertToFormat(QImage::Format_RGB32));
        // No colour can be read from what the page hides.
        QTest::mouseMove(&overlay, kView.center());
        QTest::keyClick(&overlay, Qt::Key_C);
        QCOMPARE(outcomes.count(Action::CopyColor), 0);
        QTest::mouseMove(&overlay, {20, 20});
        QTest::keyClick(&overlay, Qt::Key_C);
        QCOMPARE(outcomes.count(Action::CopyColor), 1);
    }

    /// Another selection and another picture are what they show, not the page.
    void theResultGoesWithItsSelection()
    {
        const QImage whole = page();
        const platform::CapturedDisplay display = shot(whole, 0);
        CaptureOverlay overlay(display, SettingsConfig());
        overlay.show();
        const Outcomes outcomes(overlay);
        OverlaySnapshot older;
        older.image = display.image;
        older.selection = QRectF(10, 10, 50, 40);
        const std::vector<std::pair<std::function<void()>, QSize>> ways{
            {[&] {
                 overlay.clearSelection();
                 overlay.setSelectionRect(kView);
             },
             kView.size()},
            {[&] {
                 overlay.setSelectionRect({0, 0, 200, 100});
             },
             {200, 100}},
            {[&] { overlay.loadSnapshot(older); }, {50, 40}}};
        for (const auto &[change, size] : ways) {
            overlay.setSelectionRect(kView);
            QVERIFY(overlay.startLongMode());
            overlay.addLongFrame(shot(whole, 40));
            overlay.finishLongMode(true);
            QCOMPARE(overlay.snapshot().image.height(), kView.height() + 40);
            change();
            QTest::keyClick(&overlay, Qt::Key_Return);
            QCOMPARE(outcomes.picture().size(), size);
        }
    }

    void framesThatCannotBePlacedAreTold()
    {
        const QImage whole = page();
        CaptureOverlay overlay(shot(whole, 0), SettingsConfig());
        overlay.show();
        overlay.setSelectionRect(kView);
        QVERIFY(overlay.startLongMode());
        auto *mode = overlay.findChild<ui::LongCaptureMode *>();
        QSignalSpy troubled(mode, &ui::LongCaptureMode::troubled);
        const auto far = shot(whole, 2000); // beyond the view
        for (int i = 0; i < 20; ++i)
            overlay.addLongFrame(far);
        QCOMPARE(troubled.count(), 1);
        for (int i = 20; i < 108; ++i)
            overlay.addLongFrame(far);
        QCOMPARE(troubled.count(), 2); // the first message has gone by then
        overlay.addLongFrame(shot(whole, 30));
        for (int i = 0; i < 7; ++i)
            overlay.addLongFrame(far);
        QCOMPARE(troubled.count(), 2);
        const Outcomes outcomes(overlay);
        QTest::keyClick(&overlay, Qt::Key_Escape);
        QCOMPARE(outcomes.count(Action::Leave), 1);
        QVERIFY(!overlay.isLongActive());
        QCOMPARE(overlay.snapshot().image.size(), kSize); // nothing was kept
    }

    /// Scrolled back, the page is shorter again: what its preview leaves is painted anew.
    void thePreviewLeavesNothingBehind()
    {
        const QImage whole = page();
        CaptureOverlay overlay(shot(whole, 0), SettingsConfig());
        overlay.show();
        overlay.setSelectionRect(kView);
        auto *mode = overlay.findChild<ui::LongCaptureMode *>();
        QSignalSpy changed(mode, &ui::LongCaptureMode::changed);
        QVERIFY(overlay.startLongMode());
        for (int row = 40; row <= 200; row += 40)
            overlay.addLongFrame(shot(whole, row));
        const QRectF high = mode->previewPanel();
        QTRY_VERIFY(changed.last().first().toRect().contains(high.toAlignedRect()));
        for (int row = 160; row >= 40; row -= 40)
            overlay.addLongFrame(shot(whole, row));
        QVERIFY(mode->previewPanel().height() < high.height());
        changed.clear();
        QTRY_VERIFY(!changed.isEmpty());
        QVERIFY(changed.first().first().toRect().contains(high.toAlignedRect()));
    }

    void hidingTheOverlayEndsIt()
    {
        const QImage whole = page();
        auto overlay = std::make_unique<CaptureOverlay>(shot(whole, 0), SettingsConfig());
        overlay->show();
        overlay->setSelectionRect(kView);
        QVERIFY(overlay->startLongMode());
        QSignalSpy finished(overlay.get(), &CaptureOverlay::longCaptureFinished);
        auto *toolbar = overlay->findChild<LongCaptureToolbar *>();
        QVERIFY(toolbar->isVisible());
        overlay->hide();
        QCOMPARE(finished.count(), 1);
        QVERIFY(!toolbar->isVisible());
        overlay->show();
        QVERIFY(overlay->startLongMode());
        overlay.reset(); // with everything open
    }
};

TAVREL_TEST_MAIN(QApplication, LongCaptureTest)
#include "test_long_capture.moc"
