#pragma once

#include <QFuture>
#include <QImage>
#include <QMimeData>

namespace tavrel {

/// Clipboard contents with a picture. Other programs see image/png, encoded on a worker while nobody has asked yet,
/// and image/bmp, encoded on request (on white, it has no transparency). Inside the program hasImage() and
/// imageData() give the picture itself. Texts and URLs of QMimeData can be set on top.
class PictureMimeData final : public QMimeData
{
    Q_OBJECT

public:
    /// png  the encoded picture; who asks for it before it is there waits for its worker
    PictureMimeData(const QImage &image, const QFuture<QByteArray> &png);

    [[nodiscard]] QStringList formats() const override;
    [[nodiscard]] bool hasFormat(const QString &mimeType) const override;

protected:
    [[nodiscard]] QVariant retrieveData(const QString &mimeType, QMetaType type) const override;

private:
    QImage m_image;
    QFuture<QByteArray> m_png;
};

} // namespace tavrel
