#include "platform/linux/x11_input_monitor.h"

#include "base/host_clock.h"
#include "platform/linux/key_names.h"
#include "platform/linux/motion_resolver.h"
#include "platform/linux/wake_event.h"
#include "platform/linux/x11_keyboard.h"
#include "platform/linux/x_connection.h"

#include <QCoreApplication>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <chrono>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace tavrel::platform {
namespace {

constexpr quint32 kButtonEvents = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE;
constexpr quint32 kKeyEvents = XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
constexpr quint32 kMoveEvents = XCB_INPUT_XI_EVENT_MASK_RAW_MOTION;

constexpr int kClockSamples = 3;

/// For the thread to take in what the server has already told.
constexpr std::chrono::milliseconds kGoodbye{2000};

double fromFixed(xcb_input_fp1616_t value)
{
    return value / 65536.0;
}

double fromFixed(const xcb_input_fp3232_t &value)
{
    return value.integral + value.frac / 4294967296.0;
}

/// What the first two axes of a device can say when it sends places: a tablet's own units. Null for a device that sends
/// steps or pixels.
using Ranges = std::array<std::optional<std::pair<double, double>>, 2>;

Ranges rangesOf(const XConnection &x, xcb_input_device_id_t device)
{
    Ranges ranges;
    const auto reply = xAnswer<xcb_input_xi_query_device_reply_t>(x.xcb(), xcb_input_xi_query_device(x.xcb(), device),
                                                                  xcb_input_xi_query_device_reply);
    if (!reply || reply->num_infos == 0)
        return ranges;
    const auto info = xcb_input_xi_query_device_infos_iterator(reply.get());
    for (auto it = xcb_input_xi_device_info_classes_iterator(info.data); it.rem > 0; xcb_input_device_class_next(&it)) {
        if (it.data->type != XCB_INPUT_DEVICE_CLASS_TYPE_VALUATOR)
            continue;
        const auto *axis = reinterpret_cast<const xcb_input_valuator_class_t *>(it.data);
        const std::pair range(fromFixed(axis->min), fromFixed(axis->max));
        if (axis->number < ranges.size() && axis->mode == XCB_INPUT_VALUATOR_MODE_ABSOLUTE &&
            range.first < range.second)
            ranges[axis->number] = range;
    }
    return ranges;
}

/// Values of the first two axes, where the event has them, in device pixels.
MotionResolver::Motion motionOf(const xcb_input_raw_motion_event_t &event, const Ranges &ranges, const QRectF &bounds)
{
    const quint32 *mask = xcb_input_raw_button_press_valuator_mask(&event);
    const xcb_input_fp3232_t *values = xcb_input_raw_button_press_axisvalues(&event);
    MotionResolver::Motion motion;
    if (event.valuators_len == 0)
        return motion;
    if (mask[0] & 1U)
        motion.x = fromFixed(*values++);
    if (mask[0] & 2U)
        motion.y = fromFixed(*values);
    if (!ranges[0] || !ranges[1])
        return motion;
    // The server spreads the whole range over the whole desktop.
    const auto scaled = [](double value, const std::pair<double, double> &range, double start, double length) {
        return start + (value - range.first) * length / (range.second + 1 - range.first);
    };
    if (motion.x)
        motion.x = scaled(*motion.x, *ranges[0], bounds.left(), bounds.width());
    if (motion.y)
        motion.y = scaled(*motion.y, *ranges[1], bounds.top(), bounds.height());
    motion.isPlace = true;
    return motion;
}

/// Buttons as the contract numbers them, by X's number; 0 for others.
int contractButton(quint8 button)
{
    constexpr std::array<int, 4> kButtons{0, 1, 3, 2};
    return button < kButtons.size() ? kButtons[button] : 0;
}

bool isWheel(quint8 button)
{
    return button == XCB_BUTTON_INDEX_4 || button == XCB_BUTTON_INDEX_5;
}

} // namespace

/// The thread's side. Made on the thread of start(), used on the listener's alone, but for quit().
class X11InputMonitor::Listener
{
public:
    /// Null when the server lacks something.
    static std::unique_ptr<Listener> connect(const QByteArray &display, InputCollector::Mode mode);
    ~Listener() { ::close(m_wakeEvent); }
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;

    void run(InputCollector &collector, const DisplayWatch &displays,
             const std::function<void(const InputEventRecord &)> &tell);
    /// Any thread. What the server has told so far is still taken in.
    void quit() const { signalEvent(m_wakeEvent); }
    /// Any thread: a server that does not answer is waited for no longer.
    void cutOff() const { ::shutdown(xcb_get_file_descriptor(m_x->xcb()), SHUT_RDWR); }

private:
    using Event = XReply<xcb_generic_event_t>;

    Listener(std::unique_ptr<XConnection> x, std::unique_ptr<X11Keyboard> keyboard, xcb_timestamp_t serverTime,
             double clockOffset);

    void takeIncoming();
    void process();
    void followDisplays(const DisplayWatch &displays);
    void readButtons();
    void readHeldKeys();
    /// Asks where the pointer is; splits off the events that came after the answer.
    QPointF pointerAfter(std::vector<Event> *later);
    [[nodiscard]] const xcb_ge_generic_event_t *inputEvent(const Event &event) const;
    [[nodiscard]] std::vector<MotionResolver::Motion> incomingMotions();
    void handle(const xcb_ge_generic_event_t &event, const QPointF &position);
    void handleKey(const xcb_input_raw_key_press_event_t &raw, bool down, InputEventRecord record);
    void handleButton(const xcb_input_raw_button_press_event_t &raw, bool down, InputEventRecord record);
    [[nodiscard]] xkb_keysym_t symbolOf(xcb_keycode_t key) const;
    [[nodiscard]] int qtKeyOfCode(xcb_keycode_t key) const;
    [[nodiscard]] int heldModifiers() const;
    [[nodiscard]] double hostTime(xcb_timestamp_t serverTime);
    void add(const InputEventRecord &record);

    std::unique_ptr<XConnection> m_x;
    std::unique_ptr<X11Keyboard> m_keyboard;
    const int m_wakeEvent = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    quint8 m_xinputOpcode = 0;
    xcb_input_device_id_t m_pointer = 0;
    std::vector<quint8> m_buttons; ///< logical button by physical one, from 1
    std::bitset<256> m_heldBefore; ///< keys that were down at the start and have not been released: they only repeat
    std::vector<Event> m_incoming;
    QPointF m_position;
    QList<DisplayInfo> m_displays;
    ScreenMapping m_mapping;
    QRectF m_bounds;
    std::map<xcb_input_device_id_t, Ranges> m_ranges; ///< of the devices that have moved
    qint64 m_serverTime = 0;  ///< of the last event; the server's own count starts again after 50 days
    double m_clockOffset = 0; ///< host clock minus server time, milliseconds
    double m_lastTime = 0;    ///< host clock of the last event
    double m_readAt = 0;      ///< host clock when the events at hand had been read
    InputCollector *m_collector = nullptr;
    const std::function<void(const InputEventRecord &)> *m_tell = nullptr;
};

std::unique_ptr<X11InputMonitor::Listener> X11InputMonitor::Listener::connect(const QByteArray &display,
                                                                              InputCollector::Mode mode)
{
    std::unique_ptr<XConnection> x = XConnection::create(nullptr, display);
    if (!x)
        return nullptr;
    // Before anything is selected, since it reads away what comes in.
    xcb_timestamp_t serverTime = 0;
    double clockOffset = std::numeric_limits<double>::max();
    for (int i = 0; i < kClockSamples; ++i) {
        serverTime = x->serverTime();
        clockOffset = std::min(clockOffset, hostClockMs() - serverTime);
    }
    auto keyboard = X11Keyboard::attach(*x);
    const quint32 events = kButtonEvents | (mode.clicksOnly ? 0 : kMoveEvents) | (mode.needsKeys() ? kKeyEvents : 0);
    if (!keyboard || !selectRootInput(*x, events))
        return nullptr;
    struct
    {
        xcb_input_event_mask_t head;
        quint32 mask;
    } const devices{{.deviceid = XCB_INPUT_DEVICE_ALL, .mask_len = 1}, XCB_INPUT_XI_EVENT_MASK_HIERARCHY};
    xcb_input_xi_select_events(x->xcb(), x->root(), 1, &devices.head);
    return std::unique_ptr<Listener>(new Listener(std::move(x), std::move(keyboard), serverTime, clockOffset));
}

X11InputMonitor::Listener::Listener(std::unique_ptr<XConnection> x, std::unique_ptr<X11Keyboard> keyboard,
                                    xcb_timestamp_t serverTime, double clockOffset)
    : m_x(std::move(x)),
      m_keyboard(std::move(keyboard)),
      m_xinputOpcode(xcb_get_extension_data(m_x->xcb(), &xcb_input_id)->major_opcode),
      m_serverTime(serverTime),
      m_clockOffset(clockOffset)
{
    const auto pointer = xAnswer<xcb_input_xi_get_client_pointer_reply_t>(
        m_x->xcb(), xcb_input_xi_get_client_pointer(m_x->xcb(), XCB_WINDOW_NONE),
        xcb_input_xi_get_client_pointer_reply);
    m_pointer = pointer ? pointer->deviceid : xcb_input_device_id_t(0);
    readButtons();
    readHeldKeys();
    m_position = pointerAfter(nullptr);
}

void X11InputMonitor::Listener::run(InputCollector &collector, const DisplayWatch &displays,
                                    const std::function<void(const InputEventRecord &)> &tell)
{
    m_collector = &collector;
    m_tell = &tell;
    bool isEnding = false;
    while (!m_x->isBroken()) {
        takeIncoming();
        if (!m_incoming.empty()) {
            followDisplays(displays);
            process();
            continue;
        }
        if (isEnding)
            return;
        pollfd waiting[] = {{.fd = xcb_get_file_descriptor(m_x->xcb()), .events = POLLIN, .revents = 0},
                            {.fd = m_wakeEvent, .events = POLLIN, .revents = 0}};
        ::poll(waiting, std::size(waiting), -1);
        if ((waiting[1].revents & POLLIN) != 0) {
            isEnding = true;
            m_x->sync(); // brings along what the server had before
        }
    }
}

void X11InputMonitor::Listener::takeIncoming()
{
    while (Event event{xcb_poll_for_event(m_x->xcb())})
        m_incoming.push_back(std::move(event));
}

const xcb_ge_generic_event_t *X11InputMonitor::Listener::inputEvent(const Event &event) const
{
    const auto *generic = reinterpret_cast<const xcb_ge_generic_event_t *>(event.get());
    const bool isInput = (event->response_type & 0x7f) == XCB_GE_GENERIC && generic->extension == m_xinputOpcode;
    return isInput ? generic : nullptr;
}

QPointF X11InputMonitor::Listener::pointerAfter(std::vector<Event> *later)
{
    xcb_connection_t *c = m_x->xcb();
    const xcb_input_xi_query_pointer_cookie_t cookie = xcb_input_xi_query_pointer(c, m_x->root(), m_pointer);
    const auto answer = xAnswer<xcb_input_xi_query_pointer_reply_t>(c, cookie, xcb_input_xi_query_pointer_reply);
    if (later) {
        // What the server sent before its answer has been read along with it.
        while (Event event{xcb_poll_for_queued_event(c)}) {
            const bool isLater = static_cast<qint32>(event->full_sequence - cookie.sequence) >= 0;
            (isLater || !later->empty() ? *later : m_incoming).push_back(std::move(event));
        }
    }
    return answer ? QPointF(fromFixed(answer->root_x), fromFixed(answer->root_y)) : m_position;
}

void X11InputMonitor::Listener::process()
{
    std::vector<Event> later;
    const QPointF end = pointerAfter(&later);
    m_readAt = hostClockMs(); // not before: the answer has brought events along
    const std::vector<MotionResolver::Motion> motions = incomingMotions();
    const std::vector<QPointF> path = MotionResolver(m_bounds).resolve(m_position, motions, end);
    // Without motions, the pointer may have been moved by a program.
    QPointF position = motions.empty() ? end : m_position;
    auto next = path.cbegin();
    bool keymapChanged = false;
    for (const Event &event : m_incoming) {
        if (const xcb_ge_generic_event_t *input = inputEvent(event)) {
            if (input->event_type == XCB_INPUT_RAW_MOTION)
                position = *next++;
            else if (std::exchange(keymapChanged, false))
                static_cast<void>(m_keyboard->reread()); // before the next key is read
            handle(*input, position);
            continue;
        }
        if ((event->response_type & 0x7f) == XCB_MAPPING_NOTIFY &&
            reinterpret_cast<const xcb_mapping_notify_event_t *>(event.get())->request == XCB_MAPPING_POINTER)
            readButtons();
        else
            keymapChanged = m_keyboard->handleEvent(*event) == X11Keyboard::Change::Keymap || keymapChanged;
    }
    m_position = end;
    m_incoming = std::move(later);
    if (keymapChanged)
        static_cast<void>(m_keyboard->reread());
}

std::vector<MotionResolver::Motion> X11InputMonitor::Listener::incomingMotions()
{
    std::vector<MotionResolver::Motion> motions;
    for (const Event &event : m_incoming) {
        const xcb_ge_generic_event_t *input = inputEvent(event);
        if (input && input->event_type == XCB_INPUT_HIERARCHY)
            m_ranges.clear(); // another device may come under a known number
        if (!input || input->event_type != XCB_INPUT_RAW_MOTION)
            continue;
        const auto &motion = *reinterpret_cast<const xcb_input_raw_motion_event_t *>(input);
        auto known = m_ranges.find(motion.sourceid);
        if (known == m_ranges.end())
            known = m_ranges.emplace(motion.sourceid, rangesOf(*m_x, motion.sourceid)).first;
        motions.push_back(motionOf(motion, known->second, m_bounds));
    }
    return motions;
}

void X11InputMonitor::Listener::followDisplays(const DisplayWatch &displays)
{
    QList<DisplayInfo> now = displays.displays();
    if (now == m_displays && !m_bounds.isNull())
        return;
    const QList<NativeMonitor> monitors = nativeMonitors(*m_x);
    QRect bounds;
    for (const NativeMonitor &monitor : monitors)
        bounds |= monitor.rect;
    m_mapping = ScreenMapping(now, monitors);
    m_bounds = bounds;
    m_displays = std::move(now);
}

void X11InputMonitor::Listener::readButtons()
{
    xcb_connection_t *c = m_x->xcb();
    const auto mapping =
        xAnswer<xcb_get_pointer_mapping_reply_t>(c, xcb_get_pointer_mapping(c), xcb_get_pointer_mapping_reply);
    m_buttons.clear();
    if (mapping)
        m_buttons.assign(xcb_get_pointer_mapping_map(mapping.get()),
                         xcb_get_pointer_mapping_map(mapping.get()) + mapping->map_len);
}

void X11InputMonitor::Listener::readHeldKeys()
{
    xcb_connection_t *c = m_x->xcb();
    const auto held = xAnswer<xcb_query_keymap_reply_t>(c, xcb_query_keymap(c), xcb_query_keymap_reply);
    for (std::size_t key = 0; held && key < m_heldBefore.size(); ++key)
        m_heldBefore[key] = (held->keys[key / 8] >> (key % 8)) & 1;
}

double X11InputMonitor::Listener::hostTime(xcb_timestamp_t serverTime)
{
    m_serverTime += static_cast<qint32>(serverTime - static_cast<quint32>(m_serverTime));
    // An event cannot have been read before it happened: the smallest difference is the truest. A new one does not
    // turn the order of events round.
    const auto time = static_cast<double>(m_serverTime);
    m_clockOffset = std::min(m_clockOffset, m_readAt - time);
    m_lastTime = std::max(m_lastTime, time + m_clockOffset);
    return m_lastTime;
}

void X11InputMonitor::Listener::handle(const xcb_ge_generic_event_t &event, const QPointF &position)
{
    // All raw events begin alike.
    const auto &raw = reinterpret_cast<const xcb_input_raw_key_press_event_t &>(event);
    const QPointF logical = m_mapping.toLogical(QPoint(qFloor(position.x()), qFloor(position.y())));
    InputEventRecord record;
    record.hostMs = hostTime(raw.time);
    record.x = logical.x();
    record.y = logical.y();
    switch (event.event_type) {
    case XCB_INPUT_RAW_MOTION:
        record.type = InputEventRecord::Move;
        add(record);
        return;
    case XCB_INPUT_RAW_BUTTON_PRESS:
    case XCB_INPUT_RAW_BUTTON_RELEASE:
        handleButton(reinterpret_cast<const xcb_input_raw_button_press_event_t &>(event),
                     event.event_type == XCB_INPUT_RAW_BUTTON_PRESS, record);
        return;
    case XCB_INPUT_RAW_KEY_PRESS:
    case XCB_INPUT_RAW_KEY_RELEASE:
        handleKey(raw, event.event_type == XCB_INPUT_RAW_KEY_PRESS, record);
        return;
    default:
        return;
    }
}

void X11InputMonitor::Listener::handleButton(const xcb_input_raw_button_press_event_t &raw, bool down,
                                             InputEventRecord record)
{
    const quint32 physical = raw.detail;
    const quint8 button =
        physical >= 1 && physical <= m_buttons.size() ? m_buttons[physical - 1] : static_cast<quint8>(physical);
    record.button = contractButton(button);
    if (record.button != 0)
        record.type = down ? InputEventRecord::ButtonDown : InputEventRecord::ButtonUp;
    else if (isWheel(button) && down)
        record.type = InputEventRecord::Wheel;
    else
        return;
    add(record);
}

void X11InputMonitor::Listener::handleKey(const xcb_input_raw_key_press_event_t &raw, bool down,
                                          InputEventRecord record)
{
    if (raw.deviceid != m_keyboard->deviceId()) // whose modifiers we know
        return;
    const auto key = static_cast<xcb_keycode_t>(raw.detail);
    if (down && m_heldBefore[key])
        return;
    m_heldBefore[key] = false;
    record.type = down ? InputEventRecord::KeyDown : InputEventRecord::KeyUp;
    record.virtualKey = key;
    record.keyName = keyName(symbolOf(key));
    if (down) {
        record.qtKey = qtKeyOfCode(key);
        record.modifiers = heldModifiers();
    }
    m_keyboard->moveKey(key, down);
    add(record);
}

// The key's own symbol in the active layout, without Shift; on the number pad what Num Lock makes of it.
xkb_keysym_t X11InputMonitor::Listener::symbolOf(xcb_keycode_t key) const
{
    xkb_keymap *keymap = m_keyboard->keymap().xkb();
    // Keymaps give the keys from F13 on to other things; the name of their place still tells.
    const QByteArray place(xkb_keymap_key_get_name(keymap, key));
    if (const int number = place.startsWith("FK") ? place.mid(2).toInt() : 0; number > 12 && number <= 24)
        return static_cast<xkb_keysym_t>(XKB_KEY_F1 + number - 1);
    const xkb_layout_index_t layout = xkb_state_key_get_layout(m_keyboard->xkb(), key);
    const xkb_keysym_t *symbols = nullptr;
    if (layout == XKB_LAYOUT_INVALID || xkb_keymap_key_get_syms_by_level(keymap, key, layout, 0, &symbols) < 1)
        return XKB_KEY_NoSymbol;
    const bool isPad = symbols[0] >= XKB_KEY_KP_Space && symbols[0] <= XKB_KEY_KP_Equal;
    return isPad ? xkb_state_key_get_one_sym(m_keyboard->xkb(), key) : symbols[0];
}

// Shortcuts are Latin letters; a layout of another script has them on its second one, as toolkits have it.
int X11InputMonitor::Listener::qtKeyOfCode(xcb_keycode_t key) const
{
    const xkb_keysym_t own = symbolOf(key);
    const int code = qtKeyOf(own);
    if (code < 0x80 || code >= 0x10000)
        return code;
    xkb_keymap *keymap = m_keyboard->keymap().xkb();
    for (xkb_layout_index_t layout = 0; layout < xkb_keymap_num_layouts_for_key(keymap, key); ++layout) {
        const xkb_keysym_t *symbols = nullptr;
        if (xkb_keymap_key_get_syms_by_level(keymap, key, layout, 0, &symbols) < 1)
            continue;
        if (const int other = qtKeyOf(symbols[0]); other < 0x80)
            return other;
    }
    return code;
}

int X11InputMonitor::Listener::heldModifiers() const
{
    const quint32 held = m_keyboard->heldModifiers();
    const XModifierRoles &roles = m_keyboard->keymap().roles();
    return (held & XCB_MOD_MASK_CONTROL ? InputEventRecord::Ctrl : 0) |
           (held & XCB_MOD_MASK_SHIFT ? InputEventRecord::Shift : 0) | (held & roles.alt ? InputEventRecord::Alt : 0) |
           (held & roles.meta ? InputEventRecord::Meta : 0);
}

void X11InputMonitor::Listener::add(const InputEventRecord &record)
{
    if (m_collector->add(record))
        (*m_tell)(record);
}

X11InputMonitor::X11InputMonitor(const QByteArray &display, QObject *parent) : IInputMonitor(parent), m_display(display)
{}

X11InputMonitor::~X11InputMonitor()
{
    static_cast<void>(stop());
}

bool X11InputMonitor::hasAccess(QString *error)
{
    if (isRunning() || Listener::connect(m_display, {}))
        return true;
    if (error)
        *error = QCoreApplication::translate("QObject", "无法安装键鼠监听");
    return false;
}

bool X11InputMonitor::start(QString *error)
{
    if (isRunning())
        return true;
    m_listener = Listener::connect(m_display, m_mode);
    if (!m_listener) {
        if (error)
            *error = QCoreApplication::translate("QObject", "无法安装键鼠监听");
        return false;
    }
    m_collector.begin(m_mode);
    std::promise<void> ended;
    m_ended = ended.get_future();
    m_thread = std::thread([this, answer = m_answers.handle(), ended = std::move(ended)]() mutable {
        m_listener->run(m_collector, m_displays, [this, answer](const InputEventRecord &event) {
            answer.post([this, event] { Q_EMIT eventRecorded(event); });
        });
        ended.set_value();
    });
    return true;
}

QList<InputEventRecord> X11InputMonitor::stop()
{
    if (!isRunning())
        return {};
    m_listener->quit();
    if (m_ended.wait_for(kGoodbye) != std::future_status::ready)
        m_listener->cutOff();
    m_thread.join();
    m_listener.reset();
    return m_collector.take();
}

} // namespace tavrel::platform
