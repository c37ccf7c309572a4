#include "annotate/watermark_shape.h"

#include "base/color_text.h"
#include "base/json_read.h"

#include <QDateTime>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrel {
namespace {

constexpr double kOpacity = 0.3;
constexpr double kUsualSize = 20.0;
constexpr double kLargestSize = 4000.0; ///< beyond it fonts fail
constexpr double kTilt = -30.0;
constexpr int kMostTexts = 3000;

QString tokenValue(const QString &token, const QDateTime &time)
{
    const auto two = [](int value) { return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0')); };
    const int hour = time.time().hour();
    if (token == u"yyyy")
        return QString::number(time.date().year());
    if (token == u"yy")
        return two(time.date().year() % 100);
    if (token == u"MM")
        return two(time.date().month());
    if (token == u"dd")
        return two(time.date().day());
    if (token == u"HH")
        return two(hour);
    if (token == u"hh")
        return two(hour % 12 == 0 ? 12 : hour % 12);
    if (token == u"mm")
        return two(time.time().minute());
    if (token == u"ss")
        return two(time.time().second());
    return hour < 12 ? QStringLiteral("上午") : QStringLiteral("下午");
}

QString expandGroup(QStringView group, const QDateTime &time)
{
    static const std::array tokens{QStringLiteral("yyyy"), QStringLiteral("yy"), QStringLiteral("MM"),
                                   QStringLiteral("dd"),   QStringLiteral("HH"), QStringLiteral("hh"),
                                   QStringLiteral("mm"),   QStringLiteral("ss"), QStringLiteral("a")};
    QString out;
    for (qsizetype i = 0; i < group.size();) {
        const QStringView rest = group.mid(i);
        const auto token =
            std::find_if(tokens.begin(), tokens.end(), [rest](const QString &each) { return rest.startsWith(each); });
        if (token == tokens.end()) {
            out += group[i++];
            continue;
        }
        out += tokenValue(*token, time);
        i += token->size();
    }
    return out;
}

/// Tilted rows over all of `area`, every other one shifted by half a step. The painter keeps the tilt.
void paintTiled(QPainter &painter, const TextStamp &text, const QRectF &area, double fontSize)
{
    const QRectF box = text.box();
    const double reach = std::hypot(area.width(), area.height()) / 2;
    const double stepX = box.width() + std::max(fontSize * 3.0, box.width() * 0.6);
    const double stepY = box.height() + fontSize * 3.2;
    painter.translate(area.center());
    painter.rotate(kTilt);
    const QRectF visible = painter.clipBoundingRect();
    int count = 0;
    int row = 0;
    for (double y = -reach; y <= reach && count < kMostTexts; y += stepY, ++row) {
        for (double x = -reach - stepX + (row % 2) * stepX / 2; x <= reach && count < kMostTexts; x += stepX, ++count)
            text.draw(painter, QPointF(x, y) - box.topLeft(), visible);
    }
}

/// The top left of a single text of some size.
QPointF cornerOf(const QString &mode, const QSizeF &size, const QRectF &area, double fontSize)
{
    const double margin = std::max(fontSize * 0.6, 8.0);
    const bool isCorner = mode == u"tl" || mode == u"bl" || mode == u"tr" || mode == u"br";
    QPointF at = area.center() - QPointF(size.width(), size.height()) / 2;
    if (isCorner)
        at.setX(mode.endsWith(u'l') ? area.left() + margin : area.right() - margin - size.width());
    if (isCorner || mode == u"tc" || mode == u"bc")
        at.setY(mode.startsWith(u't') ? area.top() + margin : area.bottom() - margin - size.height());
    return at;
}

} // namespace

WatermarkShape::WatermarkShape() : BaseShape(ToolType::Watermark), stamp(QDateTime::currentMSecsSinceEpoch())
{
    opacity = kOpacity;
}

QString WatermarkShape::expand(const QString &text, qint64 stamp)
{
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(stamp);
    QString out;
    qsizetype from = 0;
    while (true) {
        const qsizetype open = text.indexOf(u"{{", from);
        const qsizetype close = open < 0 ? -1 : text.indexOf(u"}}", open + 2);
        if (close < 0)
            return out + text.mid(from);
        out += QStringView(text).mid(from, open - from);
        out += expandGroup(QStringView(text).mid(open + 2, close - open - 2), time);
        from = close + 2;
    }
}

void WatermarkShape::paint(QPainter &painter, const ShapeRenderContext &context) const
{
    const QRectF area = context.canvasBounds;
    const QString shown = expand(text, stamp);
    if (area.isEmpty() || shown.isEmpty())
        return;
    const double size = std::clamp(fontSize, 4.0, kLargestSize);
    QFont font = painter.font();
    if (!fontFamily.isEmpty())
        font = QFont(fontFamily);
    font.setPixelSize(std::max(4, static_cast<int>(std::lround(size))));
    if (m_stamp.text() != shown || m_stamp.font() != font)
        m_stamp = TextStamp(shown, font);
    const QRectF box = m_stamp.box();
    if (box.width() <= 0 || box.height() <= 0)
        return;
    QColor ink = colorFromText(color);
    ink.setAlpha(static_cast<int>(std::lround(ink.alpha() * std::clamp(opacity, 0.0, 1.0))));
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.setClipRect(area, Qt::IntersectClip);
    painter.setFont(font);
    painter.setPen(ink);
    if (mode == u"tile")
        paintTiled(painter, m_stamp, area, size);
    else
        m_stamp.draw(painter, cornerOf(mode, box.size(), area, size) - box.topLeft(), painter.clipBoundingRect());
    painter.restore();
}

void WatermarkShape::scale(double factor)
{
    BaseShape::scale(factor);
    fontSize *= factor;
}

void WatermarkShape::toJson(QJsonObject &out) const
{
    writeBase(out);
    out.insert(QStringLiteral("text"), text);
    out.insert(QStringLiteral("mode"), mode);
    out.insert(QStringLiteral("fontSize"), fontSize);
    out.insert(QStringLiteral("fontFamily"), fontFamily);
    out.insert(QStringLiteral("stamp"), static_cast<double>(stamp));
}

void WatermarkShape::readJson(const QJsonObject &in)
{
    text = readString(in, QStringLiteral("text"));
    mode = readString(in, QStringLiteral("mode"));
    if (mode.isEmpty())
        mode = QStringLiteral("tile");
    fontSize = readNonZero(in, QStringLiteral("fontSize"), kUsualSize);
    fontFamily = readString(in, QStringLiteral("fontFamily"));
    const auto now = static_cast<double>(QDateTime::currentMSecsSinceEpoch());
    stamp = static_cast<qint64>(std::clamp(readDouble(in, QStringLiteral("stamp"), now), -8e15, 8e15));
}

void WatermarkShape::takeAttributes(const ShapeAttributes &attributes)
{
    applyAttribute(ShapeAttribute::Watermark, attributes);
}

void WatermarkShape::giveAttributes(ShapeAttributes &attributes) const
{
    attributes.watermarkText = text;
    attributes.watermarkMode = mode;
    attributes.watermarkOpacity = opacity;
    attributes.watermarkFontSize = fontSize / attributes.displayScale;
}

bool WatermarkShape::applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes)
{
    if (attribute != ShapeAttribute::Watermark)
        return false;
    const auto set = [](auto &value, const auto &wanted) { return std::exchange(value, wanted) != wanted; };
    bool hasChanged = set(text, attributes.watermarkText);
    if (hasChanged)
        stamp = QDateTime::currentMSecsSinceEpoch();
    hasChanged |= set(mode, attributes.watermarkMode);
    hasChanged |= set(opacity, attributes.watermarkOpacity);
    hasChanged |= set(fontSize, attributes.watermarkFontSize * attributes.displayScale);
    hasChanged |= set(fontFamily, attributes.fontFamily);
    hasChanged |= set(color, attributes.color);
    return hasChanged;
}

} // namespace tavrel
