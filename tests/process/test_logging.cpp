#include "process/device_info.h"
#include "process/logging.h"
#include "support/test_main.h"

#include <QFile>
#include <QFileInfo>
#include <QPainter>

#include <thread>
#include <vector>

using namespace tavrel;

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void fill(const QString &path, qint64 size)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(static_cast<int>(size - 1), 'x') + '\n');
}

} // namespace

class LoggingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QVERIFY(QFile::remove(startLogging()) || !QFile::exists(logPath())); }

    void linesCarryTimeLevelAndMessage()
    {
        QTest::ignoreMessage(QtWarningMsg, "second"); // and it has to come: the previous handler still hears all
        qInfo("%s", "截图就绪");
        qWarning("second");
        qDebug("third");
        QTest::ignoreMessage(QtCriticalMsg, "fourth");
        qCritical("fourth");
        const QRegularExpression line(QStringLiteral(
            "^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} \\[INFO \\] 截图就绪\n[^\n]* \\[WARN \\] "
            "second\n[^\n]* \\[DEBUG\\] third\n[^\n]* \\[ERROR\\] fourth\n$"));
        QVERIFY2(line.match(QString::fromUtf8(contents(logPath()))).hasMatch(), contents(logPath()).constData());
    }

    void rotatesOnlyAboveTheLimit()
    {
        const QString old = logPath() + QStringLiteral(".1");
        fill(old, 7); // the one old generation, to be replaced
        fill(logPath(), kLogRotateBytes);
        qInfo("not yet");
        QCOMPARE(QFileInfo(old).size(), 7);
        fill(logPath(), kLogRotateBytes + 1);
        qInfo("now");
        QCOMPARE(QFileInfo(old).size(), kLogRotateBytes + 1);
        QVERIFY(contents(logPath()).endsWith("now\n"));
        QCOMPARE(contents(logPath()).count('\n'), 1);
    }

    void theTailStartsAtALineStart_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QByteArray>("tail");
        QTest::newRow("whole file") << qint64(100) << QByteArray("first\nsecond\nthird\n");
        QTest::newRow("within a line") << qint64(10) << QByteArray("third\n");
        QTest::newRow("no line end") << qint64(3) << QByteArray();
    }

    void theTailStartsAtALineStart()
    {
        QFETCH(qint64, bytes);
        QFETCH(QByteArray, tail);
        QFile file(logPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("first\nsecond\nthird\n");
        file.close();
        if (bytes == 3) { // a last line that is not ended
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("abcdef");
            file.close();
        }
        QCOMPARE(readLogTail(bytes), tail);
    }

    void threadsDoNotTearLines()
    {
        std::vector<std::thread> threads;
        for (int t = 0; t < 8; ++t) {
            threads.emplace_back([t] {
                for (int i = 0; i < 50; ++i)
                    qInfo("thread %d line %d end", t, i);
            });
        }
        for (auto &thread : threads)
            thread.join();
        const QList<QByteArray> lines = contents(logPath()).split('\n');
        QCOMPARE(lines.size(), 8 * 50 + 1);
        for (const QByteArray &line : lines.first(lines.size() - 1))
            QVERIFY2(line.endsWith(" end") && line.count("thread") == 1, line.constData());
    }

    void attachmentsFitTheService()
    {
        QImage image(4000, 1000, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        const QImage sent = QImage::fromData(compressForUpload(image), "JPG");
        QCOMPARE(sent.size(), QSize(1280, 320));
        QCOMPARE(sent.pixelColor(5, 5), QColor(Qt::white));
        QVERIFY(compressForUpload({}).isEmpty());
    }
};

TAVREL_TEST_MAIN(QGuiApplication, LoggingTest)
#include "test_logging.moc"
