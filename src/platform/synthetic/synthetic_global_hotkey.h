#pragma once

#include "platform/global_hotkey.h"
#include "platform/hotkey_matcher.h"
#include "settings/key_combo.h"

#include <QList>

#include <map>

namespace tavrel::platform {

/// Global hotkeys without a keyboard: the keys come from press(), keyDown() and keyUp().
class SyntheticGlobalHotkey final : public IGlobalHotkey
{
    Q_OBJECT

public:
    using IGlobalHotkey::IGlobalHotkey;

    bool registerHotkey(int id, const KeyCombo &combo, QString *error) override;
    void unregisterHotkey(int id) override;
    void unregisterAll() override;
    void setSuspended(bool suspended) override;

    /// One stroke; `activated` is emitted within the call. False when no hotkey took the key, so that the focused
    /// window would have got it.
    bool press(const KeyCombo &combo);
    /// A key going down, also as auto-repeat of one that is down.
    bool keyDown(const KeyCombo &combo);
    bool keyUp(const KeyCombo &combo);

    /// Another program takes the combination (it is then refused to this one) or gives it back.
    void setTakenElsewhere(const KeyCombo &combo, bool taken);
    /// The combination bound to an id; invalid when there is none.
    [[nodiscard]] KeyCombo combo(int id) const;

private:
    void rebuildTable();

    std::map<int, KeyCombo> m_bindings;
    QList<KeyCombo> m_takenElsewhere;
    HotkeyMatcher m_matcher;
    quint32 m_clock = 0; ///< each press gets a time of its own
    int m_suspended = 0;
};

} // namespace tavrel::platform
