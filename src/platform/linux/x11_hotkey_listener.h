#pragma once

#include "platform/hotkey_matcher.h"
#include "platform/linux/x11_grab_holders.h"
#include "platform/linux/x11_keyboard.h"
#include "settings/key_combo.h"

#include <QByteArray>

#include <xcb/xcb.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace tavrel::platform {

class XConnection;

/// The thread that grabs and hears hotkeys, with a connection of its own to the X server.
///
/// Each stroke is grabbed on the root with every combination of lock modifiers: with XInput 2, which delivers the key
/// to nobody else, and with a core grab beside it, since the server does not see a conflict between grabs of the two
/// kinds. Raw key events, which arrive whoever holds the keyboard, are the second path; HotkeyMatcher joins the two.
/// When the keymap, the active layout or the meaning of a modifier changes, the strokes are computed anew and those
/// that differ are grabbed anew; a combination that cannot be had then is tried again at the next change.
///
/// The public functions are for one other thread. They hand a task to the listener's thread and wait for its answer;
/// after kAnswerDeadline they give up waiting. Nothing is shared between the threads but what m_mutex guards. What has
/// fired is fetched rather than posted: once unbind() has returned, the id must not come any more.
class X11HotkeyListener final
{
public:
    enum class Answer { Done, UnsupportedKey, Taken, NoServer };

    /// Starts the thread; connecting is its first task.
    explicit X11HotkeyListener(QByteArray display);
    /// Gives all grabs back and joins the thread, also when the server does not answer any more.
    ~X11HotkeyListener();
    X11HotkeyListener(const X11HotkeyListener &) = delete;
    X11HotkeyListener &operator=(const X11HotkeyListener &) = delete;

    /// Binds a valid combo. Anything but Done leaves what was bound before, only that a server that has answered too
    /// late may have cost the id its earlier combo.
    [[nodiscard]] Answer bind(int id, const KeyCombo &combo);
    void unbind(int id);
    void unbindAll();
    /// Who may have a combination that was refused; empty when the server does not answer in time.
    [[nodiscard]] QList<GrabHolder> otherGrabHolders();
    /// While suspended nothing is grabbed and nothing fires. Bindings can change meanwhile.
    void setSuspended(bool suspended);

    /// The ids that have fired since the last call, in order. firedDescriptor() is readable while there are any.
    [[nodiscard]] std::vector<int> takeFired();
    [[nodiscard]] int firedDescriptor() const noexcept { return m_firedEvent; }
    /// xcb's code for why the thread has ended; 0 while it runs.
    [[nodiscard]] int errorCode() const;

private:
    struct Task
    {
        enum class State { Queued, Running, Finished };

        std::function<Answer()> run;
        State state = State::Queued;
        Answer answer = Answer::NoServer;
    };
    struct Binding
    {
        KeyCombo combo;
        std::vector<KeyStroke> strokes;
        bool lost = false; ///< not all strokes could be grabbed when the keymap changed
    };

    // On the thread of the caller.
    Answer ask(std::function<Answer()> run, std::function<Answer()> undoWhenLate = {});

    // On the listener's thread.
    void run();
    bool connectToServer();
    void listen();
    bool runTasks();
    template <typename Predicate>
    void forgetFired(Predicate predicate);
    void waitForInput();
    void handleEvent(const xcb_generic_event_t *event);
    void handleInputEvent(const xcb_ge_generic_event_t *event);
    void handleKey(KeyStroke stroke, bool down, quint32 timeMs, HotkeyPath path);
    void traceKey(KeyStroke stroke, bool down, HotkeyPath path, const HotkeyMatcher::Outcome &outcome) const;
    void repairKeyState();

    Answer bindHere(int id, const KeyCombo &combo);
    Answer unbindHere(int id);
    void followKeymap();
    void followLayout();
    void followBindings();
    bool grab(const KeyStroke &stroke);
    void ungrab(const KeyStroke &stroke);

    const QByteArray m_display;
    const bool m_trace;
    int m_wakeEvent = -1;
    int m_firedEvent = -1;

    mutable std::mutex m_mutex;
    std::condition_variable m_answered;
    std::deque<std::shared_ptr<Task>> m_tasks;
    std::vector<int> m_fired;
    bool m_quit = false;
    bool m_ended = false; ///< the thread takes no more tasks
    int m_errorCode = 0;
    int m_connectionDescriptor = -1; ///< to cut off a server that does not answer

    // Of the listener's thread alone.
    std::unique_ptr<XConnection> m_x;
    std::unique_ptr<X11Keyboard> m_keyboard;
    std::vector<quint32> m_lockVariants; ///< those of the grabs that are held
    quint8 m_xinputOpcode = 0;
    bool m_keymapChanged = false;
    bool m_groupChanged = false;
    bool m_suspended = false;
    std::map<int, Binding> m_bindings;
    std::set<KeyStroke> m_grabbed;
    HotkeyMatcher m_matcher;

    std::thread m_thread; ///< last, so that everything it uses exists
};

} // namespace tavrel::platform
