#include "ui/eyedropper_sample.h"

#include <cmath>

namespace tavrel::ui {

QImage eyedropperSample(const QImage &picture, const QPointF &point)
{
    // A point that came from a whole pixel must lead back to it: 9 / 1.3 * 1.3 is a hair less than 9.
    constexpr double kHair = 1e-6;
    const QPointF scaled = point * picture.devicePixelRatio() + QPointF(kHair, kHair);
    const QPoint centre(static_cast<int>(std::floor(scaled.x())), static_cast<int>(std::floor(scaled.y())));
    if (!picture.rect().contains(centre))
        return {};
    QImage sample(kEyedropperSide, kEyedropperSide, QImage::Format_ARGB32);
    const QPoint corner = centre - QPoint(kEyedropperSide / 2, kEyedropperSide / 2);
    for (int y = 0; y < kEyedropperSide; ++y) {
        for (int x = 0; x < kEyedropperSide; ++x) {
            const QPoint from = corner + QPoint(x, y);
            sample.setPixel(x, y, picture.rect().contains(from) ? picture.pixel(from) : 0);
        }
    }
    return sample;
}

} // namespace tavrel::ui
