#include "output/image_output.h"

#include "settings/settings_config.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrel {
namespace {

QImage scaledTo1x(const QImage &image)
{
    const double ratio = image.devicePixelRatio();
    const int width = std::max(1, int(std::lround(image.width() / ratio)));
    const int height = std::max(1, int(std::lround(image.height() / ratio)));
    QImage scaled = image.scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    scaled.setDevicePixelRatio(1.0);
    return scaled;
}

QImage bordered(QImage image)
{
    const QImage::Format format = image.format();
    if (format != QImage::Format_ARGB32_Premultiplied && format != QImage::Format_ARGB32 &&
        format != QImage::Format_RGB32)
        image.convertTo(QImage::Format_ARGB32_Premultiplied);
    const double ratio = image.devicePixelRatio();
    const double line = 1.0 / ratio;
    QPen pen(QColor(0, 0, 0, 64), line);
    pen.setJoinStyle(Qt::MiterJoin);
    QPainter painter(&image);
    painter.setPen(pen);
    painter.drawRect(QRectF(line / 2, line / 2, image.width() / ratio - line, image.height() / ratio - line));
    return image;
}

} // namespace

ImageOutputOptions imageOutputOptions(const SettingsConfig &config)
{
    return {.scaleTo1x = config.scaleRetinaTo1x, .addBorder = config.addImageBorder};
}

QImage prepareOutput(const QImage &image, const ImageOutputOptions &options)
{
    if (image.isNull())
        return image;
    QImage result = image;
    if (options.scaleTo1x && image.devicePixelRatio() > 1.0)
        result = scaledTo1x(result);
    if (options.addBorder)
        result = bordered(result);
    return result;
}

} // namespace tavrel
