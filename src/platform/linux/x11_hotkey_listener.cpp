#include "platform/linux/x11_hotkey_listener.h"

#include "platform/linux/wake_event.h"
#include "platform/linux/x_connection.h"

#include <QLoggingCategory>

#include <xcb/xinput.h>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace tavrel::platform {
namespace {

Q_LOGGING_CATEGORY(lcHotkey, "tavrel.hotkey")

/// How long a caller waits. An answer takes well below a millisecond unless the server is grabbed or gone.
constexpr std::chrono::milliseconds kAnswerDeadline{2000};
/// A release or a modifier that the listener has missed is noticed within this time.
constexpr int kRepairIntervalMs = 2000;

constexpr quint32 kCoreModifiers = 0xff;
constexpr xcb_input_device_id_t kAllMasters = XCB_INPUT_DEVICE_ALL_MASTER;
constexpr quint32 kRawEvents = XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;

} // namespace

X11HotkeyListener::X11HotkeyListener(QByteArray display)
    : m_display(std::move(display)),
      m_trace(qEnvironmentVariableIntValue("TAVREL_HOTKEY_TRACE") != 0),
      m_wakeEvent(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_firedEvent(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_thread([this] { run(); })
{}

X11HotkeyListener::~X11HotkeyListener()
{
    {
        std::unique_lock lock(m_mutex);
        m_quit = true;
        signalEvent(m_wakeEvent);
        const bool ended = m_answered.wait_for(lock, kAnswerDeadline, [this] { return m_ended; });
        if (!ended && m_connectionDescriptor >= 0)
            ::shutdown(m_connectionDescriptor, SHUT_RDWR); // whatever the thread waits for fails now
    }
    m_thread.join();
    ::close(m_wakeEvent);
    ::close(m_firedEvent);
}

// On the thread of the caller.

X11HotkeyListener::Answer X11HotkeyListener::bind(int id, const KeyCombo &combo)
{
    return ask([this, id, combo] { return bindHere(id, combo); }, [this, id] { return unbindHere(id); });
}

QList<GrabHolder> X11HotkeyListener::otherGrabHolders()
{
    const auto holders = std::make_shared<QList<GrabHolder>>(); // outlives a caller that has given up
    const Answer answer = ask([this, holders] {
        *holders = passiveGrabHolders(*m_x);
        return Answer::Done;
    });
    return answer == Answer::Done ? *holders : QList<GrabHolder>();
}

void X11HotkeyListener::unbind(int id)
{
    ask([this, id] { return unbindHere(id); });
}

void X11HotkeyListener::unbindAll()
{
    ask([this] {
        m_bindings.clear();
        followBindings();
        forgetFired([](int) { return true; });
        return Answer::Done;
    });
}

void X11HotkeyListener::setSuspended(bool suspended)
{
    ask([this, suspended] {
        m_suspended = suspended;
        followBindings();
        if (suspended)
            forgetFired([](int) { return true; });
        return Answer::Done;
    });
}

std::vector<int> X11HotkeyListener::takeFired()
{
    const std::lock_guard lock(m_mutex);
    clearEvent(m_firedEvent);
    return std::exchange(m_fired, {});
}

int X11HotkeyListener::errorCode() const
{
    const std::lock_guard lock(m_mutex);
    return m_errorCode;
}

X11HotkeyListener::Answer X11HotkeyListener::ask(std::function<Answer()> run, std::function<Answer()> undoWhenLate)
{
    const auto task = std::make_shared<Task>();
    task->run = std::move(run);
    std::unique_lock lock(m_mutex);
    if (m_ended)
        return Answer::NoServer;
    m_tasks.push_back(task);
    signalEvent(m_wakeEvent);
    const auto isOver = [this, &task] { return m_ended || task->state == Task::State::Finished; };
    if (m_answered.wait_for(lock, kAnswerDeadline, isOver) || !undoWhenLate)
        return task->answer;
    // Told to the caller as failed, so it must not come true later.
    if (task->state == Task::State::Queued) {
        m_tasks.erase(std::find(m_tasks.begin(), m_tasks.end(), task));
    } else {
        const auto undo = std::make_shared<Task>();
        undo->run = std::move(undoWhenLate);
        m_tasks.push_back(undo);
    }
    return Answer::NoServer;
}

// On the listener's thread: the connection and its events.

void X11HotkeyListener::run()
{
    if (m_trace)
        qCInfo(lcHotkey).noquote() << QStringLiteral("热键追踪已开启（TAVREL_HOTKEY_TRACE=1）：把看到的按键打到日志");
    const bool isConnected = connectToServer();
    if (isConnected)
        listen();
    const int error = m_x ? xcb_connection_has_error(m_x->xcb()) : XCB_CONN_ERROR;
    bool isLost = m_x && error != 0;
    {
        const std::lock_guard lock(m_mutex);
        isLost = isLost && !m_quit;
    }
    if (isLost)
        qCWarning(lcHotkey).noquote()
            << QStringLiteral("与 X 服务器的连接已断开，全局热键停止工作：%1").arg(m_x->brokenText());
    for (const KeyStroke &stroke : m_grabbed)
        ungrab(stroke);
    if (m_x && error == 0)
        m_x->sync(); // what comes after us finds the combinations free
    const std::lock_guard lock(m_mutex);
    m_errorCode = error == 0 && !isConnected ? XCB_CONN_CLOSED_EXT_NOTSUPPORTED : error;
    m_ended = true;
    m_answered.notify_all();
}

bool X11HotkeyListener::connectToServer()
{
    m_x = XConnection::create(nullptr, m_display);
    if (!m_x)
        return false;
    xcb_connection_t *c = m_x->xcb();
    {
        const std::lock_guard lock(m_mutex);
        m_connectionDescriptor = xcb_get_file_descriptor(c);
    }
    m_keyboard = X11Keyboard::attach(*m_x);
    if (!m_keyboard || !selectRootInput(*m_x, kRawEvents)) {
        qCWarning(lcHotkey) << "X 服务器没有 XInput 2.1 或 XKB，或者无法读取键盘映射，无法使用全局热键";
        return false;
    }
    m_xinputOpcode = xcb_get_extension_data(c, &xcb_input_id)->major_opcode;
    m_lockVariants = m_keyboard->keymap().lockVariants();
    return true;
}

void X11HotkeyListener::listen()
{
    for (;;) {
        while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(m_x->xcb())})
            handleEvent(event.get());
        if (m_x->isBroken())
            return;
        bool hasWorked = false;
        if (std::exchange(m_keymapChanged, false)) {
            m_groupChanged = false;
            followKeymap();
            hasWorked = true;
        } else if (std::exchange(m_groupChanged, false)) {
            followLayout();
            hasWorked = true;
        }
        hasWorked = runTasks() || hasWorked;
        {
            const std::lock_guard lock(m_mutex);
            if (m_quit)
                return;
        }
        // Waiting for an answer of the server may have brought events along.
        if (!hasWorked)
            waitForInput();
    }
}

bool X11HotkeyListener::runTasks()
{
    std::unique_lock lock(m_mutex);
    if (m_tasks.empty())
        return false;
    while (!m_tasks.empty()) {
        const std::shared_ptr<Task> task = m_tasks.front();
        m_tasks.pop_front();
        task->state = Task::State::Running;
        lock.unlock();
        const Answer answer = task->run();
        lock.lock();
        task->answer = m_x->isBroken() ? Answer::NoServer : answer;
        task->state = Task::State::Finished;
        m_answered.notify_all();
    }
    return true;
}

void X11HotkeyListener::waitForInput()
{
    xcb_flush(m_x->xcb());
    // Sending may have brought events along too.
    if (const XReply<xcb_generic_event_t> event{xcb_poll_for_queued_event(m_x->xcb())}) {
        handleEvent(event.get());
        return;
    }
    pollfd waiting[] = {{.fd = xcb_get_file_descriptor(m_x->xcb()), .events = POLLIN, .revents = 0},
                        {.fd = m_wakeEvent, .events = POLLIN, .revents = 0}};
    const bool isAnythingDown = m_matcher.hasPressed() || m_keyboard->heldModifiers() != 0;
    const int ready = ::poll(waiting, std::size(waiting), isAnythingDown ? kRepairIntervalMs : -1);
    if (ready == 0)
        repairKeyState();
    if ((waiting[1].revents & POLLIN) != 0)
        clearEvent(m_wakeEvent);
}

void X11HotkeyListener::handleEvent(const xcb_generic_event_t *event)
{
    const int type = event->response_type & 0x7f;
    if (type == XCB_GE_GENERIC) {
        const auto *generic = reinterpret_cast<const xcb_ge_generic_event_t *>(event);
        if (generic->extension == m_xinputOpcode)
            handleInputEvent(generic);
        return;
    }
    const X11Keyboard::Change change = m_keyboard->handleEvent(*event);
    m_keymapChanged = m_keymapChanged || change == X11Keyboard::Change::Keymap;
    m_groupChanged = m_groupChanged || change == X11Keyboard::Change::Layout;
}

void X11HotkeyListener::handleInputEvent(const xcb_ge_generic_event_t *event)
{
    switch (event->event_type) {
    case XCB_INPUT_RAW_KEY_PRESS:
    case XCB_INPUT_RAW_KEY_RELEASE: {
        const auto *raw = reinterpret_cast<const xcb_input_raw_key_press_event_t *>(event);
        if (raw->deviceid != m_keyboard->deviceId()) // whose modifiers we know
            return;
        const bool down = event->event_type == XCB_INPUT_RAW_KEY_PRESS;
        handleKey({.key = raw->detail, .modifiers = m_keyboard->heldModifiers()}, down, raw->time,
                  HotkeyPath::Listener);
        m_keyboard->moveKey(static_cast<xcb_keycode_t>(raw->detail), down);
        return;
    }
    case XCB_INPUT_KEY_PRESS:
    case XCB_INPUT_KEY_RELEASE: {
        const auto *key = reinterpret_cast<const xcb_input_key_press_event_t *>(event);
        const quint32 modifiers = key->mods.effective & kCoreModifiers & ~m_keyboard->keymap().lockModifiers();
        const KeyStroke stroke{.key = key->detail, .modifiers = modifiers};
        if ((key->flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT) != 0)
            traceKey(stroke, true, HotkeyPath::Grab, {.fired = {}, .swallowed = true});
        else
            handleKey(stroke, event->event_type == XCB_INPUT_KEY_PRESS, key->time, HotkeyPath::Grab);
        return;
    }
    default:
        return;
    }
}

void X11HotkeyListener::handleKey(KeyStroke stroke, bool down, quint32 timeMs, HotkeyPath path)
{
    const HotkeyMatcher::Outcome outcome = down ? m_matcher.press(stroke, timeMs, path) : m_matcher.release(stroke.key);
    traceKey(stroke, down, path, outcome);
    if (!outcome.fired)
        return;
    const std::lock_guard lock(m_mutex);
    m_fired.push_back(*outcome.fired);
    signalEvent(m_firedEvent);
}

void X11HotkeyListener::traceKey(KeyStroke stroke, bool down, HotkeyPath path,
                                 const HotkeyMatcher::Outcome &outcome) const
{
    if (!m_trace)
        return;
    qCInfo(lcHotkey).noquote() << QStringLiteral("hotkey-trace key=%1 mods=0x%2 down=%3 fire=%4 swallow=%5 path=%6")
                                      .arg(stroke.key)
                                      .arg(stroke.modifiers, 0, 16)
                                      .arg(down ? 1 : 0)
                                      .arg(outcome.fired.value_or(0))
                                      .arg(outcome.swallowed ? 1 : 0)
                                      .arg(path == HotkeyPath::Grab ? QLatin1String("grab") : QLatin1String("raw"));
}

template <typename Predicate>
void X11HotkeyListener::forgetFired(Predicate predicate)
{
    const std::lock_guard lock(m_mutex);
    m_fired.erase(std::remove_if(m_fired.begin(), m_fired.end(), predicate), m_fired.end());
}

// Asks the server what is really down, in case an event was missed.
void X11HotkeyListener::repairKeyState()
{
    xcb_connection_t *c = m_x->xcb();
    const xcb_query_keymap_cookie_t keysCookie = xcb_query_keymap(c);
    const xcb_xkb_get_state_cookie_t stateCookie = xcb_xkb_get_state(c, XCB_XKB_ID_USE_CORE_KBD);
    const XReply<xcb_query_keymap_reply_t> keys{xcb_query_keymap_reply(c, keysCookie, nullptr)};
    const XReply<xcb_xkb_get_state_reply_t> state{xcb_xkb_get_state_reply(c, stateCookie, nullptr)};
    if (!keys || !state)
        return;
    m_matcher.keepPressed([&keys](quint32 key) { return key < 256 && (keys->keys[key / 8] & (1U << (key % 8))) != 0; });
    m_keyboard->setState(*state);
}

// On the listener's thread: bindings and grabs.

X11HotkeyListener::Answer X11HotkeyListener::bindHere(int id, const KeyCombo &combo)
{
    const auto known = m_bindings.find(id);
    if (known != m_bindings.end() && known->second.combo == combo && !known->second.lost)
        return Answer::Done;
    const std::vector<KeyStroke> strokes = m_keyboard->keymap().strokes(combo, m_keyboard->layout());
    if (strokes.empty())
        return Answer::UnsupportedKey;
    std::vector<KeyStroke> fresh;
    for (const KeyStroke &stroke : strokes) {
        if (m_grabbed.contains(stroke))
            continue;
        if (!grab(stroke)) {
            for (const KeyStroke &useless : fresh)
                ungrab(useless);
            m_x->sync();
            return Answer::Taken;
        }
        fresh.push_back(stroke);
    }
    m_grabbed.insert(fresh.begin(), fresh.end());
    m_bindings[id] = {.combo = combo, .strokes = strokes, .lost = false};
    forgetFired([id](int fired) { return fired == id; });
    followBindings();
    return Answer::Done;
}

X11HotkeyListener::Answer X11HotkeyListener::unbindHere(int id)
{
    if (m_bindings.erase(id) > 0)
        followBindings();
    forgetFired([id](int fired) { return fired == id; });
    return Answer::Done;
}

void X11HotkeyListener::followKeymap()
{
    if (!m_keyboard->reread()) {
        qCWarning(lcHotkey) << "键盘映射已改变但无法读取，热键沿用旧的映射";
        return;
    }
    const std::vector<quint32> variants = m_keyboard->keymap().lockVariants();
    if (variants != m_lockVariants) {
        for (const KeyStroke &stroke : m_grabbed)
            ungrab(stroke);
        m_grabbed.clear();
        m_lockVariants = variants;
    }
    followLayout();
}

void X11HotkeyListener::followLayout()
{
    for (auto &[id, binding] : m_bindings)
        binding.strokes = m_keyboard->keymap().strokes(binding.combo, m_keyboard->layout());
    followBindings();
}

// Makes the grabs and the table those that the bindings need: what is grabbed and still needed is left alone.
void X11HotkeyListener::followBindings()
{
    const auto needed = [this] {
        std::set<KeyStroke> strokes;
        for (const auto &[id, binding] : m_bindings) {
            if (!m_suspended && !binding.lost)
                strokes.insert(binding.strokes.begin(), binding.strokes.end());
        }
        return strokes;
    };
    if (!m_suspended) {
        for (auto &[id, binding] : m_bindings) {
            const bool wasLost = std::exchange(binding.lost, binding.strokes.empty());
            for (const KeyStroke &stroke : binding.strokes) {
                if (binding.lost || m_grabbed.contains(stroke))
                    continue;
                if (grab(stroke))
                    m_grabbed.insert(stroke);
                else
                    binding.lost = true;
            }
            if (binding.lost && !wasLost)
                qCWarning(lcHotkey).noquote() << QStringLiteral("热键 %1（id=%2）现在无法占用，键盘映射再变时重试")
                                                     .arg(binding.combo.toJsonText())
                                                     .arg(id);
            else if (wasLost && !binding.lost)
                qCInfo(lcHotkey).noquote() << QStringLiteral("热键 id=%1 已恢复").arg(id);
        }
    }
    const std::set<KeyStroke> kept = needed();
    bool hasUngrabbed = false;
    for (auto stroke = m_grabbed.begin(); stroke != m_grabbed.end();) {
        if (kept.contains(*stroke)) {
            ++stroke;
            continue;
        }
        ungrab(*stroke);
        stroke = m_grabbed.erase(stroke);
        hasUngrabbed = true;
    }
    if (hasUngrabbed)
        m_x->sync(); // so that another program finds the combination free when the caller goes on

    std::vector<HotkeyMatcher::Entry> table;
    for (const auto &[id, binding] : m_bindings) {
        for (const KeyStroke &stroke : binding.strokes) {
            if (!m_suspended && !binding.lost)
                table.push_back({.id = id, .stroke = stroke});
        }
    }
    m_matcher.setTable(std::move(table));
}

// The core grab comes first: of two grabs on one window that match a key the server takes the later one, and the
// XInput grab is the one that ignores the layout. Core grabs are there to see other programs' core grabs and to be
// seen by them.
bool X11HotkeyListener::grab(const KeyStroke &stroke)
{
    xcb_connection_t *c = m_x->xcb();
    std::vector<xcb_void_cookie_t> coreCookies;
    std::vector<quint32> modifiers;
    for (const quint32 locks : m_lockVariants) {
        modifiers.push_back(stroke.modifiers | locks);
        coreCookies.push_back(xcb_grab_key_checked(c, 0, m_x->root(), static_cast<quint16>(modifiers.back()),
                                                   static_cast<xcb_keycode_t>(stroke.key), XCB_GRAB_MODE_ASYNC,
                                                   XCB_GRAB_MODE_ASYNC));
    }
    // While this grab is active the server sends us no raw events but those that the grab itself asks for.
    constexpr quint32 kEvents = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE | kRawEvents;
    const xcb_input_xi_passive_grab_device_cookie_t cookie = xcb_input_xi_passive_grab_device(
        c, XCB_CURRENT_TIME, m_x->root(), XCB_CURSOR_NONE, stroke.key, kAllMasters,
        static_cast<quint16>(modifiers.size()), 1, XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC,
        XCB_INPUT_GRAB_MODE_22_ASYNC, 0, &kEvents, modifiers.data());
    const XReply<xcb_input_xi_passive_grab_device_reply_t> reply{
        xcb_input_xi_passive_grab_device_reply(c, cookie, nullptr)};
    // The answer lists the modifiers that could not be had.
    bool isOurs = reply && reply->num_modifiers == 0;
    for (const xcb_void_cookie_t &coreCookie : coreCookies)
        isOurs = m_x->succeeded(coreCookie) && isOurs;
    if (!isOurs)
        ungrab(stroke);
    return isOurs;
}

void X11HotkeyListener::ungrab(const KeyStroke &stroke)
{
    xcb_connection_t *c = m_x->xcb();
    std::vector<quint32> modifiers;
    for (const quint32 locks : m_lockVariants) {
        modifiers.push_back(stroke.modifiers | locks);
        xcb_ungrab_key(c, static_cast<xcb_keycode_t>(stroke.key), m_x->root(), static_cast<quint16>(modifiers.back()));
    }
    xcb_input_xi_passive_ungrab_device(c, m_x->root(), stroke.key, kAllMasters, static_cast<quint16>(modifiers.size()),
                                       XCB_INPUT_GRAB_TYPE_KEYCODE, modifiers.data());
}

} // namespace tavrel::platform
