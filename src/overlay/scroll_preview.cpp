#include "overlay/scroll_preview.h"

#include "overlay/scroll_page.h"
#include "overlay/scroll_rows.h"

#include <algorithm>
#include <array>

namespace tavrel::ui {

namespace {

int floorDivided(int value, int by)
{
    return value >= 0 ? value / by : -((-value + by - 1) / by);
}

} // namespace

int ScrollPreview::firstRow(const ScrollPage &page) const
{
    return floorDivided(page.top(), m_cell);
}

int ScrollPreview::endRow(const ScrollPage &page) const
{
    return floorDivided(page.end() - 1, m_cell) + 1;
}

void ScrollPreview::readRow(const ScrollPage &page, int cellRow)
{
    std::fill(m_sums.begin(), m_sums.end(), 0U);
    std::uint32_t rows = 0;
    for (int y = cellRow * m_cell; y < (cellRow + 1) * m_cell; ++y) {
        if (const quint32 *pixels = page.row(y)) {
            scroll_rows::addCells(pixels, page.width(), m_cell, m_sums.data());
            ++rows;
        }
    }
    quint32 *out = m_pixels.data() + static_cast<std::ptrdiff_t>(cellRow - m_first) * m_width;
    if (rows == 0) {
        if (cellRow > m_first)
            std::copy_n(out - m_width, m_width, out); // as the result fills its holes
        return;
    }
    for (int x = 0; x < m_width; ++x) {
        const int columns = std::min(m_cell, page.width() - x * m_cell);
        const std::uint32_t count = rows * static_cast<std::uint32_t>(columns);
        const std::uint32_t *sums = m_sums.data() + static_cast<std::ptrdiff_t>(x) * 3;
        const auto mean = [&](std::uint32_t sum) { return (sum + count / 2) / count; };
        out[x] = 0xff000000U | mean(sums[0]) << 16 | mean(sums[1]) << 8 | mean(sums[2]);
    }
}

void ScrollPreview::start(const ScrollPage &page, int cell)
{
    m_cell = cell;
    m_width = (page.width() + cell - 1) / cell;
    m_sums.resize(static_cast<std::size_t>(m_width) * 3);
    m_first = firstRow(page);
    m_rows = 0;
}

/// Two by two become one. Reading the page again would take as long as the page is high.
void ScrollPreview::halve()
{
    const int first = floorDivided(m_first, 2);
    const int rows = floorDivided(m_first + m_rows - 1, 2) + 1 - first;
    const int width = (m_width + 1) / 2;
    std::vector<quint32> halved(static_cast<std::size_t>(width) * static_cast<std::size_t>(rows));
    for (int y = 0; y < rows; ++y) {
        const std::ptrdiff_t upper = std::clamp((first + y) * 2 - m_first, 0, m_rows - 1);
        const std::ptrdiff_t lower = std::clamp((first + y) * 2 + 1 - m_first, 0, m_rows - 1);
        for (int x = 0; x < width; ++x) {
            const std::ptrdiff_t left = 2 * x;
            const std::ptrdiff_t right = std::min(2 * x + 1, m_width - 1);
            std::array<quint32, 3> sums{2, 2, 2};
            for (const std::ptrdiff_t at :
                 {upper * m_width + left, upper * m_width + right, lower * m_width + left, lower * m_width + right}) {
                const quint32 pixel = m_pixels[static_cast<std::size_t>(at)];
                sums[0] += (pixel >> 16) & 0xffU;
                sums[1] += (pixel >> 8) & 0xffU;
                sums[2] += pixel & 0xffU;
            }
            halved[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)] =
                0xff000000U | (sums[0] / 4) << 16 | (sums[1] / 4) << 8 | (sums[2] / 4);
        }
    }
    m_pixels = std::move(halved);
    m_cell *= 2;
    m_width = width;
    m_first = first;
    m_rows = rows;
}

/// Moves the stored rows so that they are those of the page.
void ScrollPreview::stretch(int first, int end)
{
    const std::ptrdiff_t width = m_width;
    if (first < m_first)
        m_pixels.insert(m_pixels.begin(), static_cast<std::size_t>((m_first - first) * width), 0xff000000U);
    else
        m_pixels.erase(m_pixels.begin(), m_pixels.begin() + std::min(first - m_first, m_rows) * width);
    m_first = first;
    m_rows = end - first;
    m_pixels.resize(static_cast<std::size_t>(m_rows * width), 0xff000000U);
}

void ScrollPreview::update(ScrollPage &page)
{
    const auto changes = page.takeChanges();
    if (!changes || page.height() == 0)
        return;
    if (m_cell == 0)
        start(page, std::max(1, page.width() / m_space.width()));
    while (m_rows > 0 && page.height() / m_cell > 2 * m_space.height())
        halve();
    const int first = firstRow(page);
    const int end = endRow(page);
    stretch(first, end);
    const int firstChanged = std::max(first, floorDivided(changes->first, m_cell));
    const int endChanged = std::min(end, floorDivided(changes->end - 1, m_cell) + 1);
    for (int row = firstChanged; row < endChanged; ++row)
        readRow(page, row);
}

QImage ScrollPreview::image() const
{
    if (m_rows == 0)
        return {};
    return QImage(reinterpret_cast<const uchar *>(m_pixels.data()), m_width, m_rows, qsizetype{m_width} * 4,
                  QImage::Format_RGB32)
        .copy();
}

} // namespace tavrel::ui
