#include "annotate/stroke_points.h"

#include "annotate/segment_distance.h"
#include "annotate/stored_number.h"

#include <QJsonDocument>
#include <QLatin1String>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

namespace tavrel {
namespace {

constexpr qsizetype kBoxSegments = 64;
constexpr qsizetype kLongestNumber = 32;
constexpr std::string_view kBeforeX = "{\"x\":";
constexpr std::string_view kBeforeY = ",\"y\":";
constexpr std::string_view kEmptyPoints = "\"points\":[]";
constexpr std::string_view kPointsKey = "\"points\":[";

char *put(char *to, std::string_view text)
{
    std::memcpy(to, text.data(), text.size());
    return to + text.size();
}

/// As QJsonDocument writes numbers: whole ones without a point, others with the fewest digits that read back the same.
char *putNumber(char *to, double value)
{
    char *const end = to + kLongestNumber;
    value = storedLength(value);
    if (value == std::trunc(value))
        return std::to_chars(to, end, static_cast<qint64>(value)).ptr;
    return std::to_chars(to, end, value).ptr;
}

/// Reads the strict form that toJsonText() writes.
class PointReader final
{
public:
    PointReader(const char *at, const char *end) : m_at(at), m_end(end) {}

    /// All points up to and including the closing bracket; false for any other form.
    bool readAll(QList<QPointF> &points)
    {
        if (take("]"))
            return true;
        do {
            double x = 0;
            double y = 0;
            if (!take(kBeforeX) || !number(x) || !take(kBeforeY) || !number(y) || !take("}"))
                return false;
            points.append({x, y});
        } while (take(","));
        return take("]");
    }

    [[nodiscard]] const char *at() const { return m_at; }

private:
    bool take(std::string_view text)
    {
        if (m_end - m_at < static_cast<qsizetype>(text.size()) || std::memcmp(m_at, text.data(), text.size()) != 0)
            return false;
        m_at += text.size();
        return true;
    }

    bool number(double &value)
    {
        const auto [at, error] = std::from_chars(m_at, m_end, value);
        if (error != std::errc() || !std::isfinite(value))
            return false;
        m_at = at;
        value = storedLength(value);
        return true;
    }

    const char *m_at;
    const char *m_end;
};

} // namespace

void StrokePoints::cover(qsizetype index)
{
    const QPointF &point = m_points[index];
    const auto grow = [this, &point](qsizetype box) {
        if (box == m_boxes.size())
            m_boxes.append({point.x(), point.y(), point.x(), point.y()});
        Box &into = m_boxes[box];
        into = {std::min(into.left, point.x()), std::min(into.top, point.y()), std::max(into.right, point.x()),
                std::max(into.bottom, point.y())};
    };
    // The first point of a box ends the last segment of the one before.
    if (index > 0 && index % kBoxSegments == 0)
        grow(index / kBoxSegments - 1);
    grow(index / kBoxSegments);
}

void StrokePoints::coverAll()
{
    m_boxes.clear();
    m_boxes.reserve(m_points.size() / kBoxSegments + 1);
    for (qsizetype i = 0; i < m_points.size(); ++i)
        cover(i);
}

void StrokePoints::append(const QPointF &point)
{
    m_points.append(point);
    cover(m_points.size() - 1);
}

void StrokePoints::assign(QList<QPointF> points)
{
    m_points = std::move(points);
    coverAll();
}

void StrokePoints::translate(double dx, double dy)
{
    for (QPointF &point : m_points)
        point += {dx, dy};
    coverAll();
}

void StrokePoints::scale(double factor)
{
    for (QPointF &point : m_points)
        point *= factor;
    coverAll();
}

void StrokePoints::transform(const ImageTransform &transform)
{
    for (QPointF &point : m_points)
        point = transform.map(point);
    coverAll();
}

std::optional<QRectF> StrokePoints::box() const
{
    if (m_boxes.isEmpty())
        return {};
    Box all = m_boxes.first();
    for (const Box &box : m_boxes) {
        all = {std::min(all.left, box.left), std::min(all.top, box.top), std::max(all.right, box.right),
               std::max(all.bottom, box.bottom)};
    }
    return QRectF(QPointF(all.left, all.top), QPointF(all.right, all.bottom));
}

bool StrokePoints::passesNear(const QPointF &place, double radius) const
{
    if (m_points.isEmpty())
        return false;
    const auto isOutside = [&](const Box &box) {
        return place.x() < box.left - radius || place.x() > box.right + radius || place.y() < box.top - radius ||
               place.y() > box.bottom + radius;
    };
    if (m_points.size() == 1)
        return !isOutside(m_boxes.first());
    for (qsizetype box = 0; box < m_boxes.size(); ++box) {
        if (isOutside(m_boxes[box]))
            continue;
        const qsizetype last = std::min((box + 1) * kBoxSegments, m_points.size() - 1);
        for (qsizetype i = box * kBoxSegments; i < last; ++i) {
            if (squaredDistanceToSegment(place, m_points[i], m_points[i + 1]) <= radius * radius)
                return true;
        }
    }
    return false;
}

bool StrokePoints::staysWithin(double distance) const
{
    return std::all_of(m_points.begin(), m_points.end(), [&](const QPointF &point) {
        const QPointF away = point - m_points.first();
        return std::abs(away.x()) <= distance && std::abs(away.y()) <= distance;
    });
}

QByteArray StrokePoints::toJsonText() const
{
    constexpr auto longestPoint = static_cast<qsizetype>(kBeforeX.size() + kBeforeY.size()) + 2 * kLongestNumber + 2;
    QByteArray text(m_points.size() * longestPoint + 2, Qt::Uninitialized);
    char *at = text.data();
    *at++ = '[';
    for (const QPointF &point : m_points) {
        at = put(at, kBeforeX);
        at = putNumber(at, point.x());
        at = put(at, kBeforeY);
        at = putNumber(at, point.y());
        at = put(at, "},");
    }
    if (!m_points.isEmpty())
        --at;
    *at++ = ']';
    text.truncate(at - text.constData());
    return text;
}

QJsonArray StrokePoints::toJson() const
{
    QJsonArray out;
    for (const QPointF &point : m_points)
        out.append(QJsonObject{{QStringLiteral("x"), storedLength(point.x())},
                               {QStringLiteral("y"), storedLength(point.y())}});
    return out;
}

void StrokePoints::readJson(const QJsonArray &in)
{
    QList<QPointF> points;
    points.reserve(in.size());
    for (const QJsonValue &value : in) {
        const QJsonObject point = value.toObject();
        points.append({storedLength(point.value(QLatin1String("x")).toDouble()),
                       storedLength(point.value(QLatin1String("y")).toDouble())});
    }
    assign(std::move(points));
}

QByteArray jsonTextWithPoints(QJsonObject object, const StrokePoints &points)
{
    object.insert(QStringLiteral("points"), QJsonArray());
    const QByteArray frame = QJsonDocument(object).toJson(QJsonDocument::Compact);
    // Inside a text of the object the quotes would be escaped, so this is the key and nothing else.
    const qsizetype at = frame.indexOf(QByteArrayView(kEmptyPoints));
    const QByteArray list = points.toJsonText();
    QByteArray text;
    text.reserve(frame.size() + list.size());
    text.append(QByteArrayView(frame).first(at + static_cast<qsizetype>(kPointsKey.size()) - 1));
    text.append(list);
    text.append(QByteArrayView(frame).sliced(at + static_cast<qsizetype>(kEmptyPoints.size())));
    return text;
}

std::optional<PartedStroke> partStroke(const QByteArray &json)
{
    const qsizetype key = json.indexOf(QByteArrayView(kPointsKey));
    if (key < 0)
        return {};
    const QByteArrayView before = QByteArrayView(json).first(key);
    if (before.count('{') != 1 || before.contains('['))
        return {}; // perhaps the key of an inner object
    const qsizetype start = key + static_cast<qsizetype>(kPointsKey.size());
    PartedStroke parted;
    parted.points.reserve((json.size() - start) / 24);
    PointReader reader(json.constData() + start, json.constData() + json.size());
    if (!reader.readAll(parted.points))
        return {};
    parted.rest = before.toByteArray();
    parted.rest.append(QByteArrayView(kEmptyPoints));
    parted.rest.append(reader.at(), json.constData() + json.size() - reader.at());
    return parted;
}

} // namespace tavrel
