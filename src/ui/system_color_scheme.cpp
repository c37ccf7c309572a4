#include "ui/system_color_scheme.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QEvent>
#include <QFile>
#include <QGuiApplication>
#include <QPalette>
#include <QPointer>
#include <QStyleHints>
#include <QThread>

namespace tavrel::ui {
namespace {

constexpr int portalDeadlineMs = 1500;
constexpr int goodbyeMs = 500;

QString connectionName()
{
    return QStringLiteral("tavrel-color-scheme");
}
QString appearanceGroup()
{
    return QStringLiteral("org.freedesktop.appearance");
}
QString schemeKey()
{
    return QStringLiteral("color-scheme");
}

/// Without one of these the client library would start a bus of its own and leave it running.
bool hasSessionBus()
{
    return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
           QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
}

ColorScheme paletteScheme()
{
    const QPalette palette = QGuiApplication::palette();
    const bool lightOnDark =
        palette.color(QPalette::WindowText).lightness() > palette.color(QPalette::Window).lightness();
    return lightOnDark ? ColorScheme::Dark : ColorScheme::Light;
}

/// What Qt itself knows, which before 6.5 is nothing beyond the palette.
ColorScheme toolkitScheme()
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    const Qt::ColorScheme known = QGuiApplication::styleHints()->colorScheme();
    if (known != Qt::ColorScheme::Unknown)
        return known == Qt::ColorScheme::Dark ? ColorScheme::Dark : ColorScheme::Light;
#endif
    return paletteScheme();
}

/// Lives on the portal thread. Connecting to a bus and adding a match rule both wait for the bus, hence the thread.
class PortalListener final : public QObject
{
    Q_OBJECT
public:
    ~PortalListener() override { QDBusConnection::disconnectFromBus(connectionName()); }

    void start()
    {
        QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName());
        if (!bus.isConnected())
            return;
        const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
        const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
        // Qt refuses a slot with a type that nobody has used yet, without a word.
        qRegisterMetaType<QDBusVariant>();
        bus.connect(QString(), path, interface, QStringLiteral("SettingChanged"), this,
                    SLOT(settingChanged(QString, QString, QDBusVariant)));
        QDBusMessage read = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Desktop"), path,
                                                           interface, QStringLiteral("Read"));
        read << appearanceGroup() << schemeKey();
        auto *reply = new QDBusPendingCallWatcher(bus.asyncCall(read, portalDeadlineMs), this);
        connect(reply, &QDBusPendingCallWatcher::finished, this, [this, reply] {
            reply->deleteLater();
            const QVariantList values = reply->reply().arguments();
            // A change that arrived in the meantime is newer than this answer.
            if (!m_heard && !reply->isError() && !values.isEmpty())
                Q_EMIT answered(values.constFirst());
        });
    }

Q_SIGNALS:
    void answered(const QVariant &value);

private Q_SLOTS:
    void settingChanged(const QString &group, const QString &key, const QDBusVariant &value)
    {
        if (group != appearanceGroup() || key != schemeKey())
            return;
        m_heard = true;
        Q_EMIT answered(value.variant());
    }

private:
    bool m_heard = false;
};

} // namespace

SystemColorScheme::SystemColorScheme(QObject *parent) : QObject(parent), m_scheme(toolkitScheme())
{
    qApp->installEventFilter(this);
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    connect(QGuiApplication::styleHints(), &QStyleHints::colorSchemeChanged, this, &SystemColorScheme::update);
#else
    if (!hasSessionBus())
        return;
    m_portalThread = new QThread;
    m_portalThread->setObjectName(QStringLiteral("color scheme"));
    auto *listener = new PortalListener;
    listener->moveToThread(m_portalThread);
    connect(m_portalThread, &QThread::started, listener, &PortalListener::start);
    connect(m_portalThread, &QThread::finished, listener, &QObject::deleteLater);
    connect(listener, &PortalListener::answered, this,
            [this](const QVariant &value) { setPortalScheme(colorSchemeFromPortal(value)); });
    m_portalThread->start();
#endif
}

SystemColorScheme::~SystemColorScheme()
{
    if (!m_portalThread)
        return;
    m_portalThread->quit();
    // A thread that hangs on a dead bus is left to the end of the process rather than waited for.
    if (m_portalThread->wait(goodbyeMs))
        delete m_portalThread;
}

SystemColorScheme &SystemColorScheme::shared()
{
    static QPointer<SystemColorScheme> instance;
    if (!instance)
        instance = new SystemColorScheme(qApp);
    return *instance;
}

bool SystemColorScheme::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ApplicationPaletteChange && watched == qApp)
        update();
    return QObject::eventFilter(watched, event);
}

void SystemColorScheme::setPortalScheme(std::optional<ColorScheme> scheme)
{
    m_portal = scheme;
    update();
}

void SystemColorScheme::update()
{
    const ColorScheme scheme = m_portal.value_or(toolkitScheme());
    if (scheme == m_scheme)
        return;
    m_scheme = scheme;
    Q_EMIT changed(scheme);
}

ColorScheme systemColorScheme()
{
    return SystemColorScheme::shared().scheme();
}

std::optional<ColorScheme> colorSchemeFromPortal(const QVariant &answer)
{
    QVariant value = answer;
    // `Read` wraps its value twice, the change signal once.
    while (value.userType() == qMetaTypeId<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    if (value.userType() != QMetaType::UInt && value.userType() != QMetaType::Int)
        return std::nullopt;
    switch (value.toUInt()) {
    case 1:
        return ColorScheme::Dark;
    case 2:
        return ColorScheme::Light;
    default:
        return std::nullopt;
    }
}

} // namespace tavrel::ui

#include "system_color_scheme.moc"
