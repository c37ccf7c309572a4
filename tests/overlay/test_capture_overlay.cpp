#include "overlay/capture_overlay.h"
#include "support/test_main.h"

#include <QApplication>
#include <QClipboard>
#include <QRandomGenerator>
#include <QScreen>
#include <QSignalSpy>

using namespace tavrel;
using ui::CaptureOverlay;
using ui::OverlayMode;

namespace {

constexpr QSize kSize(640, 480);

/// Every pixel tells its place.
platform::CapturedDisplay captured()
{
    platform::CapturedDisplay display;
    display.id = 1;
    display.geometry = QRect(QPoint(0, 0), kSize);
    const double ratio = qApp->devicePixelRatio();
    display.devicePixelRatio = ratio;
    const QSize pixels = (QSizeF(kSize) * ratio).toSize();
    display.image = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < pixels.height(); ++y) {
        for (int x = 0; x < pixels.width(); ++x)
            display.image.setPixel(x, y, qRgb(x % 256, y % 256, (x / 256) * 16 + y / 256));
    }
    display.image.setDevicePixelRatio(ratio);
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

void drag(QWidget &widget, const QPoint &from, const QPoint &to)
{
    QTest::mousePress(&widget, Qt::LeftButton, {}, from);
    QTest::mouseMove(&widget, (from + to) / 2);
    QTest::mouseMove(&widget, to);
    QTest::mouseRelease(&widget, Qt::LeftButton, {}, to);
}

} // namespace

class CaptureOverlayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_overlay = std::make_unique<CaptureOverlay>(captured(), SettingsConfig());
        m_overlay->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_overlay.get()));
    }

    void cleanup() { m_overlay.reset(); }

    void aDragSelectsAndAClickTakesTheWindow()
    {
        m_overlay->setDetection(
            {window({50, 60, 100, 80}, QStringLiteral("small")), window({-40, 20, 400, 300}, QStringLiteral("large"))});
        drag(*m_overlay, {100, 100}, {300, 250});
        QCOMPARE(m_overlay->selection(), QRectF(100, 100, 200, 150));
        QCOMPARE(m_overlay->windowUnderSelection()->title, QStringLiteral("large"));

        m_overlay->clearSelection();
        drag(*m_overlay, {60, 70}, {63, 170}); // a band of 3 is a click
        QCOMPARE(m_overlay->selection(), QRectF(-40, 20, 400, 300).intersected(QRectF(m_overlay->rect())));

        m_overlay->clearSelection();
        drag(*m_overlay, {60, 70}, {62, 71});
        QCOMPARE(m_overlay->selection(), QRectF(50, 60, 100, 80));
    }

    void aClickOnNothingSelectsNothing()
    {
        drag(*m_overlay, {60, 70}, {60, 70});
        QVERIFY(!m_overlay->hasSelection());
        QCOMPARE(m_overlay->mode(), OverlayMode::Idle);
    }

    void theSelectionIsMovedAndResized()
    {
        m_overlay->setSelectionRect({100, 100, 200, 150});
        drag(*m_overlay, {200, 180}, {220, 190});
        QCOMPARE(m_overlay->selection(), QRectF(120, 110, 200, 150));
        drag(*m_overlay, {320, 260}, {400, 300});
        QCOMPARE(m_overlay->selection(), QRectF(120, 110, 280, 190));
        drag(*m_overlay, {120, 200}, {420, 200}); // over the opposite edge
        QCOMPARE(m_overlay->selection(), QRectF(400, 110, 20, 190));
        drag(*m_overlay, {410, 110}, {410, 300}); // to nothing
        QCOMPARE(m_overlay->selection(), QRectF(400, 110, 20, 190));
    }

    void theRightButtonDropsTheSelectionThenLeaves()
    {
        QSignalSpy closed(m_overlay.get(), &CaptureOverlay::closeRequested);
        m_overlay->setSelectionRect({100, 100, 200, 150});
        QTest::mouseClick(m_overlay.get(), Qt::RightButton, {}, {10, 10});
        QVERIFY(!m_overlay->hasSelection());
        QCOMPARE(closed.count(), 0);
        QTest::mouseClick(m_overlay.get(), Qt::RightButton, {}, {10, 10});
        QCOMPARE(closed.count(), 1);
    }

    void keysRaiseTheirSignals()
    {
        QSignalSpy copied(m_overlay.get(), &CaptureOverlay::copyRequested);
        QSignalSpy saved(m_overlay.get(), &CaptureOverlay::saveRequested);
        QSignalSpy pinned(m_overlay.get(), &CaptureOverlay::pinRequested);
        QSignalSpy walked(m_overlay.get(), &CaptureOverlay::historyNavigate);
        QTest::keyClick(m_overlay.get(), Qt::Key_Return);
        QTest::keyClick(m_overlay.get(), Qt::Key_C, Qt::ControlModifier);
        QTest::keyClick(m_overlay.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(copied.count() + saved.count(), 0);
        QTest::keyClick(m_overlay.get(), Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(m_overlay->selection(), QRectF(m_overlay->rect()));
        for (const int key : {Qt::Key_Return, Qt::Key_Enter})
            QTest::keyClick(m_overlay.get(), static_cast<Qt::Key>(key));
        QTest::keyClick(m_overlay.get(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(copied.count(), 3);
        QTest::keyClick(m_overlay.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(saved.count(), 1);
        QTest::keyClick(m_overlay.get(), Qt::Key_P, Qt::ControlModifier);
        QCOMPARE(pinned.first().last().toRect(), m_overlay->rect());
        QTest::keyClick(m_overlay.get(), Qt::Key_Comma);
        QTest::keyClick(m_overlay.get(), Qt::Key_Period);
        QCOMPARE(walked.count(), 2);
        QCOMPARE(walked.first().first().toInt(), -1);
    }

    void theColourUnderThePointerIsCopied()
    {
        QSignalSpy copied(m_overlay.get(), &CaptureOverlay::colorCopied);
        QTest::mouseMove(m_overlay.get(), {100, 50});
        const QColor color = captured().image.pixelColor(QPoint(100, 50) * static_cast<int>(qApp->devicePixelRatio()));
        QTest::keyClick(m_overlay.get(), Qt::Key_C);
        QTest::keyClick(m_overlay.get(), Qt::Key_Shift);
        QTest::keyClick(m_overlay.get(), Qt::Key_C);
        QCOMPARE(copied.count(), 2);
        if (qFuzzyCompare(qApp->devicePixelRatio(), 1.0))
            QCOMPARE(copied.first().first().toString(), color.name().toUpper());
        QVERIFY(copied.last().first().toString().contains(QStringLiteral(", ")));
        QCOMPARE(QApplication::clipboard()->text(), copied.last().first().toString());
    }

    void theResultIsTheSameCropOfThePicture()
    {
        QSignalSpy copied(m_overlay.get(), &CaptureOverlay::copyRequested);
        m_overlay->setSelectionRect({33, 47, 101, 77});
        QTest::keyClick(m_overlay.get(), Qt::Key_Return);
        const auto result = copied.first().first().value<QImage>();
        const double ratio = qApp->devicePixelRatio();
        const QRect crop(QPoint(qRound(33 * ratio), qRound(47 * ratio)),
                         QPoint(qRound(134 * ratio) - 1, qRound(124 * ratio) - 1));
        QImage expected = captured().image.copy(crop);
        QCOMPARE(result.devicePixelRatio(), ratio);
        QCOMPARE(result, expected);
    }

    void aPickGivesTheRectangleThenThePicture()
    {
        m_overlay->setPickMode(true);
        QStringList order;
        connect(m_overlay.get(), &CaptureOverlay::regionRectPicked, this,
                [&order](const QRect &rect) { order.append(QStringLiteral("rect %1").arg(rect.width())); });
        connect(m_overlay.get(), &CaptureOverlay::regionPicked, this,
                [&order](const QImage &image) { order.append(QStringLiteral("image %1").arg(image.isNull())); });
        drag(*m_overlay, {10, 10}, {60, 60});
        QCOMPARE(order, (QStringList{QStringLiteral("rect 50"), QStringLiteral("image 0")}));
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
        // In the middle, and cut to the picture.
        QCOMPARE(m_overlay->selection(), QRectF(220, 190, 90, 100));
        QCOMPARE(m_overlay->snapshot().selection, QRectF(0, 0, 90, 100));
        m_overlay->loadSnapshot({});
        QCOMPARE(m_overlay->selection(), QRectF(220, 190, 90, 100));
        m_overlay->loadSnapshot(live);
        QCOMPARE(m_overlay->selection(), live.selection);
        QCOMPARE(m_overlay->snapshot().image, live.image);
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
        for (int step = 0; step < 250; ++step) {
            const quint32 action = random.bounded(20U);
            if (action < 11) {
                at += QPoint(static_cast<int>(random.bounded(81)) - 40, static_cast<int>(random.bounded(81)) - 40);
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
            }
            QCoreApplication::processEvents();
            const QImage shown =
                m_overlay->screen()->grabWindow(m_overlay->winId()).toImage().convertToFormat(QImage::Format_RGB32);
            QImage total(shown.size(), QImage::Format_ARGB32_Premultiplied);
            total.setDevicePixelRatio(shown.devicePixelRatio());
            m_overlay->render(&total);
            total = total.convertToFormat(QImage::Format_RGB32);
            QVERIFY(!shown.isNull());
            if (shown != total) {
                shown.save(QStringLiteral("partial_shown.png"));
                total.save(QStringLiteral("partial_total.png"));
                QFAIL(qPrintable(QStringLiteral("step %1, action %2").arg(step).arg(action)));
            }
        }
    }

private:
    std::unique_ptr<CaptureOverlay> m_overlay;
};

TAVREL_TEST_MAIN(QApplication, CaptureOverlayTest)
#include "test_capture_overlay.moc"
