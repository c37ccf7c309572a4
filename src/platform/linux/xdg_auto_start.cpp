#include "platform/linux/xdg_auto_start.h"

#include "base/atomic_file.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QStandardPaths>

namespace tavrel::platform {
namespace {

/// The file that has to be started to get this program again. Inside an AppImage it is the image: the program itself
/// lies in a mount that goes with the process.
QString thisProgram()
{
    const QString program = QCoreApplication::applicationFilePath();
    const QString image = qEnvironmentVariable("APPIMAGE");
    const QString mount = qEnvironmentVariable("APPDIR");
    const bool isInImage = !image.isEmpty() && !mount.isEmpty() && program.startsWith(mount + u'/');
    return isInImage ? image : program;
}

/// A value of type string in a desktop file.
QString escaped(const QString &text)
{
    QString out;
    for (const QChar c : text) {
        if (c == u'\\')
            out += QStringLiteral("\\\\");
        else if (c == u'\n')
            out += QStringLiteral("\\n");
        else if (c == u'\r')
            out += QStringLiteral("\\r");
        else if (c == u'\t')
            out += QStringLiteral("\\t");
        else
            out += c;
    }
    if (out.startsWith(u' ')) // would be taken for the space after the "="
        out.replace(0, 1, QStringLiteral("\\s"));
    return out;
}

QString unescaped(const QString &value)
{
    QString out;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i] != u'\\' || i + 1 == value.size()) {
            out += value[i];
            continue;
        }
        switch (value[++i].unicode()) {
        case u's':
            out += u' ';
            break;
        case u'n':
            out += u'\n';
            break;
        case u'r':
            out += u'\r';
            break;
        case u't':
            out += u'\t';
            break;
        default:
            out += value[i];
        }
    }
    return out;
}

/// A command of one word: quoted, so that a shell's characters mean nothing, and with "%" as itself.
QString command(const QString &program)
{
    QString quoted;
    for (const QChar c : program) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            quoted += u'\\';
        else if (c == u'%')
            quoted += u'%';
        quoted += c;
    }
    return escaped(u'"' + quoted + u'"');
}

/// The keys of the main group. Empty when there is no such file.
QHash<QString, QString> readEntry(const QString &path)
{
    QHash<QString, QString> entry;
    QFile file(path);
    // Anything larger is no entry that a desktop would take.
    if (!file.open(QIODevice::ReadOnly))
        return entry;
    const QStringList lines = QString::fromUtf8(file.read(64 * 1024)).split(u'\n');
    bool isMain = false;
    for (const QString &line : lines) {
        const QString text = line.trimmed();
        const auto equals = text.indexOf(u'=');
        if (text.startsWith(u'['))
            isMain = text == u"[Desktop Entry]";
        else if (isMain && equals > 0 && !text.startsWith(u'#'))
            entry.insert(text.left(equals).trimmed(), text.mid(equals + 1).trimmed());
    }
    return entry;
}

bool isThere(const QString &program)
{
    const QFileInfo file(program);
    if (file.isAbsolute())
        return file.isFile() && file.isExecutable();
    return !QStandardPaths::findExecutable(program).isEmpty();
}

bool fail(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return false;
}

} // namespace

XdgAutoStart::XdgAutoStart(const QString &entry, const QString &program)
    : m_entry(entry.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                                    QStringLiteral("/autostart/tavrel.desktop")
                              : entry),
      m_program(program.isEmpty() ? thisProgram() : program)
{}

bool XdgAutoStart::isEnabled() const
{
    const auto entry = readEntry(m_entry);
    const QString required = unescaped(entry.value(QStringLiteral("TryExec")));
    return !entry.value(QStringLiteral("Exec")).isEmpty() && entry.value(QStringLiteral("Hidden")) != u"true" &&
           entry.value(QStringLiteral("X-GNOME-Autostart-enabled")) != u"false" &&
           (required.isEmpty() || isThere(required));
}

bool XdgAutoStart::setEnabled(bool enabled, QString *error)
{
    if (!enabled) {
        QFile file(m_entry);
        // A link to nowhere does not "exist" but stands in the folder.
        const bool isPresent = file.exists() || QFileInfo(m_entry).isSymLink();
        if (isPresent && !file.remove())
            return fail(error, QCoreApplication::translate("XdgAutoStart", "无法删除自动启动项：%1")
                                   .arg(QDir::toNativeSeparators(m_entry)));
        return true;
    }
    const QString folder = QFileInfo(m_entry).absolutePath();
    const QString text = QStringLiteral("[Desktop Entry]\n"
                                        "Type=Application\n"
                                        "Version=1.0\n"
                                        "Name=Tavrel\n"
                                        "Icon=tavrel\n"
                                        "Exec=%1\n"
                                        "TryExec=%2\n"
                                        "Terminal=false\n"
                                        "StartupNotify=false\n"
                                        "X-GNOME-Autostart-enabled=true\n")
                             .arg(command(m_program), escaped(m_program));
    const auto content = [&text](QIODevice &file) { return file.write(text.toUtf8()) >= 0; };
    if (!QDir().mkpath(folder) || !replaceFile(m_entry, content))
        return fail(error, QCoreApplication::translate("XdgAutoStart", "无法写入自动启动项：%1")
                               .arg(QDir::toNativeSeparators(m_entry)));
    return true;
}

} // namespace tavrel::platform
