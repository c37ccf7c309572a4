#include "output/picture_mime_data.h"

#include "base/work_queue.h"
#include "output/image_file.h"

#include <QBuffer>

#include <utility>

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

PngEncoding::PngEncoding(const QImage &image, WorkQueue &queue)
    : m_png(std::make_shared<ClaimedWork<QByteArray>>([image] { return encodedPng(image); }))
{
    queue.run([wanted = std::weak_ptr(m_png)] {
        if (const auto png = wanted.lock())
            png->tryDo();
    });
}

PngEncoding::PngEncoding(const QByteArray &png) : m_png(std::make_shared<ClaimedWork<QByteArray>>(png)) {}

PictureMimeData::PictureMimeData(const QImage &image, std::shared_ptr<const PngEncoding> png)
    : m_image(image),
      m_png(std::move(png))
{}

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
        return m_png->bytes();
    if (mimeType == kBmp)
        return encodedBmp(m_image);
    return QMimeData::retrieveData(mimeType, type);
}

} // namespace tavrel
