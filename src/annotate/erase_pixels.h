#pragma once

#include <QImage>
#include <QRect>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Pixels as the parts of smart erase pass them on: plain buffers, rows from top to bottom, no padding. Nothing here
/// knows a painter or a thread that it does not own; every function may run on any thread.
namespace tavrel::erase {

struct Rgb
{
    int r = 0;
    int g = 0;
    int b = 0;
    friend bool operator==(const Rgb &, const Rgb &) = default;
};

/// The largest of the three channel differences.
[[nodiscard]] int distance(const Rgb &a, const Rgb &b);

/// 3 bytes R, G, B a pixel.
struct PixelBuffer
{
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bytes;

    PixelBuffer() = default;
    PixelBuffer(int w, int h);
    [[nodiscard]] bool isEmpty() const { return width < 1 || height < 1; }
    [[nodiscard]] QRect rect() const { return {0, 0, width, height}; }
    [[nodiscard]] std::size_t index(int x, int y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    }
    [[nodiscard]] Rgb at(int x, int y) const
    {
        const std::uint8_t *p = bytes.data() + 3 * index(x, y);
        return {p[0], p[1], p[2]};
    }
    void set(int x, int y, const Rgb &color);
};

/// One byte a pixel: 0 off, 255 on; every value but 0 counts as on.
struct Mask
{
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bytes;

    Mask() = default;
    Mask(int w, int h, std::uint8_t value = 0);
    [[nodiscard]] bool isEmpty() const { return width < 1 || height < 1; }
    [[nodiscard]] QRect rect() const { return {0, 0, width, height}; }
    [[nodiscard]] std::size_t index(int x, int y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    }
    [[nodiscard]] bool has(int x, int y) const { return bytes[index(x, y)] != 0; }
    /// Switches on what of `area` lies in the mask.
    void fill(const QRect &area);
    /// Switches off everything outside `area`.
    void keepOnly(const QRect &area);
    [[nodiscard]] int count() const;
    /// The box of all pixels that are on; null without any.
    [[nodiscard]] QRect bounds() const;
};

/// 3 floats a pixel.
struct FloatImage
{
    int width = 0;
    int height = 0;
    std::vector<float> values;

    FloatImage() = default;
    FloatImage(int w, int h);
    [[nodiscard]] float *row(int y) { return values.data() + 3 * offset(y); }
    [[nodiscard]] const float *row(int y) const { return values.data() + 3 * offset(y); }

private:
    [[nodiscard]] std::size_t offset(int y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }
};

/// Tells a solver that nobody waits for it any more. It then returns within some milliseconds and what it has written
/// is of no use.
class CancelFlag final
{
public:
    void cancel() noexcept { m_isSet.store(true, std::memory_order_relaxed); }
    [[nodiscard]] bool isSet() const noexcept { return m_isSet.load(std::memory_order_relaxed); }
    /// One that is never set.
    [[nodiscard]] static const CancelFlag &never();

private:
    std::atomic<bool> m_isSet{false};
};

/// How far the parts of the solver reach around a box.
struct RegionSizes
{
    int margin = 0;
    int ringWidth = 0;
    int growReach = 0;
    int windowPad = 0;
};
[[nodiscard]] RegionSizes regionSizes(const QSize &box);

/// image  RGB32; area must lie in it
[[nodiscard]] PixelBuffer pixelsOf(const QImage &image, const QRect &area);
/// RGB32.
[[nodiscard]] QImage toImage(const PixelBuffer &buffer);
[[nodiscard]] QImage toImage(const Mask &mask);

/// Grows a mask by a square of 2 radius + 1 pixels; a radius below 1 changes nothing.
void dilate(Mask &mask, int radius);

/// Bilinear sample of the coarser image for a pixel of one twice as large, clamped at the edges.
[[nodiscard]] std::array<float, 3> sampleHalf(const FloatImage &coarse, int x, int y);

} // namespace tavrel::erase
