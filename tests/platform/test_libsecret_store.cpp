#include "platform/fake_secret_service.h"
#include "platform/linux/libsecret_store.h"
#include "platform/private_bus.h"
#include "support/test_main.h"

#include <QElapsedTimer>
#include <QScopeGuard>

#include <memory>

using namespace tavrel::platform;
using namespace tavrel::test;
using Mood = FakeSecretService::Mood;

namespace {

const QString kKey = QStringLiteral("account/令牌");
const QByteArray kValue("\0\xff secret \n", 11);
const QByteArray kNewer("newer");
constexpr int kNotHanging = 15000; ///< far below the 25 s that a bus call takes by itself

} // namespace

class LibsecretStoreTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_bus.start()); }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_options = {};
        m_options.file = m_folder->filePath(QStringLiteral("secrets/secrets.json"));
        m_options.deadline = std::chrono::seconds(10); // for what is answered; a busy machine is no fault
    }

    void keepsInTheService()
    {
        FakeSecretService service;
        QVERIFY(service.start(Mood::Willing));
        LibsecretStore store(m_options);
        QByteArray value = "as it was";
        QVERIFY(!store.load(kKey, &value));
        QCOMPARE(value, QByteArray("as it was"));
        QVERIFY(store.remove(kKey)); // nothing to take away

        QVERIFY(store.save(kKey, kValue));
        QVERIFY(store.save(QStringLiteral("other"), QByteArray()));
        QVERIFY(store.load(kKey, nullptr));
        QVERIFY(LibsecretStore(m_options).load(kKey, &value));
        QCOMPARE(value, kValue);
        QVERIFY(store.save(kKey, kNewer)); // in place of the first
        QCOMPARE(service.secrets().size(), 2);
        QVERIFY(store.load(kKey, &value));
        QCOMPARE(value, kNewer);
        QVERIFY(store.load(QStringLiteral("other"), &value));
        QCOMPARE(value, QByteArray());

        QVERIFY(store.remove(kKey));
        QVERIFY(!store.load(kKey, &value));
        QCOMPARE(service.secrets().size(), 1);
        QVERIFY(!QFile::exists(m_options.file));
    }

    void keepsInAFileWithoutService_data()
    {
        QTest::addColumn<bool>("hasBus");
        QTest::addColumn<bool>("hasService");
        QTest::addColumn<Mood>("mood");
        QTest::newRow("no session bus") << false << false << Mood::Willing;
        QTest::newRow("no service") << true << false << Mood::Willing;
        QTest::newRow("locked") << true << true << Mood::Locked;
        QTest::newRow("silent") << true << true << Mood::Silent;
    }

    void keepsInAFileWithoutService()
    {
        QFETCH(bool, hasBus);
        QFETCH(bool, hasService);
        QFETCH(Mood, mood);
        const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
        const auto comesBack = qScopeGuard([&address] { qputenv("DBUS_SESSION_BUS_ADDRESS", address); });
        if (!hasBus)
            qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        FakeSecretService service;
        if (hasService)
            QVERIFY(service.start(mood));
        service.put(kKey, kValue.toBase64());
        m_options.deadline = std::chrono::milliseconds(mood == Mood::Silent ? 100 : 10000);

        QElapsedTimer timer;
        timer.start();
        LibsecretStore store(m_options);
        QVERIFY(!store.load(kKey, nullptr));
        // Once, not for every call.
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("密钥服务不可用.*secrets\\.json")));
        QVERIFY(store.save(kKey, kNewer));
        QVERIFY(store.save(QStringLiteral("other"), kNewer));
        QByteArray value;
        QVERIFY(store.load(kKey, &value));
        QCOMPARE(value, kNewer);
        const auto owner = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
        QCOMPARE(QFile::permissions(m_options.file), owner);
        QCOMPARE(QFile::permissions(QFileInfo(m_options.file).path()), owner | QFile::ExeOwner | QFile::ExeUser);
        QVERIFY(store.remove(QStringLiteral("other")));
        QVERIFY(!store.load(QStringLiteral("other"), &value));
        QCOMPARE(service.secrets(), (QHash<QString, QByteArray>{{kKey, kValue.toBase64()}}));
        QCOMPARE(service.shownPrompts(), 0);
        QVERIFY(timer.elapsed() < kNotHanging);

        if (!hasService)
            return;
        // The service comes to itself: what it has is older than the file and gives way.
        service.setMood(Mood::Willing);
        m_options.deadline = std::chrono::seconds(10);
        LibsecretStore later(m_options);
        QVERIFY(later.load(kKey, &value));
        QCOMPARE(value, kNewer);
        QCOMPARE(service.secrets().value(kKey), kNewer.toBase64());
        QVERIFY(!later.load(QStringLiteral("other"), nullptr));
        QVERIFY(!QFile::exists(m_options.file));
    }

    void whatWasRemovedStaysRemoved()
    {
        FakeSecretService service;
        QVERIFY(service.start(Mood::Locked));
        service.put(kKey, kValue.toBase64());
        LibsecretStore store(m_options);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("密钥服务不可用")));
        QVERIFY(store.remove(kKey));
        QVERIFY(!store.load(kKey, nullptr));
        QCOMPARE(service.secrets().size(), 1); // it could not be told
        service.setMood(Mood::Willing);
        QVERIFY(!store.load(kKey, nullptr));
        QCOMPARE(service.secrets().size(), 0);
        QVERIFY(!QFile::exists(m_options.file));
    }

    void damagedFilesHoldNothing_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("torn") << QByteArray("{\"account/令");
        QTest::newRow("no base64") << QByteArray("{\"account/令牌\": \"a*b\"}");
    }

    void damagedFilesHoldNothing()
    {
        QFETCH(QByteArray, text);
        QVERIFY(QDir().mkpath(QFileInfo(m_options.file).path()));
        QFile file(m_options.file);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.close();
        QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther));
        SecretFile secrets(m_options.file);
        QVERIFY(!secrets.find(kKey));
        QVERIFY(secrets.put(kKey, {.isRemoved = false, .value = kValue}));
        QCOMPARE(secrets.find(kKey)->value, kValue);
        QVERIFY(!(QFile::permissions(m_options.file) & (QFile::ReadGroup | QFile::ReadOther)));
    }

    // The last, since the connection of the whole process waits for this bus.
    void aFrozenBusIsGivenUp()
    {
        m_bus.setFrozen(true);
        m_options.deadline = std::chrono::milliseconds(100);
        LibsecretStore store(m_options);
        QElapsedTimer timer;
        timer.start();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("密钥服务不可用")));
        QVERIFY(store.save(kKey, kValue));
        QVERIFY(store.load(kKey, nullptr));
        QVERIFY(timer.elapsed() < kNotHanging);
    }

private:
    PrivateBus m_bus{PrivateBus::Kind::Bare};
    std::unique_ptr<QTemporaryDir> m_folder;
    LibsecretStore::Options m_options;
};

TAVREL_TEST_MAIN(QCoreApplication, LibsecretStoreTest)
#include "test_libsecret_store.moc"
