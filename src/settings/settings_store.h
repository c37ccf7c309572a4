#pragma once

#include "settings/settings_config.h"

#include <QObject>
#include <QSettings>

namespace tavrel {

/// Holds the settings of the process and keeps them on disk, as one compact JSON text in the value
/// `settings_config`. A writer copies config(), changes what it wants and hands the whole value to update().
/// GUI thread only; a failing disk is not reported.
class SettingsStore final : public QObject
{
    Q_OBJECT

public:
    /// path  INI file to keep them in; empty for the user's own settings
    explicit SettingsStore(const QString &path = {}, QObject *parent = nullptr);
    ~SettingsStore() override;

    /// Valid for the whole life of the store.
    [[nodiscard]] const SettingsConfig &config() const { return m_config; }
    /// Stores the value and tells everybody; a value equal to the present one does neither.
    void update(const SettingsConfig &config);
    /// The folder for saved pictures: the chosen one, else the user's pictures, else the home folder.
    [[nodiscard]] QString effectiveSavePath() const;

Q_SIGNALS:
    void changed(const tavrel::SettingsConfig &config);

private:
    void load();
    void save();

    QSettings m_settings;
    SettingsConfig m_config;
};

} // namespace tavrel
