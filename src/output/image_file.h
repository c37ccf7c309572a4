#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

class QIODevice;

namespace tavrel {

enum class ImageFileFormat { Png, Jpg };

/// From a name in any case: "jpg" and "jpeg" are Jpg, everything else is Png.
[[nodiscard]] ImageFileFormat imageFileFormat(const QString &name);
/// "png" or "jpg".
[[nodiscard]] QString imageFileExtension(ImageFileFormat format);

/// The picture on white, RGB32, at a device pixel ratio of 1: as many pixels as before.
[[nodiscard]] QImage flattenedOnWhite(const QImage &image);

/// Encodes the pixels and nothing else: no texts of the image, no device pixel ratio. PNG at default compression,
/// JPEG on white at `jpegQuality` (0 to 100). False when the device refuses data or the format the size.
/// Takes 0.1 to 1 s for a whole screen (see bench_output_image_file): not for the GUI thread. Safe on any other.
[[nodiscard]] bool encodeImage(const QImage &image, QIODevice &device, ImageFileFormat format, int jpegQuality = 92);
[[nodiscard]] QByteArray encodedPng(const QImage &image);

} // namespace tavrel
