#pragma once

#include "platform/screen_capturer.h"

#include <QGuiApplication>
#include <QRegularExpression>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <memory>

namespace tavrel::test {

/// The next result of a capturer.
inline platform::CaptureResult captureWith(platform::IScreenCapturer &capturer,
                                           const platform::CaptureOptions &options = {})
{
    QSignalSpy spy(&capturer, &platform::IScreenCapturer::captured);
    capturer.capture(options);
    if (spy.isEmpty())
        spy.wait();
    return spy.isEmpty() ? platform::CaptureResult{} : spy.first().first().value<platform::CaptureResult>();
}

/// What every IScreenCapturer promises, whatever it takes its pictures from.
class ScreenCapturerContract : public QObject
{
    Q_OBJECT

protected:
    virtual std::unique_ptr<platform::IScreenCapturer> makeCapturer() = 0;
    /// Makes the next picture of the first display differ from the last.
    virtual void changePicture(platform::IScreenCapturer &capturer) = 0;

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".*"))); }

    void resultFollowsTheCallExactlyOnce()
    {
        const auto capturer = makeCapturer();
        QCOMPARE(capturer->captureAccess(), int(platform::IScreenCapturer::Granted));
        QSignalSpy spy(capturer.get(), &platform::IScreenCapturer::captured);
        capturer->capture({});
        QCOMPARE(spy.count(), 0);
        QTRY_COMPARE(spy.count(), 1);
        capturer->capture({});
        capturer->capture({});
        QCOMPARE(spy.count(), 1);
        QTRY_COMPARE(spy.count(), 3);
        // A further result would have been queued before this one.
        capturer->capture({});
        QTRY_COMPARE(spy.count(), 4);
    }

    void everyDisplayIsThereInOrder()
    {
        const auto capturer = makeCapturer();
        const auto result = captureWith(*capturer);
        QVERIFY2(result.isGood(), qPrintable(result.error));
        QVERIFY(result.elapsedMs >= 0);
        const auto screens = QGuiApplication::screens();
        QCOMPARE(result.displays.size(), screens.size());
        for (qsizetype i = 0; i < screens.size(); ++i) {
            const auto &display = result.displays[i];
            QCOMPARE(display.id, quint32(i + 1));
            QCOMPARE(display.name, screens[i]->name());
            QCOMPARE(display.geometry, screens[i]->geometry());
            QCOMPARE(display.devicePixelRatio, screens[i]->devicePixelRatio());
            QCOMPARE(display.primary, screens[i] == QGuiApplication::primaryScreen());
            QCOMPARE(display.image.format(), QImage::Format_ARGB32_Premultiplied);
            QCOMPARE(display.image.devicePixelRatio(), display.devicePixelRatio);
            // The logical size of a display is a rounded one.
            const QSizeF pixels = QSizeF(display.geometry.size()) * display.devicePixelRatio;
            QVERIFY(std::abs(display.image.width() - pixels.width()) <= display.devicePixelRatio);
            QVERIFY(std::abs(display.image.height() - pixels.height()) <= display.devicePixelRatio);
            QVERIFY(isOpaque(display.image));
        }
    }

    void picturesDoNotChangeAfterwards()
    {
        const auto capturer = makeCapturer();
        const QImage first = captureWith(*capturer).displays.value(0).image;
        const QImage kept = first.copy();
        changePicture(*capturer);
        const QImage second = captureWith(*capturer).displays.value(0).image;
        QVERIFY(first != second);
        QCOMPARE(first, kept);
    }

    void capturerMayGoBeforeItsResult()
    {
        auto capturer = makeCapturer();
        QSignalSpy spy(capturer.get(), &platform::IScreenCapturer::captured);
        capturer->capture({});
        capturer.reset();
        const auto other = makeCapturer();
        captureWith(*other);
        QCOMPARE(spy.count(), 0);
    }

protected:
    static bool isOpaque(const QImage &image)
    {
        for (int y = 0; y < image.height(); ++y) {
            const auto *row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
            if (!std::all_of(row, row + image.width(), [](QRgb pixel) { return qAlpha(pixel) == 255; }))
                return false;
        }
        return true;
    }
};

} // namespace tavrel::test
