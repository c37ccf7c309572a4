#pragma once

#include "process/commands.h"
#include "settings/settings_config.h"

#include <QList>
#include <QMap>
#include <QSet>
#include <QString>

namespace tavrel {

namespace platform {
class IGlobalHotkey;
}

/// The global hotkeys of the program: which setting belongs to which id, what a press does, who conflicts with whom.
class HotkeyTable final
{
public:
    enum Id {
        Capture = 1,
        PinClipboard = 2,
        RecordStop = 3,
        History = 4,
        Steps = 5,
        Record = 6,
        Long = 7,
        Edit = 8,
        Ocr = 9
    };

    struct Row
    {
        Id id;
        Command command;
        const char *name;       ///< stable word, key of errors()
        const char *sourceText; ///< label in the source language, context AppController
        HotkeyBinding SettingsConfig::*binding;
    };

    /// A row whose command has no operation is not registered, so that its key stays with other programs.
    HotkeyTable(platform::IGlobalHotkey &hotkeys, const Commands &commands) : m_hotkeys(hotkeys), m_commands(commands)
    {}

    /// All rows in registration order: of two equal combinations the earlier row wins.
    [[nodiscard]] static const QList<Row> &rows();
    [[nodiscard]] static QString label(const Row &row);

    /// Registers everything anew, or only tries the failed rows again when no combination has changed since the last
    /// call: another program may have given its key back.
    void apply(const SettingsConfig &config);
    /// The hotkey that ends a recording is there only while one runs.
    void setRecording(bool recording, const SettingsConfig &config);
    /// Runs the command behind an id; an unknown id does nothing.
    void dispatch(int id) const;

    /// Error text of each row that could not be registered, by row name.
    [[nodiscard]] const QMap<QString, QString> &errors() const { return m_errors; }
    /// "label：error" for each error, in table order.
    [[nodiscard]] QString errorLines() const;
    /// Whether a row has failed that may succeed once another program gives its key back.
    [[nodiscard]] bool mayRecover() const { return !m_refused.isEmpty(); }

private:
    void tryRow(const Row &row, const SettingsConfig &config);
    [[nodiscard]] QString registerRow(const Row &row, const SettingsConfig &config);
    void registerStop(const SettingsConfig &config);

    platform::IGlobalHotkey &m_hotkeys;
    const Commands &m_commands;
    QMap<QString, QString> m_errors;
    QSet<Id> m_refused; ///< by the system, not by an earlier row
    bool m_recording = false;
    QList<std::pair<int, HotkeyBinding>> m_applied;
    bool m_everApplied = false;
};

} // namespace tavrel
