#pragma once

#include <QImage>

namespace tavrel {

struct SettingsConfig;

/// What happens to every picture that is saved or copied.
struct ImageOutputOptions
{
    bool scaleTo1x = false; ///< one pixel per logical pixel
    bool addBorder = false; ///< a frame of one device pixel inside the picture

    friend bool operator==(const ImageOutputOptions &, const ImageOutputOptions &) = default;
};

[[nodiscard]] ImageOutputOptions imageOutputOptions(const SettingsConfig &config);

/// The picture to write or copy; the given one, unchanged, when it is null or both options are off.
/// Safe to call from any thread.
[[nodiscard]] QImage prepareOutput(const QImage &image, const ImageOutputOptions &options);

} // namespace tavrel
