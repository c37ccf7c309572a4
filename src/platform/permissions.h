#pragma once

#include <functional>

namespace tavrel::platform {

enum class MediaKind { Screen = 0, Accessibility = 1, Input = 2, Microphone = 3, Camera = 4 };
enum class PermissionState { Granted = 0, Denied = 1, NotAsked = 2 };

/// The system's gates in front of devices and of other applications. GUI thread only.
class IPermissions
{
public:
    IPermissions() = default;
    IPermissions(const IPermissions &) = delete;
    IPermissions &operator=(const IPermissions &) = delete;
    virtual ~IPermissions() = default;

    /// False means that the system has no such gate: go on as if granted.
    [[nodiscard]] virtual bool isRequired(MediaKind kind) const = 0;
    [[nodiscard]] virtual PermissionState state(MediaKind kind) const = 0;
    /// Asks the user; the answer arrives on the GUI thread, possibly within the call.
    virtual void request(MediaKind kind, std::function<void(bool)> answer) = 0;
    /// Opens the system's page for this permission.
    virtual void openSystemSettings(MediaKind kind) = 0;
};

} // namespace tavrel::platform
