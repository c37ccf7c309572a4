#pragma once

#include "ui/theme.h"
#include "ui/toolbar_layout.h"

#include <QPoint>
#include <QRect>
#include <QWidget>

namespace tavrel::ui {

class ToolTips;

/// Says which tools the toolbar shows and in which order: cells to drag within the toolbar's section and between it and
/// the section of the tools behind the arrow. A click on a cell moves it into the other section. With the keyboard the
/// arrows lead from cell to cell and up to the link, together with Ctrl they move the tool, and Space is the click.
///
/// It sets its own height. A press that hits nothing of it is left to the window around it.
class ToolbarLayoutEditor final : public QWidget
{
    Q_OBJECT

public:
    explicit ToolbarLayoutEditor(QWidget *parent = nullptr);

    void setTheme(const Theme &theme);
    /// Takes up a stored layout; ignored while a tool is being dragged. Raises no signal.
    void setConfig(const QString &json);

    /// Takes this width and the height that it needs. While hidden too, when a resize alone would come later.
    void fitTo(int width);

    [[nodiscard]] const ToolbarLayout &toolbarLayout() const { return m_config; }
    [[nodiscard]] static QString title();
    /// The line of the title, where a window may be dragged.
    [[nodiscard]] QRect headerRect() const;
    /// Where things are painted, in the editor's coordinates.
    [[nodiscard]] QRect cellRect(ToolType tool) const;
    [[nodiscard]] QRect restoreRect() const { return m_restore; }
    [[nodiscard]] QRect toolbarSection() const { return m_toolbarSection; }
    [[nodiscard]] QRect hiddenSection() const { return m_hiddenSection; }

    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    void configChanged(const QString &json); ///< empty for the default layout

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    enum class Drop { None, Hide, Insert };
    struct Cell
    {
        ToolType tool;
        QRect rect;
        bool visible;
    };

    void layOut();
    int placeCells(bool visible, int top);
    [[nodiscard]] const Cell *cellAt(const QPoint &point) const;
    void updateDrop(const QPoint &point);
    [[nodiscard]] ToolType insertionBefore(const QPoint &point) const;
    [[nodiscard]] QRect insertionMark() const;
    void updateHover(const QPoint &point);
    void goTo(ToolType tool);
    [[nodiscard]] ToolType beside(int step) const;
    [[nodiscard]] ToolType inNextRow(int step) const;
    void toggle(ToolType tool);
    void moveCurrent(int step);
    void describe();
    void tipForCurrent();
    [[nodiscard]] QString help() const;
    void change(const ToolbarLayout &layout);
    void endDrag();
    void paintSection(QPainter &painter, const QRect &section, const QString &title, bool isTarget) const;
    void paintCell(QPainter &painter, const Cell &cell, const QRect &rect, bool lifted) const;

    Theme m_theme;
    ToolbarLayout m_config;
    QList<Cell> m_cells;
    QRect m_restore;
    QRect m_help;
    QRect m_toolbarSection; ///< title and box
    QRect m_hiddenSection;
    bool m_labelsFit = false;
    ToolTips *m_tips;

    ToolType m_hovered = ToolType::None;
    bool m_restoreHovered = false;
    ToolType m_current; ///< of the keyboard; `None` on the link
    ToolType m_pressed = ToolType::None;
    bool m_dragging = false;
    QPoint m_pressPoint;
    QPoint m_pointer;
    Drop m_drop = Drop::None;
    ToolType m_before = ToolType::None;
};

} // namespace tavrel::ui
