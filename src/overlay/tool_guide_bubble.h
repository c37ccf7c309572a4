#pragma once

#include "ui/theme.h"

#include <QPoint>
#include <QRect>
#include <QStringList>
#include <QWidget>

namespace tavrel::ui {

struct GuideBubblePlacement
{
    QPoint position;     ///< of the bubble with its arrow
    int arrowX = 0;      ///< tip of the arrow, from the bubble's left edge
    bool arrowUp = true; ///< the bubble stands below the toolbar
};

/// Where a bubble goes that points at the toolbar's arrow: below the toolbar, above it where there is no room.
///
/// target    the middle of what it points at, in the overlay's coordinates
/// height    of the whole bubble, arrow included
/// bar       the bar at the toolbar's side, empty for none: covered only if there is no room on the other side
[[nodiscard]] GuideBubblePlacement placeGuideBubble(const QPoint &target, const QRect &toolbar, const QSize &overlay,
                                                    int height, const QRect &bar = {});

/// Tells once where the tools behind the toolbar's arrow are. A child of the overlay; its owner decides whether it
/// shows, and hides it after `dismissed`.
class ToolGuideBubble final : public QWidget
{
    Q_OBJECT

public:
    explicit ToolGuideBubble(QWidget *overlay);

    void setTheme(const Theme &theme);
    /// Names the tools in its text.
    void setTools(const QStringList &texts);
    /// Takes its place in the overlay; `target`, `toolbar` and `bar` in the overlay's coordinates.
    void pointAt(const QPoint &target, const QRect &toolbar, const QRect &bar = {});

    [[nodiscard]] QString text() const { return m_text; }

Q_SIGNALS:
    void dismissed(); ///< the cross was clicked

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    [[nodiscard]] int bodyHeight() const;
    [[nodiscard]] QRect body() const;
    [[nodiscard]] QRect cross() const;
    [[nodiscard]] bool isOverCross(const QPoint &point) const;
    [[nodiscard]] QPainterPath outline() const;

    Theme m_theme;
    QString m_text;
    int m_arrowX = 0;
    bool m_arrowUp = true;
    bool m_crossHovered = false;
    bool m_crossPressed = false;
};

} // namespace tavrel::ui
