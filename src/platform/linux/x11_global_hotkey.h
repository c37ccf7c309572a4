#pragma once

#include "platform/global_hotkey.h"

#include <QByteArray>
#include <QSet>
#include <QStringList>

#include <memory>

class QSocketNotifier;

namespace tavrel::platform {

class X11HotkeyListener;

/// Global hotkeys of the X server. The keyboard work happens on a thread and a connection of their own (see
/// X11HotkeyListener), which start with the first registration; this class is their front on the GUI thread.
///
/// A registration that fails leaves an earlier binding of the id as it was. Every operation waits for the thread, for
/// about as long as one round trip to the server takes and at most two seconds, so that the answer is the truth and
/// a combination is free again when unregisterHotkey() returns.
class X11GlobalHotkey final : public IGlobalHotkey
{
    Q_OBJECT

public:
    /// `display` as in $DISPLAY, empty for $DISPLAY itself.
    explicit X11GlobalHotkey(const QByteArray &display = {}, QObject *parent = nullptr);
    ~X11GlobalHotkey() override;

    bool registerHotkey(int id, const KeyCombo &combo, QString *error) override;
    void unregisterHotkey(int id) override;
    void unregisterAll() override;
    void setSuspended(bool suspended) override;

private:
    void ensureListener();
    void deliverFired();
    /// The programs that may have a refused combination, in words.
    [[nodiscard]] QStringList suspects() const;

    const QByteArray m_display;
    std::unique_ptr<X11HotkeyListener> m_listener;
    std::unique_ptr<QSocketNotifier> m_notifier; ///< of the listener's descriptor
    QSet<int> m_bound;
    int m_suspended = 0;
};

} // namespace tavrel::platform
