#include "app/hotkey_watch.h"

#include "app/user_notices.h"
#include "platform/global_hotkey.h"
#include "settings/settings_store.h"

#include <QCoreApplication>
#include <QLoggingCategory>

namespace tavrel {
namespace {

using namespace std::chrono_literals;

constexpr auto kRetry = 10s;

} // namespace

HotkeyWatch::HotkeyWatch(platform::IGlobalHotkey &hotkeys, const Commands &commands, const SettingsStore &settings,
                         IUserNotices &notices, QObject *parent)
    : QObject(parent),
      m_settings(settings),
      m_notices(notices),
      m_table(hotkeys, commands)
{
    connect(&hotkeys, &platform::IGlobalHotkey::activated, this, [this](int id) { m_table.dispatch(id); });
    // Another program may give a combination back; nothing tells of it.
    m_retry.setInterval(kRetry);
    m_retry.setTimerType(Qt::VeryCoarseTimer);
    connect(&m_retry, &QTimer::timeout, this, &HotkeyWatch::refresh);
}

void HotkeyWatch::refresh()
{
    m_table.apply(m_settings.config());
    const QStringList failing = failed();
    if (!failing.isEmpty() && failing != m_told)
        m_notices.show(QCoreApplication::translate("AppController", "Tavrel 快捷键注册失败"), m_table.errorLines(),
                       IUserNotices::Kind::Warning, 5000ms);
    if (failing.isEmpty() && !m_told.isEmpty())
        qInfo().noquote() << QStringLiteral("快捷键已全部注册");
    m_told = failing;
    if (!m_table.mayRecover())
        m_retry.stop();
    else if (!m_retry.isActive())
        m_retry.start();
    Q_EMIT refreshed();
}

QStringList HotkeyWatch::failed() const
{
    QStringList failing;
    for (const HotkeyTable::Row &row : HotkeyTable::rows()) {
        const QString name = QString::fromLatin1(row.name);
        if (m_table.errors().contains(name))
            failing.append(name + u' ' + (m_settings.config().*row.binding).combo.toJsonText());
    }
    return failing;
}

} // namespace tavrel
