#include "overlay/edge_region_finder.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tavrel::ui {
namespace {

constexpr int kLongestSide = 900; ///< of the grid, in cells
constexpr int kSmallestCell = 2;
constexpr int kEdgeStep = 14; ///< of luminance; a larger one is an edge
constexpr int kOpenPercent = 55;
/// Cells. An edge shows in the cell that it runs through and, as the step over two cells, in both that follow; a box
/// that grows towards the origin therefore ends up to two cells before it.
constexpr int kReachBefore = 2;
constexpr int kGrowPasses = 10;
constexpr int kRounds = 40;
constexpr int kSmallestBox = 16; ///< device pixels
constexpr int kMostBoxes = 5;
constexpr double kTouch = 2; ///< logical units from the picture's border
constexpr double kClearlyLarger = 1.4;
constexpr double kLarger = 1.15;

inline int luma(QRgb pixel)
{
    return (299 * qRed(pixel) + 587 * qGreen(pixel) + 114 * qBlue(pixel)) / 1000;
}

const QRgb *rowOf(const QImage &image, int y)
{
    return reinterpret_cast<const QRgb *>(image.constScanLine(y));
}

/// The same pixels as Format_RGB32; without a copy where the bytes say the same. `image` must outlive it.
QImage asRgb(const QImage &image)
{
    if (image.format() == QImage::Format_ARGB32_Premultiplied)
        return {image.constBits(), image.width(), image.height(), image.bytesPerLine(), QImage::Format_RGB32};
    return image.convertToFormat(QImage::Format_RGB32);
}

bool isEdge(int luminance, int before, int secondBefore)
{
    return std::max(std::abs(luminance - before), std::abs(luminance - secondBefore)) > kEdgeStep;
}

double areaOf(const QRectF &rect)
{
    return rect.width() * rect.height();
}

int sidesTouched(const QRectF &rect, const QSizeF &picture)
{
    return (rect.left() <= kTouch) + (rect.top() <= kTouch) + (rect.right() >= picture.width() - kTouch) +
           (rect.bottom() >= picture.height() - kTouch);
}

} // namespace

EdgeRegionFinder::EdgeRegionFinder(const QImage &image)
    : m_source(image),
      m_image(asRgb(m_source)),
      m_ratio(image.devicePixelRatio() > 0 ? image.devicePixelRatio() : 1.0)
{
    if (!m_image.isNull())
        analyse();
}

void EdgeRegionFinder::analyse()
{
    const int longest = std::max(m_image.width(), m_image.height());
    m_cell = std::max(kSmallestCell, (longest + kLongestSide - 1) / kLongestSide);
    m_gridW = std::max(1, m_image.width() / m_cell);
    m_gridH = std::max(1, m_image.height() / m_cell);
    const QImage small = m_image.scaled(m_gridW, m_gridH, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);

    QList<int> luminance(qsizetype(m_gridW) * m_gridH);
    for (int y = 0; y < m_gridH; ++y) {
        const QRgb *pixels = rowOf(small, y);
        std::transform(pixels, pixels + m_gridW, luminance.begin() + qsizetype(y) * m_gridW, luma);
    }

    m_rowPrefix.fill(0, qsizetype(m_gridH) * (m_gridW + 1));
    m_columnPrefix.fill(0, qsizetype(m_gridW) * (m_gridH + 1));
    for (int y = 0; y < m_gridH; ++y) {
        const int *here = luminance.constData() + qsizetype(y) * m_gridW;
        const int *above = here - (y >= 1 ? m_gridW : 0);
        const int *secondAbove = y >= 2 ? above - m_gridW : above;
        int *rowCount = m_rowPrefix.data() + qsizetype(y) * (m_gridW + 1);
        int *columnCount = m_columnPrefix.data() + y;
        for (int x = 0; x < m_gridW; ++x) {
            rowCount[x + 1] = rowCount[x] + isEdge(here[x], above[x], secondAbove[x]);
            const bool isVertical = x >= 1 && isEdge(here[x], here[x - 1], here[std::max(x - 2, 0)]);
            columnCount[1] = columnCount[0] + isVertical;
            columnCount += m_gridH + 1;
        }
    }
}

bool EdgeRegionFinder::isOpenColumn(int x, const Span &rows) const
{
    if (x <= 0 || rows.last < rows.first)
        return false;
    const int *counts = m_columnPrefix.constData() + qsizetype(x) * (m_gridH + 1);
    return (counts[rows.last + 1] - counts[rows.first]) * 100 <= (rows.last - rows.first + 1) * kOpenPercent;
}

bool EdgeRegionFinder::isOpenRow(int y, const Span &columns) const
{
    if (y <= 0 || columns.last < columns.first)
        return false;
    const int *counts = m_rowPrefix.constData() + qsizetype(y) * (m_gridW + 1);
    return (counts[columns.last + 1] - counts[columns.first]) * 100 <=
           (columns.last - columns.first + 1) * kOpenPercent;
}

EdgeRegionFinder::Box EdgeRegionFinder::grown(Box cells) const
{
    auto &[x, y] = cells;
    for (int pass = 0; pass < kGrowPasses; ++pass) {
        const Box before = cells;
        while (x.first >= 1 && isOpenColumn(x.first, y))
            --x.first;
        while (x.last < m_gridW - 1 && isOpenColumn(x.last + 1, y))
            ++x.last;
        while (y.first >= 1 && isOpenRow(y.first, x))
            --y.first;
        while (y.last < m_gridH - 1 && isOpenRow(y.last + 1, x))
            ++y.last;
        if (x.first == before.x.first && x.last == before.x.last && y.first == before.y.first &&
            y.last == before.y.last)
            break;
    }
    return cells;
}

EdgeRegionFinder::Box EdgeRegionFinder::pixelsOf(const Box &cells) const
{
    // The last cell reaches to the border, also where the cells do not divide the picture evenly.
    const int right = cells.x.last == m_gridW - 1 ? m_image.width() : (cells.x.last + 1) * m_cell;
    const int bottom = cells.y.last == m_gridH - 1 ? m_image.height() : (cells.y.last + 1) * m_cell;
    return {{cells.x.first * m_cell, right - 1}, {cells.y.first * m_cell, bottom - 1}};
}

int EdgeRegionFinder::strongestRow(int y, const Span &columns) const
{
    const int start = std::max(0, y - kReachBefore * m_cell);
    const int end = std::min(y + m_cell, m_image.height());
    const int width = columns.last - columns.first + 1;
    QList<int> luminance(width);
    int *above = luminance.data();
    std::transform(rowOf(m_image, start) + columns.first, rowOf(m_image, start) + columns.last + 1, above, luma);
    int found = -1;
    int strongest = 0;
    for (int row = start + 1; row < end; ++row) {
        const QRgb *pixels = rowOf(m_image, row) + columns.first;
        int sum = 0;
        for (int i = 0; i < width; ++i) {
            const int here = luma(pixels[i]);
            sum += std::abs(here - above[i]);
            above[i] = here;
        }
        if (sum > strongest) {
            strongest = sum;
            found = row;
        }
    }
    return found;
}

int EdgeRegionFinder::strongestColumn(int x, const Span &rows) const
{
    const int start = std::max(0, x - kReachBefore * m_cell);
    const int end = std::min(x + m_cell, m_image.width());
    if (end - start < 2)
        return -1;
    QList<int> sums(end - start, 0);
    for (int y = rows.first; y <= rows.last; ++y) {
        const QRgb *pixels = rowOf(m_image, y) + start;
        int before = luma(pixels[0]);
        for (int i = 1; i < end - start; ++i) {
            const int here = luma(pixels[i]);
            sums[i] += std::abs(here - before);
            before = here;
        }
    }
    const auto strongest = std::max_element(sums.cbegin(), sums.cend());
    return *strongest > 0 ? start + static_cast<int>(strongest - sums.cbegin()) : -1;
}

EdgeRegionFinder::Box EdgeRegionFinder::refined(Box pixels) const
{
    // A side on the picture's border has no edge of its own to go to.
    auto &[x, y] = pixels;
    if (y.first > 0) {
        const int top = strongestRow(y.first, x);
        if (top >= 0 && top <= y.last)
            y.first = top;
    }
    if (y.last < m_image.height() - 1) {
        const int bottom = strongestRow(y.last + 1, x);
        if (bottom > y.first)
            y.last = bottom - 1;
    }
    if (x.first > 0) {
        const int left = strongestColumn(x.first, y);
        if (left >= 0 && left <= x.last)
            x.first = left;
    }
    if (x.last < m_image.width() - 1) {
        const int right = strongestColumn(x.last + 1, y);
        if (right > x.first)
            x.last = right - 1;
    }
    return pixels;
}

QList<QRectF> EdgeRegionFinder::candidatesAt(const QPointF &point) const
{
    if (m_gridW == 0)
        return {};
    const auto cellAt = [this](double position, int count) {
        return static_cast<int>(std::clamp(std::floor(position * m_ratio / m_cell), 0.0, count - 1.0));
    };
    const int seedX = cellAt(point.x(), m_gridW);
    const int seedY = cellAt(point.y(), m_gridH);
    Box cells{{seedX, seedX}, {seedY, seedY}};
    const int smallest = std::max(2 * m_cell, kSmallestBox);

    QList<QRectF> boxes;
    for (int round = 0; round < kRounds; ++round) {
        cells = grown(cells);
        const bool isWhole =
            cells.x.first == 0 && cells.x.last == m_gridW - 1 && cells.y.first == 0 && cells.y.last == m_gridH - 1;
        if (isWhole && round == 0)
            return {};
        Box pixels = pixelsOf(cells);
        if (pixels.x.last - pixels.x.first + 1 < smallest || pixels.y.last - pixels.y.first + 1 < smallest)
            break;
        if (round == 0)
            pixels = refined(pixels);
        const auto &[x, y] = pixels;
        boxes.append(
            {x.first / m_ratio, y.first / m_ratio, (x.last - x.first + 1) / m_ratio, (y.last - y.first + 1) / m_ratio});
        if (isWhole)
            break;
        cells = {{std::clamp(x.first / m_cell - 1, 0, m_gridW - 1), std::clamp(x.last / m_cell + 1, 0, m_gridW - 1)},
                 {std::clamp(y.first / m_cell - 1, 0, m_gridH - 1), std::clamp(y.last / m_cell + 1, 0, m_gridH - 1)}};
    }

    QList<QRectF> kept = filtered(boxes);
    const QRectF whole(QPointF(0, 0), QSizeF(m_image.size()) / m_ratio);
    if (!kept.isEmpty()) {
        const QRectF &last = kept.last();
        if (last.left() > 0.5 || last.top() > 0.5 || last.width() < whole.width() - 0.5 ||
            last.height() < whole.height() - 0.5)
            kept.append(whole);
    }
    return kept;
}

QList<QRectF> EdgeRegionFinder::filtered(const QList<QRectF> &boxes) const
{
    const QSizeF picture = QSizeF(m_image.size()) / m_ratio;
    QList<QRectF> kept;
    for (qsizetype i = 0; i < boxes.size() && kept.size() < kMostBoxes; ++i) {
        const QRectF &box = boxes.at(i);
        if (kept.isEmpty()) {
            kept.append(box);
            continue;
        }
        const double before = areaOf(kept.last());
        const double area = areaOf(box);
        if (area <= before)
            continue;
        const int touched = sidesTouched(box, picture);
        const bool isLastOfItsKind = i + 1 < boxes.size() && sidesTouched(boxes.at(i + 1), picture) > touched;
        if (area >= kClearlyLarger * before || (isLastOfItsKind && area >= kLarger * before) ||
            (touched >= 2 && touched > sidesTouched(kept.last(), picture)))
            kept.append(box);
    }
    return kept;
}

} // namespace tavrel::ui
