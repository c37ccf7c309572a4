#include "process/file_open_filter.h"
#include "process/single_instance.h"
#include "support/test_main.h"

#include <QDir>
#include <QFileInfo>
#include <QFileOpenEvent>
#include <QLocalSocket>
#include <QProcess>
#include <QSignalSpy>

#include <future>

using namespace tavrel;
using namespace std::chrono_literals;

namespace {

constexpr SingleInstance::Timing kQuick{
    .lockWait = 5ms, .rounds = 3, .connectWait = 50ms, .roundPause = 1ms, .writeWait = 1000ms, .answerWait = 1ms};

/// Sends raw bytes to a listening instance and ends the connection; false when it does not get through.
bool sendRaw(const QString &socketPath, const QByteArray &bytes)
{
    QLocalSocket socket;
    socket.connectToServer(socketPath);
    if (!socket.waitForConnected(5000))
        return false;
    socket.write(bytes);
    while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(2000)) {
    }
    socket.disconnectFromServer();
    return socket.state() == QLocalSocket::UnconnectedState || socket.waitForDisconnected(2000);
}

/// What another process would do, on a thread of its own; this one goes on handling events.
template <typename Function>
auto elsewhere(Function function)
{
    return std::async(std::launch::async, std::move(function));
}

template <typename Result>
bool isReady(const std::future<Result> &future)
{
    return future.wait_for(0s) == std::future_status::ready;
}

} // namespace

class SingleInstanceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void cleanup() { m_holder.reset(); }

    void sendersThatAreGoneBeforeTheHolderLooksAreHeardInOrder()
    {
        SingleInstance &holder = listening();
        QSignalSpy spy(&holder, &SingleInstance::requested);
        for (int i = 0; i < 5; ++i) {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("没有应答")));
            // Nothing is accepted in between: this thread runs the holder's event loop only below.
            QCOMPARE(SingleInstance(m_folder->path()).claim({.files = {QString::number(i)}}, kQuick),
                     SingleInstance::Claim::HandedOver);
        }
        QTRY_COMPARE(spy.count(), 5);
        for (int i = 0; i < 5; ++i)
            QCOMPARE(spy.at(i).first().value<HandOver>().files, QStringList{QString::number(i)});
    }

    void onlyTheUserMayReachTheSocket()
    {
        SingleInstance &instance = listening();
        const auto others = QFile::ReadOther | QFile::WriteOther | QFile::ReadGroup | QFile::WriteGroup;
        QVERIFY(!(QFileInfo(instance.socketPath()).permissions() & others));
    }

    void whatIsNoWholeLineDoesNothing_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("requests");
        QTest::newRow("nothing") << QByteArray() << 0;
        QTest::newRow("half a line") << QByteArray("{\"capture\":tr") << 0;
        QTest::newRow("a megabyte without an end") << QByteArray(1 << 20, 'x') << 0;
        QTest::newRow("garbage is an empty request") << QByteArray("\xff\xfe garbage\n") << 1;
        QTest::newRow("wrong types are an empty request")
            << QByteArray("{\"capture\":3,\"files\":{},\"commands\":[3,\"fly\"]}\n") << 1;
    }

    void whatIsNoWholeLineDoesNothing()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, requests);
        SingleInstance &instance = listening();
        QSignalSpy spy(&instance, &SingleInstance::requested);
        if (bytes.size() > SingleInstance::kMaxLineBytes)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("启动请求过长")));
        const QString path = instance.socketPath();
        const auto sent = elsewhere([path, bytes] { return sendRaw(path, bytes); });
        QTRY_VERIFY(isReady(sent));
        // A good request behind it arrives: the bad one neither blocked nor ended the server.
        auto good = elsewhere([path] { return sendRaw(path, HandOver{.commands = {Command::History}}.toLine()); });
        QTRY_COMPARE(spy.count(), requests + 1);
        if (requests == 1)
            QCOMPARE(spy.first().first().value<HandOver>(), HandOver());
        QCOMPARE(spy.last().first().value<HandOver>().commands, QList{Command::History});
        QVERIFY(good.get());
    }

    void aRequestLargerThanASocketBufferArrivesWhole()
    {
        SingleInstance &holder = listening();
        QSignalSpy spy(&holder, &SingleInstance::requested);
        const HandOver request{
            .files = {QStringLiteral("a.TAVREL"), QString(SingleInstance::kMaxLineBytes - 1000, u'x')},
            .commands = {Command::Capture, Command::Quit},
            .cwd = QStringLiteral("/data")};
        auto claim = elsewhere([&] {
            return SingleInstance(m_folder->path())
                .claim(request, {.connectWait = 5000ms, .writeWait = 60000ms, .answerWait = 60000ms});
        });
        QTRY_COMPARE(spy.count(), 1);
        QCOMPARE(claim.get(), SingleInstance::Claim::HandedOver);
        const auto received = spy.first().first().value<HandOver>();
        QCOMPARE(received, request);
        QCOMPARE(received.recordings(), QStringList{QStringLiteral("/data/a.TAVREL")});
    }

    void aLineThatNeverEndsIsDropped()
    {
        SingleInstance &instance = listening(1ms);
        QSignalSpy spy(&instance, &SingleInstance::requested);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("启动请求不完整")));
        QLocalSocket endless;
        endless.connectToServer(instance.socketPath());
        endless.write("{\"capture\"");
        QTRY_COMPARE(endless.state(), QLocalSocket::UnconnectedState);
        QCOMPARE(spy.count(), 0);
    }

    void aSlowSenderHoldsNobodyUp()
    {
        SingleInstance &instance = listening(10min);
        QSignalSpy spy(&instance, &SingleInstance::requested);
        QLocalSocket slow;
        slow.connectToServer(instance.socketPath());
        slow.write("{\"settings\"");
        QTRY_COMPARE(slow.bytesToWrite(), 0);
        const QString path = instance.socketPath();
        auto good = elsewhere([path] { return sendRaw(path, HandOver{.commands = {Command::Capture}}.toLine()); });
        QTRY_COMPARE(spy.count(), 1);
        slow.write(":true}\n");
        QTRY_COMPARE(spy.count(), 2);
        QCOMPARE(spy.last().first().value<HandOver>().commands, QList{Command::Settings});
        QVERIFY(good.get());
    }

    void aHolderThatDoesNotAnswerIsGivenUp()
    {
        SingleInstance holder(m_folder->path());
        QCOMPARE(holder.claim({}, kQuick), SingleInstance::Claim::Held); // and never listens
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("连不上它：继续启动")));
        SingleInstance second(m_folder->path());
        QCOMPARE(second.claim({}, kQuick), SingleInstance::Claim::HolderUnreachable);
        second.listen(); // without the lock there is no server
        QVERIFY(!QFileInfo::exists(second.socketPath()));
    }

    void aHolderOnItsWayOutIsFollowed()
    {
        auto holder = std::make_unique<SingleInstance>(m_folder->path());
        QCOMPARE(holder->claim({}, kQuick), SingleInstance::Claim::Held); // its server is closed already
        auto next = elsewhere([this] {
            return SingleInstance(m_folder->path())
                .claim({}, {.lockWait = 1ms, .rounds = 1'000'000, .roundPause = 1ms});
        });
        holder.reset();
        QCOMPARE(next.get(), SingleInstance::Claim::Held);
    }

    void withoutAPlaceForTheLockNobodyIsWaitedFor()
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("单实例锁无法建立")));
        SingleInstance instance(m_folder->filePath(QStringLiteral("missing")));
        QCOMPARE(instance.claim({}, {.rounds = 1'000'000}), SingleInstance::Claim::HolderUnreachable);
    }

    void aLockFileThatNobodyHoldsIsTakenOver_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("garbled") << QByteArray("\0\xff no number\n", 12);
        QTest::newRow("machine renamed") << QByteArray("1\ntavrel\nsome-other-host\n");
    }

    void aLockFileThatNobodyHoldsIsTakenOver()
    {
        QFETCH(QByteArray, content);
        SingleInstance instance(m_folder->path());
        QFile lock(instance.lockPath());
        QVERIFY(lock.open(QIODevice::WriteOnly) && lock.write(content) == content.size());
        lock.close();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("单实例锁文件无主")));
        QCOMPARE(instance.claim({}, kQuick), SingleInstance::Claim::Held);
        // And now it is really held.
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("连不上它：继续启动")));
        QCOMPARE(SingleInstance(m_folder->path()).claim({}, kQuick), SingleInstance::Claim::HolderUnreachable);
    }

    void theRuntimeFolderMustBePrivate()
    {
        const QByteArray before = qgetenv("XDG_RUNTIME_DIR");
        qputenv("XDG_RUNTIME_DIR", m_folder->path().toLocal8Bit());
        QFile::setPermissions(m_folder->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QVERIFY(SingleInstance().socketPath().startsWith(m_folder->path()));
        QFile::setPermissions(m_folder->path(),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ExeOther);
        QVERIFY(!SingleInstance().socketPath().startsWith(m_folder->path()));
        qputenv("XDG_RUNTIME_DIR", before);
    }

private:
    /// The instance that holds the folder of this test.
    SingleInstance &listening(std::chrono::milliseconds lineWait = SingleInstance::kLineWait)
    {
        m_holder = std::make_unique<SingleInstance>(m_folder->path());
        [this] { QCOMPARE(m_holder->claim({}, kQuick), SingleInstance::Claim::Held); }();
        m_holder->listen(lineWait);
        return *m_holder;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<SingleInstance> m_holder;
};

TAVREL_TEST_MAIN(QGuiApplication, SingleInstanceTest)
#include "test_single_instance.moc"
