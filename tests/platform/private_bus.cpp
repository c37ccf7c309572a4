#include "platform/private_bus.h"

#include <QFile>

#include <signal.h>

using namespace Qt::StringLiterals;

namespace tavrel::test {

namespace {

constexpr const char *kConfiguration = R"(<busconfig>
  <type>session</type>
  <auth>EXTERNAL</auth>
  <listen>unix:tmpdir=/tmp</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

} // namespace

PrivateBus::PrivateBus(Kind kind) : m_kind(kind)
{
    QFile configuration(m_dir.filePath(QStringLiteral("bus.conf")));
    if (configuration.open(QFile::WriteOnly))
        configuration.write(kConfiguration);
    m_daemon.setProcessChannelMode(QProcess::SeparateChannels);
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + m_dir.filePath(QStringLiteral("bus")).toLocal8Bit());
}

PrivateBus::~PrivateBus()
{
    stop();
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
}

bool PrivateBus::start()
{
    const QString configuration = m_kind == Kind::Session
                                      ? QStringLiteral("--session")
                                      : u"--config-file="_qs + m_dir.filePath(QStringLiteral("bus.conf"));
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {configuration, QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                    QStringLiteral("--print-address"),
                    u"--address="_qs + QString::fromLocal8Bit(qgetenv("DBUS_SESSION_BUS_ADDRESS"))});
    return m_daemon.waitForReadyRead();
}

void PrivateBus::stop()
{
    if (m_daemon.state() == QProcess::NotRunning)
        return;
    setFrozen(false);
    m_daemon.terminate();
    m_daemon.waitForFinished();
    QFile::remove(m_dir.filePath(QStringLiteral("bus")));
}

void PrivateBus::setFrozen(bool frozen)
{
    test::setFrozen(m_daemon, frozen);
}

void setFrozen(const QProcess &process, bool frozen)
{
    ::kill(static_cast<pid_t>(process.processId()), frozen ? SIGSTOP : SIGCONT);
}

} // namespace tavrel::test
