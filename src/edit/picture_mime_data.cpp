#include "edit/picture_mime_data.h"

#include "edit/image_file.h"

#include <QBuffer>

namespace tavrel {
namespace {

// Listing Qt's own image format would make the clipboard offer every format that Qt can write, each of them encoded on
// the GUI thread for a clipboard manager that collects them all.
const QString kQtImage = QStringLiteral("application/x-qt-image");
const QString kPng = QStringLiteral("image/png");
const QString kBmp = QStringLiteral("image/bmp");

QByteArray encodedBmp(const QImage &image)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    flattenedOnWhite(image).save(&buffer, "BMP");
    return buffer.data();
}

} // namespace

PictureMimeData::PictureMimeData(const QImage &image, const QFuture<QByteArray> &png) : m_image(image), m_png(png) {}

QStringList PictureMimeData::formats() const
{
    return QStringList{kPng, kBmp} + QMimeData::formats();
}

bool PictureMimeData::hasFormat(const QString &mimeType) const
{
    return mimeType == kQtImage || formats().contains(mimeType);
}

QVariant PictureMimeData::retrieveData(const QString &mimeType, QMetaType type) const
{
    if (mimeType == kQtImage)
        return m_image;
    if (mimeType == kPng)
        return m_png.result();
    if (mimeType == kBmp)
        return encodedBmp(m_image);
    return QMimeData::retrieveData(mimeType, type);
}

} // namespace tavrel
