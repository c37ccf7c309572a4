#include "platform/linux/atspi_tree.h"

#include <dbus/dbus.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace tavrel::platform {

namespace {

constexpr int kLevels = 24;
constexpr int kChildren = 400;
constexpr int kAtOnce = 100;          // rectangles asked for in one go
constexpr double kSmallestSide = 2.0; // pixels
constexpr qsizetype kNameLength = 80;
constexpr qsizetype kHelpLength = 120;

constexpr const char *kAccessible = "org.a11y.atspi.Accessible";
constexpr const char *kComponent = "org.a11y.atspi.Component";
constexpr const char *kDocument = "org.a11y.atspi.Document";
constexpr const char *kRegistry = "org.a11y.atspi.Registry";
constexpr const char *kRoot = "/org/a11y/atspi/accessible/root";

// What browsers call the address of a page: some the one, some the other.
constexpr std::array kAddressNames{"DocURL", "URI"};

enum class Coordinates { Screen = 0, Window = 1 };

/// Of which states an element's visibility is told.
constexpr int kStateShowing = 25;
constexpr int kStateVisible = 30;
enum class Visibility { Hidden, Visible, Showing };

/// An object on the bus.
struct Node
{
    QByteArray bus;
    QByteArray path;
};

struct Element
{
    Node node;
    QRectF extents;
    int children = 0;
    FramePlacement placement; ///< what the extents mean
};

// --- What is asked ---

BusMessage askExtents(const Node &node, Coordinates coordinates)
{
    BusMessage message = busCall(node.bus, node.path, kComponent, "GetExtents");
    const auto type = static_cast<dbus_uint32_t>(coordinates);
    if (message)
        dbus_message_append_args(message.get(), DBUS_TYPE_UINT32, &type, DBUS_TYPE_INVALID);
    return message;
}

BusMessage askChild(const Node &node, dbus_int32_t index)
{
    BusMessage message = busCall(node.bus, node.path, kAccessible, "GetChildAtIndex");
    if (message)
        dbus_message_append_args(message.get(), DBUS_TYPE_INT32, &index, DBUS_TYPE_INVALID);
    return message;
}

BusMessage askDocument(const Node &node, const char *attribute)
{
    BusMessage message = busCall(node.bus, node.path, kDocument, "GetAttributeValue");
    if (message)
        dbus_message_append_args(message.get(), DBUS_TYPE_STRING, &attribute, DBUS_TYPE_INVALID);
    return message;
}

BusMessage ask(const Node &node, const char *method)
{
    return busCall(node.bus, node.path, kAccessible, method);
}

BusMessage askProperty(const Node &node, const char *property)
{
    return busPropertyCall(node.bus, node.path, kAccessible, property);
}

// --- What is answered; a reply of another shape than it should have counts as none ---

std::optional<QRectF> extentsOf(const BusMessage &reply)
{
    if (!reply || !dbus_message_has_signature(reply.get(), "(iiii)"))
        return std::nullopt;
    DBusMessageIter outer;
    DBusMessageIter fields;
    dbus_message_iter_init(reply.get(), &outer);
    dbus_message_iter_recurse(&outer, &fields);
    std::array<dbus_int32_t, 4> values{};
    for (dbus_int32_t &value : values) {
        dbus_message_iter_get_basic(&fields, &value);
        dbus_message_iter_next(&fields);
    }
    return QRectF(values[0], values[1], values[2], values[3]);
}

/// The reference that the iterator stands on.
Node nodeAt(DBusMessageIter *iterator)
{
    DBusMessageIter fields;
    dbus_message_iter_recurse(iterator, &fields);
    const char *bus = nullptr;
    const char *path = nullptr;
    dbus_message_iter_get_basic(&fields, &bus);
    dbus_message_iter_next(&fields);
    dbus_message_iter_get_basic(&fields, &path);
    // A path has been checked on its way, a name is any text; without one the object does not exist.
    return dbus_validate_bus_name(bus, nullptr) ? Node{bus, path} : Node{};
}

std::optional<Node> nodeOf(const BusMessage &reply)
{
    if (!reply || !dbus_message_has_signature(reply.get(), "(so)"))
        return std::nullopt;
    DBusMessageIter iterator;
    dbus_message_iter_init(reply.get(), &iterator);
    return nodeAt(&iterator);
}

/// The first kChildren ones. Missing ones keep their places.
std::vector<Node> nodesOf(const BusMessage &reply)
{
    std::vector<Node> nodes;
    if (!reply || !dbus_message_has_signature(reply.get(), "a(so)"))
        return nodes;
    DBusMessageIter outer;
    DBusMessageIter items;
    dbus_message_iter_init(reply.get(), &outer);
    for (dbus_message_iter_recurse(&outer, &items);
         nodes.size() < kChildren && dbus_message_iter_get_arg_type(&items) == DBUS_TYPE_STRUCT;
         dbus_message_iter_next(&items))
        nodes.push_back(nodeAt(&items));
    return nodes;
}

/// A basic value of the type, alone or in a variant, as a property is.
template <typename Value>
std::optional<Value> basicOf(const BusMessage &reply, int type)
{
    DBusMessageIter iterator;
    if (!reply || !dbus_message_iter_init(reply.get(), &iterator))
        return std::nullopt;
    DBusMessageIter inner = iterator;
    if (dbus_message_iter_get_arg_type(&iterator) == DBUS_TYPE_VARIANT)
        dbus_message_iter_recurse(&iterator, &inner);
    if (dbus_message_iter_get_arg_type(&inner) != type)
        return std::nullopt;
    Value value{};
    dbus_message_iter_get_basic(&inner, &value);
    return value;
}

QString textOf(const BusMessage &reply)
{
    return QString::fromUtf8(basicOf<const char *>(reply, DBUS_TYPE_STRING).value_or(""));
}

/// An application that does not answer hides nothing.
Visibility visibilityOf(const BusMessage &reply)
{
    if (!reply || !dbus_message_has_signature(reply.get(), "au"))
        return Visibility::Showing;
    DBusMessageIter outer;
    DBusMessageIter items;
    dbus_message_iter_init(reply.get(), &outer);
    dbus_message_iter_recurse(&outer, &items);
    if (dbus_message_iter_get_arg_type(&items) != DBUS_TYPE_UINT32)
        return Visibility::Showing;
    dbus_uint32_t bits = 0;
    dbus_message_iter_get_basic(&items, &bits);
    const auto has = [bits](int state) { return (bits >> state & 1U) != 0; };
    if (has(kStateShowing))
        return Visibility::Showing;
    return has(kStateVisible) ? Visibility::Visible : Visibility::Hidden;
}

int childCountOf(const BusMessage &reply)
{
    return basicOf<dbus_int32_t>(reply, DBUS_TYPE_INT32).value_or(0);
}

QString cut(QString text, qsizetype length)
{
    text.truncate(length);
    if (!text.isEmpty() && text.back().isHighSurrogate())
        text.chop(1);
    return text;
}

/// The word for a role of the AT-SPI protocol.
QString roleWord(dbus_uint32_t role)
{
    switch (role) {
    case 43:  // push button
    case 62:  // toggle button
    case 129: // push button with a menu
        return QStringLiteral("Button");
    case 7:
        return QStringLiteral("CheckBox");
    case 11:
        return QStringLiteral("ComboBox");
    case 40: // password
    case 52: // spin button
    case 60: // terminal
    case 61: // text that can be edited
    case 76: // with completion
    case 77: // edit bar
    case 79: // entry
        return QStringLiteral("Edit");
    case 88:
        return QStringLiteral("Hyperlink");
    case 26:  // icon
    case 27:  // image
    case 100: // image with links
        return QStringLiteral("Image");
    case 32:
        return QStringLiteral("ListItem");
    case 33: // menu
    case 41: // pop-up menu
        return QStringLiteral("Menu");
    case 8: // with a check mark
    case 35:
    case 45: // with a radio mark
    case 59: // of a menu that can be torn off
        return QStringLiteral("MenuItem");
    case 44:
        return QStringLiteral("RadioButton");
    case 37:
        return QStringLiteral("TabItem");
    case 29:  // label
    case 73:  // paragraph
    case 81:  // caption
    case 83:  // heading
    case 116: // static
        return QStringLiteral("Text");
    case 91:
        return QStringLiteral("TreeItem");
    case 16: // dialogue
    case 23: // frame
    case 69: // window
        return QStringLiteral("Window");
    default:
        return QStringLiteral("Element");
    }
}

bool isDocument(dbus_uint32_t role)
{
    return role == 82 || role == 95; // document frame, web document
}

/// One query: goes down to the point.
class Descent final
{
public:
    Descent(AccessibilityBus::Session &session, QDeadlineTimer deadline) : m_session(session), m_deadline(deadline) {}

    /// From the window in.
    std::vector<Element> run(const AtspiTree::Target &target)
    {
        std::vector<Element> chain;
        std::optional<Element> current = findFrame(target);
        if (!current)
            return chain;
        m_point = target.point;
        chain.push_back(*current);
        for (int level = 0; level < kLevels && !m_deadline.hasExpired(); ++level) {
            current = lastUnderPoint(chain.back(), childrenOf(chain.back().node, chain.back().children));
            if (!current)
                break;
            chain.push_back(*current);
        }
        return chain;
    }

    std::vector<BusMessage> callAll(std::vector<BusMessage> calls)
    {
        return m_session.client->callAll(std::move(calls), m_deadline);
    }

private:
    BusMessage call(BusMessage message) { return m_session.client->call(std::move(message), m_deadline); }

    std::optional<Element> findFrame(const AtspiTree::Target &target)
    {
        std::optional<Element> found;
        for (const Node &root : applications(target.processId)) {
            const int count = childCountOf(call(askProperty(root, "ChildCount")));
            const std::vector<Node> frames = childrenOf(root, count);
            constexpr std::size_t kAsked = 5;
            std::vector<BusMessage> calls;
            for (const Node &frame : frames) {
                calls.push_back(askExtents(frame, Coordinates::Screen));
                calls.push_back(askExtents(frame, Coordinates::Window));
                calls.push_back(askProperty(frame, "Name"));
                calls.push_back(ask(frame, "GetState"));
                calls.push_back(askProperty(frame, "ChildCount"));
            }
            const std::vector<BusMessage> replies = callAll(std::move(calls));
            for (std::size_t i = 0; i < frames.size(); ++i) {
                const BusMessage *reply = &replies[i * kAsked];
                const auto onScreen = extentsOf(reply[0]);
                if (!onScreen)
                    continue;
                const AccessibleFrame frame{*onScreen, extentsOf(reply[1]).value_or(*onScreen), textOf(reply[2]),
                                            visibilityOf(reply[3]) == Visibility::Showing};
                const auto placement = placeFrame(target.window, frame);
                if (!placement || (found && found->placement.mismatch <= placement->mismatch))
                    continue;
                found = Element{frames[i], placement->windowCoordinates ? frame.inWindow : frame.onScreen,
                                childCountOf(reply[4]), *placement};
            }
        }
        return found;
    }

    /// The roots of what the process has on the bus.
    std::vector<Node> applications(qint64 processId)
    {
        std::vector<Node> all = nodesOf(call(ask({kRegistry, kRoot}, "GetChildren")));
        for (const QByteArray &name : m_session.client->takeVanished())
            m_session.processIds.remove(name);
        std::vector<BusMessage> calls;
        std::vector<QByteArray> asked;
        for (const Node &application : all) {
            if (application.bus.isEmpty() || m_session.processIds.contains(application.bus))
                continue;
            BusMessage message =
                busCall(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "GetConnectionUnixProcessID");
            const char *name = application.bus.constData();
            if (message)
                dbus_message_append_args(message.get(), DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID);
            calls.push_back(std::move(message));
            asked.push_back(application.bus);
        }
        const std::vector<BusMessage> replies = callAll(std::move(calls));
        for (std::size_t i = 0; i < asked.size(); ++i) {
            if (const auto id = basicOf<dbus_uint32_t>(replies[i], DBUS_TYPE_UINT32))
                m_session.processIds.insert(asked[i], *id);
        }
        std::erase_if(all, [&](const Node &node) { return m_session.processIds.value(node.bus) != processId; });
        return all;
    }

    /// The first kChildren of `count`. An application lists all children of a node at once, however many a long table
    /// has; so long ones are asked for one by one.
    std::vector<Node> childrenOf(const Node &node, int count)
    {
        if (count <= 0)
            return {};
        if (count <= kChildren)
            return nodesOf(call(ask(node, "GetChildren")));
        std::vector<BusMessage> calls;
        calls.reserve(kChildren);
        for (int i = 0; i < kChildren; ++i)
            calls.push_back(askChild(node, i));
        std::vector<Node> nodes;
        for (const BusMessage &reply : callAll(std::move(calls)))
            nodes.push_back(nodeOf(reply).value_or(Node()));
        return nodes;
    }

    std::optional<Element> lastUnderPoint(const Element &parent, const std::vector<Node> &children)
    {
        // Some toolkits tell of their windows only that they are on the screen.
        std::optional<Element> visible;
        for (std::size_t end = children.size(); end > 0 && !m_deadline.hasExpired();) {
            const std::size_t begin = end > kAtOnce ? end - kAtOnce : 0;
            std::vector<Element> hits = underPoint(parent, children, begin, end);
            const std::vector<Visibility> states = completeAll(hits);
            for (std::size_t i = 0; i < hits.size(); ++i) {
                if (states[i] == Visibility::Showing)
                    return std::move(hits[i]);
                if (states[i] == Visibility::Visible && !visible)
                    visible = std::move(hits[i]);
            }
            end = begin;
        }
        return visible;
    }

    /// Those of a part of the children that the point is in, from the last backwards.
    std::vector<Element> underPoint(const Element &parent, const std::vector<Node> &children, std::size_t begin,
                                    std::size_t end)
    {
        const Coordinates coordinates = parent.placement.windowCoordinates ? Coordinates::Window : Coordinates::Screen;
        std::vector<BusMessage> calls;
        std::vector<std::size_t> asked;
        for (std::size_t i = end; i > begin; --i) {
            if (children[i - 1].bus.isEmpty())
                continue;
            asked.push_back(i - 1);
            calls.push_back(askExtents(children[i - 1], coordinates));
        }
        const std::vector<BusMessage> replies = callAll(std::move(calls));
        std::vector<Element> hits;
        for (std::size_t i = 0; i < asked.size(); ++i) {
            const auto extents = extentsOf(replies[i]);
            if (!extents)
                continue;
            Element child{children[asked[i]], *extents, 0, parent.placement.forChild(parent.extents, *extents)};
            if (holdsPoint(child))
                hits.push_back(std::move(child));
        }
        return hits;
    }

    [[nodiscard]] bool holdsPoint(const Element &element) const
    {
        const QRectF &extents = element.extents;
        const QPointF point = element.placement.fromNative(m_point);
        const double side = kSmallestSide / element.placement.scale;
        return extents.width() >= side && extents.height() >= side && extents.left() <= point.x() &&
               point.x() < extents.right() && extents.top() <= point.y() && point.y() < extents.bottom();
    }

    /// Fills in what going on from an element needs. The pages of a stack, say, all have one rectangle, of which one
    /// shows.
    std::vector<Visibility> completeAll(std::vector<Element> &elements)
    {
        std::vector<BusMessage> calls;
        for (const Element &element : elements) {
            calls.push_back(ask(element.node, "GetState"));
            calls.push_back(askProperty(element.node, "ChildCount"));
        }
        const std::vector<BusMessage> replies = callAll(std::move(calls));
        std::vector<Visibility> states;
        for (std::size_t i = 0; i < elements.size(); ++i) {
            states.push_back(visibilityOf(replies[2 * i]));
            elements[i].children = childCountOf(replies[2 * i + 1]);
        }
        return states;
    }

    AccessibilityBus::Session &m_session;
    QDeadlineTimer m_deadline;
    QPoint m_point; ///< a pixel of the root
};

} // namespace

QList<QRect> AtspiTree::rectanglesAt(const Target &target, QDeadlineTimer deadline) const
{
    QList<QRect> rectangles;
    m_bus.withSession(deadline, [&](AccessibilityBus::Session &session) {
        Descent descent(session, deadline);
        const std::vector<Element> chain = descent.run(target);
        for (auto element = chain.rbegin(); element != chain.rend(); ++element)
            rectangles.append(element->placement.toNative(element->extents));
    });
    return rectangles;
}

ElementInfo AtspiTree::elementAt(const Target &target, QDeadlineTimer deadline) const
{
    ElementInfo info;
    m_bus.withSession(deadline, [&](AccessibilityBus::Session &session) {
        Descent descent(session, deadline);
        const std::vector<Element> chain = descent.run(target);
        if (chain.empty())
            return;
        const Node &node = chain.back().node;
        std::vector<BusMessage> calls;
        calls.push_back(ask(node, "GetRole"));
        calls.push_back(askProperty(node, "Name"));
        calls.push_back(askProperty(node, "Description"));
        const std::vector<BusMessage> replies = descent.callAll(std::move(calls));
        info.role = roleWord(basicOf<dbus_uint32_t>(replies[0], DBUS_TYPE_UINT32).value_or(0));
        info.name = cut(textOf(replies[1]), kNameLength);
        info.helpText = cut(textOf(replies[2]), kHelpLength);
    });
    return info;
}

QString AtspiTree::pageAddressAt(const Target &target, QDeadlineTimer deadline) const
{
    QString address;
    m_bus.withSession(deadline, [&](AccessibilityBus::Session &session) {
        Descent descent(session, deadline);
        const std::vector<Element> chain = descent.run(target);
        std::vector<BusMessage> roles;
        roles.reserve(chain.size());
        for (const Element &element : chain)
            roles.push_back(ask(element.node, "GetRole"));
        const std::vector<BusMessage> replies = descent.callAll(std::move(roles));
        std::vector<BusMessage> calls;
        for (std::size_t i = 0; i < chain.size(); ++i) {
            if (!isDocument(basicOf<dbus_uint32_t>(replies[i], DBUS_TYPE_UINT32).value_or(0)))
                continue;
            for (const char *name : kAddressNames)
                calls.push_back(askDocument(chain[i].node, name));
        }
        // Browsers draw parts of their own with pages that have no address.
        for (const BusMessage &reply : descent.callAll(std::move(calls))) {
            if (address.isEmpty())
                address = textOf(reply);
        }
    });
    return address;
}

} // namespace tavrel::platform
