#include "annotate/text_shape.h"

#include "annotate/selection_marks.h"
#include "base/color_text.h"
#include "base/json_read.h"

#include <QFontMetricsF>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>

namespace tavrel {
namespace {

constexpr double kPadX = 12.0;
constexpr double kPadY = 8.0;
constexpr double kSmallestNew = 12.0; ///< font size of a new text
constexpr double kSmallestFont = 8.0;
constexpr double kLargestFont = 1200.0;
constexpr double kKnobRise = 18.0;
constexpr double kHitMargin = 10.0;
constexpr double kSmallestRatio = 0.5;
constexpr double kLargestRatio = 2.0;
constexpr QRgb kHandleAccent = 0xff0a84ff;
constexpr QRgb kFrameColor = 0xff78baff;

double degrees(double radians)
{
    return radians * 180 / std::numbers::pi;
}

QPointF centreOf(const QRectF &box)
{
    return box.center();
}

/// A white disc, or a rounded square, with a soft shadow.
void paintGrip(QPainter &painter, const QPointF &middle, double half, bool isSquare)
{
    const auto draw = [&](double by) {
        const QRectF box(middle.x() - half - by, middle.y() - half - by, 2 * (half + by), 2 * (half + by));
        if (isSquare)
            painter.drawRoundedRect(box, half * 0.5, half * 0.5);
        else
            painter.drawEllipse(box);
    };
    painter.setPen(Qt::NoPen);
    for (const auto &[grow, alpha] :
         {std::pair(half * 0.35, 26), std::pair(half * 0.2, 48), std::pair(half * 0.08, 80)}) {
        painter.setBrush(QColor(0, 0, 0, alpha));
        draw(grow);
    }
    painter.setBrush(Qt::white);
    draw(0);
}

/// Two arrows that run round the middle.
void paintTurnArrows(QPainter &painter, const QPointF &middle, double radius)
{
    constexpr double kSpan = 145;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor::fromRgb(kHandleAccent), radius * 0.26, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const QRectF box(middle.x() - radius, middle.y() - radius, 2 * radius, 2 * radius);
    for (const double from : {180.0, 0.0}) {
        QPainterPath arc;
        arc.arcMoveTo(box, from);
        arc.arcTo(box, from, -kSpan);
        painter.drawPath(arc);
        // The head lies along the tangent at the end.
        const double end = (from - kSpan) * std::numbers::pi / 180;
        const QPointF tip = arc.currentPosition();
        const QPointF along(std::sin(end), std::cos(end));
        const QPointF across(-along.y(), along.x());
        const double size = radius * 0.5;
        QPainterPath head(tip - along * size * 0.6 + across * size * 0.75);
        head.lineTo(tip + along * size * 0.3);
        head.lineTo(tip - along * size * 0.6 - across * size * 0.75);
        painter.drawPath(head);
    }
}

} // namespace

QColor contrastColor(const QColor &color)
{
    const double luma = 0.299 * color.red() + 0.587 * color.green() + 0.114 * color.blue();
    if (luma >= 220)
        return Qt::black;
    const double k = luma <= 40 ? 0.85 : 0.7;
    const auto mixed = [k](int channel) { return static_cast<int>(std::lround(channel + (255 - channel) * k)); };
    return {mixed(color.red()), mixed(color.green()), mixed(color.blue()), color.alpha()};
}

double textBorderWidth(double fontSize)
{
    return std::max(3.0, fontSize * 0.09);
}

double textLineHeight(double fontSize)
{
    return fontSize * 1.2;
}

double textBaseline(const QStringList &lines, const QFont &font, double lineHeight)
{
    const QFontMetricsF metrics(font);
    double top = 0;
    double bottom = 0;
    qsizetype first = -1;
    qsizetype last = -1;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (lines[i].isEmpty())
            continue;
        const QRectF ink = metrics.tightBoundingRect(lines[i]).translated(0, static_cast<double>(i) * lineHeight);
        top = first < 0 ? ink.top() : std::min(top, ink.top());
        bottom = first < 0 ? ink.bottom() : std::max(bottom, ink.bottom());
        first = first < 0 ? i : first;
        last = i;
    }
    if (first < 0) {
        const double natural = metrics.ascent() + metrics.descent();
        return natural > 0 ? (lineHeight - natural) / 2 + metrics.ascent() : lineHeight * 0.875;
    }
    const double blockTop = static_cast<double>(first) * lineHeight;
    const double blockHeight = static_cast<double>(last - first + 1) * lineHeight;
    return blockTop + (blockHeight - (bottom - top)) / 2 - top;
}

TextShape::TextShape() : BaseShape(ToolType::Text)
{
    thickness = 1.0;
}

QFont TextShape::fontOf(const QString &family, double pixelSize)
{
    QFont font;
    if (!family.isEmpty())
        font.setFamily(family);
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(pixelSize))));
    return font;
}

double TextShape::contentWidth() const
{
    const QFontMetricsF metrics(font());
    double widest = m_fontSize;
    for (const QString &line : lines())
        widest = std::max(widest, line.isEmpty() ? m_fontSize * 0.5 : metrics.horizontalAdvance(line));
    return widest;
}

void TextShape::measure()
{
    measureInk();
    m_box.setWidth(std::max(m_box.width(), m_ink.width() + 2 * m_padding.width()));
    m_box.setHeight(m_ink.height() + 2 * m_padding.height());
}

void TextShape::measureInk()
{
    m_ink = QSizeF(contentWidth(), static_cast<double>(lines().size()) * textLineHeight(m_fontSize));
}

void TextShape::setText(const QString &text)
{
    m_text = text;
    measure();
}

QTransform TextShape::placed() const
{
    const QPointF middle = centreOf(m_box);
    return QTransform::fromTranslate(middle.x(), middle.y()).rotateRadians(m_rotation);
}

// --- painting --------------------------------------------------------------------------------------------------------

void TextShape::paint(QPainter &painter, const ShapeRenderContext &) const
{
    if (m_text.isEmpty())
        return;
    painter.save();
    painter.translate(centreOf(m_box));
    painter.rotate(degrees(shownRotation()));
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    if (m_style == TextStyle::Background || m_style == TextStyle::RoundBackground)
        paintPlate(painter);
    if (!m_isEditing)
        paintLines(painter);
    painter.restore();
}

void TextShape::paintPlate(QPainter &painter) const
{
    const double k = m_padding.width() > 0 ? m_padding.width() / kPadX : 1.0;
    const double left = -m_box.width() / 2 + m_padding.width() - 5 * k;
    const double top = -m_box.height() / 2 + m_padding.height() - 2.5 * k;
    const double height = static_cast<double>(lines().size()) * textLineHeight(m_fontSize) + 5 * k;
    const QRectF plate(left, top, contentWidth() + 10 * k, height);
    painter.setPen(Qt::NoPen);
    painter.setBrush(contrastColor(colorFromText(color)));
    const double radius =
        m_style == TextStyle::RoundBackground ? std::min({12 * k, plate.height() / 2, plate.width() / 2}) : 0.0;
    painter.drawRoundedRect(plate, radius, radius);
}

void TextShape::paintLines(QPainter &painter) const
{
    const QFont face = font();
    const QStringList texts = lines();
    const double lineHeight = textLineHeight(m_fontSize);
    const double offset = textBaseline(texts, face, lineHeight);

    const auto start = [&](qsizetype line) {
        return QPointF(-m_box.width() / 2 + m_padding.width(),
                       -m_box.height() / 2 + m_padding.height() + static_cast<double>(line) * lineHeight + offset);
    };

    const QColor ink = colorFromText(color);
    if (m_style == TextStyle::Border) {
        // All of it before the first letter, or the border of a line would cover what hangs from the line above.
        const QPen pen(contrastColor(ink), textBorderWidth(m_fontSize), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
        for (qsizetype i = 0; i < texts.size(); ++i) {
            QPainterPath outline;
            outline.addText(start(i), face, texts[i]);
            painter.strokePath(outline, pen);
        }
    }
    painter.setFont(face);
    painter.setPen(ink);
    painter.setLayoutDirection(Qt::LayoutDirectionAuto);
    for (qsizetype i = 0; i < texts.size(); ++i)
        painter.drawText(start(i), texts[i]);
}

void TextShape::paintSelection(QPainter &painter, const ShapeRenderContext &context) const
{
    const double scale = context.handleScale;
    const double halfW = m_box.width() / 2;
    const double halfH = m_box.height() / 2;
    painter.save();
    painter.translate(centreOf(m_box));
    painter.rotate(degrees(shownRotation()));
    painter.setRenderHint(QPainter::Antialiasing);
    QColor frame = QColor::fromRgb(kFrameColor);
    frame.setAlpha(235);
    painter.setPen(QPen(frame, 1.2 * scale));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(-halfW, -halfH, m_box.width(), m_box.height()), 6.0 * scale, 6.0 * scale);
    if (shownRotation() != m_rotation) {
        painter.restore(); // the handles act on the turned box
        return;
    }
    for (const double x : {-halfW, halfW}) {
        paintGrip(painter, {x, 0}, 6.5 * scale, false);
        painter.setBrush(QColor::fromRgb(kHandleAccent));
        painter.drawEllipse(QPointF(x, 0), 3.6 * scale, 3.6 * scale);
    }
    const QPointF knob(0, -halfH - kKnobRise);
    paintGrip(painter, knob, 8.5 * scale, false);
    paintTurnArrows(painter, knob, 8.5 * 0.55 * scale);
    paintGrip(painter, {halfW, halfH}, 5.75 * scale, true);
    painter.restore();
}

/// Where the box shows, grown by as much on each side as told: left, top, right, bottom.
QRectF TextShape::shownBox(const QMarginsF &margins) const
{
    QRectF local(-m_box.width() / 2, -m_box.height() / 2, m_box.width(), m_box.height());
    // A stored box was measured with the fonts of another day.
    local |= QRectF(local.topLeft() + QPointF(m_padding.width(), m_padding.height()), m_ink);
    local += margins;
    QTransform shown = QTransform::fromTranslate(m_box.center().x(), m_box.center().y());
    shown.rotateRadians(shownRotation());
    return shown.mapRect(local);
}

QRectF TextShape::inkBounds() const
{
    // Letters of some fonts reach out of their lines.
    const double reach = textBorderWidth(m_fontSize) + m_fontSize / 2;
    return shownBox({reach, reach, reach, reach});
}

QRectF TextShape::paintedBounds() const
{
    const double reach = 8.5 * 1.5 + textBorderWidth(m_fontSize) + m_fontSize / 2;
    return shownBox({reach, reach + kKnobRise, reach, reach});
}

// --- geometry --------------------------------------------------------------------------------------------------------

bool TextShape::hitTest(double x, double y) const
{
    const QPointF local = placed().inverted().map(QPointF(x, y));
    return std::abs(local.x()) <= m_box.width() / 2 + kHitMargin &&
           std::abs(local.y()) <= m_box.height() / 2 + kHitMargin;
}

void TextShape::updateDrag(double startX, double startY, double, double)
{
    m_box.moveTo(startX - m_padding.width(), startY - m_padding.height() - m_fontSize * 0.6);
}

void TextShape::translate(double dx, double dy)
{
    m_box.translate(dx, dy);
}

QList<QPointF> TextShape::handles() const
{
    const QTransform place = placed();
    const double halfW = m_box.width() / 2;
    const double halfH = m_box.height() / 2;
    return {place.map(QPointF(-halfW, 0)), place.map(QPointF(halfW, 0)), place.map(QPointF(0, -halfH - kKnobRise)),
            place.map(QPointF(halfW, halfH))};
}

Qt::CursorShape TextShape::handleCursor(int index) const
{
    if (index == 2)
        return Qt::PointingHandCursor;
    // The nearest of the four resize cursors to the direction that the handle moves in.
    const double turn = degrees(m_rotation) + (index == 3 ? 45 : 0);
    const int eighth = static_cast<int>(std::lround(turn / 45)) & 3;
    constexpr std::array cursors{Qt::SizeHorCursor, Qt::SizeFDiagCursor, Qt::SizeVerCursor, Qt::SizeBDiagCursor};
    return cursors[static_cast<std::size_t>(eighth)];
}

int TextShape::setHandle(int index, double x, double y)
{
    const QPointF to(x, y);
    const QPointF way = to - centreOf(m_box);
    if (index == 2)
        m_rotation = std::atan2(way.y(), way.x()) + std::numbers::pi / 2;
    else if (index == 3)
        dragCorner(to);
    else if (index == 0 || index == 1)
        dragEdge(index == 0, to);
    return index;
}

/// Moves the box so that a point of it, told from its middle, lies somewhere.
void TextShape::keepInPlace(const QPointF &local, const QPointF &where)
{
    const QPointF now = placed().map(local);
    m_box.translate(where - now);
}

void TextShape::dragEdge(bool isLeft, const QPointF &to)
{
    const double side = isLeft ? 1.0 : -1.0; // of the edge that stays
    const QPointF fixed = placed().map(QPointF(side * m_box.width() / 2, 0));
    const QPointF axis(std::cos(m_rotation), std::sin(m_rotation));
    const double wanted = QPointF::dotProduct(to - fixed, axis) * -side;
    m_box.setWidth(std::max(wanted, contentWidth() + 2 * m_padding.width()));
    measure();
    keepInPlace({side * m_box.width() / 2, 0}, fixed);
}

void TextShape::dragCorner(const QPointF &to)
{
    const double diagonal = std::hypot(m_box.width(), m_box.height());
    if (!(diagonal > 0))
        return;
    const QPointF fixed = placed().map(QPointF(-m_box.width() / 2, -m_box.height() / 2));
    const QPointF way = to - fixed;
    const double ratio = std::clamp(std::hypot(way.x(), way.y()) / diagonal, kSmallestRatio, kLargestRatio);
    const double size = std::clamp(m_fontSize * ratio, kSmallestFont, kLargestFont);
    m_box.setWidth(m_box.width() * size / m_fontSize);
    m_fontSize = size;
    measure();
    keepInPlace({-m_box.width() / 2, -m_box.height() / 2}, fixed);
}

void TextShape::transform(const ImageTransform &transform)
{
    m_box.moveCenter(transform.map(centreOf(m_box)));
}

void TextShape::scale(double factor)
{
    BaseShape::scale(factor);
    m_box = QRectF(m_box.topLeft() * factor, m_box.size() * factor);
    m_fontSize *= factor;
    m_padding *= factor;
    m_ink *= factor;
}

// --- attributes and JSON ---------------------------------------------------------------------------------------------

void TextShape::takeAttributes(const ShapeAttributes &attributes)
{
    color = attributes.color;
    m_fontSize = std::max(attributes.fontSize, kSmallestNew * attributes.displayScale);
    m_style = attributes.textStyle;
    m_family = attributes.fontFamily;
    const double scale = attributes.displayScale > 0 ? attributes.displayScale : 1.0;
    m_padding = QSizeF(kPadX, kPadY) * scale;
    measure();
}

void TextShape::giveAttributes(ShapeAttributes &attributes) const
{
    attributes.color = color;
    attributes.textStyle = m_style;
}

bool TextShape::applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes)
{
    switch (attribute) {
    case ShapeAttribute::FontSize:
        if (std::exchange(m_fontSize, attributes.fontSize) == attributes.fontSize)
            return false;
        measure();
        return true;
    case ShapeAttribute::FontFamily:
        if (std::exchange(m_family, attributes.fontFamily) == attributes.fontFamily)
            return false;
        measure();
        return true;
    case ShapeAttribute::TextStyle:
        return std::exchange(m_style, attributes.textStyle) != attributes.textStyle;
    case ShapeAttribute::Color:
        return BaseShape::applyAttribute(attribute, attributes);
    default:
        return false;
    }
}

void TextShape::toJson(QJsonObject &out) const
{
    writeBase(out);
    out.insert(QStringLiteral("x"), m_box.x());
    out.insert(QStringLiteral("y"), m_box.y());
    out.insert(QStringLiteral("w"), m_box.width());
    out.insert(QStringLiteral("h"), m_box.height());
    out.insert(QStringLiteral("text"), m_text);
    out.insert(QStringLiteral("fontSize"), m_fontSize);
    out.insert(QStringLiteral("rotation"), m_rotation);
    out.insert(QStringLiteral("textStyle"), enumName(m_style));
    out.insert(QStringLiteral("fontFamily"), m_family);
    out.insert(QStringLiteral("padX"), m_padding.width());
    out.insert(QStringLiteral("padY"), m_padding.height());
}

void TextShape::readJson(const QJsonObject &in)
{
    m_box =
        QRectF(readLength(in, QStringLiteral("x")), readLength(in, QStringLiteral("y")),
               std::abs(readNonZero(in, QStringLiteral("w"), 20)), std::abs(readNonZero(in, QStringLiteral("h"), 30)));
    m_text = readString(in, QStringLiteral("text"));
    m_fontSize = std::clamp(readNonZero(in, QStringLiteral("fontSize"), 28), 1.0, kLargestFont * 4);
    m_rotation = readLength(in, QStringLiteral("rotation"));
    m_style = textStyleFromName(readString(in, QStringLiteral("textStyle")));
    m_family = readString(in, QStringLiteral("fontFamily"));
    m_padding = QSizeF(readNonZero(in, QStringLiteral("padX"), kPadX), readNonZero(in, QStringLiteral("padY"), kPadY));
    measureInk();
}

} // namespace tavrel
