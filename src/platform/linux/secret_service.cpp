#include "platform/linux/secret_service.h"

#include "base/unjoined_thread.h"
#include "platform/linux/bus_client.h"

#include <libsecret/secret.h>

#include <memory>
#include <optional>

namespace tavrel::platform {
namespace {

using Outcome = SecretReply::Outcome;

constexpr const char *kContentType = "text/plain";

template <auto release>
struct Release
{
    template <typename T>
    void operator()(T *object) const
    {
        release(object);
    }
};

template <typename T>
using Object = std::unique_ptr<T, Release<g_object_unref>>;
using Attributes = std::unique_ptr<GHashTable, Release<g_hash_table_unref>>;
using Value = std::unique_ptr<SecretValue, Release<secret_value_unref>>;

/// Takes what a GLib call leaves behind as its error.
class ErrorSlot final
{
public:
    ErrorSlot() = default;
    ErrorSlot(const ErrorSlot &) = delete;
    ErrorSlot &operator=(const ErrorSlot &) = delete;
    ~ErrorSlot() { g_clear_error(&m_error); }

    GError **get() { return &m_error; }
    explicit operator bool() const { return m_error != nullptr; }
    [[nodiscard]] QString text() const
    {
        return m_error ? QString::fromUtf8(m_error->message) : QStringLiteral("unknown error");
    }

private:
    GError *m_error = nullptr;
};

// A service that answers every wish to ask the user with a refusal. libsecret would show the prompt otherwise, and wait
// for it.

void refusePrompt(SecretService *service, SecretPrompt *, const GVariantType *, GCancellable *cancellable,
                  GAsyncReadyCallback done, gpointer data)
{
    GTask *task = g_task_new(service, cancellable, done, data);
    g_task_return_new_error(task, SECRET_ERROR, SECRET_ERROR_IS_LOCKED, "the service is locked");
    g_object_unref(task);
}

GVariant *refusedPrompt(SecretService *, GAsyncResult *result, GError **error)
{
    return static_cast<GVariant *>(g_task_propagate_pointer(reinterpret_cast<GTask *>(result), error));
}

GVariant *refusePromptNow(SecretService *, SecretPrompt *, GCancellable *, const GVariantType *, GError **error)
{
    g_set_error_literal(error, SECRET_ERROR, SECRET_ERROR_IS_LOCKED, "the service is locked");
    return nullptr;
}

void initialiseClass(gpointer type, gpointer)
{
    auto *service = static_cast<SecretServiceClass *>(type);
    service->prompt_sync = refusePromptNow;
    service->prompt_async = refusePrompt;
    service->prompt_finish = refusedPrompt;
}

GType silentServiceType()
{
    static const GType type =
        g_type_register_static_simple(SECRET_TYPE_SERVICE, "TavrelSilentSecretService", sizeof(SecretServiceClass),
                                      initialiseClass, sizeof(SecretService), nullptr, GTypeFlags(0));
    return type;
}

const SecretSchema *schema()
{
    static const SecretSchema *schema =
        secret_schema_new("corvane.Tavrel", SECRET_SCHEMA_NONE, "key", SECRET_SCHEMA_ATTRIBUTE_STRING, nullptr);
    return schema;
}

/// One connected service and the task at hand; lives on the worker.
class Conversation final
{
public:
    Conversation(const SecretTask &task, GCancellable *cancellable) : m_task(task), m_cancellable(cancellable) {}

    SecretReply run()
    {
        if (!open())
            return failed();
        m_attributes.reset(secret_attributes_build(schema(), "key", m_task.key.toUtf8().constData(), nullptr));
        switch (m_task.kind) {
        case SecretTask::Kind::Save:
            return save();
        case SecretTask::Kind::Load:
            return load();
        case SecretTask::Kind::Remove:
            return remove();
        }
        return failed();
    }

private:
    bool open()
    {
        // libsecret takes the connection that all libraries share, whose default is to end the program with the bus.
        m_connection.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, m_cancellable, m_error.get()));
        if (!m_connection)
            return false;
        g_dbus_connection_set_exit_on_close(m_connection.get(), FALSE);
        m_service.reset(secret_service_open_sync(silentServiceType(), nullptr, SECRET_SERVICE_OPEN_SESSION,
                                                 m_cancellable, m_error.get()));
        return m_service != nullptr;
    }

    SecretReply save()
    {
        // As text: some keepers show secrets to the user and mangle what is none.
        const QByteArray text = m_task.value.toBase64();
        const Value value(secret_value_new(text.constData(), text.size(), kContentType));
        const QByteArray label = "Tavrel: " + m_task.key.toUtf8();
        if (!secret_service_store_sync(m_service.get(), schema(), m_attributes.get(), SECRET_COLLECTION_DEFAULT,
                                       label.constData(), value.get(), m_cancellable, m_error.get()))
            return failed();
        return {.outcome = Outcome::Done, .value = {}, .problem = {}};
    }

    SecretReply load()
    {
        bool isLocked = false;
        std::optional<QByteArray> newest;
        guint64 newestTime = 0;
        const bool searched = forEachItem(SECRET_SEARCH_LOAD_SECRETS, [&](SecretItem *item) {
            if (secret_item_get_locked(item)) {
                isLocked = true;
                return true;
            }
            const Value value(secret_item_get_secret(item));
            const guint64 time = secret_item_get_modified(item);
            if (!value || (newest && time <= newestTime))
                return true;
            gsize size = 0;
            const gchar *text = secret_value_get(value.get(), &size);
            const auto decoded = QByteArray::fromBase64Encoding(QByteArray(text, static_cast<qsizetype>(size)),
                                                                QByteArray::AbortOnBase64DecodingErrors);
            if (decoded) {
                newest = *decoded;
                newestTime = time;
            }
            return true;
        });
        if (!searched)
            return failed();
        if (newest)
            return {.outcome = Outcome::Done, .value = *newest, .problem = {}};
        return isLocked ? locked() : SecretReply{.outcome = Outcome::NotFound, .value = {}, .problem = {}};
    }

    SecretReply remove()
    {
        bool isLocked = false;
        bool found = false;
        const bool removed = forEachItem(SECRET_SEARCH_NONE, [&](SecretItem *item) {
            found = true;
            if (secret_item_get_locked(item)) {
                isLocked = true;
                return true;
            }
            return secret_item_delete_sync(item, m_cancellable, m_error.get()) != FALSE;
        });
        if (!removed)
            return failed();
        if (isLocked)
            return locked();
        return {.outcome = found ? Outcome::Done : Outcome::NotFound, .value = {}, .problem = {}};
    }

    /// False when the search or `use` failed.
    template <typename Use>
    bool forEachItem(SecretSearchFlags flags, Use use)
    {
        GList *items =
            secret_service_search_sync(m_service.get(), schema(), m_attributes.get(),
                                       SecretSearchFlags(SECRET_SEARCH_ALL | flags), m_cancellable, m_error.get());
        bool allWell = !m_error;
        for (const GList *at = items; allWell && at; at = at->next)
            allWell = use(static_cast<SecretItem *>(at->data));
        g_list_free_full(items, g_object_unref);
        return allWell;
    }

    [[nodiscard]] SecretReply failed() const
    {
        return {.outcome = Outcome::Unavailable, .value = {}, .problem = m_error.text()};
    }
    [[nodiscard]] static SecretReply locked()
    {
        return {.outcome = Outcome::Unavailable, .value = {}, .problem = QStringLiteral("locked")};
    }

    const SecretTask &m_task;
    GCancellable *m_cancellable;
    ErrorSlot m_error;
    Object<GDBusConnection> m_connection;
    Object<SecretService> m_service;
    Attributes m_attributes;
};

} // namespace

SecretReply askSecretService(const SecretTask &task, QDeadlineTimer deadline)
{
    if (sessionBusAddress().isEmpty()) // one would be started
        return {.outcome = Outcome::Unavailable, .value = {}, .problem = QStringLiteral("no session bus")};
    const auto cancellable = std::shared_ptr<GCancellable>(g_cancellable_new(), Release<g_object_unref>());
    auto talk = startUnjoined([task, cancellable] { return Conversation(task, cancellable.get()).run(); });
    if (!talk.valid())
        return {.outcome = Outcome::Unavailable, .value = {}, .problem = QStringLiteral("no thread")};
    if (const auto reply = resultBy(deadline, talk))
        return *reply;
    g_cancellable_cancel(cancellable.get());
    return {.outcome = Outcome::TimedOut, .value = {}, .problem = QStringLiteral("no answer in time")};
}

} // namespace tavrel::platform
