#include "platform/linux/host_lookup.h"
#include "platform/linux/xdg_auto_start.h"
#include "platform/linux/xdg_permissions.h"
#include "support/test_main.h"

#include <QFile>
#include <QProcess>

using namespace tavrel::platform;

namespace {

void write(const QString &path, const QByteArray &text)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

QByteArray value(const QString &path, const QByteArray &key)
{
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        const QList<QByteArray> lines = file.readAll().split('\n');
        for (const QByteArray &line : lines)
            if (line.startsWith(key + '='))
                return line.mid(key.size() + 1);
    }
    return {};
}

} // namespace

class XdgServicesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void switchesOnAndOff()
    {
        const QString entry = qEnvironmentVariable("XDG_CONFIG_HOME") + u"/autostart/tavrel.desktop"_qs;
        XdgAutoStart autoStart;
        QString error;
        QVERIFY(!autoStart.isEnabled());
        QVERIFY(autoStart.setEnabled(false, &error)); // nothing there to take away
        QVERIFY(autoStart.setEnabled(true, &error));
        QVERIFY(autoStart.isEnabled());
        QVERIFY(XdgAutoStart().isEnabled());
        QCOMPARE(value(entry, "Exec"), '"' + QCoreApplication::applicationFilePath().toUtf8() + '"');
        QVERIFY(autoStart.setEnabled(false, &error));
        QVERIFY(!autoStart.isEnabled());
        QVERIFY(!QFile::exists(entry));
        QVERIFY(error.isEmpty());
    }

    void readsWhatOthersWrote_data()
    {
        QTest::addColumn<QByteArray>("lines");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("no command") << QByteArray("Name=Tavrel\n") << false;
        QTest::newRow("hidden") << QByteArray("Exec=tavrel\nHidden=true\n") << false;
        QTest::newRow("switched off") << QByteArray("Exec=tavrel\nX-GNOME-Autostart-enabled=false\n") << false;
        QTest::newRow("switched off, Windows line ends")
            << QByteArray("Exec=tavrel\r\nX-GNOME-Autostart-enabled=false\r\n") << false;
        QTest::newRow("a comment hides nothing") << QByteArray("Exec=tavrel\n#Hidden=true\n") << true;
        QTest::newRow("another group hides nothing")
            << QByteArray("Exec=tavrel\n[Desktop Action x]\nHidden=true\n") << true;
        QTest::newRow("program is there") << QByteArray("Exec=tavrel\nTryExec=/bin/sh\n") << true;
        QTest::newRow("program has gone") << QByteArray("Exec=tavrel\nTryExec=/nowhere/tavrel\n") << false;
    }

    void readsWhatOthersWrote()
    {
        QFETCH(QByteArray, lines);
        const QTemporaryDir folder;
        const QString entry = folder.filePath(QStringLiteral("tavrel.desktop"));
        write(entry, "# a comment\n[Desktop Entry]\nType=Application\n" + lines);
        XdgAutoStart autoStart(entry);
        QTEST(autoStart.isEnabled(), "enabled");
        // Whatever stood there, switching over and back works.
        for (const bool wanted : {true, false, true}) {
            QVERIFY(autoStart.setEnabled(wanted, nullptr));
            QCOMPARE(autoStart.isEnabled(), wanted);
        }
    }

    void programsWithAnyName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("exec"); // what follows the folder
        QTest::newRow("quote") << u"a\"b"_qs << QByteArray("a\\\\\"b");
        QTest::newRow("dollar and backtick") << u"a$b`c"_qs << QByteArray("a\\\\$b\\\\`c");
        QTest::newRow("backslash") << u"a\\b"_qs << QByteArray("a\\\\\\\\b");
        QTest::newRow("percent") << u"100%f"_qs << QByteArray("100%%f");
        QTest::newRow("line end") << u"a\nb"_qs << QByteArray("a\\nb");
    }

    void programsWithAnyName()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, exec);
        const QTemporaryDir folder;
        const QString program = folder.filePath(name);
        const QString entry = folder.filePath(QStringLiteral("autostart/tavrel.desktop"));
        QVERIFY(QFile::copy(QStringLiteral("/bin/true"), program));
        XdgAutoStart autoStart(entry, program);
        QVERIFY(autoStart.setEnabled(true, nullptr));
        QCOMPARE(value(entry, "Exec"), '"' + folder.path().toUtf8() + '/' + exec + '"');
        QVERIFY(autoStart.isEnabled()); // TryExec leads to the program
        QVERIFY(QFile::remove(program));
        QVERIFY(!autoStart.isEnabled());
    }

    void failuresAreTold()
    {
        const QTemporaryDir folder;
        write(folder.filePath(QStringLiteral("file")), "");
        QString error;
        XdgAutoStart underFile(folder.filePath(QStringLiteral("file/tavrel.desktop")));
        QVERIFY(!underFile.setEnabled(true, &error));
        QVERIFY(error.startsWith(QStringLiteral("无法写入自动启动项：")));
        QVERIFY(underFile.setEnabled(false, nullptr));

        const QString path = folder.filePath(QStringLiteral("tavrel.desktop"));
        write(path + u"/inside"_qs, "");
        XdgAutoStart inPlaceOfFolder(path);
        QVERIFY(!inPlaceOfFolder.setEnabled(true, nullptr));
        QVERIFY(!inPlaceOfFolder.setEnabled(false, &error));
        QVERIFY(error.startsWith(QStringLiteral("无法删除自动启动项：")));
        QVERIFY(!inPlaceOfFolder.isEnabled());

        const QString link = folder.filePath(QStringLiteral("link.desktop"));
        QVERIFY(QFile::link(QStringLiteral("/nowhere/at/all"), link));
        XdgAutoStart dangling(link);
        QVERIFY(!dangling.isEnabled());
        QVERIFY(dangling.setEnabled(false, nullptr));
        QVERIFY(!QFileInfo(link).isSymLink());
    }

    void hostsAreLookedUp_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<bool>("found");
        QTest::newRow("this machine") << u"localhost"_qs << true;
        QTest::newRow("too long to be asked for") << QString(300, u'a') << false;
    }

    void hostsAreLookedUp()
    {
        QFETCH(QString, host);
        QFETCH(bool, found);
        QList<bool> answers;
        {
            HostLookup gone;
            gone.find(host, [&answers](bool isFound) { answers.append(isFound); });
        }
        HostLookup lookup;
        lookup.find(host, [&answers](bool isFound) { answers.append(isFound); });
        QVERIFY(answers.isEmpty());
        QTRY_COMPARE(answers, QList{found}); // and nothing from the one that has gone
    }
};

TAVREL_TEST_MAIN(QCoreApplication, XdgServicesTest)
#include "test_xdg_services.moc"
