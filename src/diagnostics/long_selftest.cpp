#include "diagnostics/long_selftest.h"

#include "annotate/crop_rect.h"
#include "overlay/scroll_page.h"
#include "overlay/scroll_preview.h"
#include "overlay/scroll_stitcher.h"
#include "platform/synthetic/synthetic_capturer.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>

namespace tavrel {
namespace {

constexpr int kFramesAtRest = 3; // at the page's end

const char *nameOf(ui::StitchOutcome outcome)
{
    switch (outcome) {
    case ui::StitchOutcome::Ignored:
        return "忽略";
    case ui::StitchOutcome::NoMatch:
        return "未匹配";
    case ui::StitchOutcome::Jumped:
        return "跳变";
    case ui::StitchOutcome::Accepted:
        return "接受";
    case ui::StitchOutcome::Full:
        return "已满";
    }
    return "";
}

/// A selection, the frames that follow, and what the page must have been: the rows of each frame at the place where the
/// capturer says that it was.
class LongSelftest
{
public:
    explicit LongSelftest(QString directory) : m_directory(std::move(directory)) {}

    int run()
    {
        capture();
        return QCoreApplication::exec();
    }

private:
    void capture()
    {
        m_capturer.capture({}, &m_capturer, [this](const platform::CaptureResult &result) { take(result); });
    }

    void take(const platform::CaptureResult &result)
    {
        if (!result.isGood()) {
            std::fprintf(stderr, "抓屏失败：%s\n", qPrintable(result.error));
            QCoreApplication::exit(1);
            return;
        }
        const platform::CapturedDisplay &display = result.displays.first();
        const int offset = static_cast<int>(m_capturer.scrollOffset() * display.devicePixelRatio);
        if (!m_stitcher.isActive()) {
            begin(display);
        } else {
            QElapsedTimer watch;
            watch.start();
            const ui::StitchDecision decision = m_stitcher.addFrame(display.image);
            m_slowest = std::max(m_slowest, watch.nsecsElapsed());
            std::printf("帧 %d：%s，位移 %d（真值 %d），新增 %d 行，截去 %d 行\n", m_stitcher.frameCount(),
                        nameOf(decision.outcome), decision.offset, offset, decision.rowsAdded, decision.rowsCut);
            m_atRest = offset == m_lastOffset ? m_atRest + 1 : 0;
        }
        m_lastOffset = offset;
        if (!m_stitcher.isActive()) {
            std::fprintf(stderr, "选区太小，无法开始\n");
            QCoreApplication::exit(1);
            return;
        }
        addTruth(display.image, offset);
        m_preview.update(*m_stitcher.page());
        if (m_atRest >= kFramesAtRest) {
            QCoreApplication::exit(judge());
            return;
        }
        m_capturer.setScrolling(true);
        capture();
    }

    void begin(const platform::CapturedDisplay &display)
    {
        const QSizeF size = display.geometry.size();
        const QRectF selection(size.width() / 8, size.height() / 8, size.width() * 3 / 4, size.height() * 3 / 4);
        m_crop = cropRect(selection, display.devicePixelRatio, display.image.size());
        m_stitcher.begin(display.image, selection);
    }

    void addTruth(const QImage &image, int offset)
    {
        if (m_truth.height() < offset + m_crop.height())
            m_truth =
                m_truth.isNull() ? image.copy(m_crop) : m_truth.copy(0, 0, m_crop.width(), offset + m_crop.height());
        for (int y = 0; y < m_crop.height(); ++y) {
            const auto *from = reinterpret_cast<const quint32 *>(image.constScanLine(m_crop.y() + y)) + m_crop.x();
            std::copy_n(from, m_crop.width(), reinterpret_cast<quint32 *>(m_truth.scanLine(offset + y)));
        }
    }

    int judge()
    {
        const QImage preview = m_preview.image();
        QElapsedTimer watch;
        watch.start();
        const QImage result = m_stitcher.takeResult();
        const qint64 finished = watch.nsecsElapsed();
        qint64 wrong = 0;
        for (int y = 0; y < std::min(result.height(), m_truth.height()); ++y) {
            const auto *is = reinterpret_cast<const quint32 *>(result.constScanLine(y));
            const auto *should = reinterpret_cast<const quint32 *>(m_truth.constScanLine(y));
            for (int x = 0; x < result.width(); ++x)
                wrong += is[x] == should[x] ? 0 : 1;
        }
        std::printf(
            "长截图完成：%d×%d 像素（%d 帧，填补 %d 行），真值 %d×%d，不同 %lld 点，最慢一帧 %.1f 毫秒，合成 %.1f "
            "毫秒\n",
            result.width(), result.height(), m_stitcher.frameCount(), m_stitcher.filledRows(), m_truth.width(),
            m_truth.height(), static_cast<long long>(wrong), static_cast<double>(m_slowest) / 1e6,
            static_cast<double>(finished) / 1e6);
        const QDir directory(m_directory);
        const bool written = directory.mkpath(QStringLiteral(".")) &&
                             result.save(directory.filePath(QStringLiteral("long.png"))) &&
                             m_truth.save(directory.filePath(QStringLiteral("long-truth.png"))) &&
                             preview.save(directory.filePath(QStringLiteral("long-preview.png")));
        if (!written)
            std::fprintf(stderr, "无法写入 %s\n", qPrintable(m_directory));
        const bool right = wrong == 0 && result.size() == m_truth.size() && m_stitcher.filledRows() == 0;
        std::printf("%s\n", right ? "通过" : "未通过");
        return right && written ? 0 : 1;
    }

    QString m_directory;
    platform::SyntheticCapturer m_capturer;
    ui::ScrollStitcher m_stitcher;
    ui::ScrollPreview m_preview{QSize(264, 600)};
    QRect m_crop;
    QImage m_truth;
    int m_lastOffset = 0;
    int m_atRest = 0;
    qint64 m_slowest = 0; ///< nanoseconds
};

} // namespace

int runLongSelftest(const QStringList &values)
{
    QStringList directories = values;
    directories.removeAll(QStringLiteral("--fake-capture"));
    if (directories.size() != 1) {
        std::fprintf(stderr, "用法: tavrel --long-selftest <dir> [--fake-capture]\n");
        return 2;
    }
    return LongSelftest(directories.first()).run();
}

} // namespace tavrel
