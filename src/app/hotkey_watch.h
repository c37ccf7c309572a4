#pragma once

#include "process/hotkey_table.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

namespace tavrel {

class IUserNotices;
class SettingsStore;

/// Keeps the hotkeys of the settings registered and runs the commands behind them. Those that could not be had are told
/// of once, and tried again while another program may give them back. GUI thread only.
class HotkeyWatch final : public QObject
{
    Q_OBJECT

public:
    HotkeyWatch(platform::IGlobalHotkey &hotkeys, const Commands &commands, const SettingsStore &settings,
                IUserNotices &notices, QObject *parent = nullptr);

    /// Registers what the settings say by now; where they say the same, only what failed is tried again.
    void refresh();
    [[nodiscard]] const HotkeyTable &table() const { return m_table; }

Q_SIGNALS:
    void refreshed();

private:
    /// The rows that failed, each with its combination: what the user has been told about.
    [[nodiscard]] QStringList failed() const;

    const SettingsStore &m_settings;
    IUserNotices &m_notices;
    HotkeyTable m_table;
    QStringList m_told;
    QTimer m_retry;
};

} // namespace tavrel
