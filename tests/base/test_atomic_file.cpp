#include "base/atomic_file.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <thread>
#include <vector>

using namespace tavrel;

namespace {

FileContent text(const QByteArray &bytes)
{
    return [bytes](QIODevice &device) { return device.write(bytes) == bytes.size(); };
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

class AtomicFileTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void replacesAtOnceOrNotAtAll()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"a"_qs);
        constexpr auto kOwn = QFile::ReadOwner | QFile::WriteOwner;
        const auto own = [&path] { return QFile::permissions(path) & ~(QFile::ReadUser | QFile::WriteUser); };
        QVERIFY(replaceFile(path, text("old")));
        QVERIFY(QFile::setPermissions(path, kOwn | QFile::ReadOther));
        QVERIFY(!replaceFile(path, [](QIODevice &device) { return device.write("half") > 0 && false; }));
        QCOMPARE(contentOf(path), QByteArray("old"));
        QVERIFY(replaceFile(path, text("new")));
        QCOMPARE(own(), kOwn | QFile::ReadOther); // those that it had
        QVERIFY(replaceFile(path, text("secret"), kOwn));
        QCOMPARE(contentOf(path), QByteArray("secret"));
        QCOMPARE(own(), QFile::Permissions(kOwn));
        QCOMPARE(filesIn(folder.path()), QStringList{u"a"_qs});
        QVERIFY(!replaceFile(folder.filePath(u"no/such"_qs), text("x")));
    }

    void countsPastTakenNames()
    {
        const QTemporaryDir folder;
        const auto create = [&](const QString &base) { return createFile(folder.path(), base, u"png"_qs, text("x")); };
        const auto make = [&](const QString &name) { return replaceFile(folder.filePath(name), text("there")); };
        QCOMPARE(create(u"a"_qs), folder.filePath(u"a.png"_qs));
        QVERIFY(make(u"a_1.png"_qs) && make(u"a_3.png"_qs));
        QCOMPARE(create(u"a"_qs), folder.filePath(u"a_2.png"_qs));
        QVERIFY(make(u"%1 %2@2x.png"_qs));
        QCOMPARE(create(u"%1 %2@2x"_qs), folder.filePath(u"%1 %2@2x_1.png"_qs));
        QVERIFY(QFile::link(u"nowhere"_qs, folder.filePath(u"link.png"_qs)));
        QCOMPARE(create(u"link"_qs), folder.filePath(u"link_1.png"_qs));

        QString failed;
        const QStringList before = filesIn(folder.path());
        QCOMPARE(createFile(
                     folder.path(), u"a"_qs, u"png"_qs, [](QIODevice &) { return false; }, &failed),
                 QString());
        QCOMPARE(failed, folder.filePath(u"a_4.png"_qs));
        QCOMPARE(filesIn(folder.path()), before);
    }

    // Many at once race for each name. Whoever loses has to take the next one, never overwrite.
    void neverOverwritesAFileMadeMeanwhile()
    {
        constexpr int kFiles = 200;
        const QTemporaryDir folder;
        QStringList paths(kFiles);
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&, thread, own = paths.data()] {
                for (int i = thread; i < kFiles; i += 4)
                    own[i] = createFile(folder.path(), u"shot"_qs, u"png"_qs, text(QByteArray::number(i)));
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(filesIn(folder.path()).size(), qsizetype(kFiles));
        for (int i = 0; i < kFiles; ++i)
            QCOMPARE(contentOf(paths.at(i)).toInt(), i);
    }
};

} // namespace

TAVREL_TEST_MAIN(QCoreApplication, AtomicFileTest)

#include "test_atomic_file.moc"
