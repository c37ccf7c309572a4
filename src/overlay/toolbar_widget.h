#pragma once

#include "ui/theme.h"
#include "ui/toolbar_layout.h"

#include <QFrame>
#include <QHash>
#include <QPoint>
#include <QSet>

class QHBoxLayout;

namespace tavrel::ui {

class ToolTips;
class ToolbarButton;

/// The bar of the tools and actions of a capture. It only says what was chosen; its owner pushes back the current tool
/// and the history. It does not move by itself either: it asks to be moved while it is dragged by its frame or a
/// button. It takes no keys. GUI thread only.
class ToolbarWidget final : public QFrame
{
    Q_OBJECT

public:
    explicit ToolbarWidget(QWidget *parent = nullptr);
    ~ToolbarWidget() override;

    void setTheme(const Theme &theme);
    void setShowLabels(bool show);
    void setConfig(const ToolbarLayout &layout);
    /// Tools and actions that are not to be had here: they have no button, whatever the layout says.
    void setAbsent(const QSet<ToolType> &absent);
    /// How wide it may be. A toolbar that is wider closes up, then leaves its labels out. Raises no signal.
    void setRoom(int width);
    /// A tool behind the arrow expands the toolbar, with `layoutChanged`.
    void setCurrentTool(ToolType tool);
    void setHistoryState(bool canUndo, bool canRedo);
    /// Raises no signal: who calls it places the toolbar anew.
    void setExpanded(bool expanded);

    [[nodiscard]] bool isExpanded() const { return m_expanded; }
    [[nodiscard]] bool hasHiddenTools() const;
    [[nodiscard]] const ToolbarLayout &toolbarLayout() const { return m_config; }
    /// Names of the tools behind the arrow.
    [[nodiscard]] QStringList hiddenTools() const { return hiddenToolTexts(shownLayout()); }
    /// Middle of the arrow in the parent's coordinates, for a bubble that points at it.
    [[nodiscard]] QPoint expandCentre() const;

Q_SIGNALS:
    void toolSelected(tavrel::ToolType tool); ///< `None` when the current tool is put away
    void actionTriggered(tavrel::ToolType action);
    void layoutChanged(); ///< the size is another one
    void configRequested();
    void dragRequested(const QPoint &topLeft); ///< in the parent's coordinates

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    enum class Group { Tools, History, Results };
    struct Entry
    {
        ToolType tool;
        ToolbarButton *button;
        bool action;
        Group group;
        bool overflow = false; ///< behind the arrow
    };

    /// The layout without what is absent.
    [[nodiscard]] ToolbarLayout shownLayout() const;
    void addButton(ToolType tool, Group group);
    [[nodiscard]] const Entry *entryOf(ToolType tool) const;
    void click(const Entry &entry);
    void clickExpand();
    void refresh();
    void refreshTexts();
    void refreshChecked();
    void rebuildOrder();
    void fitIntoRoom();
    void notePress(const QMouseEvent &event);
    bool followDrag(const QMouseEvent &event);
    void endDrag();

    Theme m_theme;
    ToolbarLayout m_config;
    QSet<ToolType> m_absent;
    ToolType m_currentTool = ToolType::None;
    bool m_showLabels = true;
    int m_room = QWIDGETSIZE_MAX;
    bool m_expanded = false;
    QList<Entry> m_entries;
    ToolbarButton *m_expand;
    QFrame *m_historySeparator;
    QFrame *m_resultSeparator;
    QHBoxLayout *m_row;
    ToolTips *m_tips;

    bool m_pressed = false;
    bool m_dragging = false;
    QPoint m_pressGlobal;
    QPoint m_pressPosition;
};

} // namespace tavrel::ui
