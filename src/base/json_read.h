#pragma once

#include <QJsonObject>
#include <QString>

namespace tavrel {

/// Readers for stored JSON that never fail: a missing key or a value of another type gives the default.
[[nodiscard]] bool readBool(const QJsonObject &object, const QString &key, bool fallback);
/// A number that is not whole or lies outside int counts as a wrong type.
[[nodiscard]] int readInt(const QJsonObject &object, const QString &key, int fallback);
/// Never NaN or infinite: JSON cannot say them, and a number too large for double counts as a wrong type.
[[nodiscard]] double readDouble(const QJsonObject &object, const QString &key, double fallback);
[[nodiscard]] QString readString(const QJsonObject &object, const QString &key, const QString &fallback = {});

} // namespace tavrel
