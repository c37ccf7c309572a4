#pragma once

#include "platform/screen_capturer.h"

#include <QGuiApplication>
#include <QMap>
#include <QRegularExpression>
#include <QScreen>
#include <QTest>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>

namespace tavrel::test {

/// The next result of a capturer.
inline platform::CaptureResult captureWith(platform::IScreenCapturer &capturer,
                                           const platform::CaptureOptions &options = {})
{
    std::optional<platform::CaptureResult> result;
    QObject context;
    capturer.capture(options, &context, [&result](const platform::CaptureResult &taken) { result = taken; });
    (void)QTest::qWaitFor([&result] { return result.has_value(); });
    return result.value_or(platform::CaptureResult{});
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
        QMap<int, int> answers; // how often each was answered
        const auto ask = [&](int number) {
            capturer->capture({}, this, [&answers, number](const platform::CaptureResult &) { ++answers[number]; });
        };
        ask(1);
        QVERIFY(answers.isEmpty());
        QTRY_COMPARE(answers, (QMap<int, int>{{1, 1}}));
        ask(2);
        ask(3);
        QCOMPARE(answers.size(), 1);
        QTRY_COMPARE(answers.size(), 3);
        // A further answer would have been queued before this one.
        ask(4);
        QTRY_COMPARE(answers.size(), 4);
        QCOMPARE(answers, (QMap<int, int>{{1, 1}, {2, 1}, {3, 1}, {4, 1}}));
    }

    /// Whoever has gone is not answered, and those who have not are, also when they ask anew or end in an answer.
    void answersReachOnlyTheLiving()
    {
        const auto capturer = makeCapturer();
        QStringList answers;
        const auto ask = [&](
                             QObject *context, const QString &name, const std::function<void()> &also = [] {}) {
            capturer->capture({}, context, [&answers, name, also](const platform::CaptureResult &) {
                answers.append(name);
                also();
            });
        };
        auto gone = std::make_unique<QObject>();
        auto leaving = std::make_unique<QObject>();
        ask(gone.get(), QStringLiteral("gone"));
        ask(leaving.get(), QStringLiteral("leaving"), [&] { leaving.reset(); });
        ask(leaving.get(), QStringLiteral("left"));
        ask(this, QStringLiteral("here"), [&] { ask(this, QStringLiteral("again")); });
        gone.reset();
        QTRY_COMPARE(answers,
                     QStringList({QStringLiteral("leaving"), QStringLiteral("here"), QStringLiteral("again")}));
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
        bool answered = false;
        capturer->capture({}, this, [&answered](const platform::CaptureResult &) { answered = true; });
        capturer.reset();
        const auto other = makeCapturer();
        captureWith(*other);
        QVERIFY(!answered);
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
