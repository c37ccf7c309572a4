#include "process/device_info.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QLocale>
#include <QPainter>
#include <QSysInfo>

namespace tavrel {
namespace {

constexpr int kUploadSide = 1280;
constexpr qsizetype kUploadBytes = 1'400'000;

QImage onWhite(const QImage &image)
{
    if (!image.hasAlphaChannel())
        return image;
    QImage opaque(image.size(), QImage::Format_RGB32);
    opaque.fill(Qt::white);
    QPainter painter(&opaque);
    painter.drawImage(QRect(QPoint(0, 0), image.size()), image);
    return opaque;
}

} // namespace

QJsonObject deviceInfo()
{
    return {{QStringLiteral("app_version"), QCoreApplication::applicationVersion()},
            {QStringLiteral("platform"), QSysInfo::kernelType()},
            {QStringLiteral("os"), QSysInfo::prettyProductName()},
            {QStringLiteral("arch"), QSysInfo::currentCpuArchitecture()},
            {QStringLiteral("lang"), QLocale().name()}};
}

QString deviceSummary(const QJsonObject &info)
{
    const auto text = [&info](const char *key) { return info.value(QLatin1String(key)).toString(); };
    return QStringLiteral("Tavrel %1 · %2 · %3 · %4").arg(text("app_version"), text("os"), text("arch"), text("lang"));
}

QByteArray compressForUpload(const QImage &image)
{
    if (image.isNull())
        return {};
    QImage scaled = image;
    if (std::max(image.width(), image.height()) > kUploadSide)
        scaled = image.scaled(kUploadSide, kUploadSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    scaled = onWhite(scaled);
    for (const int quality : {80, 65, 50, 35}) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        if (scaled.save(&buffer, "JPG", quality) && bytes.size() <= kUploadBytes)
            return bytes;
    }
    return {};
}

} // namespace tavrel
