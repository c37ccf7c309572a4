#include "app/app_icon.h"

#include "ui/glyphs.h"

#include <QDir>
#include <QIcon>
#include <QImage>
#include <QPixmap>

#include <cstdio>

namespace tavrel {

int renderAppIcon(const QStringList &values)
{
    if (values.size() != 1) {
        std::fprintf(stderr, "用法: tavrel --render-app-icon <iconsetDir>\n");
        return 2;
    }
    const QList<QSize> sizes = ui::appIcon().availableSizes();
    const QDir folder(values.first());
    if (sizes.isEmpty() || !folder.mkpath(QStringLiteral("."))) {
        std::fprintf(stderr, "无法写入 %s\n", qPrintable(values.first()));
        return 1;
    }
    const QImage largest = ui::appIcon().pixmap(sizes.last()).toImage();
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
        const QString path = folder.filePath(QStringLiteral("%1x%1.png").arg(size));
        const QImage icon = largest.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        if (!icon.save(path)) {
            std::fprintf(stderr, "无法写入 %s\n", qPrintable(path));
            return 1;
        }
        std::printf("%s\n", qPrintable(path));
    }
    return 0;
}

} // namespace tavrel
