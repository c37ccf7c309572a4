#include "annotate/effect_image_cache.h"

#include "base/parallel.h"

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
constexpr int kLeastBand = 96; ///< rows of one job

/// Divides sums of up to 255.5 times an odd width below 256, rounded down, in 16 bits: a product with the inverse
/// rounded up or down, whichever is nearer. Rounded down, the sum has to be one larger.
class ShortMean final
{
public:
    using Sum = quint16;
    explicit constexpr ShortMean(int width)
    {
        while ((2 << m_shift) <= width)
            ++m_shift;
        const quint32 whole = 1U << (16 + m_shift);
        const auto count = static_cast<quint32>(width);
        const quint32 rest = whole % count;
        m_plus = rest < count - rest ? 1 : 0;
        m_factor = static_cast<quint16>(whole / count + (1 - m_plus));
    }
    [[nodiscard]] constexpr uchar operator()(quint16 sum) const
    {
        const auto high =
            static_cast<quint16>((static_cast<quint32>(static_cast<quint16>(sum + m_plus)) * m_factor) >> 16);
        return static_cast<uchar>(high >> m_shift);
    }

private:
    quint16 m_factor = 0;
    quint16 m_plus = 0;
    int m_shift = 0;
};

constexpr bool isShortMeanExact()
{
    for (int width = 3; width < 256; width += 2) {
        const ShortMean mean(width);
        for (int value = 0; value < 256; ++value) {
            const int last = value < 255 ? width - 1 : width / 2;
            if (mean(static_cast<quint16>(value * width)) != value ||
                mean(static_cast<quint16>(value * width + last)) != value)
                return false;
        }
    }
    return true;
}
static_assert(isShortMeanExact());

/// The same for any width: the sum plus a half goes through a float. Its quotient is at least 0.5 / width away from
/// every whole number, which up to a width of 8193 is 6.1e-5, and its error below 3.1e-5.
class LongMean final
{
public:
    using Sum = quint32;
    explicit LongMean(int width) : m_inverse(1.0F / static_cast<float>(width)) {}
    [[nodiscard]] uchar operator()(quint32 sum) const
    {
        return static_cast<uchar>(static_cast<int>((static_cast<float>(static_cast<int>(sum)) + 0.5F) * m_inverse));
    }

private:
    float m_inverse;
};
static_assert(2 * kLargestStrength + 1 <= 8193);

/// Pixels of one picture, for several threads.
struct Lines
{
    explicit Lines(QImage &image)
        : bits(image.bits()),
          stride(image.bytesPerLine()),
          width(image.width()),
          height(image.height())
    {}
    [[nodiscard]] uchar *at(int y) const { return bits + std::clamp(y, 0, height - 1) * stride; }

    uchar *bits;
    qsizetype stride;
    int width;
    int height;
};

/// The means along some lines, side by side so that they are sums of vectors.
class AlongLines final
{
public:
    static constexpr int kLines = 8;

    explicit AlongLines(int length) : m_length(length), m_woven(static_cast<std::size_t>(length) * kLanes) {}

    /// count  of lines, 1 to 8
    template <typename Mean>
    void blur(const Lines &from, int first, const Lines &to, int top, int count, int radius, Mean mean)
    {
        for (int line = 0; line < kLines; ++line) {
            const uchar *pixels = from.at(std::min(first + line, first + count - 1));
            uchar *place = m_woven.data() + 4 * line;
            for (int x = 0; x < m_length; ++x, place += kLanes)
                std::memcpy(place, pixels + 4 * x, 4);
        }
        uchar *out[kLines]; // too few lines: the last one several times
        for (int line = 0; line < kLines; ++line)
            out[line] = to.at(top + std::min(line, count - 1));
        using Sum = typename Mean::Sum;
        Sum sums[kLanes];
        std::fill(sums, sums + kLanes, static_cast<Sum>(radius));
        const auto add = [&sums](const uchar *lanes, int times) {
            for (int i = 0; i < kLanes; ++i)
                sums[i] = static_cast<Sum>(sums[i] + lanes[i] * times);
        };
        add(at(0), radius);
        for (int x = 0; x <= std::min(radius, m_length - 1); ++x)
            add(at(x), 1);
        add(at(m_length), std::max(0, radius - (m_length - 1)));
        for (int x = 0; x < m_length; ++x) {
            const uchar *next = at(x + radius + 1);
            const uchar *last = at(x - radius);
            uchar means[kLanes];
            for (int i = 0; i < kLanes; ++i) {
                means[i] = mean(sums[i]);
                sums[i] = static_cast<Sum>(sums[i] + next[i] - last[i]);
            }
            for (int line = 0; line < kLines; ++line)
                std::memcpy(out[line] + 4 * x, means + 4 * line, 4);
        }
    }

private:
    static constexpr int kLanes = 4 * kLines;

    [[nodiscard]] const uchar *at(int x) const
    {
        return m_woven.data() + static_cast<std::size_t>(std::clamp(x, 0, m_length - 1)) * kLanes;
    }

    int m_length;
    std::vector<uchar> m_woven;
};

/// The means across lines top to bottom - 1, row by row as memory lies; with `along`, those along each line on top of
/// them while it is at hand.
template <typename Mean>
void blurBand(const Lines &from, const Lines &to, int top, int bottom, int radius, bool along, Mean mean)
{
    using Sum = typename Mean::Sum;
    const int bytes = 4 * from.width;
    std::vector<Sum> sums(static_cast<std::size_t>(bytes), static_cast<Sum>(radius));
    Sum *sum = sums.data();
    const auto add = [&](const uchar *line, int times) {
        for (int i = 0; i < bytes; ++i)
            sum[i] = static_cast<Sum>(sum[i] + line[i] * times);
    };
    // Rows beyond the picture repeat its first and last.
    add(from.at(0), std::max(0, radius - top));
    for (int y = std::max(0, top - radius); y <= std::min(from.height - 1, top + radius); ++y)
        add(from.at(y), 1);
    add(from.at(from.height), std::max(0, top + radius - (from.height - 1)));

    QImage across(along ? from.width : 1, AlongLines::kLines, QImage::Format_ARGB32_Premultiplied);
    const Lines rows(across);
    AlongLines lines(from.width);
    for (int y = top; y < bottom; ++y) {
        const int row = (y - top) % AlongLines::kLines;
        uchar *out = along ? rows.at(row) : to.at(y);
        const uchar *next = from.at(y + radius + 1);
        const uchar *last = from.at(y - radius);
        for (int i = 0; i < bytes; ++i) {
            out[i] = mean(sum[i]);
            sum[i] = static_cast<Sum>(sum[i] + next[i] - last[i]);
        }
        if (along && (row == AlongLines::kLines - 1 || y == bottom - 1))
            lines.blur(rows, 0, to, y - row, row + 1, radius, mean);
    }
}

template <typename Mean>
void blur(QImage &now, QImage &other, int radius, Mean mean)
{
    const Lines a(now);
    const Lines b(other);
    const int height = a.height;
    // A band begins with the sum of the rows around its first one, so that wide blurs want few bands.
    const int band = std::clamp(4 * radius, kLeastBand, std::max(kLeastBand, (height + 3) / 4));
    const auto inBands = [&](auto job) {
        inParallel((height + band - 1) / band, [&](int i) { job(i * band, std::min(height, (i + 1) * band)); });
    };
    inBands([&](int top, int bottom) {
        AlongLines lines(a.width);
        for (int y = top; y < bottom; y += AlongLines::kLines)
            lines.blur(a, y, b, y, std::min(AlongLines::kLines, bottom - y), radius, mean);
    });
    inBands([&](int top, int bottom) { blurBand(b, a, top, bottom, radius, true, mean); });
    inBands([&](int top, int bottom) { blurBand(a, b, top, bottom, radius, true, mean); });
    inBands([&](int top, int bottom) { blurBand(b, a, top, bottom, radius, false, mean); });
}

} // namespace

QImage boxBlur(const QImage &image, int radius)
{
    QImage now = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (radius < 1 || now.isNull())
        return now;
    radius = std::min(radius, kLargestStrength);
    QImage other(now.size(), now.format());
    const int width = 2 * radius + 1;
    if (width < 256)
        blur(now, other, radius, ShortMean(width));
    else
        blur(now, other, radius, LongMean(width));
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
    inParallel((height + block - 1) / block, [&](int job) {
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
