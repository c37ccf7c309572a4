#include "process/command_line.h"
#include "support/test_main.h"

#include <QCoreApplication>

using namespace tavrel;

class CommandLineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { qunsetenv("TAVREL_ALLOW_MULTI"); }

    void onlyPlainStartsShareOneInstance_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<bool>("allowMulti");
        QTest::addColumn<bool>("enforced");
        const auto row = [](const char *name, const char *arguments, bool allowMulti, bool enforced) {
            QTest::newRow(name) << QString::fromLatin1(arguments) << allowMulti << enforced;
        };
        row("bare", "", false, true);
        row("all plain options", "--capture --settings --history --long --quit --lang en", false, true);
        row("fake capture", "--capture --fake-capture", false, false);
        row("timed end", "--quit-after-ms 5", false, false);
        row("allowed by an empty variable", "", true, false);
    }

    void onlyPlainStartsShareOneInstance()
    {
        QFETCH(QString, arguments);
        QFETCH(bool, allowMulti);
        QFETCH(bool, enforced);
        if (allowMulti)
            qputenv("TAVREL_ALLOW_MULTI", "");
        QCOMPARE(read(arguments).enforceSingleInstance, enforced);
        qunsetenv("TAVREL_ALLOW_MULTI");
    }

    void theRequestCarriesWhatALaterStartHandsOver()
    {
        const StartRequest request = read(
            QStringLiteral("--history a.tavrel --long --capture --history --lang=ja --quit-after-ms 250 ../b.png"));
        QCOMPARE(request.lang, QStringLiteral("ja"));
        QCOMPARE(request.quitAfterMs, std::optional<int>(250));
        const HandOver expected{.files = {QStringLiteral("a.tavrel"), QStringLiteral("../b.png")},
                                .commands = {Command::History, Command::LongCapture, Command::Capture},
                                .cwd = QDir::currentPath()};
        QCOMPARE(request.handOver(), expected);
        QVERIFY(!read(QStringLiteral("--quit-after-ms soon")).quitAfterMs);
    }

private:
    static StartRequest read(const QString &arguments)
    {
        return readCommandLine(QStringList{QStringLiteral("tavrel")} + arguments.split(u' ', Qt::SkipEmptyParts));
    }
};

TAVREL_TEST_MAIN(QCoreApplication, CommandLineTest)
#include "test_command_line.moc"
