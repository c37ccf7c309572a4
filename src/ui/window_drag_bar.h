#pragma once

#include "ui/window_mover.h"

#include <QWidget>

namespace tavrel::ui {

/// An empty strip that moves its window when it is dragged and maximises it at a double click.
class WindowDragBar final : public QWidget
{
    Q_OBJECT

public:
    explicit WindowDragBar(QWidget *parent = nullptr);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void pass(QMouseEvent *event);

    WindowMover m_mover;
};

} // namespace tavrel::ui
