#include "annotate/smart_erase_shape.h"

#include "annotate/selection_marks.h"
#include "annotate/smart_erase_engine.h"
#include "base/json_read.h"

#include <QDateTime>
#include <QLinearGradient>

#include <algorithm>

namespace tavrel {
namespace {

constexpr double kReach = 4.0;
constexpr int kSweepMilliseconds = 1500;
constexpr double kBandShare = 0.35;
constexpr double kLeastBand = 28.0;

EraseSpec specOf(const BaseShape::EraseBox &box, const ShapeRenderContext &context)
{
    return {box.pixelRect(context.eraseEngine->scale(), context.origin), box.solver};
}

EraseSolver solverFor(const ShapeAttributes &attributes)
{
    return attributes.eraseWholeBox ? EraseSolver::WholeBox : EraseSolver::Auto;
}

} // namespace

void SmartEraseShape::paint(QPainter &painter, const ShapeRenderContext &context) const
{
    if (context.eraseEngine && !pending) {
        const SmartEraseEngine &engine = *context.eraseEngine;
        const EraseSpec spec = specOf(*eraseBox(), context);
        const QRect part = spec.first & engine.window(spec);
        if (!part.isEmpty()) {
            // The corner of the box on the pixel grid of the picture, in shape coordinates.
            const QPointF corner =
                EraseBox{QRectF(context.origin, QSizeF()), eraseSolver}.pixelRect(engine.scale()).topLeft();
            const QRectF target((corner + part.topLeft()) / engine.scale(), QSizeF(part.size()) / engine.scale());
            painter.drawImage(target, engine.result(), QRectF(part));
            return;
        }
    }
    std::optional<double> sweep;
    if (isPending(context)) {
        const qint64 now = QDateTime::currentMSecsSinceEpoch();
        sweep = static_cast<double>(now % kSweepMilliseconds) / kSweepMilliseconds;
    }
    paintErasePlaceholder(painter, box(), sweep);
}

void SmartEraseShape::paintSelection(QPainter &painter, const ShapeRenderContext &context) const
{
    paintCornerBrackets(painter, box(), context.handleScale);
}

bool SmartEraseShape::isPending(const ShapeRenderContext &context) const
{
    return pending || (context.eraseEngine && context.eraseEngine->isSolving(specOf(*eraseBox(), context)));
}

bool SmartEraseShape::hitTest(double x, double y) const
{
    const QRectF reach = box().adjusted(-kReach, -kReach, kReach, kReach);
    return x >= reach.left() && x <= reach.right() && y >= reach.top() && y <= reach.bottom();
}

void SmartEraseShape::toJson(QJsonObject &out) const
{
    BoxShape::toJson(out);
    out.insert(QStringLiteral("eraseSolver"), enumName(eraseSolver));
}

void SmartEraseShape::readJson(const QJsonObject &in)
{
    BoxShape::readJson(in);
    eraseSolver = eraseSolverFromName(readString(in, QStringLiteral("eraseSolver")));
}

void SmartEraseShape::takeAttributes(const ShapeAttributes &attributes)
{
    BoxShape::takeAttributes(attributes);
    eraseSolver = solverFor(attributes);
}

bool SmartEraseShape::applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes)
{
    if (attribute != ShapeAttribute::EraseWholeBox)
        return BoxShape::applyAttribute(attribute, attributes);
    const EraseSolver before = eraseSolver;
    eraseSolver = solverFor(attributes);
    return eraseSolver != before;
}

std::optional<BaseShape::EraseBox> SmartEraseShape::eraseBox() const
{
    return EraseBox{box(), eraseSolver};
}

void paintErasePlaceholder(QPainter &painter, const QRectF &box, std::optional<double> sweep)
{
    painter.fillRect(box, QColor(90, 169, 255, 46));
    if (!sweep)
        return;
    const double band = std::max(kBandShare * box.width(), kLeastBand);
    const double left = box.x() - band + *sweep * (box.width() + band);
    QLinearGradient light(left, 0, left + band, 0);
    light.setColorAt(0, QColor(255, 255, 255, 0));
    light.setColorAt(0.5, QColor(255, 255, 255, 140));
    light.setColorAt(1, QColor(255, 255, 255, 0));
    painter.fillRect(box & QRectF(left, box.y(), band, box.height()), light);
}

} // namespace tavrel
