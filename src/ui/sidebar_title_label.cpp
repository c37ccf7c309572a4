#include "ui/sidebar_title_label.h"

#include <QEvent>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace tavrel::ui {

SidebarTitleLabel::SidebarTitleLabel(const QString &title, QWidget *parent) : QLabel(title, parent)
{
    setProperty("role", QStringLiteral("title"));
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

QSize SidebarTitleLabel::minimumSizeHint() const
{
    return {0, QLabel::minimumSizeHint().height()};
}

bool SidebarTitleLabel::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip && fontMetrics().horizontalAdvance(text()) > contentsRect().width()) {
        QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(), text(), this);
        return true;
    }
    return QLabel::event(event);
}

void SidebarTitleLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(contentsRect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()));
}

} // namespace tavrel::ui
