#include "overlay/scroll_grey_frame.h"

#include "overlay/scroll_rows.h"

#include <algorithm>

namespace tavrel::ui {

void GreyFrame::read(const QImage &image, const QRect &crop)
{
    const int step = std::max(1, (crop.width() + kMaxWidth - 1) / kMaxWidth);
    m_width = (crop.width() + step - 1) / step;
    m_height = crop.height();
    const auto rows = static_cast<std::size_t>(m_height);
    m_grey.resize(rows * static_cast<std::size_t>(m_width));
    m_activity.assign(rows + 1, 0);
    m_signatures.resize(rows);
    m_sums.resize((rows + 1) * static_cast<std::size_t>(blocks()));
    m_weighed.resize(static_cast<std::size_t>(crop.width()));
    std::fill_n(m_sums.begin(), blocks(), 0);

    for (int y = 0; y < m_height; ++y) {
        const auto *pixels = reinterpret_cast<const quint32 *>(image.constScanLine(crop.y() + y)) + crop.x();
        scroll_rows::weigh(pixels, m_weighed.data(), crop.width());
        std::uint8_t *grey = m_grey.data() + static_cast<std::ptrdiff_t>(y) * m_width;
        scroll_rows::average(m_weighed.data(), crop.width(), step, grey);
        std::int32_t *sums = m_sums.data() + static_cast<std::ptrdiff_t>(y) * blocks();
        scroll_rows::addBlocks(grey, m_width, sums, sums + blocks());
        m_signatures[static_cast<std::size_t>(y)] = scroll_rows::signature(grey, m_width);
        if (y > 0)
            m_activity[static_cast<std::size_t>(y) + 1] = scroll_rows::difference(grey, grey - m_width, m_width);
    }
    if (m_height > 1)
        m_activity[1] = m_activity[2]; // the first row has none above it: as the second
    for (std::size_t y = 1; y <= rows; ++y)
        m_activity[y] += m_activity[y - 1];
}

} // namespace tavrel::ui
