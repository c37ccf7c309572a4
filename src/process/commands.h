#pragma once

#include <QMap>
#include <QString>

#include <functional>
#include <optional>
#include <span>

namespace tavrel {

/// What can be asked of the program from outside its windows: by hotkey, from the tray, on the command line.
enum class Command {
    Capture,
    LongCapture,
    Ocr,
    Record, ///< begins a recording or ends the one that runs
    StopRecording,
    Guide, ///< begins a guide or ends the one that runs
    PinClipboard,
    ClosePins,
    ClearClickThrough, ///< of all pins
    History,
    Edit,
    OpenRecording,
    Settings,
    Account,
    Welcome,
    Feedback,
    Updates,
    Quit,
};

/// The commands that the command line, a second start and a desktop's own shortcut can give, each with its word and a
/// line of help in the source language (context "main").
struct CommandWord
{
    Command command;
    const char *word;
    const char *help;
};
[[nodiscard]] std::span<const CommandWord> commandWords();

/// Empty for a command that has no word.
[[nodiscard]] QString commandWord(Command command);
/// Nothing for an unknown word.
[[nodiscard]] std::optional<Command> commandOfWord(const QString &word);

/// What each command does in the running program. A command without an operation is not part of this version: its
/// hotkey is left to other programs and its menu entry stands disabled.
class Commands final
{
public:
    void set(Command command, const std::function<void()> &operation) { m_operations.insert(command, operation); }
    [[nodiscard]] bool has(Command command) const { return m_operations.contains(command); }
    /// Does nothing for a command without an operation.
    void run(Command command) const
    {
        if (const auto operation = m_operations.value(command))
            operation();
    }

private:
    QMap<Command, std::function<void()>> m_operations;
};

} // namespace tavrel
