#pragma once

#include "annotate/tool_type.h"
#include "capture/capture_outcome.h"
#include "ui/theme.h"

#include <QFrame>
#include <QHash>
#include <QPoint>
#include <QRect>
#include <QSet>

namespace tavrel::ui {

class ToolbarButton;

/// What can be done with a scrolling capture. A window of its own, so that it takes clicks while those on the overlay
/// go to the page below. It is dragged by any of its places, within bounds. Return edits, Escape cancels.
class LongCaptureToolbar final : public QFrame
{
    Q_OBJECT

public:
    using Action = CaptureOutcome::Action;

    explicit LongCaptureToolbar(QWidget *owner);

    void setTheme(const Theme &theme);
    /// What somebody takes; there is always a way to cancel.
    void setOffered(const QSet<Action> &offered);
    void setShowLabels(bool show);
    /// Whether what is below shows through its corners; they are cut off otherwise.
    void setMixed(bool isMixed);
    /// Where it may be dragged to, in global coordinates.
    void setBounds(const QRect &bounds) { m_bounds = bounds; }

Q_SIGNALS:
    void actionTriggered(tavrel::CaptureOutcome::Action action);
    void moved();
    void pressed(); ///< anywhere on it

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void addButton(ToolType glyph, const QString &text, Action action);
    void press(const QPoint &global);
    void cutCorners();
    /// Whether the press has become a drag.
    bool drag(const QPoint &global);

    Theme m_theme;
    QHash<Action, ToolbarButton *> m_buttons;
    QRect m_bounds;
    QPoint m_pressPoint;
    QPoint m_pressPosition;
    bool m_isMixed = false;
    bool m_isPressed = false;
    bool m_isDragged = false;
};

} // namespace tavrel::ui
