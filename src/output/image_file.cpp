#include "output/image_file.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageWriter>
#include <QPainter>

namespace tavrel {
namespace {

/// The same pixels without the texts, the resolution and the device pixel ratio of `image`, which must outlive it.
QImage barePixels(const QImage &image)
{
    QImage bare(image.constBits(), image.width(), image.height(), image.bytesPerLine(), image.format());
    if (image.colorCount() > 0)
        bare.setColorTable(image.colorTable());
    if (image.colorSpace().isValid())
        bare.setColorSpace(image.colorSpace());
    return bare;
}

} // namespace

ImageFileFormat imageFileFormat(const QString &name)
{
    const QString lower = name.toLower();
    return lower == u"jpg" || lower == u"jpeg" ? ImageFileFormat::Jpg : ImageFileFormat::Png;
}

QString imageFileExtension(ImageFileFormat format)
{
    return format == ImageFileFormat::Jpg ? QStringLiteral("jpg") : QStringLiteral("png");
}

QImage flattenedOnWhite(const QImage &image)
{
    QImage flat(image.size(), QImage::Format_RGB32);
    flat.fill(Qt::white);
    QPainter painter(&flat);
    painter.drawImage(0, 0, barePixels(image));
    return flat;
}

bool encodeImage(const QImage &image, QIODevice &device, ImageFileFormat format, int jpegQuality)
{
    QImageWriter writer(&device, format == ImageFileFormat::Jpg ? "JPG" : "PNG");
    if (format == ImageFileFormat::Png)
        return writer.write(barePixels(image));
    writer.setQuality(jpegQuality);
    return writer.write(flattenedOnWhite(image));
}

QByteArray encodedPng(const QImage &image)
{
    QBuffer buffer;
    if (!buffer.open(QIODevice::WriteOnly) || !encodeImage(image, buffer, ImageFileFormat::Png))
        return {};
    return buffer.data();
}

} // namespace tavrel
