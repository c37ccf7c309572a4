#pragma once

#include "platform/permissions.h"

namespace tavrel::platform {

/// An X11 desktop has no gates: every program may look at the screen, hear the keys and open the devices that its user
/// may open.
class XdgPermissions final : public IPermissions
{
public:
    [[nodiscard]] bool isRequired(MediaKind) const override { return false; }
    [[nodiscard]] PermissionState state(MediaKind) const override { return PermissionState::Granted; }
    /// Nobody is asked, so nobody says yes; not reached by callers that look at isRequired() first.
    void request(MediaKind, std::function<void(bool)> answer) override
    {
        if (answer)
            answer(false);
    }
    void openSystemSettings(MediaKind) override {}
};

} // namespace tavrel::platform
