#pragma once

#include <QByteArray>
#include <QFont>
#include <QImage>
#include <QPointF>
#include <QRect>
#include <QString>

namespace tavrel::redaction {

/// What lies over a text.
struct Cover
{
    enum class Effect { Mosaic, Blur, MosaicBrush, BlurBrush, EraseWholeBox };
    Effect effect = Effect::Mosaic;
    int strength = 15; ///< as the value control offers it: block 5 to 40, blur 1 to 20

    [[nodiscard]] bool isBlur() const { return effect == Effect::Blur || effect == Effect::BlurBrush; }
    /// Pixels per block, or radius of the blur, at a device pixel ratio of 1.
    [[nodiscard]] int pixels() const;
};

/// Dark text in one line on a white picture.
struct Page
{
    QSize size;
    QFont font;
    QPointF origin; ///< left end of the base line, pixels
    QRect box;      ///< what the user drew over the text

    [[nodiscard]] QImage withText(const QString &text) const;
    [[nodiscard]] QImage withText(const QString &text, const QPointF &at) const;
};

enum class Format { Png, Jpeg };

/// The picture with the covering shape, as the overlay hands it over for saving.
[[nodiscard]] QImage covered(const QImage &picture, const QRect &box, const Cover &cover);
/// What a reader of the saved file sees; through memory, for trying out texts.
[[nodiscard]] QImage throughFormat(const QImage &picture, Format format);
/// Saves into `folder` as the program saves and returns the bytes of the file; empty on failure.
[[nodiscard]] QByteArray savedFile(const QImage &picture, const QString &folder, Format format);

} // namespace tavrel::redaction
