#include "overlay/toolbar_widget.h"

#include "ui/tool_tips.h"
#include "ui/toolbar_button.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QCoreApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QWheelEvent>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr int kDragDistance = 4;
constexpr int kGapBeforeHistory = 8;
constexpr int kGapBeforeResults = 4;
constexpr QSize kSeparator{1, 18};

QFrame *makeSeparator(QWidget *parent)
{
    auto *line = new QFrame(parent);
    line->setObjectName(QStringLiteral("separator"));
    line->setFixedSize(kSeparator);
    return line;
}

/// A frame has the role of a border.
QAccessibleInterface *accessibleToolbar(const QString &className, QObject *object)
{
    if (className == QLatin1String(ToolbarWidget::staticMetaObject.className()))
        return new QAccessibleWidget(static_cast<QWidget *>(object), QAccessible::ToolBar);
    return nullptr;
}

} // namespace

ToolbarWidget::ToolbarWidget(QWidget *parent)
    : QFrame(parent),
      m_config(defaultToolbarLayout()),
      m_expand(new ToolbarButton(ToolType::None, this)),
      m_historySeparator(makeSeparator(this)),
      m_resultSeparator(makeSeparator(this)),
      m_row(new QHBoxLayout(this)),
      m_tips(new ToolTips(this))
{
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(accessibleToolbar);
        return true;
    }();
    setObjectName(QStringLiteral("panel"));
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::SizeAllCursor);
    m_row->setContentsMargins(8, 4, 8, 4);
    m_row->setSpacing(0);
    for (const ToolbarItem &item : m_config)
        addButton(item.tool, Group::Tools);
    for (const ToolType tool : {ToolType::Undo, ToolType::Redo})
        addButton(tool, Group::History);
    for (const ToolType tool : {ToolType::Cancel, ToolType::Pin, ToolType::Cloud, ToolType::Save, ToolType::Copy})
        addButton(tool, Group::Results);
    m_expand->setObjectName(QStringLiteral("toolbarExpand"));
    m_expand->installEventFilter(this);
    m_tips->watch(m_expand);
    connect(m_expand, &QToolButton::clicked, this, &ToolbarWidget::clickExpand);
    setHistoryState(false, false);
    setTheme(lightTheme());
}

ToolbarWidget::~ToolbarWidget() = default;

void ToolbarWidget::addButton(ToolType tool, Group group)
{
    auto *button = new ToolbarButton(tool, this);
    button->setObjectName(toolTypeName(tool));
    const Entry entry{tool, button, isToolbarAction(tool), group};
    button->setCheckable(!entry.action);
    button->installEventFilter(this);
    m_tips->watch(button);
    connect(button, &QToolButton::clicked, this, [this, entry] { click(entry); });
    m_entries.append(entry);
}

const ToolbarWidget::Entry *ToolbarWidget::entryOf(ToolType tool) const
{
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(), [tool](const Entry &e) { return e.tool == tool; });
    return found == m_entries.end() ? nullptr : &*found;
}

void ToolbarWidget::setTheme(const Theme &theme)
{
    m_theme = theme;
    setStyleSheet(QStringLiteral("QFrame#panel { background: %1; border: 1px solid %2; border-radius: 12px; }"
                                 "QFrame#separator { background: %3; border: none; }")
                      .arg(css(theme.panelSurface()), css(theme.panelBorder()), css(theme.separator())));
    m_tips->setTheme(theme);
    for (const Entry &entry : std::as_const(m_entries))
        entry.button->setTheme(theme);
    m_expand->setTheme(theme);
    refresh();
}

void ToolbarWidget::setShowLabels(bool show)
{
    m_showLabels = show;
    refresh();
}

void ToolbarWidget::setConfig(const ToolbarLayout &layout)
{
    m_config = wholeToolbarLayout(layout);
    refresh();
}

void ToolbarWidget::setAbsent(const QSet<ToolType> &absent)
{
    if (m_absent == absent)
        return;
    m_absent = absent;
    refresh();
}

ToolbarLayout ToolbarWidget::shownLayout() const
{
    ToolbarLayout layout = m_config;
    layout.removeIf([this](const ToolbarItem &item) { return m_absent.contains(item.tool); });
    return layout;
}

void ToolbarWidget::setRoom(int width)
{
    if (m_room == width)
        return;
    m_room = width;
    fitIntoRoom();
}

void ToolbarWidget::setCurrentTool(ToolType tool)
{
    m_currentTool = tool;
    const Entry *entry = entryOf(toolFamilyHead(tool));
    if (!entry || !entry->overflow || m_expanded) {
        refreshChecked();
        return;
    }
    m_expanded = true;
    refresh();
    Q_EMIT layoutChanged();
}

void ToolbarWidget::setHistoryState(bool canUndo, bool canRedo)
{
    entryOf(ToolType::Undo)->button->setEnabled(canUndo);
    entryOf(ToolType::Redo)->button->setEnabled(canRedo);
}

void ToolbarWidget::setExpanded(bool expanded)
{
    if (m_expanded == expanded)
        return;
    m_expanded = expanded;
    refresh();
}

bool ToolbarWidget::hasHiddenTools() const
{
    return std::any_of(m_config.begin(), m_config.end(),
                       [this](const ToolbarItem &item) { return !item.visible && !m_absent.contains(item.tool); });
}

QPoint ToolbarWidget::expandCentre() const
{
    return mapToParent(m_expand->geometry().center());
}

void ToolbarWidget::click(const Entry &entry)
{
    refreshChecked(); // the click has toggled the button; whether it is checked is for the owner to say
    if (entry.action)
        Q_EMIT actionTriggered(entry.tool);
    else
        Q_EMIT toolSelected(toolFamilyHead(m_currentTool) == entry.tool ? ToolType::None : entry.tool);
}

void ToolbarWidget::clickExpand()
{
    if (m_expanded) {
        Q_EMIT configRequested();
        return;
    }
    setExpanded(true);
    Q_EMIT layoutChanged();
}

// --- look ------------------------------------------------------------------------------------------------------------

void ToolbarWidget::refresh()
{
    refreshTexts();
    refreshChecked();
    rebuildOrder();
    fitIntoRoom();
}

void ToolbarWidget::refreshTexts()
{
    setAccessibleName(QCoreApplication::translate("ToolbarLayoutEditor", "工具栏"));
    for (const Entry &entry : std::as_const(m_entries))
        entry.button->setLabel(toolbarText(entry.tool));
    m_expand->setGlyph(m_expanded ? QStringLiteral("gear") : QStringLiteral("ed_chevronRight"));
    m_expand->setLabel(m_expanded ? QCoreApplication::translate("ToolbarWidget", "配置工具栏")
                                  : QCoreApplication::translate("ToolbarWidget", "展开收起的工具"));
}

void ToolbarWidget::refreshChecked()
{
    const ToolType head = toolFamilyHead(m_currentTool);
    for (const Entry &entry : std::as_const(m_entries)) {
        const QSignalBlocker quiet(entry.button);
        entry.button->setChecked(!entry.action && head != ToolType::None && entry.tool == head);
    }
}

void ToolbarWidget::rebuildOrder()
{
    while (QLayoutItem *item = m_row->takeAt(0))
        delete item;
    QList<ToolbarButton *> placed;
    for (const bool visible : {true, false}) {
        for (const ToolbarItem &item : std::as_const(m_config)) {
            const auto entry =
                std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry &e) { return e.tool == item.tool; });
            entry->overflow = !item.visible;
            if (item.visible == visible && (visible || m_expanded) && !m_absent.contains(item.tool))
                placed.append(entry->button);
        }
    }
    for (ToolbarButton *button : std::as_const(placed))
        m_row->addWidget(button);
    for (const Entry &entry : std::as_const(m_entries)) {
        entry.button->setVisible(entry.group == Group::Tools ? placed.contains(entry.button)
                                                             : !m_absent.contains(entry.tool));
    }
    const auto addGroup = [this](int gap, QFrame *separator, Group group) {
        m_row->addSpacing(gap);
        m_row->addWidget(separator);
        for (const Entry &entry : std::as_const(m_entries)) {
            if (entry.group == group && !m_absent.contains(entry.tool))
                m_row->addWidget(entry.button);
        }
    };
    m_expand->setVisible(hasHiddenTools());
    m_row->addWidget(m_expand);
    addGroup(kGapBeforeHistory, m_historySeparator, Group::History);
    addGroup(kGapBeforeResults, m_resultSeparator, Group::Results);
}

void ToolbarWidget::fitIntoRoom()
{
    struct Look
    {
        bool labels;
        bool tight;
    };
    for (const Look look : {Look{true, false}, {true, true}, {false, false}, {false, true}}) {
        if (look.labels && !m_showLabels)
            continue;
        for (const Entry &entry : std::as_const(m_entries)) {
            entry.button->setShowLabel(look.labels);
            entry.button->setTight(look.tight);
        }
        m_expand->setShowLabel(look.labels);
        m_row->activate();
        if (sizeHint().width() <= m_room)
            break;
    }
    resize(sizeHint());
}

bool ToolbarWidget::event(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        refresh();
    return QFrame::event(event);
}

// --- dragging --------------------------------------------------------------------------------------------------------

bool ToolbarWidget::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        notePress(*static_cast<QMouseEvent *>(event));
        break;
    case QEvent::MouseMove:
        if (followDrag(*static_cast<QMouseEvent *>(event))) {
            // Up now: the release finds nothing to click, and no move may press it again.
            qobject_cast<QToolButton *>(watched)->setDown(false);
            return true;
        }
        break;
    case QEvent::MouseButtonRelease:
        endDrag();
        break;
    default:
        break;
    }
    return QFrame::eventFilter(watched, event);
}

// What is done with the pointer on the toolbar must not reach the selection below it.

void ToolbarWidget::mousePressEvent(QMouseEvent *event)
{
    notePress(*event);
    event->accept();
}

void ToolbarWidget::mouseMoveEvent(QMouseEvent *event)
{
    followDrag(*event);
    event->accept();
}

void ToolbarWidget::mouseReleaseEvent(QMouseEvent *event)
{
    endDrag();
    event->accept();
}

void ToolbarWidget::wheelEvent(QWheelEvent *event)
{
    event->accept();
}

void ToolbarWidget::hideEvent(QHideEvent *event)
{
    endDrag();
    QFrame::hideEvent(event);
}

void ToolbarWidget::notePress(const QMouseEvent &event)
{
    if (event.button() != Qt::LeftButton)
        return;
    m_pressed = true;
    m_dragging = false;
    m_pressGlobal = event.globalPosition().toPoint();
    m_pressPosition = pos();
}

bool ToolbarWidget::followDrag(const QMouseEvent &event)
{
    if (!m_pressed || !(event.buttons() & Qt::LeftButton))
        return false;
    const QPoint delta = event.globalPosition().toPoint() - m_pressGlobal;
    m_dragging |= delta.manhattanLength() > kDragDistance;
    if (m_dragging)
        Q_EMIT dragRequested(m_pressPosition + delta);
    return m_dragging;
}

void ToolbarWidget::endDrag()
{
    m_pressed = false;
    m_dragging = false;
}

} // namespace tavrel::ui
