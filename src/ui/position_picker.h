#pragma once

#include "base/background_position.h"
#include "ui/theme.h"

#include <QPointF>
#include <QWidget>

namespace tavrel::ui {

/// A small stage with a box that stands for the picture: a press on one of nine fields puts it there, a drag anywhere.
/// The arrow keys walk the nine fields.
class PositionPicker final : public QWidget
{
    Q_OBJECT

public:
    explicit PositionPicker(const Theme &theme, QWidget *parent = nullptr);

    void setTheme(const Theme &theme);
    /// fx, fy  fractions of the free room, for Custom. Raises nothing.
    void set(edit::BackgroundPosition position, double fx, double fy);
    [[nodiscard]] edit::BackgroundPosition position() const { return m_position; }
    /// The fractions of the free room at which the box stands.
    [[nodiscard]] QPointF fractions() const;
    [[nodiscard]] QRectF box() const;
    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    /// isFinal  false while the box is dragged
    void positionChanged(tavrel::edit::BackgroundPosition position, double fx, double fy, bool isFinal);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void changeEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void choose(edit::BackgroundPosition position);
    void announce();
    void endDrag();

    Theme m_theme;
    edit::BackgroundPosition m_position = edit::BackgroundPosition::Center;
    QPointF m_custom{0.5, 0.5};
    bool m_dragging = false;
    bool m_moved = false;
    QPointF m_pressPoint;
    QPointF m_startOrigin;
};

} // namespace tavrel::ui
