#pragma once

#include "ui/theme.h"

#include <QWidget>

namespace tavrel::ui {

/// A control that is dragged or stepped with the arrow keys: what the parts of a colour board have in common. To
/// assistive tools it is a slider over 0 to 100.
class ColorSlider : public QWidget
{
    Q_OBJECT

public:
    static constexpr double kStep = 0.01; ///< of an arrow key; with Shift, and of the page keys, ten times that

    explicit ColorSlider(QWidget *parent);

    void applyTheme(const Theme &theme);
    [[nodiscard]] const Theme &theme() const { return m_theme; }
    [[nodiscard]] bool isDragging() const { return m_dragging; }

    /// What assistive tools show: 0 to 1, and in words.
    [[nodiscard]] virtual double fraction() const = 0;
    [[nodiscard]] virtual QString valueText() const = 0;
    /// As if the user had dragged it there: emits.
    void setFraction(double fraction);

Q_SIGNALS:
    void moved();     ///< by the user, at every step
    void committed(); ///< the end of a drag, or of a key held down

protected:
    /// The value under a point of the widget, which may lie outside of it.
    virtual void moveTo(const QPointF &point) = 0;
    /// Moves by parts of the whole, right and up being more; infinite to the ends.
    virtual void stepBy(const QPointF &fractions) = 0;

    /// Tells assistive tools; to be called for every change of the value.
    void announce();
    [[nodiscard]] bool showsFocus() const { return m_showsFocus; }

    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void commitSteps();
    void endDrag();

    Theme m_theme;
    bool m_dragging = false;
    bool m_stepped = false; ///< by key, not committed yet
    bool m_showsFocus = false;
};

} // namespace tavrel::ui
