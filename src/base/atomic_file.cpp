#include "base/atomic_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QUuid>

#include <filesystem>
#include <string>
#include <system_error>

namespace tavrel {
namespace {

/// From the UTF-8 bytes, which cannot fail; the conversion from UTF-16 throws.
std::filesystem::path filesystemPath(const QString &path)
{
    const QByteArray bytes = path.toUtf8();
    return std::u8string(bytes.begin(), bytes.end());
}

bool isTaken(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

enum class Naming { Done, Taken, Failed };

/// Gives the finished file `staged` the name `path` unless something has that name.
Naming nameFile(const QString &staged, const QString &path)
{
    if (isTaken(path))
        return Naming::Taken;
    std::error_code error;
    std::filesystem::create_hard_link(filesystemPath(staged), filesystemPath(path), error);
    if (!error) {
        QFile::remove(staged);
        return Naming::Done;
    }
    if (error == std::errc::file_exists)
        return Naming::Taken;
    // A file system without hard links: an empty file, created exclusively, keeps the name for us meanwhile.
    QFile placeholder(path);
    if (!placeholder.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        return isTaken(path) ? Naming::Taken : Naming::Failed;
    placeholder.close();
    std::filesystem::rename(filesystemPath(staged), filesystemPath(path), error);
    if (!error)
        return Naming::Done;
    placeholder.remove();
    return Naming::Failed;
}

} // namespace

bool replaceFile(const QString &path, const FileContent &content, QFileDevice::Permissions permissions)
{
    QSaveFile file(path);
    // The new file takes over the rights of the one it replaces when it is opened.
    return file.open(QIODevice::WriteOnly) && (!permissions || file.setPermissions(permissions)) && content(file) &&
           file.commit();
}

QString numberedPath(const QString &directory, const QString &baseName, const QString &extension, int n)
{
    const QString number = n > 0 ? u'_' + QString::number(n) : QString();
    return QDir(directory).filePath(baseName + number + u'.' + extension);
}

QString createFile(const QString &directory, const QString &baseName, const QString &extension,
                   const FileContent &content, QString *failedPath)
{
    const QString staged =
        QDir(directory).filePath(QStringLiteral(".%1.part").arg(QUuid::createUuid().toString(QUuid::Id128)));
    int n = 0;
    const auto name = [&] { return numberedPath(directory, baseName, extension, n); };
    Naming naming = Naming::Failed;
    if (replaceFile(staged, content)) {
        while ((naming = nameFile(staged, name())) == Naming::Taken)
            ++n;
    } else {
        while (isTaken(name()))
            ++n;
    }
    if (naming == Naming::Done)
        return name();

    QFile::remove(staged);
    if (failedPath)
        *failedPath = name();
    return {};
}

} // namespace tavrel
