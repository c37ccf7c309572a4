#pragma once

#include <QString>

namespace tavrel::platform {

/// Start of the program at login. GUI thread only.
class IAutoStart
{
public:
    IAutoStart() = default;
    IAutoStart(const IAutoStart &) = delete;
    IAutoStart &operator=(const IAutoStart &) = delete;
    virtual ~IAutoStart() = default;

    [[nodiscard]] virtual bool isEnabled() const = 0;
    /// False with a sentence for the user in `error` when the system refused.
    virtual bool setEnabled(bool enabled, QString *error) = 0;
};

} // namespace tavrel::platform
