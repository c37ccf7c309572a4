#include "overlay/scroll_stitcher.h"

#include "annotate/crop_rect.h"
#include "overlay/scroll_page.h"
#include "overlay/scroll_tracker.h"

#include <algorithm>

namespace tavrel::ui {

namespace {

/// The picture with 32 bits a pixel, BGRA in memory; captures are that already.
QImage readable(const QImage &image)
{
    switch (image.format()) {
    case QImage::Format_ARGB32_Premultiplied:
    case QImage::Format_ARGB32:
    case QImage::Format_RGB32:
        return image;
    default:
        return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    }
}

const quint32 *pixelsAt(const QImage &image, int x, int y)
{
    return reinterpret_cast<const quint32 *>(image.constScanLine(y)) + x;
}

} // namespace

ScrollStitcher::ScrollStitcher() = default;
ScrollStitcher::~ScrollStitcher() = default;

void ScrollStitcher::reset()
{
    m_tracker.reset();
    m_page.reset();
    m_frameSize = {};
    m_crop = {};
    m_ratio = 1.0;
    m_frames = 0;
    m_filledRows = 0;
    m_full = false;
}

bool ScrollStitcher::begin(const QImage &image, const QRectF &selection)
{
    reset();
    const QImage pixels = image.isNull() || selection.isEmpty() ? QImage() : readable(image);
    if (pixels.isNull())
        return false;
    const double ratio = image.devicePixelRatio() > 0 ? image.devicePixelRatio() : 1.0;
    const QRect crop = cropRect(selection, ratio, image.size());
    if (crop.width() < kMinWidth || crop.height() < kMinHeight)
        return false;
    m_frameSize = image.size();
    m_crop = crop;
    m_ratio = ratio;
    m_frames = 1;
    const qint64 rowBytes = qint64{crop.width()} * 4;
    m_tracker = std::make_unique<ScrollTracker>(static_cast<int>(std::min<qint64>(kMaxRows, kMaxBytes / rowBytes)));
    m_tracker->frame().read(pixels, crop);
    m_tracker->begin();
    m_page = std::make_unique<ScrollPage>(crop.width());
    m_page->write(0, pixelsAt(pixels, crop.x(), crop.y()), pixels.bytesPerLine() / 4, crop.height());
    return true;
}

StitchDecision ScrollStitcher::addFrame(const QImage &image)
{
    if (!isActive() || image.size() != m_frameSize)
        return {};
    const QImage pixels = readable(image);
    if (pixels.isNull())
        return {};
    ++m_frames;
    m_tracker->frame().read(pixels, m_crop);
    const StitchDecision decision = m_tracker->place();
    m_page->cutTo(m_tracker->keptFirst(), m_tracker->keptEnd());
    m_full = m_full || decision.outcome == StitchOutcome::Full;
    if (decision.outcome != StitchOutcome::Accepted)
        return decision;
    for (const ScrollRun &run : m_tracker->runs()) {
        m_page->write(run.pageRow, pixelsAt(pixels, m_crop.x(), m_crop.y() + run.frameRow), pixels.bytesPerLine() / 4,
                      run.rows, decision.subPixel);
    }
    m_page->cutTo(m_tracker->canvas().top(), m_tracker->canvas().end());
    return decision;
}

QImage ScrollStitcher::result()
{
    if (!isActive())
        return {};
    QImage image = m_page->compose(false, &m_filledRows);
    image.setDevicePixelRatio(m_ratio);
    return image;
}

QImage ScrollStitcher::takeResult()
{
    if (!isActive())
        return {};
    int filled = 0;
    const double ratio = m_ratio;
    const int frames = m_frames;
    m_tracker.reset();
    QImage image = m_page->compose(true, &filled);
    image.setDevicePixelRatio(ratio);
    reset();
    m_frames = frames;
    m_filledRows = filled;
    return image;
}

int ScrollStitcher::height() const noexcept
{
    return m_page ? m_page->height() : 0;
}

} // namespace tavrel::ui
