// accessible_tree NAME: prints what a screen reader sees of a program, one line for each shown object: depth, role,
// name, value where it has one, its middle on the screen, and whether it is off, on or checked, separated by tabs. Ends
// with 1 when the program is not on the bus.
#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QPoint>

#include <cstdio>

namespace {

constexpr char kAccessible[] = "org.a11y.atspi.Accessible";
constexpr int kDeepest = 30;
// Their bits in the states.
constexpr unsigned kChecked = 4;
constexpr unsigned kEnabled = 8;
constexpr unsigned kShowing = 25;

struct Reference
{
    QString service;
    QDBusObjectPath path;
};

QDBusArgument &operator<<(QDBusArgument &argument, const Reference &reference)
{
    argument.beginStructure();
    argument << reference.service << reference.path;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Reference &reference)
{
    argument.beginStructure();
    argument >> reference.service >> reference.path;
    argument.endStructure();
    return argument;
}

class Walk final
{
public:
    explicit Walk(const QDBusConnection &bus) : m_bus(bus) {}

    [[nodiscard]] QList<Reference> children(const Reference &object) const
    {
        const QDBusMessage answer = call(object, kAccessible, QStringLiteral("GetChildren"), {});
        return answer.arguments().isEmpty() ? QList<Reference>()
                                            : qdbus_cast<QList<Reference>>(answer.arguments().first());
    }

    [[nodiscard]] QString name(const Reference &object) const
    {
        return property(object, kAccessible, "Name").toString();
    }

    void print(const Reference &object, int depth) const
    {
        const QString role =
            call(object, kAccessible, QStringLiteral("GetRoleName"), {}).arguments().value(0).toString();
        const QDBusMessage states = call(object, kAccessible, QStringLiteral("GetState"), {});
        const auto bits =
            states.arguments().isEmpty() ? QList<uint>() : qdbus_cast<QList<uint>>(states.arguments().first());
        const auto is = [&bits](unsigned state) { return (bits.value(0) & (1U << state)) != 0; };
        const bool isShown = depth < 2 || is(kShowing);
        if (!isShown || depth > kDeepest)
            return;
        const QVariant value = property(object, "org.a11y.atspi.Value", "CurrentValue");
        const QPoint at = middle(object);
        std::printf("%d\t%s\t%s\t%s\t%d %d\t%s\n", depth, qPrintable(role), qPrintable(name(object)),
                    value.isValid() ? qPrintable(QString::number(value.toDouble())) : "-", at.x(), at.y(),
                    !is(kEnabled)  ? "off"
                    : is(kChecked) ? "checked"
                                   : "on");
        for (const Reference &child : children(object))
            print(child, depth + 1);
    }

private:
    [[nodiscard]] QPoint middle(const Reference &object) const
    {
        const QDBusMessage answer =
            call(object, "org.a11y.atspi.Component", QStringLiteral("GetExtents"), {0U}); // of the screen
        if (answer.type() != QDBusMessage::ReplyMessage)
            return {};
        const auto extents = answer.arguments().first().value<QDBusArgument>();
        int x = 0, y = 0, width = 0, height = 0;
        extents.beginStructure();
        extents >> x >> y >> width >> height;
        extents.endStructure();
        return {x + width / 2, y + height / 2};
    }
    [[nodiscard]] QDBusMessage call(const Reference &object, const char *interface, const QString &method,
                                    const QVariantList &arguments) const
    {
        QDBusMessage message =
            QDBusMessage::createMethodCall(object.service, object.path.path(), QLatin1String(interface), method);
        message.setArguments(arguments);
        return m_bus.call(message, QDBus::Block, 5000);
    }

    [[nodiscard]] QVariant property(const Reference &object, const char *interface, const char *what) const
    {
        const QDBusMessage answer = call(object, "org.freedesktop.DBus.Properties", QStringLiteral("Get"),
                                         {QLatin1String(interface), QLatin1String(what)});
        return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments().value(0).value<QDBusVariant>().variant()
                                                           : QVariant();
    }

    QDBusConnection m_bus;
};

} // namespace

Q_DECLARE_METATYPE(Reference)

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    qDBusRegisterMetaType<Reference>();
    qDBusRegisterMetaType<QList<Reference>>();
    qDBusRegisterMetaType<QList<uint>>();
    QDBusInterface launcher(QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                            QStringLiteral("org.a11y.Bus"));
    const QDBusReply<QString> address = launcher.call(QStringLiteral("GetAddress"));
    if (!address.isValid())
        return 1;
    const Walk walk(QDBusConnection::connectToBus(address.value(), QStringLiteral("accessibility")));
    const Reference root{QStringLiteral("org.a11y.atspi.Registry"),
                         QDBusObjectPath(QStringLiteral("/org/a11y/atspi/accessible/root"))};
    for (const Reference &application : walk.children(root)) {
        if (walk.name(application) == QString::fromLocal8Bit(argv[1])) {
            walk.print(application, 0);
            return 0;
        }
    }
    return 1;
}
