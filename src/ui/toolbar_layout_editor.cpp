#include "ui/toolbar_layout_editor.h"

#include "ui/glyphs.h"
#include "ui/tool_tips.h"

#include <QCoreApplication>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace tavrel::ui {
namespace {

constexpr int kMinWidth = 280;
constexpr int kCell = 42;
constexpr int kCellGap = 3;
constexpr int kSectionPadding = 6; ///< around the cells
constexpr int kTitleHeight = 24;
constexpr int kHelpGap = 4;     ///< below the title
constexpr int kLinkRoom = 12;   ///< left of the link, still hits it
constexpr int kSectionGap = 12; ///< above a section
constexpr int kSectionTitleHeight = 20;
constexpr int kMarkWidth = 3;
constexpr int kIconSize = 18;
constexpr int kTitleSize = 15; ///< of the fonts, in pixels
constexpr int kLinkSize = 12;
constexpr int kHelpSize = 11;
constexpr int kSectionTitleSize = 12;
constexpr int kLabelSize = 10;
constexpr int kDragDistance = 4;
constexpr double kRing = 2;             ///< around what has the keyboard
constexpr double kLiftedOpacity = 0.35; ///< of the place that a dragged tool has left
constexpr int kHelpFlags = Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap;

QString text(const char *source)
{
    return QCoreApplication::translate("ToolbarLayoutEditor", source);
}

const char *const kTitle = QT_TRANSLATE_NOOP("ToolbarLayoutEditor", "工具栏配置");
const char *const kRestore = QT_TRANSLATE_NOOP("ToolbarLayoutEditor", "恢复默认");
const char *const kHelp =
    QT_TRANSLATE_NOOP("ToolbarLayoutEditor", "按住工具拖动：在工具栏内松手 = 调整位置；拖进下方「待选工具」= 收起");
const char *const kKeyHelp =
    QT_TRANSLATE_NOOP("ToolbarLayoutEditor", "方向键选择工具；Ctrl + ←/→ = 调整位置；空格 = 收起或放回");
const char *const kToolbar = QT_TRANSLATE_NOOP("ToolbarLayoutEditor", "工具栏");
const char *const kHidden = QT_TRANSLATE_NOOP("ToolbarLayoutEditor", "待选工具（拖到这里 = 收起）");

QFont sized(QFont font, int pixels, QFont::Weight weight = QFont::Normal)
{
    font.setPixelSize(pixels);
    font.setWeight(weight);
    return font;
}

/// The part of a section where its cells are.
QRect boxOf(const QRect &section)
{
    return section.adjusted(0, kSectionTitleHeight, 0, 0);
}

} // namespace

ToolbarLayoutEditor::ToolbarLayoutEditor(QWidget *parent)
    : QWidget(parent),
      m_theme(lightTheme()),
      m_config(defaultToolbarLayout()),
      m_tips(new ToolTips(this)),
      m_current(m_config.first().tool)
{
    setObjectName(QStringLiteral("toolbarLayoutEditor"));
    setMinimumWidth(kMinWidth);
    setMouseTracking(true);
    setFocusPolicy(Qt::TabFocus);
    layOut();
}

void ToolbarLayoutEditor::setTheme(const Theme &theme)
{
    m_theme = theme;
    m_tips->setTheme(theme);
    update();
}

void ToolbarLayoutEditor::setConfig(const QString &json)
{
    if (m_dragging)
        return;
    m_config = parseToolbarLayout(json);
    layOut();
}

void ToolbarLayoutEditor::fitTo(int width)
{
    resize(width, height());
    layOut();
}

QSize ToolbarLayoutEditor::sizeHint() const
{
    return {kMinWidth, height()};
}

QString ToolbarLayoutEditor::title()
{
    return text(kTitle);
}

QRect ToolbarLayoutEditor::headerRect() const
{
    return {0, 0, width(), kTitleHeight};
}

QRect ToolbarLayoutEditor::cellRect(ToolType tool) const
{
    const auto found =
        std::find_if(m_cells.begin(), m_cells.end(), [tool](const Cell &cell) { return cell.tool == tool; });
    return found == m_cells.end() ? QRect() : found->rect;
}

// --- geometry --------------------------------------------------------------------------------------------------------

void ToolbarLayoutEditor::layOut()
{
    m_labelsFit = std::all_of(m_config.begin(), m_config.end(), [this](const ToolbarItem &item) {
        return QFontMetrics(sized(font(), kLabelSize)).horizontalAdvance(toolbarText(item.tool)) <= kCell - 2;
    });
    setAccessibleDescription(text(kHelp) + u'\n' + text(kKeyHelp));
    const int linkWidth = QFontMetrics(sized(font(), kLinkSize)).horizontalAdvance(text(kRestore)) + kLinkRoom;
    m_restore = {width() - linkWidth, 0, linkWidth, kTitleHeight};
    const QRect helpRoom(0, kTitleHeight + kHelpGap, width(), QWIDGETSIZE_MAX);
    const QFontMetrics helpMetrics(sized(font(), kHelpSize));
    m_help = helpMetrics.boundingRect(helpRoom, kHelpFlags, text(kHelp)) |
             helpMetrics.boundingRect(helpRoom, kHelpFlags, text(kKeyHelp));
    m_help.setWidth(width());

    m_cells.clear();
    const auto placeSection = [this](bool visible, int top) {
        const int bottom = placeCells(visible, top + kSectionTitleHeight + kSectionPadding) + kSectionPadding;
        return QRect(0, top, width(), bottom - top);
    };
    m_toolbarSection = placeSection(true, m_help.top() + m_help.height() + kSectionGap);
    m_hiddenSection = placeSection(false, m_toolbarSection.top() + m_toolbarSection.height() + kSectionGap);
    setFixedHeight(m_hiddenSection.top() + m_hiddenSection.height());
    describe();
    updateGeometry();
    update();
}

/// Lets the cells flow over rows; returns where the last row ends. An empty section is as high as one row.
int ToolbarLayoutEditor::placeCells(bool visible, int top)
{
    constexpr int kStep = kCell + kCellGap;
    const int columns = std::max((width() - 2 * kSectionPadding + kCellGap) / kStep, 1);
    int count = 0;
    for (const ToolbarItem &item : std::as_const(m_config)) {
        if (item.visible != visible)
            continue;
        const QPoint place(kSectionPadding + count % columns * kStep, top + count / columns * kStep);
        m_cells.append({item.tool, QRect(place, QSize(kCell, kCell)), visible});
        ++count;
    }
    const int rows = std::max((count + columns - 1) / columns, 1);
    return top + rows * kStep - kCellGap;
}

const ToolbarLayoutEditor::Cell *ToolbarLayoutEditor::cellAt(const QPoint &point) const
{
    const auto found =
        std::find_if(m_cells.begin(), m_cells.end(), [&](const Cell &cell) { return cell.rect.contains(point); });
    return found == m_cells.end() ? nullptr : &*found;
}

ToolType ToolbarLayoutEditor::insertionBefore(const QPoint &point) const
{
    for (const Cell &cell : m_cells) {
        const bool isRowAbove = cell.rect.top() + kCell + kCellGap <= point.y();
        const bool isRowBelow = cell.rect.top() > point.y();
        if (cell.visible && !isRowAbove && (isRowBelow || cell.rect.center().x() > point.x()))
            return cell.tool;
    }
    return ToolType::None;
}

QRect ToolbarLayoutEditor::insertionMark() const
{
    if (const QRect cell = cellRect(m_before); !cell.isNull())
        return {cell.left() - kMarkWidth, cell.top(), kMarkWidth, kCell};
    const auto last = std::find_if(m_cells.rbegin(), m_cells.rend(), [](const Cell &cell) { return cell.visible; });
    if (last != m_cells.rend())
        return {last->rect.left() + kCell, last->rect.top(), kMarkWidth, kCell};
    const QRect box = boxOf(m_toolbarSection);
    return {box.left() + kSectionPadding - kMarkWidth, box.top() + kSectionPadding, kMarkWidth, kCell};
}

// --- pointer ---------------------------------------------------------------------------------------------------------

void ToolbarLayoutEditor::mousePressEvent(QMouseEvent *event)
{
    const QPoint point = event->position().toPoint();
    const Cell *cell = cellAt(point);
    const bool isOnLink = m_restore.contains(point);
    m_tips->leave();
    if (event->button() != Qt::LeftButton || (!cell && !isOnLink)) {
        event->ignore();
        return;
    }
    event->accept();
    if (isOnLink) {
        change(defaultToolbarLayout());
        return;
    }
    m_pressed = cell->tool;
    m_pressPoint = point;
    goTo(cell->tool);
}

void ToolbarLayoutEditor::mouseMoveEvent(QMouseEvent *event)
{
    m_pointer = event->position().toPoint();
    if (m_pressed == ToolType::None || !(event->buttons() & Qt::LeftButton)) {
        updateHover(m_pointer);
        event->setAccepted(event->buttons() == Qt::NoButton);
        return;
    }
    event->accept();
    if (!m_dragging && (m_pointer - m_pressPoint).manhattanLength() >= kDragDistance) {
        m_dragging = true;
        setCursor(Qt::ClosedHandCursor);
    }
    if (m_dragging) {
        updateDrop(m_pointer);
        update();
    }
}

void ToolbarLayoutEditor::updateDrop(const QPoint &point)
{
    m_drop = m_hiddenSection.contains(point)    ? Drop::Hide
             : m_toolbarSection.contains(point) ? Drop::Insert
                                                : Drop::None;
    m_before = m_drop == Drop::Insert ? insertionBefore(point) : ToolType::None;
}

void ToolbarLayoutEditor::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || m_pressed == ToolType::None) {
        event->ignore();
        return;
    }
    event->accept();
    const ToolType tool = m_pressed;
    const bool dragged = m_dragging;
    const Drop drop = m_drop;
    const ToolType before = m_before;
    endDrag();
    if (!dragged)
        toggle(tool);
    else if (drop == Drop::Hide)
        change(withToolHidden(m_config, tool));
    else if (drop == Drop::Insert)
        change(withToolShown(m_config, tool, before));
    updateHover(event->position().toPoint());
}

void ToolbarLayoutEditor::endDrag()
{
    m_pressed = ToolType::None;
    m_dragging = false;
    m_drop = Drop::None;
    m_before = ToolType::None;
    unsetCursor();
    update();
}

void ToolbarLayoutEditor::toggle(ToolType tool)
{
    const bool isVisible = m_toolbarSection.contains(cellRect(tool));
    change(isVisible ? withToolHidden(m_config, tool) : withToolShown(m_config, tool, ToolType::None));
}

void ToolbarLayoutEditor::change(const ToolbarLayout &layout)
{
    if (layout == m_config)
        return;
    m_config = layout;
    layOut();
    Q_EMIT configChanged(toolbarLayoutJson(m_config));
}

void ToolbarLayoutEditor::updateHover(const QPoint &point)
{
    const Cell *cell = cellAt(point);
    const ToolType hovered = cell ? cell->tool : ToolType::None;
    const bool isOnLink = m_restore.contains(point);
    if (hovered == m_hovered && isOnLink == m_restoreHovered)
        return;
    m_hovered = hovered;
    m_restoreHovered = isOnLink;
    setCursor(isOnLink ? Qt::PointingHandCursor : cell ? Qt::OpenHandCursor : Qt::ArrowCursor);
    if (cell && !m_labelsFit)
        m_tips->enter(this, cell->rect, toolbarText(cell->tool));
    else
        m_tips->leave();
    update();
}

// --- keyboard --------------------------------------------------------------------------------------------------------

void ToolbarLayoutEditor::keyPressEvent(QKeyEvent *event)
{
    const bool moves = event->modifiers().testFlag(Qt::ControlModifier);
    if (m_pressed != ToolType::None) // the pointer has it
        return;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right: {
        const int step = event->key() == Qt::Key_Left ? -1 : 1;
        if (moves)
            moveCurrent(step);
        else
            goTo(beside(step));
        break;
    }
    case Qt::Key_Up:
    case Qt::Key_Down:
        goTo(inNextRow(event->key() == Qt::Key_Up ? -1 : 1));
        break;
    case Qt::Key_Home:
        goTo(m_cells.first().tool);
        break;
    case Qt::Key_End:
        goTo(m_cells.last().tool);
        break;
    case Qt::Key_Space:
        if (m_current == ToolType::None)
            change(defaultToolbarLayout());
        else
            toggle(m_current);
        break;
    default:
        event->ignore();
        return;
    }
    tipForCurrent();
}

ToolType ToolbarLayoutEditor::beside(int step) const
{
    const auto here =
        std::find_if(m_cells.begin(), m_cells.end(), [this](const Cell &cell) { return cell.tool == m_current; });
    const auto at = (here == m_cells.end() ? -1 : here - m_cells.begin()) + step;
    return at < 0 ? ToolType::None : m_cells.at(std::min(at, m_cells.size() - 1)).tool;
}

ToolType ToolbarLayoutEditor::inNextRow(int step) const
{
    if (m_current == ToolType::None)
        return step > 0 ? m_cells.first().tool : m_current;
    const QRect here = cellRect(m_current);
    const Cell *found = nullptr;
    for (const Cell &cell : m_cells) {
        const int away = (cell.rect.top() - here.top()) * step;
        if (away <= 0)
            continue;
        const auto rank = [&](const Cell &other) {
            return std::pair(std::abs(other.rect.top() - here.top()), std::abs(other.rect.left() - here.left()));
        };
        if (!found || rank(cell) < rank(*found))
            found = &cell;
    }
    return found ? found->tool : step < 0 ? ToolType::None : m_current;
}

void ToolbarLayoutEditor::moveCurrent(int step)
{
    QList<ToolType> shown;
    for (const Cell &cell : std::as_const(m_cells)) {
        if (cell.visible)
            shown.append(cell.tool);
    }
    const qsizetype at = shown.indexOf(m_current);
    if (at < 0 || at + step < 0)
        return;
    change(withToolShown(m_config, m_current, shown.value(step < 0 ? at - 1 : at + 2, ToolType::None)));
}

void ToolbarLayoutEditor::goTo(ToolType tool)
{
    m_current = tool;
    describe();
    update();
}

/// What has the keyboard is all there is to hear of the cells.
void ToolbarLayoutEditor::describe()
{
    QString name = title();
    if (hasFocus() && m_current == ToolType::None)
        name = text(kRestore);
    else if (hasFocus())
        name = toolbarText(m_current) + QStringLiteral(", ") +
               text(m_toolbarSection.contains(cellRect(m_current)) ? kToolbar : kHidden);
    if (name != accessibleName())
        setAccessibleName(name);
}

void ToolbarLayoutEditor::tipForCurrent()
{
    if (m_labelsFit || m_current == ToolType::None)
        m_tips->leave();
    else
        m_tips->enter(this, cellRect(m_current), toolbarText(m_current));
}

QString ToolbarLayoutEditor::help() const
{
    return text(hasFocus() ? kKeyHelp : kHelp);
}

void ToolbarLayoutEditor::focusInEvent(QFocusEvent *event)
{
    QWidget::focusInEvent(event);
    goTo(m_current);
    tipForCurrent();
}

void ToolbarLayoutEditor::focusOutEvent(QFocusEvent *event)
{
    QWidget::focusOutEvent(event);
    goTo(m_current);
    m_tips->leave();
}

void ToolbarLayoutEditor::leaveEvent(QEvent *event)
{
    updateHover({-1, -1});
    QWidget::leaveEvent(event);
}

void ToolbarLayoutEditor::hideEvent(QHideEvent *event)
{
    endDrag();
    m_tips->leave();
    QWidget::hideEvent(event);
}

void ToolbarLayoutEditor::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (event->oldSize().width() != event->size().width())
        layOut();
}

bool ToolbarLayoutEditor::event(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange || event->type() == QEvent::FontChange)
        layOut();
    return QWidget::event(event);
}

// --- painting --------------------------------------------------------------------------------------------------------

void ToolbarLayoutEditor::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(sized(font(), kTitleSize, QFont::DemiBold));
    painter.setPen(m_theme.primaryText());
    painter.drawText(headerRect(), Qt::AlignLeft | Qt::AlignVCenter, text(kTitle));
    QFont link = sized(font(), kLinkSize);
    link.setUnderline(m_restoreHovered);
    painter.setFont(link);
    painter.setPen(m_theme.accent());
    painter.drawText(m_restore, Qt::AlignRight | Qt::AlignVCenter, text(kRestore));
    painter.setFont(sized(font(), kHelpSize));
    painter.setPen(m_theme.secondaryText());
    painter.drawText(m_help, kHelpFlags, help());

    paintSection(painter, m_toolbarSection, text(kToolbar), m_drop == Drop::Insert);
    paintSection(painter, m_hiddenSection, text(kHidden), m_drop == Drop::Hide);
    for (const Cell &cell : m_cells) {
        const bool leftItsPlace = m_dragging && cell.tool == m_pressed;
        painter.setOpacity(leftItsPlace ? kLiftedOpacity : 1);
        paintCell(painter, cell, cell.rect, false);
    }
    painter.setOpacity(1);
    if (hasFocus() && !m_dragging) {
        painter.setPen(QPen(m_theme.accent(), kRing));
        painter.setBrush(Qt::NoBrush);
        if (m_current != ToolType::None)
            painter.drawRoundedRect(QRectF(cellRect(m_current)).adjusted(1, 1, -1, -1), 8, 8);
        else // its text ends where the card's content does: no room for a ring
            painter.drawLine(m_restore.bottomLeft() + QPoint(kLinkRoom, -1), m_restore.bottomRight() + QPoint(1, -1));
    }
    if (m_dragging) {
        for (const Cell &cell : m_cells) {
            if (cell.tool == m_pressed)
                paintCell(painter, cell, cell.rect.translated(m_pointer - m_pressPoint), true);
        }
    }
    if (m_drop == Drop::Insert) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_theme.accent());
        painter.drawRoundedRect(insertionMark(), kMarkWidth / 2.0, kMarkWidth / 2.0);
    }
}

void ToolbarLayoutEditor::paintSection(QPainter &painter, const QRect &section, const QString &title,
                                       bool isTarget) const
{
    painter.setFont(sized(font(), kSectionTitleSize));
    painter.setPen(m_theme.primaryText());
    painter.drawText(QRect(section.topLeft(), QSize(section.width(), kSectionTitleHeight - 4)),
                     Qt::AlignLeft | Qt::AlignVCenter, title);
    painter.setPen(QPen(isTarget ? m_theme.accent() : m_theme.fieldBorder(), 1));
    painter.setBrush(m_theme.formHover());
    painter.drawRoundedRect(QRectF(boxOf(section)).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
}

void ToolbarLayoutEditor::paintCell(QPainter &painter, const Cell &cell, const QRect &rect, bool lifted) const
{
    const bool hovered = cell.tool == m_hovered && m_pressed == ToolType::None;
    if (lifted || hovered) {
        painter.setPen(lifted ? QPen(m_theme.accent(), 1) : QPen(Qt::NoPen));
        painter.setBrush(lifted ? m_theme.cardSurface() : m_theme.hoverFill());
        painter.drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
    }
    const int top = m_labelsFit ? 6 : (kCell - kIconSize) / 2;
    const QRect icon(rect.left() + (kCell - kIconSize) / 2, rect.top() + top, kIconSize, kIconSize);
    paintToolGlyph(painter, cell.tool, icon, m_theme.toolIcon());
    if (!m_labelsFit)
        return;
    painter.setFont(sized(font(), kLabelSize));
    painter.setPen(m_theme.toolText());
    painter.drawText(QRect(rect.left(), rect.top() + 25, kCell, 14), Qt::AlignCenter, toolbarText(cell.tool));
}

} // namespace tavrel::ui
