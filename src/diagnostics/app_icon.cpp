#include "diagnostics/app_icon.h"

#include "ui/glyphs.h"

#include <QDir>
#include <QIcon>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tavrel {
namespace {

QImage appIconImage(const QImage &brand, int size)
{
    return brand.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

QImage documentIconImage(const QImage &brand, int size)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);

    // Whole pixels for edges and fold: at 16 the outline would be a smear otherwise.
    const auto part = [size](double share) { return std::round(size * share); };
    const double line = std::max(1.0, std::round(size / 64.0));
    const double inset = line / 2;
    const QRectF page = QRectF(0, 0, size, size)
                            .adjusted(part(0.125), part(0.03), -part(0.125), -part(0.03))
                            .adjusted(inset, inset, -inset, -inset);
    const double fold = part(0.25);
    const QPointF foldLeft(page.right() - fold, page.top());
    const QPointF foldBelow(page.right(), page.top() + fold);
    painter.setPen(QPen(QColor(0x8d, 0x96, 0xa5), line, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(QColor(0xfb, 0xfc, 0xfe));
    painter.drawPolygon(
        QPolygonF({page.topLeft(), foldLeft, foldBelow, page.bottomRight(), page.bottomLeft(), page.topLeft()}));
    painter.setBrush(QColor(0xd9, 0xde, 0xe7));
    painter.drawPolygon(QPolygonF({foldLeft, foldBelow, QPointF(foldLeft.x(), foldBelow.y())}));

    // Even, as every size is, so that it stands in the middle.
    const int side = 2 * static_cast<int>(part(0.28));
    painter.drawImage(QPointF((size - side) / 2.0, size - side - part(0.12)), appIconImage(brand, side));
    return image;
}

int renderIcons(const QStringList &values, const char *usage, QImage (*render)(const QImage &brand, int size))
{
    if (values.size() != 1) {
        std::fprintf(stderr, "用法: %s\n", usage);
        return 2;
    }
    const QIcon icon = ui::appIcon();
    const QList<QSize> sizes = icon.availableSizes();
    const QDir folder(values.first());
    if (sizes.isEmpty() || !folder.mkpath(QStringLiteral("."))) {
        std::fprintf(stderr, "无法写入 %s\n", qPrintable(values.first()));
        return 1;
    }
    const QImage brand = icon.pixmap(sizes.last(), 1.0).toImage();
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
        const QString path = folder.filePath(QStringLiteral("%1x%1.png").arg(size));
        if (!render(brand, size).save(path)) {
            std::fprintf(stderr, "无法写入 %s\n", qPrintable(path));
            return 1;
        }
        std::printf("%s\n", qPrintable(path));
    }
    return 0;
}

} // namespace

int renderAppIcon(const QStringList &values)
{
    return renderIcons(values, "tavrel --render-app-icon <iconsetDir>", appIconImage);
}

int renderDocumentIcon(const QStringList &values)
{
    return renderIcons(values, "tavrel --render-document-icon <iconsetDir>", documentIconImage);
}

} // namespace tavrel
