#include "settings/settings_store.h"

#include <QJsonDocument>
#include <QLoggingCategory>
#include <QStandardPaths>

#include <cmath>

namespace tavrel {
namespace {

QString valueKey()
{
    return QStringLiteral("settings_config");
}

/// Where a document goes that could not be read, so that it is not lost under the defaults.
QString brokenKey()
{
    return QStringLiteral("settings_config_broken");
}

} // namespace

// The native format is what QSettings takes for an organisation and application; there is no shorter way to choose
// between that and a file in an initialiser.
SettingsStore::SettingsStore(const QString &path, QObject *parent)
    : QObject(parent),
      m_settings(path.isEmpty() ? QSettings(QStringLiteral("corvane"), QStringLiteral("Tavrel")).fileName() : path,
                 path.isEmpty() ? QSettings::NativeFormat : QSettings::IniFormat)
{
    load();
}

SettingsStore::~SettingsStore() = default;

void SettingsStore::load()
{
    const QVariant stored = m_settings.value(valueKey());
    const bool isText = stored.typeId() == QMetaType::QString;
    if (!stored.isValid() || (isText && stored.toString().isEmpty())) {
        save();
        return;
    }
    // An INI file edited by hand without quotes gives a list: as unreadable as a torn text.
    const QJsonDocument document = isText ? QJsonDocument::fromJson(stored.toString().toUtf8()) : QJsonDocument();
    if (!document.isObject()) {
        qWarning().noquote() << QStringLiteral("设置无法读取，已改用默认值；原文保存在 %1").arg(brokenKey());
        m_settings.setValue(brokenKey(), stored);
    }
    m_config = settingsFromJson(document.object());
    if (!document.isObject() || storedSchemaVersion(document.object()) < SettingsConfig::kSchemaVersion)
        save();
}

void SettingsStore::update(const SettingsConfig &config)
{
    SettingsConfig next = config;
    next.configSchemaVersion = SettingsConfig::kSchemaVersion;
    // NaN equals nothing, not even itself: every write of it would be a change, for ever.
    if (std::isnan(next.pinInitialOpacity))
        next.pinInitialOpacity = m_config.pinInitialOpacity;
    if (next == m_config)
        return;
    m_config = next;
    save();
    Q_EMIT changed(m_config);
}

void SettingsStore::save()
{
    m_settings.setValue(valueKey(), QString::fromUtf8(settingsToJson(m_config)));
    m_settings.sync();
}

QString SettingsStore::effectiveSavePath() const
{
    if (!m_config.savePath.trimmed().isEmpty())
        return m_config.savePath;
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return pictures.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::HomeLocation) : pictures;
}

} // namespace tavrel
