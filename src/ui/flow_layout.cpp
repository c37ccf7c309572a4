#include "ui/flow_layout.h"

#include <QWidget>

#include <algorithm>

namespace tavrel::ui {

FlowLayout::FlowLayout(int spacing, QWidget *parent) : QLayout(parent)
{
    setContentsMargins(0, 0, 0, 0);
    setSpacing(spacing);
}

FlowLayout::~FlowLayout()
{
    qDeleteAll(m_items);
}

void FlowLayout::addItem(QLayoutItem *item)
{
    m_items.append(item);
    invalidate();
}

int FlowLayout::count() const
{
    return static_cast<int>(m_items.size());
}

QLayoutItem *FlowLayout::itemAt(int index) const
{
    return m_items.value(index);
}

QLayoutItem *FlowLayout::takeAt(int index)
{
    if (index < 0 || index >= m_items.size())
        return nullptr;
    QLayoutItem *item = m_items.takeAt(index);
    invalidate();
    return item;
}

Qt::Orientations FlowLayout::expandingDirections() const
{
    return {};
}

bool FlowLayout::hasHeightForWidth() const
{
    return true;
}

int FlowLayout::heightForWidth(int width) const
{
    return layOut(QRect(0, 0, width, 0), Apply::No);
}

QSize FlowLayout::sizeHint() const
{
    int width = 0;
    int height = 0;
    for (const QLayoutItem *item : m_items) {
        if (item->isEmpty())
            continue;
        const QSize size = item->sizeHint();
        width += size.width() + (width > 0 ? spacing() : 0);
        height = std::max(height, size.height());
    }
    const QMargins margins = contentsMargins();
    return {width + margins.left() + margins.right(), height + margins.top() + margins.bottom()};
}

QSize FlowLayout::minimumSize() const
{
    QSize size(0, 0);
    for (const QLayoutItem *item : m_items) {
        if (!item->isEmpty())
            size = size.expandedTo(item->minimumSize());
    }
    const QMargins margins = contentsMargins();
    return size + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

void FlowLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    layOut(rect, Apply::Yes);
}

int FlowLayout::layOut(const QRect &rect, Apply apply) const
{
    const QMargins margins = contentsMargins();
    const QRect room = rect.marginsRemoved(margins);
    const bool mirrored = parentWidget() && parentWidget()->layoutDirection() == Qt::RightToLeft;
    int x = 0;
    int y = 0;
    int line = 0;
    for (QLayoutItem *item : m_items) {
        if (item->isEmpty())
            continue;
        const QSize hint = item->sizeHint();
        const QSize size(std::min(hint.width(), std::max(room.width(), 0)), hint.height());
        if (x > 0 && x + size.width() > room.width()) {
            x = 0;
            y += line + spacing();
            line = 0;
        }
        if (apply == Apply::Yes) {
            const int left = mirrored ? room.left() + room.width() - x - size.width() : room.left() + x;
            item->setGeometry(QRect(QPoint(left, room.top() + y), size));
        }
        x += size.width() + spacing();
        line = std::max(line, size.height());
    }
    return y + line + margins.top() + margins.bottom();
}

} // namespace tavrel::ui
