#include "process/logging.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QStandardPaths>

namespace tavrel {
namespace {

struct LogState
{
    QMutex mutex;
    QString path;
    QtMessageHandler previous = nullptr;
};

LogState &state()
{
    // Never destroyed: other threads and static destructors may log until the very end.
    static LogState &instance = *new LogState;
    return instance;
}

QByteArray levelTag(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return "DEBUG";
    case QtInfoMsg:
        return "INFO ";
    case QtWarningMsg:
        return "WARN ";
    case QtCriticalMsg:
        return "ERROR";
    case QtFatalMsg:
        return "FATAL";
    }
    return "?????";
}

void appendLine(const QString &path, QtMsgType type, const QString &message)
{
    if (QFileInfo(path).size() > kLogRotateBytes) {
        const QString old = path + QStringLiteral(".1");
        QFile::remove(old);
        QFile::rename(path, old);
    }
    // Opened and closed for every message, so that a crash never loses a line.
    QFile file(path);
    if (!file.open(QIODevice::Append | QIODevice::Text))
        return;
    const QString time = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
    file.write(time.toLatin1() + " [" + levelTag(type) + "] " + message.toUtf8() + '\n');
}

void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    QtMessageHandler previous = nullptr;
    {
        // Nothing below may log: the mutex is not recursive. QFile's own failures are silent.
        const QMutexLocker lock(&state().mutex);
        appendLine(state().path, type, message);
        previous = state().previous;
    }
    if (previous)
        previous(type, context, message);
}

} // namespace

QString startLogging()
{
    const QString folder =
        QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) + QStringLiteral("/logs");
    QDir().mkpath(folder);
    const QMutexLocker lock(&state().mutex);
    state().path = folder + QStringLiteral("/tavrel.log");
    const QtMessageHandler previous = qInstallMessageHandler(handleMessage);
    if (previous != handleMessage)
        state().previous = previous;
    return state().path;
}

QString logPath()
{
    const QMutexLocker lock(&state().mutex);
    return state().path;
}

QByteArray readLogTail(qint64 maxBytes)
{
    QFile file(logPath());
    if (file.fileName().isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    if (file.size() <= maxBytes)
        return file.readAll();
    file.seek(file.size() - maxBytes);
    const QByteArray tail = file.readAll();
    const auto lineEnd = tail.indexOf('\n');
    return lineEnd < 0 ? QByteArray() : tail.mid(lineEnd + 1);
}

} // namespace tavrel
