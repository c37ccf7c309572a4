#pragma once

#include "ui/theme.h"

#include <QWidget>

#include <optional>

namespace tavrel::ui {

/// The strip on a side panel's inner edge by which its width is changed. It only tells the width that is asked for;
/// the panel's owner limits and sets it. The arrow keys do the same in steps of 8.
class PanelResizeHandle final : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kWidth = 8;
    /// The side of the panel on which the handle lies.
    enum class Side { Left, Right };

    PanelResizeHandle(QWidget *panel, Side side, const Theme &theme, QWidget *parent);

    void setTheme(const Theme &theme);

Q_SIGNALS:
    void widthAsked(int width);  ///< at every step of a drag, in logical pixels
    void widthChosen(int width); ///< the drag or the key has ended; what the panel has now

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    struct Drag
    {
        double pressed; ///< global x
        int width;
    };

    QWidget *m_panel;
    Side m_side;
    Theme m_theme;
    std::optional<Drag> m_drag;
};

} // namespace tavrel::ui
