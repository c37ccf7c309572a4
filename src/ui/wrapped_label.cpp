#include "ui/wrapped_label.h"

#include <QPainter>
#include <QStyle>
#include <QTextLayout>

#include <cmath>

namespace tavrel::ui {

WrappedLabel::WrappedLabel(int width, QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setFixedWidth(width);
}

QSize WrappedLabel::sizeHint() const
{
    return {minimumWidth(), heightForWidth(minimumWidth())};
}

QSize WrappedLabel::minimumSizeHint() const
{
    return sizeHint();
}

int WrappedLabel::heightForWidth(int width) const
{
    ensurePolished(); // the font comes from the style sheet
    QTextLayout layout;
    return static_cast<int>(std::ceil(layOut(layout, width)));
}

qreal WrappedLabel::layOut(QTextLayout &layout, qreal width) const
{
    QTextOption option(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft));
    option.setTextDirection(layoutDirection());
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setText(text().replace(u'\n', QChar::LineSeparator));
    layout.setFont(font());
    layout.setTextOption(option);
    layout.beginLayout();
    qreal height = 0;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLeadingIncluded(true);
        line.setLineWidth(width);
        line.setPosition({0, height});
        height += line.height();
    }
    layout.endLayout();
    return height;
}

void WrappedLabel::paintEvent(QPaintEvent *)
{
    QTextLayout layout;
    layOut(layout, width());
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    layout.draw(&painter, {0, 0});
}

} // namespace tavrel::ui
