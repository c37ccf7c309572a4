#pragma once

#include <QImage>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QRectF>

#include <mutex>

namespace tavrel {

/// The mosaic and blurred versions of one picture, made when first asked for.
///
/// Every pixel depends on the whole picture and the strength alone, never on the region asked for: preview, saved file
/// and thumbnail agree. Pictures of up to 16 million pixels are covered at once, larger ones around what was asked for.
/// At most 6 results and 256 MB are kept, the latest first (one larger result is kept alone).
///
/// region() may be called from any thread; a second caller waits while a result is made. All of 3840x2160 may take 60
/// ms (bench_annotate_effects: 24 to 29 ms up to a radius of 127, 52 ms at 200, 30 ms for blocks of a pixel, on four
/// cores); a shape that moves over a result costs what it covers.
class EffectImageCache final
{
public:
    /// source  device pixels; its device pixel ratio says how many make a unit
    explicit EffectImageCache(QImage source);

    struct Region
    {
        QImage image;   ///< ARGB32_Premultiplied, ratio 1; null when nothing of the picture was asked for
        QPoint topLeft; ///< of `image` in source pixels
    };
    /// strength  pixels per block, or radius of the blur; 1 to 4096
    /// wanted    source pixels; the result covers at least its part inside the picture
    [[nodiscard]] Region region(bool blur, int strength, const QRect &wanted) const;
    [[nodiscard]] double pixelRatio() const { return m_ratio; }
    /// The picture in units, its corner at the origin.
    [[nodiscard]] QRectF extent() const { return {QPointF(), QSizeF(m_source.size()) / m_ratio}; }
    [[nodiscard]] bool isNull() const { return m_source.isNull(); }

private:
    struct Entry
    {
        bool blur = false;
        int strength = 0;
        QRect covered;
        QImage image;
    };
    [[nodiscard]] QImage make(bool blur, int strength, const QRect &covered) const;

    QImage m_source;
    double m_ratio = 1.0;
    mutable std::mutex m_mutex;
    mutable QList<Entry> m_entries;
};

/// Three rounds of a horizontal and a vertical running mean of 2 radius + 1 pixels, the edges repeated; near a
/// Gaussian. The result is ARGB32_Premultiplied; a radius below 1 changes nothing else.
[[nodiscard]] QImage boxBlur(const QImage &image, int radius);

/// The mean of every block of an ARGB32_Premultiplied picture; the last column and row of blocks may be smaller.
[[nodiscard]] QImage blockMeans(const QImage &image, int block);

} // namespace tavrel
