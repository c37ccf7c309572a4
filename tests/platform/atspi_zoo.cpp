// A program with elements on an accessibility bus, as tests need another process to have; it is the bus's registry and
// the way to it as well. Runs until its standard input ends, and says "ready" when it can be asked.
//
//   atspi_zoo SHAPE SEED [KEY=VALUE]...      shapes as in fake_tree.h
//       coordinates=screen|window   what it answers when asked for screen coordinates; window: it does not know better
//       scale=2                     it divides its coordinates by this
//       address=NAME                what the address of a page is called
//       silent=INDEX                does not answer for this element's rectangle, ever
//       dies=INDEX                  exits when asked for it
#include "platform/fake_tree.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QHash>
#include <QSocketNotifier>

#include <cstdio>
#include <cstdlib>

#include <unistd.h>

using tavrel::test::FakeElement;

struct Reference
{
    QString bus;
    QDBusObjectPath path;
};
Q_DECLARE_METATYPE(Reference)

struct Extents
{
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};
Q_DECLARE_METATYPE(Extents)

static QDBusArgument &operator<<(QDBusArgument &argument, const Reference &value)
{
    argument.beginStructure();
    argument << value.bus << value.path;
    argument.endStructure();
    return argument;
}

static const QDBusArgument &operator>>(const QDBusArgument &argument, Reference &)
{
    return argument; // never received
}

static QDBusArgument &operator<<(QDBusArgument &argument, const Extents &value)
{
    argument.beginStructure();
    argument << value.x << value.y << value.width << value.height;
    argument.endStructure();
    return argument;
}

static const QDBusArgument &operator>>(const QDBusArgument &argument, Extents &)
{
    return argument; // never received
}

namespace {

const QString kPrefix = QStringLiteral("/org/a11y/atspi/accessible/");

// Elements have their indices as names; these are besides.
constexpr int kRegistry = -1;
constexpr int kApplication = -2;
constexpr int kOtherWindow = -3;

class Zoo final : public QDBusVirtualObject
{
public:
    Zoo(const QByteArray &shape, quint32 seed, QHash<QByteArray, QByteArray> how)
        : m_tree(tavrel::test::fakeTree(shape, seed)),
          m_how(std::move(how)),
          m_scale(std::max(1, m_how.value("scale").toInt())),
          m_silent(m_how.value("silent", "-100").toInt()),
          m_dies(m_how.value("dies", "-100").toInt())
    {
        m_other.rect = QRect(20, 20, 300, 200);
        m_other.name = m_tree.first().name;
    }

    [[nodiscard]] QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.member() == u"GetAddress")
            return connection.send(message.createReply(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS")));
        const int index = indexOf(message.path());
        if (message.member() == u"GetExtents") {
            if (index == m_silent)
                return true;
            if (index == m_dies)
                std::_Exit(0);
        }
        const QVariant answer = answerTo(message, index, connection.baseService());
        return answer.isValid() && connection.send(message.createReply(answer));
    }

private:
    [[nodiscard]] static int indexOf(const QString &path)
    {
        const QString name = path.mid(kPrefix.size());
        if (name == u"root")
            return kRegistry;
        if (name == u"application")
            return kApplication;
        return name == u"other" ? kOtherWindow : name.toInt();
    }

    [[nodiscard]] static Reference reference(const QString &bus, const QString &name)
    {
        return {bus, QDBusObjectPath(kPrefix + name)};
    }

    [[nodiscard]] QList<Reference> childrenOf(int index, const QString &bus) const
    {
        if (index == kRegistry)
            return {{QString(), QDBusObjectPath(QStringLiteral("/org/a11y/atspi/null"))},
                    reference(QStringLiteral(":1.9999"), QStringLiteral("gone")),
                    reference(bus, QStringLiteral("application"))};
        if (index == kApplication)
            return {reference(bus, QStringLiteral("other")), reference(bus, QStringLiteral("0"))};
        QList<Reference> children;
        for (const int child : element(index).children)
            children.append(reference(bus, QString::number(child)));
        return children;
    }

    [[nodiscard]] Reference childOf(int index, int number, const QString &bus) const
    {
        if (index < 0)
            return childrenOf(index, bus).value(number);
        const QList<int> &children = element(index).children;
        return number < children.size() ? reference(bus, QString::number(children[number])) : Reference{};
    }

    [[nodiscard]] const FakeElement &element(int index) const
    {
        return index >= 0 && index < m_tree.size() ? m_tree[index] : m_other;
    }

    [[nodiscard]] QVariant answerTo(const QDBusMessage &message, int index, const QString &bus) const
    {
        const QString method = message.member();
        const QVariantList arguments = message.arguments();
        if (method == u"GetChildren")
            return QVariant::fromValue(childrenOf(index, bus));
        if (method == u"GetChildAtIndex")
            return QVariant::fromValue(childOf(index, arguments.value(0).toInt(), bus));
        if (method == u"GetExtents" && index >= kOtherWindow && index != kApplication)
            return QVariant::fromValue(extentsOf(index, arguments.value(0).toUInt()));
        if (method == u"GetRole")
            return QVariant::fromValue(element(index).role);
        if (method == u"GetState")
            return QVariant::fromValue(QList<quint32>{stateOf(element(index)), 0U});
        if (method == u"GetAttributeValue")
            return arguments.value(0).toByteArray() == m_how.value("address", "DocURL") ? element(index).help
                                                                                        : QString();
        if (method == u"Get")
            return propertyOf(index, arguments.value(1).toString(), bus);
        return {};
    }

    [[nodiscard]] static quint32 stateOf(const FakeElement &element)
    {
        constexpr int kShowing = 25;
        constexpr int kVisible = 30;
        return (element.showing ? 1U << kShowing : 0U) | (element.visible ? 1U << kVisible : 0U);
    }

    [[nodiscard]] Extents extentsOf(int index, quint32 coordinates) const
    {
        QRect rect = element(index).rect;
        if (coordinates == 1 || m_how.value("coordinates") == "window")
            rect.translate(-element(index == kOtherWindow ? index : 0).rect.topLeft());
        return {rect.x() / m_scale, rect.y() / m_scale, rect.width() / m_scale, rect.height() / m_scale};
    }

    [[nodiscard]] QVariant propertyOf(int index, const QString &name, const QString &bus) const
    {
        QVariant value;
        if (name == u"ChildCount")
            value = static_cast<int>(index < 0 ? childrenOf(index, bus).size() : element(index).children.size());
        else if (name == u"Name")
            value = element(index).name;
        else if (name == u"Description")
            value = element(index).help;
        return value.isValid() ? QVariant::fromValue(QDBusVariant(value)) : value;
    }

    QList<FakeElement> m_tree;
    FakeElement m_other;
    QHash<QByteArray, QByteArray> m_how;
    int m_scale;
    int m_silent;
    int m_dies;
};

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc < 3)
        return 2;
    QHash<QByteArray, QByteArray> how;
    for (int i = 3; i < argc; ++i) {
        const QByteArray option(argv[i]);
        const auto at = option.indexOf('=');
        how.insert(option.left(at), option.mid(at + 1));
    }
    qDBusRegisterMetaType<Reference>();
    qDBusRegisterMetaType<QList<Reference>>();
    qDBusRegisterMetaType<Extents>();
    qDBusRegisterMetaType<QList<quint32>>();

    QDBusConnection bus = QDBusConnection::sessionBus();
    Zoo zoo(argv[1], QByteArray(argv[2]).toUInt(), how);
    if (!bus.registerVirtualObject(QStringLiteral("/org/a11y"), &zoo, QDBusConnection::SubPath) ||
        !bus.registerService(QStringLiteral("org.a11y.Bus")) ||
        !bus.registerService(QStringLiteral("org.a11y.atspi.Registry")))
        return 1;
    std::puts("ready");
    std::fflush(stdout);

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &app, [] {
        char byte = 0;
        if (::read(STDIN_FILENO, &byte, 1) <= 0)
            QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}
