#include "process/single_instance.h"

#include "base/json_read.h"
#include "platform/user_identity.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QLoggingCategory>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <array>

namespace tavrel {
namespace {

constexpr QLatin1String kName("org.corvane.tavrel.single");
constexpr QLatin1String kCommands("commands");

/// Each of these is a key of its own in the request; the words of the others stand in one list.
constexpr std::array kFlags{Command::History, Command::Capture, Command::Settings};

/// Folder and name of lock and socket: nobody else may plant a file under them.
QString basePath(const QString &folder)
{
    if (!folder.isEmpty())
        return QDir(folder).filePath(kName);
    const QFileInfo runtime(qEnvironmentVariable("XDG_RUNTIME_DIR"));
    constexpr auto others =
        QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    if (!runtime.filePath().isEmpty() && runtime.isAbsolute() && runtime.isDir() &&
        runtime.ownerId() == platform::currentUserId() && !(runtime.permissions() & others))
        return QDir(runtime.filePath()).filePath(kName);
    return QDir::temp().filePath(kName + u'.' + QString::number(platform::currentUserId()));
}

} // namespace

QByteArray HandOver::toLine() const
{
    QJsonObject object{{QStringLiteral("files"), QJsonArray::fromStringList(files)}, {QStringLiteral("cwd"), cwd}};
    QStringList others;
    for (const Command command : commands) {
        if (std::ranges::find(kFlags, command) == kFlags.end())
            others.append(commandWord(command));
    }
    for (const Command flag : kFlags)
        object.insert(commandWord(flag), commands.contains(flag));
    object.insert(kCommands, QJsonArray::fromStringList(others));
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

HandOver HandOver::fromLine(const QByteArray &line)
{
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    HandOver request;
    for (const QJsonValue &file : object.value(QStringLiteral("files")).toArray()) {
        if (file.isString())
            request.files.append(file.toString());
    }
    const auto add = [&request](Command command) {
        if (!request.commands.contains(command))
            request.commands.append(command);
    };
    for (const Command flag : kFlags) {
        if (readBool(object, commandWord(flag), false))
            add(flag);
    }
    for (const QJsonValue &word : object.value(kCommands).toArray()) {
        if (const auto command = commandOfWord(word.toString()))
            add(*command);
    }
    request.cwd = readString(object, QStringLiteral("cwd"));
    return request;
}

QStringList HandOver::recordings() const
{
    QStringList paths;
    for (const QString &file : files) {
        if (file.endsWith(QStringLiteral(".tavrel"), Qt::CaseInsensitive))
            paths.append(QDir::cleanPath(QDir(cwd.isEmpty() ? QDir::currentPath() : cwd).absoluteFilePath(file)));
    }
    return paths;
}

SingleInstance::SingleInstance(const QString &folder, QObject *parent)
    : QObject(parent),
      m_socketPath(basePath(folder)),
      m_lockPath(m_socketPath + QStringLiteral(".lock"))
{}

SingleInstance::~SingleInstance()
{
    close();
}

SingleInstance::Claim SingleInstance::claim(const HandOver &request, const Timing &timing)
{
    m_lock = std::make_unique<QLockFile>(m_lockPath);
    // Age says nothing about a program that runs for weeks; a dead holder is found by its process id.
    m_lock->setStaleLockTime(0);
    if (m_lock->tryLock(static_cast<int>(timing.lockWait.count())))
        return Claim::Held;
    if (m_lock->error() != QLockFile::LockFailedError) {
        // No folder, no right to write there, a full disk: there is nobody to wait for.
        qWarning().noquote() << QStringLiteral("单实例锁无法建立：") + m_lockPath;
        m_lock.reset();
        return Claim::HolderUnreachable;
    }
    for (int round = 0; round < timing.rounds; ++round) {
        if (sendTo(request, timing)) {
            m_lock.reset();
            qInfo().noquote() << QStringLiteral("已有一个 Tavrel 在运行：已转交启动请求，本进程退出");
            return Claim::HandedOver;
        }
        // A holder that was on its way out is gone by now.
        if (m_lock->tryLock(0))
            return Claim::Held;
        QThread::msleep(static_cast<unsigned long>(timing.roundPause.count()));
    }
    // A lock file without a readable process id, or of this machine under an older name, looks held for ever. Nobody
    // has it open, though.
    if (m_lock->removeStaleLockFile() && m_lock->tryLock(0)) {
        qWarning().noquote() << QStringLiteral("单实例锁文件无主，已接管：") + m_lockPath;
        return Claim::Held;
    }
    m_lock.reset();
    qWarning().noquote() << QStringLiteral("检测到另一个 Tavrel 持有单实例锁但连不上它：继续启动");
    return Claim::HolderUnreachable;
}

bool SingleInstance::sendTo(const HandOver &request, const Timing &timing)
{
    // In a folder that all users share, the socket of another one is not to hear what this user opens.
    const QFileInfo place(m_socketPath);
    if (place.exists() && place.ownerId() != platform::currentUserId())
        return false;
    QLocalSocket socket;
    socket.connectToServer(m_socketPath, QIODevice::ReadWrite);
    if (!socket.waitForConnected(static_cast<int>(timing.connectWait.count())))
        return false;
    const QByteArray line = request.toLine();
    qint64 written = 0; // what is left in the buffer says nothing once the other end has hung up
    connect(&socket, &QLocalSocket::bytesWritten, &socket, [&written](qint64 bytes) { written += bytes; });
    socket.write(line);
    const QDeadlineTimer deadline(timing.writeWait);
    while (written < line.size() && socket.waitForBytesWritten(static_cast<int>(deadline.remainingTime()))) {
    }
    if (written < line.size())
        return false;
    // The holder hangs up when it has read the line. If it does not, the line still waits for it.
    if (socket.state() != QLocalSocket::UnconnectedState &&
        !socket.waitForDisconnected(static_cast<int>(timing.answerWait.count())))
        qWarning().noquote() << QStringLiteral("正在运行的 Tavrel 没有应答，启动请求可能迟些才会执行");
    return true;
}

void SingleInstance::listen(std::chrono::milliseconds lineWait)
{
    if (!m_lock)
        return;
    m_lineWait = lineWait;
    QLocalServer::removeServer(m_socketPath); // left behind by a crash
    m_server = std::make_unique<QLocalServer>();
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    connect(m_server.get(), &QLocalServer::newConnection, this, &SingleInstance::onConnection);
    if (!m_server->listen(m_socketPath)) {
        qWarning().noquote() << QStringLiteral("单实例服务启动失败：") + m_server->errorString();
        m_server.reset();
    }
}

bool SingleInstance::isHeldElsewhere(const QString &folder)
{
    QLockFile lock(basePath(folder) + QStringLiteral(".lock"));
    lock.setStaleLockTime(0);
    return !lock.tryLock(0) && lock.error() == QLockFile::LockFailedError;
}

void SingleInstance::close()
{
    m_server.reset();
}

void SingleInstance::onConnection()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { onReadable(socket); });
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        QTimer::singleShot(m_lineWait, socket, [socket] {
            qWarning().noquote() << QStringLiteral("启动请求不完整，已丢弃");
            socket->abort();
        });
        // One byte more than a line may have is enough to see that it is too long.
        socket->setReadBufferSize(kMaxLineBytes + 1);
        if (socket->bytesAvailable() > 0)
            onReadable(socket);
        else if (socket->state() == QLocalSocket::UnconnectedState)
            socket->deleteLater();
    }
}

void SingleInstance::onReadable(QLocalSocket *socket)
{
    if (!socket->canReadLine()) {
        if (socket->bytesAvailable() > kMaxLineBytes) {
            qWarning().noquote() << QStringLiteral("启动请求过长，已丢弃");
            socket->abort();
        }
        return;
    }
    const QByteArray line = socket->readLine();
    socket->disconnect(this);
    if (socket->state() == QLocalSocket::UnconnectedState)
        socket->deleteLater();
    else
        socket->disconnectFromServer();
    Q_EMIT requested(HandOver::fromLine(line));
}

} // namespace tavrel
