#pragma once

#include "platform/auto_start.h"

#include <QString>

namespace tavrel::platform {

/// Start at login by an entry in the autostart folder of the user's configuration, as all XDG desktops read it.
class XdgAutoStart final : public IAutoStart
{
public:
    /// entry    the desktop file; empty means "autostart/tavrel.desktop" in the user's configuration folder
    /// program  the file to start; empty means this program
    explicit XdgAutoStart(const QString &entry = {}, const QString &program = {});

    /// True when a desktop would start what the entry names: it is not hidden nor switched off, and the program that it
    /// asks for is there.
    [[nodiscard]] bool isEnabled() const override;
    bool setEnabled(bool enabled, QString *error) override;

private:
    QString m_entry;
    QString m_program;
};

} // namespace tavrel::platform
