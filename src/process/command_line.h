#pragma once

#include "process/single_instance.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace tavrel {

/// What the command line asks of this start.
struct StartRequest
{
    QList<Command> commands; ///< each once
    bool fakeCapture = false;
    bool languageProbe = false;
    QString lang; ///< for this run only; empty follows the settings
    std::optional<int> quitAfterMs;
    QStringList files; ///< positional arguments, unfiltered
    /// Every option but the plain ones makes an instance that neither locks nor listens.
    bool enforceSingleInstance = true;

    [[nodiscard]] HandOver handOver() const;
};

/// Reads the arguments of the application, the first of which is its name. Help, version and errors end the process
/// as QCommandLineParser does.
[[nodiscard]] StartRequest readCommandLine(const QStringList &arguments);

} // namespace tavrel
