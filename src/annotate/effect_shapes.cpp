#include "annotate/effect_shapes.h"

#include "annotate/effect_image_cache.h"
#include "annotate/selection_marks.h"
#include "base/json_read.h"

#include <QBrush>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace tavrel {
namespace {

constexpr double kUsualIntensity = 15.0;
constexpr double kBrushWidth = 5.0;
constexpr double kSpotlightReach = 10.0;

QRect pixelsOf(const QRectF &box, double ratio)
{
    const auto limited = [](double at) { return std::clamp(at, -1e8, 1e8); };
    const QPoint from(static_cast<int>(std::floor(limited(box.left() * ratio))) - 1,
                      static_cast<int>(std::floor(limited(box.top() * ratio))) - 1);
    const QPoint to(static_cast<int>(std::ceil(limited(box.right() * ratio))),
                    static_cast<int>(std::ceil(limited(box.bottom() * ratio))));
    return {from, to};
}

} // namespace

void MosaicLook::write(QJsonObject &out) const
{
    out.insert(QStringLiteral("mosaicMode"), enumName(mode));
    out.insert(QStringLiteral("mosaicIntensity"), intensity);
}

void MosaicLook::read(const QJsonObject &in)
{
    mode = mosaicModeFromName(readString(in, QStringLiteral("mosaicMode")));
    intensity = readNonZero(in, QStringLiteral("mosaicIntensity"), kUsualIntensity);
}

void MosaicLook::take(const ShapeAttributes &attributes)
{
    mode = attributes.mosaicMode;
    intensity = attributes.activeMosaicStrength();
}

void MosaicLook::give(ShapeAttributes &attributes) const
{
    attributes.mosaicMode = mode;
    (mode == MosaicMode::Mosaic ? attributes.mosaicStrength : attributes.blurStrength) = intensity;
}

bool MosaicLook::apply(ShapeAttribute attribute, const ShapeAttributes &attributes)
{
    const bool isMine = attribute == ShapeAttribute::MosaicMode ||
                        (attribute == ShapeAttribute::MosaicStrength && mode == MosaicMode::Mosaic) ||
                        (attribute == ShapeAttribute::BlurStrength && mode == MosaicMode::Blur);
    if (!isMine)
        return false;
    const MosaicLook before = *this;
    if (attribute == ShapeAttribute::MosaicMode)
        take(attributes);
    else
        intensity = mode == MosaicMode::Mosaic ? attributes.mosaicStrength : attributes.blurStrength;
    return mode != before.mode || intensity != before.intensity;
}

QBrush MosaicLook::brush(const QRectF &box, const ShapeRenderContext &context) const
{
    if (!context.effectSource || context.effectSource->isNull())
        return QColor(128, 128, 128, 76);
    const double ratio = context.effectSource->pixelRatio();
    const bool isBlur = mode == MosaicMode::Blur;
    const double length = isBlur ? std::max(intensity / 2, 0.5) : std::max(intensity, 1.0);
    const auto strength = static_cast<int>(std::clamp(std::lround(std::min(length, 1e6) * ratio), 1L, 4096L));
    const auto [image, topLeft] =
        context.effectSource->region(isBlur, strength, pixelsOf(box.translated(-context.origin), ratio));
    if (image.isNull())
        return Qt::NoBrush;
    QBrush brush(image);
    brush.setTransform(QTransform::fromTranslate(context.origin.x(), context.origin.y())
                           .scale(1 / ratio, 1 / ratio)
                           .translate(topLeft.x(), topLeft.y()));
    return brush;
}

// --- mosaic box ------------------------------------------------------------------------------------------------------

void MosaicShape::paint(QPainter &painter, const ShapeRenderContext &context) const
{
    QRectF area = box();
    if (context.effectSource && !context.effectSource->isNull())
        area &= context.effectSource->extent().translated(context.origin); // a texture would repeat beyond
    if (!area.isEmpty())
        painter.fillRect(area, look.brush(area, context));
}

void MosaicShape::paintSelection(QPainter &painter, const ShapeRenderContext &context) const
{
    paintCornerBrackets(painter, box(), context.handleScale);
}

bool MosaicShape::hitTest(double x, double y) const
{
    return x >= box().left() && x <= box().right() && y >= box().top() && y <= box().bottom();
}

void MosaicShape::toJson(QJsonObject &out) const
{
    BoxShape::toJson(out);
    look.write(out);
}

void MosaicShape::readJson(const QJsonObject &in)
{
    BoxShape::readJson(in);
    look.read(in);
}

void MosaicShape::takeAttributes(const ShapeAttributes &attributes)
{
    color = attributes.color;
    look.take(attributes);
}

void MosaicShape::giveAttributes(ShapeAttributes &attributes) const
{
    BoxShape::giveAttributes(attributes);
    look.give(attributes);
}

bool MosaicShape::applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes)
{
    return look.apply(attribute, attributes) || BoxShape::applyAttribute(attribute, attributes);
}

// --- mosaic brush ----------------------------------------------------------------------------------------------------

MosaicPathShape::MosaicPathShape() : PathShape(ToolType::MosaicPen)
{
    thickness = kBrushWidth;
}

void MosaicPathShape::paint(QPainter &painter, const ShapeRenderContext &context) const
{
    const double width = std::max(1.0, thickness);
    if (points().size() < 2)
        return;
    const QRectF around = points().box()->adjusted(-width, -width, width, width);
    painter.save();
    if (context.effectSource && !context.effectSource->isNull())
        painter.setClipRect(context.effectSource->extent().translated(context.origin), Qt::IntersectClip);
    paintStroke(painter, width, look.brush(around, context), context);
    painter.restore();
}

void MosaicPathShape::toJson(QJsonObject &out) const
{
    PathShape::toJson(out);
    look.write(out);
}

QByteArray MosaicPathShape::toJsonText() const
{
    QJsonObject object;
    writeBase(object);
    look.write(object);
    return jsonTextWithPoints(object, points());
}

void MosaicPathShape::readJson(const QJsonObject &in)
{
    PathShape::readJson(in);
    look.read(in);
}

void MosaicPathShape::takeAttributes(const ShapeAttributes &attributes)
{
    color = attributes.color;
    // A brush of the thin lines of a pen would hide nothing.
    thickness = std::max(kBrushWidth * attributes.displayScale, attributes.thickness);
    look.take(attributes);
}

void MosaicPathShape::giveAttributes(ShapeAttributes &attributes) const
{
    PathShape::giveAttributes(attributes);
    look.give(attributes);
}

bool MosaicPathShape::applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes)
{
    return look.apply(attribute, attributes) || PathShape::applyAttribute(attribute, attributes);
}

// --- spotlight -------------------------------------------------------------------------------------------------------

void SpotlightShape::paint(QPainter &painter, const ShapeRenderContext &context) const
{
    const QList<const BaseShape *> alone{this};
    const bool hasList = context.spotlights && !context.spotlights->isEmpty();
    const QList<const BaseShape *> &all = hasList ? *context.spotlights : alone;
    if (all.first() != this)
        return;
    QPainterPath holes;
    double strength = 0;
    for (const BaseShape *shape : all) {
        const auto *spotlight = dynamic_cast<const SpotlightShape *>(shape);
        if (!spotlight)
            continue;
        QPainterPath hole;
        if (spotlight->isRound)
            hole.addEllipse(spotlight->box());
        else
            hole.addRect(spotlight->box());
        holes |= hole;
        strength = std::max(strength, spotlight->dim);
    }
    QPainterPath area;
    area.addRect(context.canvasOrEverything());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(area - holes,
                     QColor(0, 0, 0, static_cast<int>(std::lround(std::clamp(strength, 0.0, 1.0) * 255))));
    painter.restore();
}

void SpotlightShape::paintSelection(QPainter &painter, const ShapeRenderContext &context) const
{
    paintCornerBrackets(painter, box(), context.handleScale);
}

bool SpotlightShape::paintHoverOutline(QPainter &painter, double handleScale) const
{
    if (isRound)
        paintEllipseGlow(painter, box(), handleScale);
    else
        paintRoundedGlow(painter, box(), handleScale);
    return true;
}

bool SpotlightShape::hitTest(double x, double y) const
{
    if (isRound) {
        const double a = std::max(box().width() / 2, 1.0);
        const double b = std::max(box().height() / 2, 1.0);
        const double r = std::hypot((x - box().center().x()) / a, (y - box().center().y()) / b);
        return std::abs(r - 1) < kSpotlightReach / std::min(a, b);
    }
    const auto isNear = [](double p, double q) { return std::abs(p - q) <= kSpotlightReach; };
    const bool inX = x >= box().left() - kSpotlightReach && x <= box().right() + kSpotlightReach;
    const bool inY = y >= box().top() - kSpotlightReach && y <= box().bottom() + kSpotlightReach;
    return (inX && (isNear(y, box().top()) || isNear(y, box().bottom()))) ||
           (inY && (isNear(x, box().left()) || isNear(x, box().right())));
}

void SpotlightShape::toJson(QJsonObject &out) const
{
    BoxShape::toJson(out);
    out.insert(QStringLiteral("isRound"), isRound);
    out.insert(QStringLiteral("dim"), dim);
}

void SpotlightShape::readJson(const QJsonObject &in)
{
    BoxShape::readJson(in);
    isRound = readBool(in, QStringLiteral("isRound"), false);
    dim = readDouble(in, QStringLiteral("dim"), 0.6);
}

void SpotlightShape::takeAttributes(const ShapeAttributes &attributes)
{
    color = attributes.color;
    isRound = attributes.spotlightRound;
    dim = attributes.spotlightDim;
}

void SpotlightShape::giveAttributes(ShapeAttributes &attributes) const
{
    BoxShape::giveAttributes(attributes);
    attributes.spotlightRound = isRound;
    attributes.spotlightDim = dim;
}

bool SpotlightShape::applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes)
{
    if (attribute == ShapeAttribute::SpotlightRound)
        return std::exchange(isRound, attributes.spotlightRound) != attributes.spotlightRound;
    if (attribute == ShapeAttribute::SpotlightDim)
        return std::exchange(dim, attributes.spotlightDim) != attributes.spotlightDim;
    return BoxShape::applyAttribute(attribute, attributes);
}

} // namespace tavrel
