#pragma once

#include <QPoint>
#include <QRect>
#include <QWidget>

#include <optional>

namespace tavrel::ui {

/// An invisible strip on an edge or corner of a frameless window by which its size is changed, with the cursor that
/// says so. The window system does the work; where it cannot, the window follows the pointer.
class WindowGrip final : public QWidget
{
    Q_OBJECT

public:
    WindowGrip(Qt::Edges edges, QWidget *window);

    [[nodiscard]] Qt::Edges edges() const { return m_edges; }
    /// Where the grip lies on a window of this size, in its coordinates.
    [[nodiscard]] static QRect place(Qt::Edges edges, const QSize &window);
    /// `start` with its edges moved by `delta`, within the limits; what is not dragged stays where it is.
    [[nodiscard]] static QRect resized(const QRect &start, Qt::Edges edges, const QPoint &delta, const QSize &least,
                                       const QSize &most);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    struct Drag
    {
        QPoint pressed;
        QRect window;
    };

    Qt::Edges m_edges;
    std::optional<Drag> m_drag; ///< only without help of the window system
};

} // namespace tavrel::ui
