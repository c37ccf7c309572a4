#pragma once

#include <QImage>
#include <QList>
#include <QPointF>
#include <QRectF>

namespace tavrel::ui {

/// Finds the boxes around a point of a picture by its edges: a box ends where most of a line along its side is an edge.
///
/// A picture is analysed once, on a grid of at most about 900 cells along its longer side; after that a query costs
/// differences of prefix sums and a few bands of pixels. The value never changes after its construction, which is slow
/// and may run on any thread. Budgets for 3840 x 2160: construction 250 ms, query 1 ms (bench_overlay_hover).
class EdgeRegionFinder final
{
public:
    /// Finds nothing.
    EdgeRegionFinder() = default;
    /// image  any format; its device pixel ratio says how large it is. Format_ARGB32_Premultiplied and Format_RGB32 are
    ///        shared, not copied; what is translucent counts as lying on black.
    explicit EdgeRegionFinder(const QImage &image);

    /// The boxes around a point, ascending, in logical units from the picture's top-left like the point itself. At most
    /// five and the whole picture; none where no edge stands around the point. Points outside count as on the border.
    [[nodiscard]] QList<QRectF> candidatesAt(const QPointF &point) const;

private:
    /// Both ends belong to it. Of cells or of device pixels.
    struct Span
    {
        int first = 0;
        int last = 0;
    };
    struct Box
    {
        Span x;
        Span y;
    };

    void analyse();
    [[nodiscard]] bool isOpenColumn(int x, const Span &rows) const;
    [[nodiscard]] bool isOpenRow(int y, const Span &columns) const;
    [[nodiscard]] Box grown(Box cells) const;
    [[nodiscard]] Box pixelsOf(const Box &cells) const;
    [[nodiscard]] Box refined(Box pixels) const;
    [[nodiscard]] int strongestRow(int y, const Span &columns) const;
    [[nodiscard]] int strongestColumn(int x, const Span &rows) const;
    [[nodiscard]] QList<QRectF> filtered(const QList<QRectF> &boxes) const;

    QImage m_source; ///< keeps the pixels of m_image alive
    QImage m_image;  ///< Format_RGB32
    double m_ratio = 1.0;
    int m_cell = 0; ///< side of a cell in device pixels
    int m_gridW = 0;
    int m_gridH = 0;
    QList<int> m_rowPrefix;    ///< per row gridW + 1 counts of edges between this row and those above it
    QList<int> m_columnPrefix; ///< per column gridH + 1 counts of edges between this column and those left of it
};

} // namespace tavrel::ui
