#include "annotate/erase_pixels.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tavrel::erase {
namespace {

std::size_t area(int w, int h)
{
    return static_cast<std::size_t>(std::max(w, 0)) * static_cast<std::size_t>(std::max(h, 0));
}

/// One line of the dilation: a pixel is on when one within `radius` along the line is.
void dilateLine(const std::uint8_t *from, std::uint8_t *to, int length, std::ptrdiff_t stride, int radius)
{
    int lastOn = -radius - 1; // the nearest pixel that is on, not counting those further than needed
    int ahead = 0;
    for (int i = 0; i < length; ++i) {
        for (; ahead < length && ahead <= i + radius; ++ahead) {
            if (from[ahead * stride])
                lastOn = ahead;
        }
        to[i * stride] = lastOn >= i - radius ? 255 : 0;
    }
}

} // namespace

int distance(const Rgb &a, const Rgb &b)
{
    return std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)});
}

PixelBuffer::PixelBuffer(int w, int h) : width(std::max(w, 0)), height(std::max(h, 0)), bytes(3 * area(w, h)) {}

void PixelBuffer::set(int x, int y, const Rgb &color)
{
    std::uint8_t *p = bytes.data() + 3 * index(x, y);
    p[0] = static_cast<std::uint8_t>(color.r);
    p[1] = static_cast<std::uint8_t>(color.g);
    p[2] = static_cast<std::uint8_t>(color.b);
}

Mask::Mask(int w, int h, std::uint8_t value) : width(std::max(w, 0)), height(std::max(h, 0)), bytes(area(w, h), value)
{}

void Mask::fill(const QRect &wanted)
{
    const QRect part = wanted.intersected(rect());
    for (int y = part.top(); y <= part.bottom(); ++y)
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(index(part.left(), y)), part.width(),
                    std::uint8_t{255});
}

void Mask::keepOnly(const QRect &wanted)
{
    const QRect part = wanted.intersected(rect());
    for (int y = 0; y < height; ++y) {
        const auto row = bytes.begin() + static_cast<std::ptrdiff_t>(index(0, y));
        if (part.isEmpty() || y < part.top() || y > part.bottom()) {
            std::fill_n(row, width, std::uint8_t{0});
            continue;
        }
        std::fill(row, row + part.left(), std::uint8_t{0});
        std::fill(row + part.left() + part.width(), row + width, std::uint8_t{0});
    }
}

int Mask::count() const
{
    return static_cast<int>(std::count_if(bytes.begin(), bytes.end(), [](std::uint8_t on) { return on != 0; }));
}

QRect Mask::bounds() const
{
    int left = width;
    int right = -1;
    int top = height;
    int bottom = -1;
    for (int y = 0; y < height; ++y) {
        const std::uint8_t *row = bytes.data() + index(0, y);
        const std::uint8_t *end = row + width;
        const std::uint8_t *first = std::find_if(row, end, [](std::uint8_t on) { return on != 0; });
        if (first == end)
            continue;
        while (end[-1] == 0)
            --end;
        left = std::min(left, static_cast<int>(first - row));
        right = std::max(right, static_cast<int>(end - row) - 1);
        top = std::min(top, y);
        bottom = y;
    }
    return bottom < 0 ? QRect() : QRect(QPoint(left, top), QPoint(right, bottom));
}

FloatImage::FloatImage(int w, int h) : width(w), height(h), values(3 * area(w, h)) {}

const CancelFlag &CancelFlag::never()
{
    static const CancelFlag flag;
    return flag;
}

RegionSizes regionSizes(const QSize &box)
{
    const int side = std::min(box.width(), box.height());
    RegionSizes sizes;
    sizes.margin = std::clamp(static_cast<int>(std::lround(side * 0.12)), 3, 16);
    sizes.ringWidth = std::clamp(static_cast<int>(std::lround(side * 0.08)), 2, 8);
    sizes.growReach = sizes.margin + 32;
    sizes.windowPad = sizes.growReach + sizes.ringWidth + 2;
    return sizes;
}

PixelBuffer pixelsOf(const QImage &image, const QRect &area)
{
    PixelBuffer buffer(area.width(), area.height());
    for (int y = 0; y < buffer.height; ++y) {
        const auto *from = reinterpret_cast<const QRgb *>(image.constScanLine(area.y() + y)) + area.x();
        std::uint8_t *to = buffer.bytes.data() + 3 * buffer.index(0, y);
        for (int x = 0; x < buffer.width; ++x, to += 3) {
            to[0] = static_cast<std::uint8_t>(qRed(from[x]));
            to[1] = static_cast<std::uint8_t>(qGreen(from[x]));
            to[2] = static_cast<std::uint8_t>(qBlue(from[x]));
        }
    }
    return buffer;
}

QImage toImage(const PixelBuffer &buffer)
{
    QImage image(buffer.width, buffer.height, QImage::Format_RGB32);
    for (int y = 0; y < buffer.height; ++y) {
        auto *to = reinterpret_cast<QRgb *>(image.scanLine(y));
        const std::uint8_t *from = buffer.bytes.data() + 3 * buffer.index(0, y);
        for (int x = 0; x < buffer.width; ++x, from += 3)
            to[x] = qRgb(from[0], from[1], from[2]);
    }
    return image;
}

QImage toImage(const Mask &mask)
{
    QImage image(mask.width, mask.height, QImage::Format_Grayscale8);
    for (int y = 0; y < mask.height; ++y)
        std::copy_n(mask.bytes.data() + mask.index(0, y), mask.width, image.scanLine(y));
    return image;
}

void dilate(Mask &mask, int radius)
{
    if (radius < 1 || mask.isEmpty())
        return;
    Mask wide(mask.width, mask.height);
    for (int y = 0; y < mask.height; ++y)
        dilateLine(mask.bytes.data() + mask.index(0, y), wide.bytes.data() + mask.index(0, y), mask.width, 1, radius);
    for (int x = 0; x < mask.width; ++x)
        dilateLine(wide.bytes.data() + x, mask.bytes.data() + x, mask.height, mask.width, radius);
}

std::array<float, 3> sampleHalf(const FloatImage &coarse, int x, int y)
{
    const auto place = [](int at, int size) {
        const float exact = (static_cast<float>(at) + 0.5F) * 0.5F - 0.5F;
        return std::clamp(exact, 0.0F, static_cast<float>(size - 1));
    };
    const float sx = place(x, coarse.width);
    const float sy = place(y, coarse.height);
    const int x0 = static_cast<int>(sx);
    const int y0 = static_cast<int>(sy);
    const float fx = sx - static_cast<float>(x0);
    const float fy = sy - static_cast<float>(y0);
    const int x1 = std::min(x0 + 1, coarse.width - 1);
    const float *upper = coarse.row(y0);
    const float *lower = coarse.row(std::min(y0 + 1, coarse.height - 1));
    std::array<float, 3> sample{};
    for (int c = 0; c < 3; ++c) {
        const float top = upper[3 * x0 + c] * (1 - fx) + upper[3 * x1 + c] * fx;
        const float bottom = lower[3 * x0 + c] * (1 - fx) + lower[3 * x1 + c] * fx;
        sample[static_cast<std::size_t>(c)] = top * (1 - fy) + bottom * fy;
    }
    return sample;
}

} // namespace tavrel::erase
