#include "redaction/covered_text.h"

#include "annotate/selection_renderer.h"
#include "annotate/shape_factory.h"
#include "output/image_file.h"
#include "output/save_service.h"

#include <QBuffer>
#include <QDateTime>
#include <QFile>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrel::redaction {
namespace {

const QColor kInk(32, 32, 32);

QString shapesJson(const QRect &box, const Cover &cover)
{
    const auto mode = cover.isBlur() ? QStringLiteral("blur") : QStringLiteral("mosaic");
    switch (cover.effect) {
    case Cover::Effect::Mosaic:
    case Cover::Effect::Blur:
        return QStringLiteral(
                   R"([{"type":"mosaic","x":%1,"y":%2,"w":%3,"h":%4,"mosaicMode":"%5","mosaicIntensity":%6}])")
            .arg(box.x())
            .arg(box.y())
            .arg(box.width())
            .arg(box.height())
            .arg(mode)
            .arg(cover.strength);
    case Cover::Effect::MosaicBrush:
    case Cover::Effect::BlurBrush:
        // One stroke along the middle, as thick as the box is high.
        return QStringLiteral(R"([{"type":"mosaic_pen","thickness":%1,"mosaicMode":"%2","mosaicIntensity":%3,)"
                              R"("points":[{"x":%4,"y":%6},{"x":%5,"y":%6}]}])")
            .arg(box.height())
            .arg(mode)
            .arg(cover.strength)
            .arg(box.left())
            .arg(box.left() + box.width())
            .arg(box.top() + box.height() / 2.0);
    case Cover::Effect::EraseWholeBox:
        return QStringLiteral(R"([{"type":"smart_erase","x":%1,"y":%2,"w":%3,"h":%4,"eraseSolver":"wholeBox"}])")
            .arg(box.x())
            .arg(box.y())
            .arg(box.width())
            .arg(box.height());
    }
    return {};
}

ImageFileFormat fileFormat(Format format)
{
    return format == Format::Png ? ImageFileFormat::Png : ImageFileFormat::Jpg;
}

} // namespace

int Cover::pixels() const
{
    return isBlur() ? std::max(1, static_cast<int>(std::lround(strength / 2.0))) : std::max(1, strength);
}

QImage Page::withText(const QString &text) const
{
    return withText(text, origin);
}

QImage Page::withText(const QString &text, const QPointF &at) const
{
    QImage picture(size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.setFont(font);
    painter.setPen(kInk);
    painter.drawText(at, text);
    return picture;
}

QImage covered(const QImage &picture, const QRect &box, const Cover &cover)
{
    return renderSelection(picture, QRectF(picture.rect()), shapesJson(box, cover), ShapeFactory::standard());
}

QImage throughFormat(const QImage &picture, Format format)
{
    if (format == Format::Png)
        return picture;
    QBuffer buffer;
    if (!buffer.open(QIODevice::ReadWrite) || !encodeImage(picture, buffer, fileFormat(format)))
        return {};
    return QImage::fromData(buffer.data());
}

QByteArray savedFile(const QImage &picture, const QString &folder, Format format)
{
    SaveRequest request;
    request.directory = folder;
    request.nameTemplate = QStringLiteral("covered");
    request.format = imageFileExtension(fileFormat(format));
    const QString path = saveImage(prepareOutput(picture, {}), request, QDateTime::currentDateTimeUtc());
    QFile file(path);
    QByteArray bytes;
    if (!path.isEmpty() && file.open(QIODevice::ReadOnly))
        bytes = file.readAll();
    file.remove();
    return bytes;
}

} // namespace tavrel::redaction
