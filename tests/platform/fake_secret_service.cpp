#include "platform/fake_secret_service.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>

namespace {

struct Secret
{
    QDBusObjectPath session{QStringLiteral("/org/freedesktop/secrets/session/1")};
    QByteArray parameters = {};
    QByteArray value = {};
    QString contentType = QStringLiteral("text/plain");
};

using Attributes = QMap<QString, QString>;
using Secrets = QMap<QDBusObjectPath, Secret>;

QDBusArgument &operator<<(QDBusArgument &to, const Secret &secret)
{
    to.beginStructure();
    to << secret.session << secret.parameters << secret.value << secret.contentType;
    to.endStructure();
    return to;
}

const QDBusArgument &operator>>(const QDBusArgument &from, Secret &secret)
{
    from.beginStructure();
    from >> secret.session >> secret.parameters >> secret.value >> secret.contentType;
    from.endStructure();
    return from;
}

} // namespace

Q_DECLARE_METATYPE(Secret)
Q_DECLARE_METATYPE(Secrets)
Q_DECLARE_METATYPE(Attributes)

namespace tavrel::test {
namespace {

const QString kRoot = QStringLiteral("/org/freedesktop/secrets");
const QString kItem = QStringLiteral("/org/freedesktop/secrets/collection/login/");

QDBusObjectPath none()
{
    return QDBusObjectPath(QStringLiteral("/"));
}

QDBusObjectPath prompt()
{
    return QDBusObjectPath(kRoot + QStringLiteral("/prompt/1"));
}

QString keyOf(const QDBusArgument &attributes)
{
    return qdbus_cast<Attributes>(attributes).value(QStringLiteral("key"));
}

} // namespace

class FakeSecretService::Objects final : public QDBusVirtualObject
{
public:
    explicit Objects(FakeSecretService &service) : m_service(service) {}

    QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override
    {
        if (m_service.m_mood == Mood::Silent)
            return true;
        const QMutexLocker lock(&m_service.m_mutex);
        bus.send(answer(message));
        return true;
    }

private:
    QDBusMessage answer(const QDBusMessage &call)
    {
        const QString method = call.member();
        const bool isLocked = m_service.m_mood == Mood::Locked;
        if (method == u"OpenSession") {
            if (call.arguments().value(0).toString() != u"plain")
                return call.createErrorReply(QStringLiteral("org.freedesktop.DBus.Error.NotSupported"), u"no"_qs);
            return call.createReply(
                {QVariant::fromValue(QDBusVariant(QString())), QVariant::fromValue(Secret().session)});
        }
        if (method == u"GetAll")
            return call.createReply(QVariant::fromValue(properties(call.path(), isLocked)));
        if (method == u"SearchItems") {
            const auto found = search(keyOf(call.arguments().value(0).value<QDBusArgument>()));
            const QList<QDBusObjectPath> nothing;
            return call.createReply(
                {QVariant::fromValue(isLocked ? nothing : found), QVariant::fromValue(isLocked ? found : nothing)});
        }
        if (method == u"GetSecrets")
            return call.createReply(QVariant::fromValue(
                isLocked
                    ? Secrets()
                    : secretsOf(qdbus_cast<QList<QDBusObjectPath>>(call.arguments().value(0).value<QDBusArgument>()))));
        if (method == u"Unlock" || method == u"CreateCollection")
            return call.createReply(
                {method == u"Unlock" ? QVariant::fromValue(QList<QDBusObjectPath>()) : QVariant::fromValue(none()),
                 QVariant::fromValue(prompt())});
        if (method == u"Prompt") {
            ++m_service.m_shownPrompts; // and the user never answers
            return call.createReply();
        }
        if (isLocked)
            return call.createErrorReply(QStringLiteral("org.freedesktop.Secret.Error.IsLocked"), u"locked"_qs);
        if (method == u"CreateItem")
            return call.createReply({QVariant::fromValue(createItem(call)), QVariant::fromValue(none())});
        if (method == u"Delete") {
            m_service.m_items.remove(call.path().section(u'/', -1).toInt());
            return call.createReply(QVariant::fromValue(none()));
        }
        return call.createErrorReply(QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"), method);
    }

    QVariantMap properties(const QString &path, bool isLocked) const
    {
        if (!path.startsWith(kItem))
            return {};
        const Item item = m_service.m_items.value(path.section(u'/', -1).toInt());
        return {{QStringLiteral("Locked"), isLocked},
                {QStringLiteral("Attributes"), QVariant::fromValue(Attributes{{QStringLiteral("key"), item.key}})},
                {QStringLiteral("Label"), item.key},
                {QStringLiteral("Type"), QString()},
                {QStringLiteral("Created"), quint64(1)},
                {QStringLiteral("Modified"), quint64(1)}};
    }

    QList<QDBusObjectPath> search(const QString &key) const
    {
        QList<QDBusObjectPath> found;
        for (auto item = m_service.m_items.cbegin(); item != m_service.m_items.cend(); ++item)
            if (item->key == key)
                found.append(QDBusObjectPath(kItem + QString::number(item.key())));
        return found;
    }

    Secrets secretsOf(const QList<QDBusObjectPath> &items) const
    {
        Secrets secrets;
        for (const QDBusObjectPath &item : items) {
            Secret secret;
            secret.value = m_service.m_items.value(item.path().section(u'/', -1).toInt()).secret;
            secrets.insert(item, secret);
        }
        return secrets;
    }

    QDBusObjectPath createItem(const QDBusMessage &call)
    {
        const auto properties = qdbus_cast<QVariantMap>(call.arguments().value(0).value<QDBusArgument>());
        const QString key =
            keyOf(properties.value(QStringLiteral("org.freedesktop.Secret.Item.Attributes")).value<QDBusArgument>());
        const auto secret = qdbus_cast<Secret>(call.arguments().value(1).value<QDBusArgument>());
        const bool replace = call.arguments().value(2).toBool();
        const auto same = search(key);
        const int number =
            replace && !same.isEmpty() ? same.first().path().section(u'/', -1).toInt() : ++m_service.m_lastItem;
        m_service.m_items.insert(number, {key, secret.value});
        return QDBusObjectPath(kItem + QString::number(number));
    }

    FakeSecretService &m_service;
};

FakeSecretService::FakeSecretService() : m_objects(std::make_unique<Objects>(*this))
{
    qDBusRegisterMetaType<Secret>();
    qDBusRegisterMetaType<Secrets>();
    qDBusRegisterMetaType<Attributes>();
    m_objects->moveToThread(&m_thread);
    m_thread.start();
}

FakeSecretService::~FakeSecretService()
{
    QDBusConnection::disconnectFromBus(QStringLiteral("fake secret service"));
    m_thread.quit();
    m_thread.wait();
}

bool FakeSecretService::start(Mood mood)
{
    m_mood = mood;
    bool isOwned = false;
    QMetaObject::invokeMethod(
        m_objects.get(), [this, &isOwned] { isOwned = enter(); }, Qt::BlockingQueuedConnection);
    return isOwned;
}

bool FakeSecretService::enter()
{
    QDBusConnection bus = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"),
                                                        QStringLiteral("fake secret service"));
    return bus.isConnected() && bus.registerVirtualObject(kRoot, m_objects.get(), QDBusConnection::SubPath) &&
           bus.registerService(QStringLiteral("org.freedesktop.secrets"));
}

QHash<QString, QByteArray> FakeSecretService::secrets() const
{
    const QMutexLocker lock(&m_mutex);
    QHash<QString, QByteArray> all;
    for (const Item &item : m_items)
        all.insert(item.key, item.secret);
    return all;
}

void FakeSecretService::put(const QString &key, const QByteArray &secret)
{
    const QMutexLocker lock(&m_mutex);
    m_items.insert(++m_lastItem, {key, secret});
}

} // namespace tavrel::test
