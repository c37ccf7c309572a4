#include "overlay/scroll_page.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace tavrel::ui {

namespace {

int blockOf(int y, int blockRows)
{
    return y >= 0 ? y / blockRows : -((-y + blockRows - 1) / blockRows);
}

/// One row between four, by the Catmull-Rom weights of the fraction `t`; alpha is the second row's.
void blendRow(const std::array<const quint32 *, 4> &rows, float t, int width, quint32 *out)
{
    const std::array<float, 4> weights{((1.0F - t / 2.0F) * t - 0.5F) * t, (1.5F * t - 2.5F) * t * t + 1.0F,
                                       ((2.0F - 1.5F * t) * t + 0.5F) * t, (t / 2.0F - 0.5F) * t * t};
    for (int x = 0; x < width; ++x) {
        quint32 pixel = rows[1][x] & 0xff000000U;
        for (unsigned shift = 0; shift < 24; shift += 8) {
            float sum = 0.5F;
            for (std::size_t i = 0; i < rows.size(); ++i)
                sum += weights[i] * static_cast<float>((rows[i][x] >> shift) & 0xffU);
            pixel |= static_cast<quint32>(std::clamp(sum, 0.0F, 255.0F)) << shift;
        }
        out[x] = pixel;
    }
}

} // namespace

ScrollPage::Block &ScrollPage::ensureBlock(int index)
{
    if (m_blocks.empty())
        m_firstBlock = index;
    if (index < m_firstBlock) {
        std::vector<Block> blocks(static_cast<std::size_t>(m_firstBlock - index));
        std::move(m_blocks.begin(), m_blocks.end(), std::back_inserter(blocks));
        m_blocks = std::move(blocks);
        m_firstBlock = index;
    }
    const auto at = static_cast<std::size_t>(index - m_firstBlock);
    if (at >= m_blocks.size())
        m_blocks.resize(at + 1);
    Block &block = m_blocks[at];
    if (!block.pixels) {
        block.pixels = std::make_unique_for_overwrite<quint32[]>(static_cast<std::size_t>(m_width) * kBlockRows);
        block.written.assign(kBlockRows, 0);
    }
    return block;
}

void ScrollPage::noteChange(int first, int end)
{
    if (m_changes)
        m_changes = Range{std::min(m_changes->first, first), std::max(m_changes->end, end)};
    else
        m_changes = Range{first, end};
}

void ScrollPage::write(int y, const quint32 *pixels, qsizetype stride, int rows, float subPixel)
{
    if (rows <= 0)
        return;
    const auto source = [&](int row) { return pixels + std::clamp(row, 0, rows - 1) * stride; };
    const float whole = std::floor(subPixel);
    for (int i = 0; i < rows; ++i) {
        const int index = blockOf(y + i, kBlockRows);
        Block &block = ensureBlock(index);
        const int within = y + i - index * kBlockRows;
        quint32 *out = block.pixels.get() + static_cast<std::ptrdiff_t>(within) * m_width;
        block.written[static_cast<std::size_t>(within)] = 1;
        if (std::abs(subPixel) < kWholeRows) {
            std::copy_n(source(i), m_width, out);
            continue;
        }
        const int at = i + static_cast<int>(whole);
        blendRow({source(at - 1), source(at), source(at + 1), source(at + 2)}, subPixel - whole, m_width, out);
    }
    m_rows = height() == 0 ? Range{y, y + rows} : Range{std::min(m_rows.first, y), std::max(m_rows.end, y + rows)};
    noteChange(y, y + rows);
}

void ScrollPage::cutTo(int first, int end)
{
    if (first > m_rows.first)
        noteChange(m_rows.first, first);
    if (end < m_rows.end)
        noteChange(end, m_rows.end);
    for (std::size_t i = 0; i < m_blocks.size(); ++i) {
        const int base = (m_firstBlock + static_cast<int>(i)) * kBlockRows;
        Block &block = m_blocks[i];
        if (base + kBlockRows <= first || base >= end)
            block = Block();
        for (int row = 0; row < static_cast<int>(block.written.size()); ++row) {
            if (base + row < first || base + row >= end)
                block.written[static_cast<std::size_t>(row)] = 0;
        }
    }
    m_rows = {std::max(m_rows.first, first), std::min(m_rows.end, end)};
    if (m_rows.first >= m_rows.end)
        m_rows = {};
}

const quint32 *ScrollPage::row(int y) const
{
    const int index = blockOf(y, kBlockRows);
    const int at = index - m_firstBlock;
    if (at < 0 || at >= static_cast<int>(m_blocks.size()))
        return nullptr;
    const Block &block = m_blocks[static_cast<std::size_t>(at)];
    const int within = y - index * kBlockRows;
    if (!block.pixels || block.written[static_cast<std::size_t>(within)] == 0)
        return nullptr;
    return block.pixels.get() + static_cast<std::ptrdiff_t>(within) * m_width;
}

std::optional<ScrollPage::Range> ScrollPage::takeChanges()
{
    return std::exchange(m_changes, std::nullopt);
}

QImage ScrollPage::compose(bool release, int *filled)
{
    *filled = 0;
    if (height() == 0)
        return {};
    QImage image(m_width, height(), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return {};
    const auto line = [&](int y) { return reinterpret_cast<quint32 *>(image.scanLine(y - m_rows.first)); };
    for (int y = m_rows.first; y < m_rows.end; ++y) {
        const quint32 *from = row(y);
        const bool hole = from == nullptr;
        if (hole)
            ++*filled;
        if (hole && y > m_rows.first)
            from = line(y - 1);
        else if (hole && height() > 1)
            from = row(y + 1);
        if (from != nullptr)
            std::copy_n(from, m_width, line(y));
        else
            std::fill_n(line(y), m_width, 0U);
        if (release && blockOf(y + 1, kBlockRows) != blockOf(y, kBlockRows))
            m_blocks[static_cast<std::size_t>(blockOf(y, kBlockRows) - m_firstBlock)] = Block();
    }
    if (release) {
        m_blocks.clear();
        m_rows = {};
    }
    return image;
}

} // namespace tavrel::ui
