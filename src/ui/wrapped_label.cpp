#include "ui/wrapped_label.h"

#include <QPaintEvent>
#include <QPainter>
#include <QStyle>

#include <cmath>

namespace tavrel::ui {

WrappedLabel::WrappedLabel(int width, QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setFixedWidth(width);
    m_lines.setCacheEnabled(true);
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
    return static_cast<int>(std::ceil(lines(width).boundingRect().bottom()));
}

int WrappedLabel::heightOfWholeLines(int most) const
{
    const QTextLayout &layout = lines(minimumWidth());
    qreal height = 0;
    for (int i = 0; i < layout.lineCount() && layout.lineAt(i).rect().bottom() <= most; ++i)
        height = layout.lineAt(i).rect().bottom();
    return static_cast<int>(std::ceil(height));
}

const QTextLayout &WrappedLabel::lines(qreal width) const
{
    ensurePolished(); // the font comes from the style sheet
    QTextOption option(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft));
    option.setTextDirection(layoutDirection());
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    const QString broken = text().replace(u'\n', QChar::LineSeparator);
    if (width == m_width && broken == m_lines.text() && font() == m_lines.font() &&
        option.textDirection() == m_lines.textOption().textDirection())
        return m_lines;
    m_width = width;
    m_lines.setText(broken);
    m_lines.setFont(font());
    m_lines.setTextOption(option);
    qreal height = 0;
    m_lines.beginLayout();
    for (QTextLine line = m_lines.createLine(); line.isValid(); line = m_lines.createLine()) {
        line.setLeadingIncluded(true);
        line.setLineWidth(width);
        line.setPosition({0, height});
        height += line.height();
    }
    m_lines.endLayout();
    return m_lines;
}

void WrappedLabel::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    lines(width()).draw(&painter, {0, 0}, {}, event->rect());
}

} // namespace tavrel::ui
