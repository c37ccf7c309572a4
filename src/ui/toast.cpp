#include "ui/toast.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

namespace tavrel::ui {
namespace {

constexpr int kShownMs = 2000;

QFont toastFont()
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(14);
    return font;
}

} // namespace

Toast::Toast(QObject *parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(kShownMs);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_text.clear();
        Q_EMIT changed();
    });
}

void Toast::show(const QString &text)
{
    m_text = text;
    m_timer.start();
    Q_EMIT changed();
}

QRectF Toast::box(const QSizeF &host) const
{
    if (!isShown())
        return {};
    const QFontMetricsF metrics(toastFont());
    const QSizeF size(metrics.horizontalAdvance(m_text) + 32, metrics.height() + 18);
    return {QPointF((host.width() - size.width()) / 2, host.height() * 0.12), size};
}

void Toast::paint(QPainter &painter, const QSizeF &host) const
{
    const QRectF place = box(host);
    if (place.isNull())
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 170));
    painter.drawRoundedRect(place, 10, 10);
    painter.setPen(QColor(255, 255, 255, 235));
    painter.setFont(toastFont());
    painter.drawText(place, Qt::AlignCenter, m_text);
    painter.restore();
}

} // namespace tavrel::ui
