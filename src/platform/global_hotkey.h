#pragma once

#include <QObject>

namespace tavrel {
struct KeyCombo;
}

namespace tavrel::platform {

/// Key combinations that reach the program whatever has the keyboard.
///
/// Modifiers compare exactly; a combination held down fires once. GUI thread only; `activated` arrives there too.
class IGlobalHotkey : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Binds `combo` to `id`, replacing any earlier binding of the id. On failure false with a sentence for the user
    /// in `error`; an invalid combo is refused with "按键组合无效", a key the system cannot watch with "不支持的按键".
    virtual bool registerHotkey(int id, const KeyCombo &combo, QString *error) = 0;
    virtual void unregisterHotkey(int id) = 0;
    virtual void unregisterAll() = 0;
    /// While suspended no hotkey fires and the keys reach the focused window. Calls nest: each `true` needs a `false`.
    virtual void setSuspended(bool suspended) = 0;

Q_SIGNALS:
    void activated(int id);
};

} // namespace tavrel::platform
