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
    return Trace(12, 6.4)
        .corner(17.6, 6.4, 1.6)
        .to(17.6, 11.6)
        .to(11.6, 17.6)
        .corner(6.4, 17.6, 1.6)
        .corner(6.4, 6.4, 1.6)
        .close();
}

/// The turned corner; its point lies inside the sheet, its flanks swell a little.
Trace fold()
{
    return Trace(17.6, 11.6)
        .cubic(15.6, 12.6, 14.2, 12.7, 12.9, 12.2)
        .quad(12.2, 12, 12.2, 12.9)
        .cubic(12.7, 14.2, 12.6, 15.6, 11.6, 17.6)
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

    QPen frame(Qt::white, 1.9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    painter.setPen(frame);
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(Trace(6.2, 9.8).corner(6.2, 6.2, 1.8).to(9.8, 6.2).path());
    painter.drawPath(Trace(14.2, 6.2).corner(17.8, 6.2, 1.8).to(17.8, 9.2).path());
    painter.drawPath(Trace(6.2, 14.2).corner(6.2, 17.8, 1.8).to(9.2, 17.8).path());

    QLinearGradient turned(12.4, 12.4, 15.2, 15.2);
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
