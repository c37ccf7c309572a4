#include "ui/app_mark.h"

#include "ui/glyph_pen.h"

#include <QLinearGradient>
#include <QPainter>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr QColor tileTop{46, 160, 255};
constexpr QColor tileBottom{16, 74, 214};
constexpr QColor foldLight{255, 214, 92};
constexpr QColor foldDeep{250, 160, 30};

/// The picked-up sheet: square but for the bottom right corner, where it is turned over.
Trace sheet()
{
    return Trace(12, 5.6)
        .corner(18.4, 5.6, 1.6)
        .to(18.4, 10.8)
        .to(10.8, 18.4)
        .corner(5.6, 18.4, 1.6)
        .corner(5.6, 5.6, 1.6)
        .close();
}

/// The turned corner; its point lies inside the sheet, its flanks swell a little.
Trace fold()
{
    return Trace(18.4, 10.8)
        .cubic(15.8, 12.2, 13.9, 12.3, 12.3, 11.7)
        .quad(11.4, 11.4, 11.7, 12.3)
        .cubic(12.3, 13.9, 12.2, 15.8, 10.8, 18.4)
        .close();
}

} // namespace

void paintAppMark(QPainter &painter, const QRectF &rect)
{
    const qreal side = std::min(rect.width(), rect.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.center() - QPointF(side, side) / 2);
    painter.scale(side / GlyphPen::box, side / GlyphPen::box);

    QLinearGradient tile(4, 1, 20, 23);
    tile.setColorAt(0, tileTop);
    tile.setColorAt(1, tileBottom);
    painter.setPen(Qt::NoPen);
    painter.setBrush(tile);
    painter.drawRoundedRect(QRectF(1, 1, 22, 22), 5.4, 5.4);

    painter.setBrush(QColor(255, 255, 255, 52));
    painter.drawPath(sheet().path());

    QPen frame(Qt::white, 2.1, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    painter.setPen(frame);
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(Trace(5.4, 9.6).corner(5.4, 5.4, 2).to(9.6, 5.4).path());
    painter.drawPath(Trace(14.4, 5.4).corner(18.6, 5.4, 2).to(18.6, 8.2).path());
    painter.drawPath(Trace(5.4, 14.4).corner(5.4, 18.6, 2).to(8.2, 18.6).path());

    QLinearGradient turned(11.6, 11.6, 15, 15);
    turned.setColorAt(0, foldLight);
    turned.setColorAt(1, foldDeep);
    painter.setPen(Qt::NoPen);
    painter.setBrush(turned);
    painter.drawPath(fold().path());
    painter.restore();
}

QImage renderAppIcon(int size)
{
    if (size < 1)
        return {};
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    paintAppMark(painter, QRectF(0, 0, size, size));
    painter.end();
    return image;
}

} // namespace tavrel::ui
