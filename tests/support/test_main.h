#pragma once

#include <QLocale>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <cstdlib>

namespace tavrel::test {

/// A home of its own for one test program: settings, data, caches and runtime files stay inside and go with it.
/// Must exist before the application object.
class IsolatedHome final
{
public:
    IsolatedHome()
    {
        const auto set = [this](const char *name, const QString &folder) {
            const QString path = m_dir.filePath(folder);
            QDir().mkpath(path);
            QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
            qputenv(name, path.toLocal8Bit());
        };
        set("HOME", QStringLiteral("home"));
        set("XDG_CONFIG_HOME", QStringLiteral("home/.config"));
        set("XDG_DATA_HOME", QStringLiteral("home/.local/share"));
        set("XDG_CACHE_HOME", QStringLiteral("home/.cache"));
        set("XDG_RUNTIME_DIR", QStringLiteral("run"));
        set("TMPDIR", QStringLiteral("tmp"));
        QLocale::setDefault(QLocale::c());
    }

private:
    QTemporaryDir m_dir;
};

} // namespace tavrel::test

/// main() of a test program: an isolated home, then `Application`, then the test class.
#define TAVREL_TEST_MAIN(Application, TestClass)                                                                       \
    int main(int argc, char *argv[])                                                                                   \
    {                                                                                                                  \
        const tavrel::test::IsolatedHome home;                                                                         \
        Application app(argc, argv);                                                                                   \
        QCoreApplication::setApplicationName(QStringLiteral("Tavrel"));                                                \
        QCoreApplication::setOrganizationName(QStringLiteral("corvane"));                                              \
        QCoreApplication::setApplicationVersion(QStringLiteral("0.1.5"));                                              \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
