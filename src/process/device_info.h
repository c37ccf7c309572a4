#pragma once

#include <QByteArray>
#include <QImage>
#include <QJsonObject>
#include <QString>

namespace tavrel {

/// The few facts about the machine that a report needs: app_version, platform, os, arch, lang.
[[nodiscard]] QJsonObject deviceInfo();
/// deviceInfo() in one line for people.
[[nodiscard]] QString deviceSummary(const QJsonObject &info);
/// JPEG of at most 1,400,000 bytes, scaled to fit 1,280 pixels, transparency on white; empty when it cannot be done.
[[nodiscard]] QByteArray compressForUpload(const QImage &image);

} // namespace tavrel
