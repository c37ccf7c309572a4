#include "annotate/effect_image_cache.h"

#include "annotate/erase_workers.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace tavrel {
namespace {

constexpr qint64 kWholePixels = 16'000'000;
constexpr int kApron = 512;
constexpr qsizetype kMostEntries = 6;
constexpr qint64 kMostBytes = 256LL << 20;
constexpr int kLargestStrength = 4096;
constexpr int kStrip = 128; ///< columns or rows of one job

/// Division of sums of up to 255.5 times the width, rounded down, in ways that the compiler makes vectors of. Up to a
/// width of 255 a product in 32 bits is exact. Above it the sum plus a half goes through a float: its quotient is at
/// least 0.5 / width away from every whole number, which up to a width of 8193 is 6.1e-5, and its error below 3.1e-5.
class MeanOf final
{
public:
    explicit MeanOf(int count)
        : m_factor(((1U << 24) + static_cast<quint32>(count) - 1) / static_cast<quint32>(count)),
          m_inverse(1.0F / static_cast<float>(count)),
          m_isShort(count < 256)
    {}
    [[nodiscard]] bool isShort() const { return m_isShort; }
    [[nodiscard]] uchar ofShort(quint32 sum) const { return static_cast<uchar>((sum * m_factor) >> 24); }
    [[nodiscard]] uchar ofLong(quint32 sum) const
    {
        return static_cast<uchar>(static_cast<int>((static_cast<float>(static_cast<int>(sum)) + 0.5F) * m_inverse));
    }

private:
    quint32 m_factor;
    float m_inverse;
    bool m_isShort;
};
static_assert(2 * kLargestStrength + 1 <= 8193);

template <typename Divide>
void blurLine(const uchar *from, uchar *to, int length, int radius, Divide divide)
{
    quint32 sums[4];
    const auto width = static_cast<quint32>(2 * radius + 1);
    for (int c = 0; c < 4; ++c)
        sums[c] = width / 2 + static_cast<quint32>(radius + 1) * from[c];
    for (int i = 1; i <= radius; ++i) {
        for (int c = 0; c < 4; ++c)
            sums[c] += from[4 * std::min(i, length - 1) + c];
    }
    for (int i = 0; i < length; ++i) {
        const uchar *next = from + 4 * std::min(i + radius + 1, length - 1);
        const uchar *last = from + 4 * std::max(i - radius, 0);
        for (int c = 0; c < 4; ++c) {
            to[4 * i + c] = divide(sums[c]);
            sums[c] = sums[c] + next[c] - last[c];
        }
    }
}

template <typename Divide>
void blurColumns(const QImage &from, uchar *to, qsizetype stride, int left, int count, int radius, Divide divide)
{
    const int height = from.height();
    const int bytes = 4 * count;
    const auto row = [&](int y) { return from.constScanLine(std::clamp(y, 0, height - 1)) + 4 * left; };
    std::vector<quint32> sums(static_cast<std::size_t>(bytes), static_cast<quint32>(2 * radius + 1) / 2);
    quint32 *sum = sums.data();
    for (int y = -radius; y <= radius; ++y) {
        const uchar *line = row(y);
        for (int i = 0; i < bytes; ++i)
            sum[i] += line[i];
    }
    for (int y = 0; y < height; ++y) {
        uchar *out = to + y * stride + 4 * left;
        const uchar *next = row(y + radius + 1);
        const uchar *last = row(y - radius);
        for (int i = 0; i < bytes; ++i) {
            out[i] = divide(sum[i]);
            sum[i] = sum[i] + next[i] - last[i];
        }
    }
}

} // namespace

QImage boxBlur(const QImage &image, int radius)
{
    QImage now = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (radius < 1 || now.isNull())
        return now;
    radius = std::min(radius, kLargestStrength);
    QImage other(now.size(), now.format());
    other.setDevicePixelRatio(now.devicePixelRatio());
    const MeanOf mean(2 * radius + 1);
    const auto both = [&](auto blur) {
        if (mean.isShort())
            blur([mean](quint32 sum) { return mean.ofShort(sum); });
        else
            blur([mean](quint32 sum) { return mean.ofLong(sum); });
    };
    const int width = now.width();
    const int height = now.height();
    for (int round = 0; round < 3; ++round) {
        // A line of one pixel is its own mean, rounding included.
        uchar *to = other.bits();
        const qsizetype stride = other.bytesPerLine();
        erase::inParallel((height + kStrip - 1) / kStrip, [&](int job) {
            both([&](auto divide) {
                for (int y = job * kStrip; y < std::min(height, (job + 1) * kStrip); ++y)
                    blurLine(now.constScanLine(y), to + y * stride, width, radius, divide);
            });
        });
        uchar *back = now.bits();
        const qsizetype backStride = now.bytesPerLine();
        erase::inParallel((width + kStrip - 1) / kStrip, [&](int job) {
            const int left = job * kStrip;
            both([&](auto divide) {
                blurColumns(other, back, backStride, left, std::min(kStrip, width - left), radius, divide);
            });
        });
    }
    return now;
}

QImage blockMeans(const QImage &image, int block)
{
    QImage result(image.size(), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return {};
    const int width = image.width();
    const int height = image.height();
    block = std::clamp(block, 1, kLargestStrength);
    const int columns = (width + block - 1) / block;
    uchar *to = result.bits();
    const qsizetype stride = result.bytesPerLine();
    erase::inParallel((height + block - 1) / block, [&](int job) {
        const int top = job * block;
        const int bottom = std::min(height, top + block);
        std::vector<quint64> sums(4 * static_cast<std::size_t>(columns), 0);
        for (int y = top; y < bottom; ++y) {
            const uchar *line = image.constScanLine(y);
            for (int column = 0; column < columns; ++column) {
                quint32 sum[4] = {0, 0, 0, 0};
                const int right = std::min(width, (column + 1) * block);
                for (int x = column * block; x < right; ++x) {
                    for (int c = 0; c < 4; ++c)
                        sum[c] += line[4 * x + c];
                }
                for (std::size_t c = 0; c < 4; ++c)
                    sums[4 * static_cast<std::size_t>(column) + c] += sum[c];
            }
        }
        auto *first = reinterpret_cast<QRgb *>(to + top * stride);
        for (int column = 0; column < columns; ++column) {
            const int left = column * block;
            const int right = std::min(width, left + block);
            const quint64 count = static_cast<quint64>(right - left) * static_cast<quint64>(bottom - top);
            uchar mean[4];
            for (std::size_t c = 0; c < 4; ++c)
                mean[c] = static_cast<uchar>((sums[4 * static_cast<std::size_t>(column) + c] + count / 2) / count);
            QRgb pixel = 0;
            std::memcpy(&pixel, mean, sizeof pixel);
            std::fill(first + left, first + right, pixel);
        }
        for (int y = top + 1; y < bottom; ++y)
            std::memcpy(to + y * stride, first, static_cast<std::size_t>(width) * 4);
    });
    return result;
}

EffectImageCache::EffectImageCache(QImage source)
    : m_ratio(source.devicePixelRatio() > 0 ? source.devicePixelRatio() : 1.0)
{
    m_source = std::move(source).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    m_source.setDevicePixelRatio(1.0);
}

QImage EffectImageCache::make(bool blur, int strength, const QRect &covered) const
{
    if (!blur)
        return blockMeans(covered == m_source.rect() ? m_source : m_source.copy(covered), strength);
    // Farther pixels cannot reach into the covered ones.
    const int reach = 3 * strength + 2;
    const QRect from = covered.adjusted(-reach, -reach, reach, reach) & m_source.rect();
    const QImage blurred = boxBlur(from == m_source.rect() ? m_source : m_source.copy(from), strength);
    return from == covered ? blurred : blurred.copy(covered.translated(-from.topLeft()));
}

EffectImageCache::Region EffectImageCache::region(bool blur, int strength, const QRect &wanted) const
{
    const QRect all = m_source.rect();
    const QRect inside = wanted & all;
    if (inside.isEmpty())
        return {};
    strength = std::clamp(strength, 1, kLargestStrength);
    const std::lock_guard lock(m_mutex);
    for (qsizetype i = 0; i < m_entries.size(); ++i) {
        if (m_entries[i].blur == blur && m_entries[i].strength == strength && m_entries[i].covered.contains(inside)) {
            m_entries.move(i, 0);
            return {m_entries.first().image, m_entries.first().covered.topLeft()};
        }
    }
    QRect covered = all;
    if (static_cast<qint64>(all.width()) * all.height() > kWholePixels) {
        covered = inside.adjusted(-kApron, -kApron, kApron, kApron) & all;
        if (!blur) {
            // To the grid of blocks, which begins at the corner of the picture.
            const auto up = [strength](int end) { return (end + strength - 1) / strength * strength; };
            covered.setCoords(covered.left() / strength * strength, covered.top() / strength * strength,
                              up(covered.right() + 1) - 1, up(covered.bottom() + 1) - 1);
            covered &= all;
        }
    }
    m_entries.prepend({blur, strength, covered, make(blur, strength, covered)});
    qint64 bytes = 0;
    for (qsizetype i = 0; i < m_entries.size(); ++i) {
        bytes += m_entries[i].image.sizeInBytes();
        if (i > 0 && (i >= kMostEntries || bytes > kMostBytes)) {
            m_entries.resize(i);
            break;
        }
    }
    return {m_entries.first().image, covered.topLeft()};
}

} // namespace tavrel
