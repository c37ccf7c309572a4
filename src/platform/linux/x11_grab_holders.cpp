#include "platform/linux/x11_grab_holders.h"

#include "platform/linux/x_connection.h"

#include <QFile>
#include <QHash>
#include <QMap>

#include <xcb/res.h>

#include <algorithm>
#include <functional>
#include <string_view>
#include <vector>

#include <unistd.h>

namespace tavrel::platform {
namespace {

constexpr std::string_view kGrabType = "PASSIVE GRAB";

/// The executable's name; the first 15 letters when it belongs to another user.
QString processName(qint64 processId)
{
    const QString folder = QStringLiteral("/proc/%1/").arg(processId);
    const QString path = QFile::symLinkTarget(folder + QStringLiteral("exe"));
    if (!path.isEmpty())
        return path.section(u'/', -1).section(u' ', 0, 0); // " (deleted)" after an upgrade
    QFile name(folder + QStringLiteral("comm"));
    return name.open(QFile::ReadOnly) ? QString::fromUtf8(name.readAll()).trimmed() : QString();
}

/// Process of the client that made a resource; 0 when the server does not know.
class ProcessOfResource
{
public:
    ProcessOfResource(xcb_connection_t *connection, xcb_window_t resource) : m_connection(connection)
    {
        const xcb_res_client_id_spec_t spec{resource, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
        m_cookie = xcb_res_query_client_ids(connection, 1, &spec);
    }
    qint64 take()
    {
        const auto reply =
            xAnswer<xcb_res_query_client_ids_reply_t>(m_connection, m_cookie, xcb_res_query_client_ids_reply);
        if (!reply)
            return 0;
        for (auto it = xcb_res_query_client_ids_ids_iterator(reply.get()); it.rem > 0;
             xcb_res_client_id_value_next(&it)) {
            if ((it.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) && it.data->length >= 4)
                return *xcb_res_client_id_value_value(it.data);
        }
        return 0;
    }

private:
    xcb_connection_t *m_connection;
    xcb_res_query_client_ids_cookie_t m_cookie = {};
};

qint64 windowManagerProcess(const XConnection &x)
{
    const auto check = propertyItems(x.property(x.requestProperty(x.root(), XAtom::NetSupportingWmCheck)).get());
    return check.isEmpty() ? 0 : ProcessOfResource(x.xcb(), check.first()).take();
}

/// Names of resource types, asked for once each.
class TypeNames
{
public:
    explicit TypeNames(xcb_connection_t *connection) : m_connection(connection) {}
    bool isPassiveGrab(xcb_atom_t type)
    {
        const auto known = m_known.constFind(type);
        if (known != m_known.cend())
            return *known;
        const auto reply = xAnswer<xcb_get_atom_name_reply_t>(m_connection, xcb_get_atom_name(m_connection, type),
                                                              xcb_get_atom_name_reply);
        const bool is = reply && std::string_view(
                                     xcb_get_atom_name_name(reply.get()),
                                     static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))) == kGrabType;
        m_known.insert(type, is);
        return is;
    }

private:
    xcb_connection_t *m_connection;
    QHash<xcb_atom_t, bool> m_known;
};

} // namespace

QList<GrabHolder> passiveGrabHolders(const XConnection &x)
{
    xcb_connection_t *c = x.xcb();
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(c, &xcb_res_id);
    if (!extension || !extension->present)
        return {};
    const auto clients =
        xAnswer<xcb_res_query_clients_reply_t>(c, xcb_res_query_clients(c), xcb_res_query_clients_reply);
    if (!clients)
        return {};
    struct Query
    {
        xcb_res_query_client_resources_cookie_t resources;
        ProcessOfResource process;
    };
    std::vector<Query> queries;
    for (int i = 0; i < xcb_res_query_clients_clients_length(clients.get()); ++i) {
        const uint32_t base = xcb_res_query_clients_clients(clients.get())[i].resource_base;
        queries.push_back({xcb_res_query_client_resources(c, base), ProcessOfResource(c, base)});
    }
    TypeNames types(c);
    QMap<qint64, quint32> grabs; // by process
    for (Query &query : queries) {
        const auto resources =
            xAnswer<xcb_res_query_client_resources_reply_t>(c, query.resources, xcb_res_query_client_resources_reply);
        const qint64 process = query.process.take();
        if (!resources || process <= 0 || process == getpid())
            continue;
        const xcb_res_type_t *type = xcb_res_query_client_resources_types(resources.get());
        for (int i = 0; i < xcb_res_query_client_resources_types_length(resources.get()); ++i) {
            if (type[i].count > 0 && types.isPassiveGrab(type[i].resource_type))
                grabs[process] += type[i].count;
        }
    }
    const qint64 manager = windowManagerProcess(x);
    QList<GrabHolder> holders;
    for (auto it = grabs.cbegin(); it != grabs.cend(); ++it) {
        if (const QString name = processName(it.key()); !name.isEmpty())
            holders.append({it.key(), name, it.value(), it.key() == manager});
    }
    std::ranges::stable_sort(holders, std::greater(), &GrabHolder::grabs);
    return holders;
}

} // namespace tavrel::platform
