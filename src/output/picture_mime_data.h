#pragma once

#include "base/claimed_work.h"

#include <QImage>
#include <QMimeData>

#include <memory>

namespace tavrel {

class WorkQueue;

/// A picture that becomes PNG on a worker. Encodings that have not begun when their last user goes are dropped, so a
/// row of quick copies does not keep the machine busy. GUI thread only.
class PngEncoding final
{
public:
    /// queue  whose turn it is; may go before the encoding
    PngEncoding(const QImage &image, WorkQueue &queue);
    /// Done already.
    explicit PngEncoding(const QByteArray &png);

    /// Waits for the worker if it has begun, and encodes at once if it has not.
    [[nodiscard]] QByteArray bytes() const { return m_png->result(); }

private:
    std::shared_ptr<ClaimedWork<QByteArray>> m_png;
};

/// Clipboard contents with a picture. Other programs see image/png, encoded on a worker while nobody has asked yet,
/// and image/bmp, encoded on request (on white, it has no transparency; 4 ms for 1920 x 1080, 30 ms for 4K). Inside the
/// program hasImage() and imageData() give the picture itself. Texts and URLs of QMimeData can be set on top.
class PictureMimeData final : public QMimeData
{
    Q_OBJECT

public:
    /// png  the same picture; shared by the attempts to put it on the clipboard
    PictureMimeData(const QImage &image, std::shared_ptr<const PngEncoding> png);

    [[nodiscard]] QStringList formats() const override;
    [[nodiscard]] bool hasFormat(const QString &mimeType) const override;

protected:
    [[nodiscard]] QVariant retrieveData(const QString &mimeType, QMetaType type) const override;

private:
    QImage m_image;
    std::shared_ptr<const PngEncoding> m_png;
};

} // namespace tavrel
