#pragma once

#include "settings/settings_config.h"

#include <QList>
#include <QMap>
#include <QString>

#include <functional>

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
        const char *name;       ///< stable word, key of errors()
        const char *sourceText; ///< label in the source language, context AppController
        HotkeyBinding SettingsConfig::*binding;
    };

    explicit HotkeyTable(platform::IGlobalHotkey &hotkeys) : m_hotkeys(hotkeys) {}

    /// All rows in registration order: of two equal combinations the earlier row wins.
    [[nodiscard]] static const QList<Row> &rows();
    [[nodiscard]] static QString label(const Row &row);

    /// Gives a row its operation. A row without one is not registered, so that its key stays with other programs.
    void setOperation(Id id, const std::function<void()> &operation);
    /// Registers everything anew, or only tries the failed rows again when no combination has changed since the last
    /// call: another program may have given its key back.
    void apply(const SettingsConfig &config);
    /// Runs the operation behind an id; an unknown id does nothing.
    void dispatch(int id) const;

    /// Error text of each row that could not be registered, by row name.
    [[nodiscard]] const QMap<QString, QString> &errors() const { return m_errors; }
    /// "label：error" for each error, in table order.
    [[nodiscard]] QString errorLines() const;

private:
    void tryRow(const Row &row, const SettingsConfig &config);
    [[nodiscard]] QString registerRow(const Row &row, const SettingsConfig &config);

    platform::IGlobalHotkey &m_hotkeys;
    QMap<int, std::function<void()>> m_operations;
    QMap<QString, QString> m_errors;
    QList<std::pair<int, HotkeyBinding>> m_applied;
    bool m_everApplied = false;
};

} // namespace tavrel
