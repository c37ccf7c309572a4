#pragma once

#include "overlay/stitch_decision.h"

#include <QImage>
#include <QRectF>
#include <QSize>

#include <memory>

namespace tavrel::ui {

class ScrollPage;
class ScrollTracker;

/// Turns pictures of a screen on which a region scrolls into one tall picture.
///
/// The first picture and a selection start it, every further picture adds the rows that the page does not have yet, at
/// either end. Fixed headers and moving parts are left out; a picture that cannot be placed for certain adds nothing.
/// Knows nothing of windows or input, has no thread of its own and may live on any one thread.
///
/// Budgets on one core (bench_overlay_stitch): a frame of 2400 x 1300 device pixels 20 ms, of 1200 x 800 8 ms;
/// takeResult() of 40,000 rows 300 ms. Until then the page lies in memory once, and a tenth of it in grey.
class ScrollStitcher final
{
public:
    static constexpr int kMinWidth = 8;                    ///< device pixels
    static constexpr int kMinHeight = kLeastStitchRows;    ///< device pixels
    static constexpr int kMaxRows = 60'000;                ///< the page stops growing here,
    static constexpr qint64 kMaxBytes = qint64{512} << 20; ///< or here

    ScrollStitcher();
    ~ScrollStitcher();
    ScrollStitcher(const ScrollStitcher &) = delete;
    ScrollStitcher &operator=(const ScrollStitcher &) = delete;

    /// Starts anew on a picture, which counts as the first frame.
    ///
    /// image      any format; its device pixel ratio says how large it is
    /// selection  the region that scrolls, in logical pixels of the image
    /// returns    false, with nothing active, when the selection is too small
    bool begin(const QImage &image, const QRectF &selection);
    /// Takes a frame of the same size as the first.
    StitchDecision addFrame(const QImage &image);
    /// The page so far, Format_ARGB32_Premultiplied with the first image's device pixel ratio; null when not active.
    /// Rows that no frame brought repeat the row above and count as filledRows().
    [[nodiscard]] QImage result();
    /// As result(), and over: the rows are handed on piece by piece, so that the page hardly lies in memory twice.
    [[nodiscard]] QImage takeResult();
    void reset();

    [[nodiscard]] bool isActive() const noexcept { return m_page != nullptr; }
    /// A frame has been refused because of the limit.
    [[nodiscard]] bool isFull() const noexcept { return m_full; }
    [[nodiscard]] int frameCount() const noexcept { return m_frames; } ///< all frames since begin(), refused ones too
    [[nodiscard]] int filledRows() const noexcept { return m_filledRows; } ///< of the last result
    [[nodiscard]] int height() const noexcept;                             ///< of the page, device rows
    [[nodiscard]] QSize cropSize() const noexcept { return m_crop.size(); }
    [[nodiscard]] double ratio() const noexcept { return m_ratio; }
    /// The growing rows, for a preview; null when not active.
    [[nodiscard]] ScrollPage *page() noexcept { return m_page.get(); }

private:
    std::unique_ptr<ScrollTracker> m_tracker;
    std::unique_ptr<ScrollPage> m_page; ///< there while active
    QSize m_frameSize;
    QRect m_crop;
    double m_ratio = 1.0;
    int m_frames = 0;
    int m_filledRows = 0;
    bool m_full = false;
};

} // namespace tavrel::ui
