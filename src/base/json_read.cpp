#include "base/json_read.h"

#include <QJsonValue>

#include <cmath>
#include <limits>

namespace tavrel {

bool readBool(const QJsonObject &object, const QString &key, bool fallback)
{
    return object.value(key).toBool(fallback);
}

int readInt(const QJsonObject &object, const QString &key, int fallback)
{
    return object.value(key).toInt(fallback);
}

double readDouble(const QJsonObject &object, const QString &key, double fallback)
{
    const double value = object.value(key).toDouble(fallback);
    return std::isfinite(value) ? value : fallback;
}

QString readString(const QJsonObject &object, const QString &key, const QString &fallback)
{
    return object.value(key).toString(fallback);
}

} // namespace tavrel
