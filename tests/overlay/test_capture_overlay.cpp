#include "blocking_detector.h"
#include "outcomes.h"
#include "overlay/element_probe.h"
#include "overlay/overlay_panels.h"
#include "overlay/toolbar_widget.h"
#include "overlay_input.h"
#include "support/test_main.h"
#include "ui/attribute_bar.h"

#include <QApplication>
#include <QBackingStore>
#include <QRandomGenerator>
#include <QSignalSpy>

using namespace tavrel;
using ui::CaptureOverlay;
using Action = CaptureOutcome::Action;
using ui::OverlayMode;

namespace {

constexpr QSize kSize(640, 480);

/// Every pixel tells its place.
platform::CapturedDisplay captured()
{
    platform::CapturedDisplay display = flatDisplay(kSize, Qt::white);
    const QSize pixels = display.image.size();
    for (int y = 0; y < pixels.height(); ++y) {
        for (int x = 0; x < pixels.width(); ++x)
            display.image.setPixel(x, y, qRgb(x % 256, y % 256, (x / 256) * 16 + y / 256));
    }
    return display;
}

platform::WindowInfo window(const QRectF &geometry, const QString &title)
{
    platform::WindowInfo info;
    info.geometry = geometry;
    info.title = title;
    info.applicationName = QStringLiteral("app");
    return info;
}

/// A resampled picture may differ by one step where its painting begins in another column.
bool equalButForRounding(const QImage &a, const QImage &b)
{
    if (a == b)
        return true;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            if (qAbs(qRed(p) - qRed(q)) > 1 || qAbs(qGreen(p) - qGreen(q)) > 1 || qAbs(qBlue(p) - qBlue(q)) > 1)
                return false;
        }
    }
    return a.size() == b.size();
}

} // namespace

class CaptureOverlayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_overlay = std::make_unique<CaptureOverlay>(captured(), SettingsConfig());
        m_outcomes = std::make_unique<Outcomes>(*m_overlay);
        m_overlay->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_overlay.get()));
    }

    void cleanup() { m_overlay.reset(); }

    void aDragSelectsAndAClickTakesTheWindow()
    {
        m_overlay->setDetection(
            {window({50, 60, 100, 80}, QStringLiteral("small")), window({-40, 20, 400, 300}, QStringLiteral("large"))});
        drag(m_overlay.get(), {100, 100}, {300, 250});
        QCOMPARE(m_overlay->selection(), QRectF(100, 100, 200, 150));
        QTest::keyClick(m_overlay.get(), Qt::Key_Return);
        QCOMPARE(m_outcomes->all.last().window->title, QStringLiteral("large"));

        m_overlay->clearSelection();
        drag(m_overlay.get(), {60, 170}, {63, 270}); // a band of 3 is a click
        QCOMPARE(m_overlay->selection(), QRectF(-40, 20, 400, 300).intersected(QRectF(m_overlay->rect())));

        m_overlay->clearSelection();
        drag(m_overlay.get(), {60, 70}, {62, 71});
        QCOMPARE(m_overlay->selection(), QRectF(50, 60, 100, 80));
    }

    void aClickOnNothingSelectsNothing()
    {
        platform::CapturedDisplay flat = captured();
        flat.image.fill(Qt::gray);
        m_overlay = std::make_unique<CaptureOverlay>(flat, SettingsConfig());
        m_overlay->show();
        drag(m_overlay.get(), {60, 70}, {60, 70});
        QVERIFY(!m_overlay->hasSelection());
        QCOMPARE(m_overlay->mode(), OverlayMode::Idle);
    }

    void theSelectionIsMovedAndResized()
    {
        m_overlay->setSelectionRect({100, 100, 200, 150});
        drag(m_overlay.get(), {200, 180}, {220, 190});
        QCOMPARE(m_overlay->selection(), QRectF(120, 110, 200, 150));
        drag(m_overlay.get(), {320, 260}, {400, 300});
        QCOMPARE(m_overlay->selection(), QRectF(120, 110, 280, 190));
        drag(m_overlay.get(), {120, 200}, {420, 200}); // over the opposite edge
        QCOMPARE(m_overlay->selection(), QRectF(400, 110, 20, 190));
        drag(m_overlay.get(), {410, 110}, {410, 300}); // to nothing
        QCOMPARE(m_overlay->selection(), QRectF(400, 110, 20, 190));
    }

    void theRightButtonDropsTheSelectionThenLeaves()
    {
        m_overlay->setSelectionRect({100, 100, 200, 150});
        QTest::mouseClick(m_overlay.get(), Qt::RightButton, {}, {10, 10});
        QVERIFY(!m_overlay->hasSelection());
        QCOMPARE(m_outcomes->all.size(), 0);
        QTest::mouseClick(m_overlay.get(), Qt::RightButton, {}, {10, 10});
        QCOMPARE(m_outcomes->count(Action::Leave), 1);
    }

    void keysBringTheirOutcomes()
    {
        QSignalSpy walked(m_overlay.get(), &CaptureOverlay::historyNavigate);
        QTest::keyClick(m_overlay.get(), Qt::Key_Return);
        QTest::keyClick(m_overlay.get(), Qt::Key_C, Qt::ControlModifier);
        QTest::keyClick(m_overlay.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(m_outcomes->all.size(), 0);
        QTest::keyClick(m_overlay.get(), Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(m_overlay->selection(), QRectF(m_overlay->rect()));
        for (const int key : {Qt::Key_Return, Qt::Key_Enter})
            QTest::keyClick(m_overlay.get(), static_cast<Qt::Key>(key));
        QTest::keyClick(m_overlay.get(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(m_outcomes->count(Action::Copy), 3);
        QTest::keyClick(m_overlay.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(m_outcomes->count(Action::Save), 1);
        QTest::keyClick(m_overlay.get(), Qt::Key_P, Qt::ControlModifier);
        QCOMPARE(m_outcomes->count(Action::Pin), 1);
        QCOMPARE(m_outcomes->all.last().rectangle, m_overlay->rect());
        QTest::keyClick(m_overlay.get(), Qt::Key_Comma);
        QTest::keyClick(m_overlay.get(), Qt::Key_Period);
        QCOMPARE(walked.count(), 2);
        QCOMPARE(walked.first().first().toInt(), -1);
    }

    /// What nobody takes has no button, and its key says so on the overlay.
    void whatIsNotOfferedIsNotPretended()
    {
        m_overlay->setOffered({Action::Copy});
        m_overlay->setSelectionRect({100, 100, 200, 150});
        const auto button = [this](const char *name) {
            return m_overlay->panels().toolbar()->findChild<QWidget *>(QString::fromLatin1(name));
        };
        QVERIFY(button("copy")->isVisible() && !button("save")->isVisible() && !button("cloud")->isVisible());
        const QImage before = m_overlay->grab().toImage();
        QTest::keyClick(m_overlay.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(m_outcomes->all.size(), 0);
        QVERIFY(m_overlay->grab().toImage() != before);
    }

    void theColourUnderThePointerIsCopied()
    {
        QTest::mouseMove(m_overlay.get(), {100, 50});
        const QColor color = captured().image.pixelColor(QPoint(100, 50) * static_cast<int>(qApp->devicePixelRatio()));
        QTest::keyClick(m_overlay.get(), Qt::Key_C);
        QTest::keyClick(m_overlay.get(), Qt::Key_Shift);
        QTest::keyClick(m_overlay.get(), Qt::Key_C);
        QCOMPARE(m_outcomes->count(Action::CopyColor), 2);
        if (qFuzzyCompare(qApp->devicePixelRatio(), 1.0))
            QCOMPARE(m_outcomes->all.first().text, color.name().toUpper());
        QVERIFY(m_outcomes->all.last().text.contains(QStringLiteral(", ")));
        m_overlay->setTool(ToolType::Pen); // whose keys these are now
        QTest::keyClick(m_overlay.get(), Qt::Key_C);
        m_overlay->setTool(ToolType::None);
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(m_overlay.get(), &leave);
        QTest::keyClick(m_overlay.get(), Qt::Key_C);
        QCOMPARE(m_outcomes->count(Action::CopyColor), 2);
    }

    void theResultIsTheSameCropOfThePicture()
    {
        m_overlay->setSelectionRect({33, 47, 101, 77});
        QTest::keyClick(m_overlay.get(), Qt::Key_Return);
        const QImage result = m_outcomes->picture();
        const double ratio = qApp->devicePixelRatio();
        const QRect crop(QPoint(qRound(33 * ratio), qRound(47 * ratio)),
                         QPoint(qRound(134 * ratio) - 1, qRound(124 * ratio) - 1));
        QImage expected = captured().image.copy(crop);
        QCOMPARE(result.devicePixelRatio(), ratio);
        QCOMPARE(result, expected);
    }

    void aPickGivesRectangleAndPicture()
    {
        m_overlay->setPickMode(true);
        drag(m_overlay.get(), {10, 10}, {60, 60});
        QCOMPARE(m_outcomes->count(Action::Pick), 1);
        QCOMPARE(m_outcomes->all.first().rectangle, QRect(10, 10, 50, 50));
        QVERIFY(!m_outcomes->picture().isNull());
        m_overlay->setDetection({window({50, 60, 100, 80}, QStringLiteral("small"))});
        m_overlay->clearSelection();
        drag(m_overlay.get(), {70, 75}, {70, 75}); // a click takes the window
        QCOMPARE(m_outcomes->all.last().rectangle, QRect(50, 60, 100, 80));
    }

    void aSnapshotBringsTheStateBack()
    {
        m_overlay->setSelectionRect({33, 47, 100, 77});
        const OverlaySnapshot live = m_overlay->snapshot();
        OverlaySnapshot small;
        small.image = QImage(200, 100, QImage::Format_RGB32);
        small.image.fill(Qt::red);
        small.selection = QRectF(-10, 0, 100, 300);
        m_overlay->loadSnapshot(small);
        // In the middle on a whole device pixel, and cut to the picture.
        const QRectF placed = m_overlay->selection();
        const double ratio = qApp->devicePixelRatio();
        QCOMPARE(placed.topLeft(), QPointF(qRound(220 * ratio), qRound(190 * ratio)) / ratio);
        QCOMPARE(placed.size(), QSizeF(90, 100));
        QCOMPARE(m_overlay->snapshot().selection, QRectF(0, 0, 90, 100));
        m_overlay->loadSnapshot({});
        QCOMPARE(m_overlay->selection(), placed);
        // A band cannot leave the picture, on neither side.
        m_overlay->clearSelection();
        drag(m_overlay.get(), {10, 10}, {630, 470});
        QCOMPARE(m_overlay->snapshot().selection, QRectF(0, 0, 200, 100));
        m_overlay->loadSnapshot(live);
        QCOMPARE(m_overlay->selection(), live.selection);
        QCOMPARE(m_overlay->snapshot().image, live.image);
    }

    void aSelectionOfLessThanAPixelFallsBack()
    {
        const QRectF start(100, 100, 50, 100);
        for (const double width : {1.0, 0.5}) {
            m_overlay->setSelectionRect(start);
            send(QEvent::MouseButtonPress, {150, 150});
            send(QEvent::MouseMove, {100 + width, 150});
            QCOMPARE(m_overlay->mode(), OverlayMode::Resizing);
            QCOMPARE(m_overlay->selection().width(), width);
            send(QEvent::MouseButtonRelease, {100 + width, 150});
            QCOMPARE(m_overlay->selection().width(), width < 1 ? 50.0 : width);
        }
    }

    void besideTheSelectionAToolDoesNothing()
    {
        m_overlay->setSelectionRect({100, 100, 300, 300});
        m_overlay->setTool(ToolType::Rect);
        drag(m_overlay.get(), {79, 85}, {30, 30});
        QCOMPARE(m_overlay->selection(), QRectF(100, 100, 300, 300));
        drag(m_overlay.get(), {85, 85}, {75, 65});
        QCOMPARE(m_overlay->selection(), QRectF(90, 80, 310, 320));
        send(QEvent::MouseButtonPress, {200, 200});
        QCOMPARE(m_overlay->mode(), OverlayMode::Drawing);
        send(QEvent::MouseButtonRelease, {200, 200});
        QCOMPARE(m_overlay->mode(), OverlayMode::Idle);
    }

    void aBindingThatIsOffIsNotHeard()
    {
        SettingsConfig config;
        config.builtin.saveScreenshot.enabled = false;
        config.builtin.pin.combo = KeyCombo{.key = Qt::Key_Return};
        m_overlay->setConfig(config);
        m_overlay->setSelectionRect({100, 100, 200, 150});
        QTest::keyClick(m_overlay.get(), Qt::Key_S, Qt::ControlModifier);
        QTest::keyClick(m_overlay.get(), Qt::Key_Return); // the user's bindings come before the fixed keys
        QCOMPARE(m_outcomes->all.size(), 1);
        QCOMPARE(m_outcomes->count(Action::Pin), 1);
    }

    void theWheelAndSpaceChooseWhatAClickTakes()
    {
        m_overlay->setHoverAnimated(false);
        m_overlay->setDetection({window({50, 60, 200, 180}, QStringLiteral("a"))});
        const QRectF screen(m_overlay->rect());
        QTest::mouseMove(m_overlay.get(), {60, 70});
        QCOMPARE(m_overlay->hoverRect(), QRectF(50, 60, 200, 180));
        const auto notch = [this](int angle, const QPoint &pixels = {}) {
            sendWheel(m_overlay.get(), {60, 70}, angle, pixels);
        };
        notch(120, {0, 30});
        QCOMPARE(m_overlay->hoverRect(), screen); // motion counts at once
        notch(-120);
        QCOMPARE(m_overlay->hoverRect(), screen); // notches when the wheel rests
        QTRY_COMPARE(m_overlay->hoverRect(), QRectF(50, 60, 200, 180));
        notch(120, {0, 30});
        QTest::keyClick(m_overlay.get(), Qt::Key_Space);
        QCOMPARE(m_overlay->hoverRect(), QRectF(50, 60, 200, 180));
        notch(120, {0, 30});
        drag(m_overlay.get(), {60, 70}, {60, 70});
        QCOMPARE(m_overlay->selection(), screen);
        QVERIFY(m_overlay->hoverRect().isNull());
        notch(-120, {0, -30}); // not the selection's business
        QCOMPARE(m_overlay->selection(), screen);
    }

    void aClickTakesTheTargetNotTheGlidingFrame()
    {
        m_overlay->setDetection(
            {window({50, 60, 200, 180}, QStringLiteral("a")), window({300, 60, 200, 180}, QStringLiteral("b"))});
        QTest::mouseMove(m_overlay.get(), {60, 70});
        drag(m_overlay.get(), {310, 70}, {310, 70});
        QCOMPARE(m_overlay->selection(), QRectF(300, 60, 200, 180));
    }

    void aPictureHasBoxesOfItsOwn()
    {
        platform::CapturedDisplay display = captured();
        const double ratio = display.devicePixelRatio;
        display.image.fill(Qt::white);
        for (int y = qRound(100 * ratio); y < qRound(200 * ratio); ++y) {
            for (int x = qRound(120 * ratio); x < qRound(320 * ratio); ++x)
                display.image.setPixel(x, y, qRgb(20, 60, 120));
        }
        m_overlay = std::make_unique<CaptureOverlay>(display, SettingsConfig());
        m_overlay->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_overlay.get()));
        QTest::mouseMove(m_overlay.get(), {200, 150});
        QTRY_COMPARE(m_overlay->hoverRect(), QRectF(120, 100, 200, 100));
    }

    void elementsComeFromTheProbeWhileTheyAreOfUse()
    {
        const auto detector = std::make_shared<BlockingDetector>();
        detector->answer = QRectF(90, 95, 40, 20);
        ui::ElementProbe probe(detector);
        QSignalSpy answers(&probe, &ui::ElementProbe::ready);
        platform::WindowInfo info = window({50, 60, 200, 180}, QStringLiteral("a"));
        info.processId = 7;
        m_overlay->setDetection({info}, &probe);
        const auto answer = [&] {
            const auto before = answers.count();
            detector->leave.release();
            return QTest::qWaitFor([&] { return answers.count() > before; });
        };
        QTest::mouseMove(m_overlay.get(), {100, 100});
        QCOMPARE(m_overlay->hoverRect(), QRectF(50, 60, 200, 180));
        QVERIFY(answer());
        QCOMPARE(m_overlay->hoverRect(), QRectF(90, 95, 40, 20));

        // Not over a selection, and not for a picture of the past.
        QTest::mouseMove(m_overlay.get(), {140, 100});
        m_overlay->setSelectionRect({300, 300, 50, 50});
        QVERIFY(answer());
        QVERIFY(m_overlay->hoverRect().isNull());
        OverlaySnapshot past = m_overlay->snapshot();
        past.image.fill(Qt::gray);
        past.selection = {};
        OverlaySnapshot live = m_overlay->snapshot();
        live.selection = {};
        m_overlay->loadSnapshot(past);
        QTest::mouseMove(m_overlay.get(), {100, 100});
        QCOMPARE(m_overlay->hoverRect(), QRectF(50, 60, 200, 180));
        QCOMPARE(detector->begun.available(), 2);
        m_overlay->loadSnapshot(live);
        QTest::mouseMove(m_overlay.get(), {101, 100});
        QVERIFY(answer());
        QCOMPARE(m_overlay->hoverRect(), QRectF(90, 95, 40, 20));

        // The overlay goes while a query runs.
        QTest::mouseMove(m_overlay.get(), {140, 140});
        m_overlay.reset();
        QVERIFY(answer());
    }

    void windowsStayOpenToClicksOnlyWhenAsked()
    {
        SettingsConfig config;
        config.autoDetectWindow = false;
        m_overlay->setConfig(config);
        m_overlay->setDetection({window({50, 60, 100, 80}, QStringLiteral("small"))});
        drag(m_overlay.get(), {60, 70}, {60, 70});
        QVERIFY(!m_overlay->hasSelection());
    }

    void anArmedStartWaitsForASelection()
    {
        int begun = 0;
        m_overlay->setStarter(CaptureOverlay::AutoStart::TextRecognition, [&begun] { ++begun; });
        m_overlay->armStart(CaptureOverlay::AutoStart::TextRecognition);
        m_overlay->armStart(CaptureOverlay::AutoStart::LongCapture); // nobody to begin it
        QCoreApplication::processEvents();
        QCOMPARE(begun, 0);
        send(QEvent::MouseButtonPress, {10, 10});
        send(QEvent::MouseMove, {60, 60});
        m_overlay->armStart(CaptureOverlay::AutoStart::TextRecognition); // its band is not a selection yet
        QCoreApplication::processEvents();
        QCOMPARE(begun, 0);
        send(QEvent::MouseButtonRelease, {60, 60});
        QTRY_COMPARE(begun, 1);
        drag(m_overlay.get(), {200, 200}, {260, 260});
        QCoreApplication::processEvents();
        QCOMPARE(begun, 1); // once
        m_overlay->armStart(CaptureOverlay::AutoStart::TextRecognition);
        m_overlay->clearSelection(); // before its turn came
        QCoreApplication::processEvents();
        QCOMPARE(begun, 1);
    }

    void panelsGoWithTheSelection()
    {
        const auto toolbar = [this] { return m_overlay->panels().toolbar(); };
        send(QEvent::MouseButtonPress, {100, 100});
        send(QEvent::MouseMove, {400, 200});
        QVERIFY(!toolbar() || !toolbar()->isVisible());
        send(QEvent::MouseButtonRelease, {400, 200});
        const QWidget *bar = m_overlay->panels().attributeBar();
        QVERIFY(toolbar()->isVisible() && !bar->isVisible());
        const QPoint place = toolbar()->pos();
        QCOMPARE(place.y(), 215);
        m_overlay->setTool(ToolType::Rect);
        QVERIFY(bar->isVisible());
        QCOMPARE(toolbar()->pos(), place); // it does not jump away from under the pointer
        QCOMPARE(bar->y(), place.y() + toolbar()->height() + 6);
        m_overlay->setTool(ToolType::None);
        send(QEvent::MouseButtonPress, {250, 150});
        send(QEvent::MouseMove, {260, 160});
        QCOMPARE(toolbar()->y(), 225);
        send(QEvent::MouseButtonRelease, {260, 160});
        m_overlay->clearSelection();
        QVERIFY(!toolbar()->isVisible());
        m_overlay->setPickMode(true);
        m_overlay->setSelectionRect({100, 100, 200, 150});
        QVERIFY(!toolbar()->isVisible());
    }

    void theSizeStaysReadableBelowPanels()
    {
        const QRectF low(20, m_overlay->height() - 100, m_overlay->width() - 40, 90);
        m_overlay->setSelectionRect(low);
        const QPoint inside = low.topLeft().toPoint() + QPoint(30, 7); // on the label when it is in the selection
        const auto pixel = [&] {
            const QImage seen = m_overlay->grab().toImage();
            return seen.pixelColor((QPointF(inside) * seen.devicePixelRatio()).toPoint());
        };
        const QColor picture = pixel();
        m_overlay->setTool(ToolType::Rect);
        QVERIFY(m_overlay->panels().attributeBar()->geometry().bottom() > low.top() - 20);
        QVERIFY(pixel().lightness() < picture.lightness());
        m_overlay->setTool(ToolType::None); // the bar has gone, and the label is back above
        QCOMPARE(pixel(), picture);
    }

    void theHintCardGivesWayToTheSelection()
    {
        SettingsConfig config;
        config.showOperationTips = false;
        CaptureOverlay without(captured(), config);
        for (CaptureOverlay *overlay : {m_overlay.get(), &without})
            overlay->setPickMode(true); // no panels, which the card gives way to as well
        const QRect corner(16, 400, 60, 60);
        const auto isShown = [&] { return m_overlay->grab(corner).toImage() != without.grab(corner).toImage(); };
        QVERIFY(isShown());
        for (CaptureOverlay *overlay : {m_overlay.get(), &without})
            overlay->setSelectionRect({30, 100, 300, 200}); // over the card's upper end
        QVERIFY(!isShown());
        for (CaptureOverlay *overlay : {m_overlay.get(), &without})
            overlay->setSelectionRect({330, 100, 300, 200});
        QVERIFY(isShown());
    }

    /// Whatever happens, what is on the screen equals a total repaint: the dirty regions forget nothing.
    void partialUpdatesEqualATotalRepaint()
    {
        m_overlay->setDetection({window({50, 60, 300, 280}, QStringLiteral("a"))});
        QRandomGenerator random(42);
        const auto point = [&random] {
            return QPoint(static_cast<int>(random.bounded(kSize.width())),
                          static_cast<int>(random.bounded(kSize.height())));
        };
        QPoint at(320, 240);
        bool held = false;
        OverlaySnapshot other;
        other.image = captured().image.copy(0, 0, 500, 300);
        other.image.setDevicePixelRatio(1);
        other.selection = {20, 20, 200, 100};
        const OverlaySnapshot live = m_overlay->snapshot();
        for (int step = 0; step < 300; ++step) {
            const quint32 action = random.bounded(27U);
            if (action < 11) {
                const int reach = action < 6 ? 3 : 40; // a slow move does not reach over the marks
                at += QPoint(random.bounded(-reach, reach + 1), random.bounded(-reach, reach + 1));
                at = {qBound(0, at.x(), kSize.width() - 1), qBound(0, at.y(), kSize.height() - 1)};
                QTest::mouseMove(m_overlay.get(), at);
            } else if (action < 16) {
                held ? QTest::mouseRelease(m_overlay.get(), Qt::LeftButton, {}, at)
                     : QTest::mousePress(m_overlay.get(), Qt::LeftButton, {}, at);
                held = !held;
            } else if (action == 16) {
                m_overlay->showToast(QStringLiteral("message %1").arg(step));
            } else if (action == 17) {
                QTest::keyClick(m_overlay.get(), Qt::Key_Shift);
            } else if (action == 18 && !held) {
                m_overlay->setSelectionRect(QRectF(point(), point()).normalized());
            } else if (action == 19 && !held) {
                m_overlay->clearSelection();
            } else if (action == 20 && !held) {
                static constexpr std::array tools{ToolType::None, ToolType::Rect,   ToolType::Arrow,
                                                  ToolType::Pen,  ToolType::Mosaic, ToolType::Spotlight,
                                                  ToolType::None, ToolType::Marker, ToolType::Circle};
                m_overlay->setTool(tools[random.bounded(static_cast<quint32>(tools.size()))]);
            } else if (action == 21) {
                QTest::mouseMove(m_overlay.get(), at + QPoint(1, 0)); // hardly anything changes
            } else if (action == 22 && !held) {
                sendWheel(m_overlay.get(), {200, 150}, random.bounded(2U) == 0 ? 120 : -360);
            } else if (action == 23 && !held && random.bounded(4U) == 0) {
                m_overlay->loadSnapshot(random.bounded(2U) == 0 ? other : live);
            } else if (action == 24) {
                QTest::keyClick(m_overlay.get(), Qt::Key_Space);
            } else if (action > 24) {
                sendWheel(m_overlay.get(), at, 0, {0, action == 25 ? 30 : -30});
            }
            QCoreApplication::processEvents();
            QEvent pending(QEvent::UpdateRequest); // the frame glides: a tick may have asked for a repaint just now
            QApplication::sendEvent(m_overlay.get(), &pending);
            const auto *store = dynamic_cast<const QImage *>(m_overlay->backingStore()->paintDevice());
            QVERIFY(store);
            const QImage shown = store->convertToFormat(QImage::Format_RGB32);
            QCOMPARE(shown.size(), (QSizeF(kSize) * qApp->devicePixelRatio()).toSize());
            QImage total(shown.size(), QImage::Format_ARGB32_Premultiplied);
            total.setDevicePixelRatio(qApp->devicePixelRatio());
            m_overlay->render(&total);
            total = total.convertToFormat(QImage::Format_RGB32);
            if (!equalButForRounding(shown, total)) {
                shown.save(QStringLiteral("partial_shown.png"));
                total.save(QStringLiteral("partial_total.png"));
                QFAIL(qPrintable(QStringLiteral("step %1, action %2").arg(step).arg(action)));
            }
        }
    }

private:
    void send(QEvent::Type type, const QPointF &at)
    {
        const bool isMove = type == QEvent::MouseMove;
        sendMouse(m_overlay.get(), type, at, isMove ? Qt::NoButton : Qt::LeftButton);
    }

    std::unique_ptr<Outcomes> m_outcomes;
    std::unique_ptr<CaptureOverlay> m_overlay;
};

TAVREL_TEST_MAIN(QApplication, CaptureOverlayTest)
#include "test_capture_overlay.moc"
