#include "ui/segmented_control.h"

#include "ui/glyphs.h"

#include <QAccessibleWidget>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace tavrel::ui {
namespace {

constexpr int kHeight = 34;
constexpr int kInset = 3; ///< of the cells
constexpr int kGlideMs = 150;
constexpr double kRadius = 11;
constexpr double kThumbRadius = 9;
constexpr QColor kThumbShade(15, 23, 42, 14);
constexpr int kFontSize = 11;
constexpr double kGlyph = 16;
constexpr double kGap = 5;
constexpr int kRoom = 20; ///< beside the text, for the size hint
constexpr double kDisabledOpacity = 0.45;

QString nameOf(const SegmentedControl::Item &item)
{
    return item.text.isEmpty() ? item.tip : item.text;
}

/// One choice, for assistive tools.
class ItemAccess final : public QAccessibleInterface
{
public:
    ItemAccess(SegmentedControl &control, int index) : m_control(control), m_index(index) {}

    bool isValid() const override { return m_index < m_control.items().size(); }
    QObject *object() const override { return nullptr; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    QAccessibleInterface *parent() const override { return QAccessible::queryAccessibleInterface(&m_control); }
    QAccessibleInterface *child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QString text(QAccessible::Text which) const override
    {
        if (!isValid())
            return {};
        const SegmentedControl::Item &item = m_control.items()[m_index];
        if (which == QAccessible::Name)
            return nameOf(item);
        return which == QAccessible::Description ? item.tip : QString();
    }
    void setText(QAccessible::Text, const QString &) override {}
    QRect rect() const override
    {
        const QRect cell = m_control.cell(m_index).toRect();
        return {m_control.mapToGlobal(cell.topLeft()), cell.size()};
    }
    QAccessible::Role role() const override { return QAccessible::PageTab; }
    QAccessible::State state() const override
    {
        QAccessible::State state;
        state.selectable = true;
        state.selected = m_control.current() == m_index;
        state.focusable = true;
        state.focused = state.selected && m_control.hasFocus();
        state.disabled = !m_control.isEnabled();
        state.invisible = !m_control.isVisible();
        return state;
    }
    void *interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(&m_action) : nullptr;
    }

private:
    class Press final : public QAccessibleActionInterface
    {
    public:
        explicit Press(ItemAccess &item) : m_item(item) {}
        QStringList actionNames() const override { return {pressAction()}; }
        void doAction(const QString &action) override
        {
            if (action == pressAction())
                m_item.m_control.choose(m_item.m_index);
        }
        QStringList keyBindingsForAction(const QString &) const override { return {}; }

    private:
        ItemAccess &m_item;
    };

    SegmentedControl &m_control;
    int m_index;
    Press m_action{*this};
};

class ControlAccess final : public QAccessibleWidget
{
public:
    explicit ControlAccess(SegmentedControl *control)
        : QAccessibleWidget(control, QAccessible::PageTabList),
          m_control(*control)
    {}
    ~ControlAccess() override
    {
        for (const QAccessible::Id id : m_ids)
            QAccessible::deleteAccessibleInterface(id);
    }

    int childCount() const override { return static_cast<int>(m_control.items().size()); }
    QAccessibleInterface *child(int index) const override
    {
        if (index < 0 || index >= childCount())
            return nullptr;
        while (static_cast<int>(m_ids.size()) <= index)
            m_ids.push_back(
                QAccessible::registerAccessibleInterface(new ItemAccess(m_control, static_cast<int>(m_ids.size()))));
        return QAccessible::accessibleInterface(m_ids[static_cast<std::size_t>(index)]);
    }
    int indexOfChild(const QAccessibleInterface *child) const override
    {
        for (int i = 0; i < childCount(); ++i) {
            if (this->child(i) == child)
                return i;
        }
        return -1;
    }
    QAccessibleInterface *childAt(int x, int y) const override
    {
        return child(m_control.indexAt(m_control.mapFromGlobal(QPoint(x, y)).x()));
    }
    QString text(QAccessible::Text which) const override
    {
        const int current = m_control.current();
        if (which == QAccessible::Value)
            return current < 0 || current >= childCount() ? QString() : nameOf(m_control.items()[current]);
        return QAccessibleWidget::text(which);
    }

private:
    SegmentedControl &m_control;
    mutable std::vector<QAccessible::Id> m_ids; ///< of the items
};

QAccessibleInterface *accessOf(const QString &, QObject *object)
{
    auto *control = qobject_cast<SegmentedControl *>(object);
    return control ? new ControlAccess(control) : nullptr;
}

} // namespace

SegmentedControl::SegmentedControl(const Theme &theme, QWidget *parent) : QWidget(parent), m_theme(theme)
{
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(accessOf);
        return true;
    }();
    setFixedHeight(kHeight);
    setMouseTracking(true);
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    m_animation.setDuration(kGlideMs);
    m_animation.setEasingCurve(QEasingCurve::OutCubic);
    connect(&m_animation, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
        m_animatedIndex = value.toDouble();
        update();
    });
}

void SegmentedControl::setTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

void SegmentedControl::setItems(const QList<Item> &items)
{
    m_items = items;
    m_hovered = -1;
    setToolTip({});
    const int last = static_cast<int>(items.size()) - 1;
    if (m_current > last)
        setCurrent(last);
    updateGeometry();
    update();
}

void SegmentedControl::setCurrent(int index, Motion motion)
{
    index = std::clamp(index, -1, std::max(-1, static_cast<int>(m_items.size()) - 1));
    if (index == m_current)
        return;
    m_current = index;
    m_animation.stop();
    if (motion == Motion::Glide && isVisible()) {
        m_animation.setStartValue(m_animatedIndex);
        m_animation.setEndValue(double(index));
        m_animation.start();
    } else {
        m_animatedIndex = index;
    }
    announce();
    update();
}

void SegmentedControl::announce()
{
    QAccessibleValueChangeEvent value(this, m_current < 0 ? QString() : nameOf(m_items[m_current]));
    QAccessible::updateAccessibility(&value);
    QAccessibleEvent selection(this, QAccessible::Selection);
    selection.setChild(m_current);
    QAccessible::updateAccessibility(&selection);
    if (!hasFocus() || m_current < 0)
        return;
    QAccessibleEvent focus(this, QAccessible::Focus); // what a screen reader follows while arrow keys choose
    focus.setChild(m_current);
    QAccessible::updateAccessibility(&focus);
}

void SegmentedControl::choose(int index)
{
    const int before = m_current;
    setCurrent(index, Motion::Glide);
    if (m_current != before)
        Q_EMIT currentChanged(m_current);
}

QRectF SegmentedControl::cell(int index) const
{
    const auto count = std::max<qsizetype>(m_items.size(), 1);
    const double width = (this->width() - 2 * kInset) / static_cast<double>(count);
    return {kInset + index * width, kInset, width, static_cast<double>(height() - 2 * kInset)};
}

int SegmentedControl::indexAt(double x) const
{
    if (m_items.isEmpty())
        return -1;
    const int index = static_cast<int>((x - kInset) / cell(0).width());
    return index < 0 || index >= m_items.size() ? -1 : index;
}

QFont SegmentedControl::itemFont(bool isCurrent) const
{
    QFont small = font();
    small.setPixelSize(kFontSize);
    small.setWeight(isCurrent ? QFont::DemiBold : QFont::Medium);
    return small;
}

QSize SegmentedControl::sizeHint() const
{
    const QFontMetricsF metrics(itemFont(true));
    double widest = 0;
    for (const Item &item : m_items) {
        double width = metrics.horizontalAdvance(item.text);
        if (!item.glyph.isEmpty())
            width += kGlyph + (item.text.isEmpty() ? 0 : kGap);
        widest = std::max(widest, width);
    }
    return {2 * kInset + static_cast<int>(std::ceil(widest + kRoom)) * static_cast<int>(m_items.size()), kHeight};
}

QSize SegmentedControl::minimumSizeHint() const
{
    return {2 * kInset + static_cast<int>(kGlyph + kRoom) * static_cast<int>(m_items.size()), kHeight};
}

void SegmentedControl::setHovered(int index)
{
    if (index == m_hovered)
        return;
    m_hovered = index;
    setToolTip(index < 0 ? QString() : m_items[index].tip);
    update();
}

void SegmentedControl::mouseMoveEvent(QMouseEvent *event)
{
    setHovered(indexAt(event->position().x()));
}

void SegmentedControl::leaveEvent(QEvent *event)
{
    setHovered(-1);
    QWidget::leaveEvent(event);
}

void SegmentedControl::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const int index = indexAt(event->position().x());
    if (index >= 0)
        choose(index);
}

void SegmentedControl::keyPressEvent(QKeyEvent *event)
{
    const int last = static_cast<int>(m_items.size()) - 1;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Up:
        choose(std::max(m_current - 1, std::min(0, last)));
        break;
    case Qt::Key_Right:
    case Qt::Key_Down:
        choose(std::min(m_current + 1, last));
        break;
    case Qt::Key_Home:
        choose(std::min(0, last));
        break;
    case Qt::Key_End:
        choose(last);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

void SegmentedControl::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::EnabledChange && !isEnabled())
        setHovered(-1);
    QWidget::changeEvent(event);
}

void SegmentedControl::focusInEvent(QFocusEvent *event)
{
    update();
    QWidget::focusInEvent(event);
}

void SegmentedControl::focusOutEvent(QFocusEvent *event)
{
    update();
    QWidget::focusOutEvent(event);
}

void SegmentedControl::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_theme.controlSurface());
    painter.drawRoundedRect(QRectF(rect()), kRadius, kRadius);
    if (!isEnabled())
        painter.setOpacity(kDisabledOpacity);
    if (m_current >= 0 && !m_items.isEmpty()) {
        QRectF thumb = cell(0);
        thumb.translate(m_animatedIndex * thumb.width(), 0);
        if (!m_theme.dark) {
            painter.setBrush(kThumbShade);
            painter.drawRoundedRect(thumb.translated(0, 1), kThumbRadius, kThumbRadius);
        }
        painter.setBrush(m_theme.segmentThumb());
        painter.drawRoundedRect(thumb, kThumbRadius, kThumbRadius);
    }
    for (int i = 0; i < m_items.size(); ++i)
        paintItem(painter, i);
    if (hasFocus()) {
        painter.setPen(QPen(m_theme.accent(), 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), kRadius - 0.75, kRadius - 0.75);
    }
}

void SegmentedControl::paintItem(QPainter &painter, int index) const
{
    const Item &item = m_items[index];
    const QRectF room = cell(index);
    const bool isLit = index == m_current || index == m_hovered;
    const QColor color = isLit ? m_theme.studioText() : m_theme.studioSecondaryText();
    const QFont small = itemFont(index == m_current);
    const QFontMetricsF metrics(small);
    const double glyph = item.glyph.isEmpty() ? 0 : kGlyph;
    const double gap = item.glyph.isEmpty() || item.text.isEmpty() ? 0 : kGap;
    const QString text = metrics.elidedText(item.text, Qt::ElideRight, room.width() - glyph - gap);
    const double width = glyph + gap + metrics.horizontalAdvance(text);
    double left = room.center().x() - width / 2;
    if (glyph > 0) {
        paintGlyph(painter, item.glyph, QRectF(left, room.center().y() - kGlyph / 2, kGlyph, kGlyph), color);
        left += glyph + gap;
    }
    painter.setFont(small);
    painter.setPen(color);
    painter.drawText(QRectF(left, room.top(), room.right() - left, room.height()), Qt::AlignLeft | Qt::AlignVCenter,
                     text);
}

} // namespace tavrel::ui
