#include "annotate/sequence_shape.h"

#include "annotate/number_text.h"
#include "annotate/selection_marks.h"
#include "base/color_text.h"
#include "base/json_read.h"

#include <QFontMetricsF>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrel {
namespace {

constexpr double kSmallestRadius = 4.0;
constexpr double kBoundsMargin = 5.0;
constexpr double kTipBox = 8.0;
constexpr double kHitMargin = 8.0;
constexpr double kTailFrom = 5.0; ///< beyond the badge
constexpr double kLabelGap = 6.0;
constexpr double kBaseline = 0.39;   ///< of the font size, below the middle of the badge
constexpr double kHandleRise = 0.35; ///< of the font size, above the base line
constexpr double kHandleLeft = 4.0;
constexpr int kLargestNumber = 99'999;
constexpr double kLargestFont = 10'000;
constexpr double kArc = 0.5522847498;

} // namespace

double SequenceShape::radius() const
{
    return std::max(m_fontSize * 0.6, kSmallestRadius);
}

bool SequenceShape::showsTail() const
{
    const QPointF way = end() - start();
    return m_hasTail && std::hypot(way.x(), way.y()) > radius() + kTailFrom;
}

double SequenceShape::tailScale() const
{
    return std::clamp(m_fontSize / 28, 0.5, 3.0);
}

double SequenceShape::headLength() const
{
    return (24.0 + thickness * 2.0) * tailScale();
}

double SequenceShape::headWidth() const
{
    return (16.0 + thickness * 1.8) * tailScale();
}

QFont SequenceShape::labelFont() const
{
    QFont font;
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(m_fontSize))));
    return font;
}

QPointF SequenceShape::labelOrigin() const
{
    return start() + QPointF(radius() + kLabelGap, m_fontSize * kBaseline) + m_labelOffset;
}

QString SequenceShape::displayText() const
{
    const QString number = numberText(m_number, m_numberType);
    return m_label.isEmpty() ? number : number + QStringLiteral(". ") + m_label;
}

void SequenceShape::setLabel(const QString &label)
{
    m_label = label;
    m_label.remove(u'\n');
}

void SequenceShape::paint(QPainter &painter, const ShapeRenderContext &) const
{
    const QColor ink = colorFromText(color);
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.setPen(QPen(QColor(0, 0, 0, 76), 1.0));
    painter.setBrush(ink);
    painter.drawEllipse(start(), radius(), radius());
    paintNumber(painter);
    if (!m_label.isEmpty() && !m_isEditing) {
        painter.setFont(labelFont());
        painter.setPen(ink);
        painter.setLayoutDirection(Qt::LayoutDirectionAuto);
        painter.drawText(labelOrigin(), m_label);
    }
    if (showsTail())
        paintTail(painter);
    painter.restore();
}

void SequenceShape::paintNumber(QPainter &painter) const
{
    const QString text = numberText(m_number, m_numberType);
    QFont font;
    double size = std::max(1.0, std::round(radius() * 1.3));
    const auto measured = [&] {
        font.setPixelSize(std::max(1, static_cast<int>(std::lround(size))));
        return QFontMetricsF(font).tightBoundingRect(text);
    };
    QRectF ink = measured();
    const double widest = radius() * 1.5;
    if (ink.width() > widest) {
        size = std::max(1.0, size * widest / ink.width());
        ink = measured();
    }
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(start() - ink.center(), text);
}

void SequenceShape::paintTail(QPainter &painter) const
{
    const QPointF way = end() - start();
    const QPointF along = way / std::hypot(way.x(), way.y());
    const QPointF across(-along.y(), along.x());
    const double half = std::max(thickness * tailScale() * 1.5, 2.0) / 2;
    const double head = headLength();
    const double headHalf = headWidth() / 2;
    const QPointF from = start() + along * radius();
    const QPointF tip = end();
    const QPointF notch = tip - along * (0.75 * head);
    const QPointF base = tip - along * head;

    QPainterPath path(from + across * half);
    for (const QPointF &point : {notch + across * half, base + across * headHalf, tip, base - across * headHalf,
                                 notch - across * half, from - across * half})
        path.lineTo(point);
    const QPointF round = along * (kArc * half);
    path.cubicTo(from - across * half - round, from + across * half - round, from + across * half);
    path.closeSubpath();
    path.setFillRule(Qt::WindingFill);
    QPen pen(colorFromText(color), 0.5, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
    pen.setMiterLimit(10.0);
    painter.fillPath(path, pen.color());
    painter.fillPath(QPainterPathStroker(pen).createStroke(path), pen.color());
}

void SequenceShape::paintSelection(QPainter &painter, const ShapeRenderContext &context) const
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    const double ring = radius() + 4.0;
    painter.setPen(QPen(QColor(255, 255, 255, 235), 4.0 * context.handleScale));
    painter.drawEllipse(start(), ring, ring);
    painter.setPen(QPen(QColor::fromRgb(kOutlineColor), 2.0 * context.handleScale));
    painter.drawEllipse(start(), ring, ring);
    painter.restore();
    if (!m_label.isEmpty() && !m_isEditing)
        paintRoundHandle(painter, handles().at(2), context.handleScale);
    if (showsTail())
        paintRoundHandle(painter, end(), context.handleScale);
}

bool SequenceShape::hitTest(double x, double y) const
{
    const QPointF away = QPointF(x, y) - start();
    const double reach = radius() + kHitMargin;
    return QPointF::dotProduct(away, away) <= reach * reach;
}

QList<QPointF> SequenceShape::handles() const
{
    QList<QPointF> points = SegmentShape::handles();
    if (!m_label.isEmpty())
        points.append(labelOrigin() - QPointF(kHandleLeft, m_fontSize * kHandleRise));
    return points;
}

int SequenceShape::setHandle(int index, double x, double y)
{
    const QPointF to(x, y);
    if (index == 0 && !showsTail())
        setEnds(to, end() + (to - start()));
    else if (index == 2)
        m_labelOffset += to + QPointF(kHandleLeft, m_fontSize * kHandleRise) - labelOrigin();
    else
        return SegmentShape::setHandle(index, x, y);
    return index;
}

std::optional<QRectF> SequenceShape::bounds() const
{
    const auto around = [](const QPointF &middle, double half) {
        return QRectF(middle.x() - half, middle.y() - half, 2 * half, 2 * half);
    };
    QRectF box = around(start(), radius() + kBoundsMargin);
    if (showsTail())
        box |= around(end(), kTipBox / 2);
    if (!m_label.isEmpty()) {
        const QFontMetricsF metrics(labelFont());
        const QPointF origin = labelOrigin();
        box |= QRectF(origin.x(), origin.y() - metrics.ascent(), metrics.horizontalAdvance(m_label), metrics.height());
    }
    return box;
}

QRectF SequenceShape::inkBounds() const
{
    QRectF box = SegmentShape::inkBounds();
    if (showsTail()) {
        // A head longer than the tail begins behind the badge.
        const double half = headWidth() / 2 + 3; // and the points of its line
        const QPointF way = end() - start();
        const QPointF base = end() - way * (headLength() / std::hypot(way.x(), way.y()));
        box |= QRectF(end(), base).normalized().adjusted(-half, -half, half, half);
    }
    return box;
}

QRectF SequenceShape::paintedBounds() const
{
    const double margin = thickness / 2 + 24;
    return inkBounds().adjusted(-margin, -margin, margin, margin);
}

void SequenceShape::transform(const ImageTransform &transform)
{
    setEnds(transform.map(start()), transform.map(end()));
}

void SequenceShape::scale(double factor)
{
    SegmentShape::scale(factor);
    m_fontSize *= factor;
    m_labelOffset *= factor;
}

void SequenceShape::toJson(QJsonObject &out) const
{
    writeBase(out);
    writeEnds(out, {QStringLiteral("cx"), QStringLiteral("cy"), QStringLiteral("ex"), QStringLiteral("ey")});
    out.insert(QStringLiteral("hasArrow"), m_hasTail);
    out.insert(QStringLiteral("textOffX"), m_labelOffset.x());
    out.insert(QStringLiteral("textOffY"), m_labelOffset.y());
    out.insert(QStringLiteral("seqNumber"), m_number);
    out.insert(QStringLiteral("numberType"), enumName(m_numberType));
    out.insert(QStringLiteral("seqText"), m_label);
    out.insert(QStringLiteral("fontSize"), m_fontSize);
}

void SequenceShape::readJson(const QJsonObject &in)
{
    readEnds(in, {QStringLiteral("cx"), QStringLiteral("cy"), QStringLiteral("ex"), QStringLiteral("ey")});
    m_hasTail = readBool(in, QStringLiteral("hasArrow"), false);
    m_labelOffset = {readLength(in, QStringLiteral("textOffX")), readLength(in, QStringLiteral("textOffY"))};
    const int number = readInt(in, QStringLiteral("seqNumber"), 1);
    m_number = number == 0 ? 1 : std::clamp(number, 1, kLargestNumber);
    m_numberType = numberTypeFromName(readString(in, QStringLiteral("numberType")));
    setLabel(readString(in, QStringLiteral("seqText")));
    m_fontSize = std::clamp(readNonZero(in, QStringLiteral("fontSize"), 28.0), 1.0, kLargestFont);
}

void SequenceShape::takeAttributes(const ShapeAttributes &attributes)
{
    color = attributes.color;
    m_fontSize = attributes.fontSize;
    m_numberType = attributes.sequenceType;
    m_hasTail = attributes.sequenceArrow;
}

bool SequenceShape::applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes)
{
    switch (attribute) {
    case ShapeAttribute::FontSize:
        return std::exchange(m_fontSize, attributes.fontSize) != attributes.fontSize;
    case ShapeAttribute::SequenceArrow:
        return std::exchange(m_hasTail, attributes.sequenceArrow) != attributes.sequenceArrow;
    case ShapeAttribute::Color:
        return SegmentShape::applyAttribute(attribute, attributes);
    default:
        return false;
    }
}

} // namespace tavrel
