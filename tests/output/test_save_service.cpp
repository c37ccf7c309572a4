#include "output/image_file.h"
#include "output/save_service.h"
#include "settings/settings_config.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QImageReader>
#include <QPainter>
#include <QRegularExpression>
#include <QSignalSpy>

#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>

using namespace tavrel;

namespace {

const QDateTime kTime(QDate(2024, 3, 7), QTime(8, 9, 10), Qt::UTC);

/// Noise, so that it does not compress to nothing; every alpha value occurs.
QImage picture(QSize size = {64, 48}, double ratio = 1.0)
{
    QImage image(size, QImage::Format_ARGB32);
    quint32 state = 1;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            state = state * 1664525u + 1013904223u;
            image.setPixel(x, y, state);
        }
    }
    image.setDevicePixelRatio(ratio);
    return image;
}

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

/// While it lives, no file of the process can grow beyond `bytes`, as on a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes) : m_signal(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_signal);
    }
    Q_DISABLE_COPY_MOVE(FileSizeLimit)

private:
    rlimit m_before{};
    void (*m_signal)(int);
};

/// While it lives, permissions hold for this thread even if it is the super user's.
class OrdinaryRights
{
public:
    OrdinaryRights()
    {
        syscall(SYS_capget, &m_header, m_before);
        __user_cap_data_struct without[2] = {m_before[0], m_before[1]};
        without[0].effective &= ~((1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH));
        syscall(SYS_capset, &m_header, without);
    }
    ~OrdinaryRights() { syscall(SYS_capset, &m_header, m_before); }
    Q_DISABLE_COPY_MOVE(OrdinaryRights)

private:
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_before[2] = {};
};

} // namespace

class SaveServiceTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;

    SaveRequest requestIn(const QString &folder, const QString &nameTemplate = u"shot"_qs) const
    {
        SaveRequest request;
        request.directory = folder;
        request.nameTemplate = nameTemplate;
        return request;
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void formats_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("png") << u"png"_qs << u"shot.png"_qs << QByteArray("png");
        QTest::newRow("JPEG") << u"JPEG"_qs << u"shot.jpg"_qs << QByteArray("jpeg");
        QTest::newRow("bmp") << u"bmp"_qs << u"shot.png"_qs << QByteArray("png");
    }

    void formats()
    {
        QFETCH(QString, file);
        SaveRequest request = requestIn(m_folder->path());
        request.format = *static_cast<QString *>(QTest::qData("format", QMetaType::QString));
        QString error;
        const QString path = saveImage(picture(), request, kTime, &error);
        QCOMPARE(path, m_folder->filePath(file));
        QCOMPARE(error, QString());
        QCOMPARE(filesIn(m_folder->path()), QStringList{file});
        QTEST(QImageReader::imageFormat(path), "content");
        QVERIFY(QFileInfo(path).permission(QFile::ReadUser | QFile::WriteUser));
    }

    void keepsPixelsAtAnyRatio()
    {
        for (const double ratio : {1.0, 1.25, 2.0}) {
            SaveRequest request = requestIn(m_folder->path());
            const QImage png(saveImage(picture({64, 48}, ratio), request, kTime));
            QCOMPARE(png.convertToFormat(QImage::Format_ARGB32), picture());
            request.format = u"jpg"_qs;
            const QImage jpg(saveImage(picture({64, 48}, ratio), request, kTime));
            request.directory = m_folder->filePath(u"plain"_qs);
            QCOMPARE(jpg, QImage(saveImage(picture(), request, kTime)));
        }
    }

    void transparencyTurnsWhiteInJpeg()
    {
        QImage image(32, 32, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter(&image).fillRect(16, 0, 16, 32, QColor(0, 0, 0, 128));
        SaveRequest request = requestIn(m_folder->path());
        request.format = u"jpg"_qs;
        const QImage saved(saveImage(image, request, kTime));
        QVERIFY(qGray(saved.pixel(4, 4)) >= 253);
        QVERIFY(std::abs(qGray(saved.pixel(28, 4)) - 127) <= 3);
    }

    void retinaSuffix_data()
    {
        QTest::addColumn<double>("ratio");
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<bool>("scaled");
        QTest::addColumn<QString>("expected");
        QTest::newRow("just enough") << 1.5 << true << false << u"shot@2x.png"_qs;
        QTest::newRow("too little") << 1.49 << true << false << u"shot.png"_qs;
        QTest::newRow("switched off") << 2.0 << false << false << u"shot.png"_qs;
        QTest::newRow("scaled down before") << 2.0 << true << true << u"shot.png"_qs;
    }

    void retinaSuffix()
    {
        QFETCH(double, ratio);
        QFETCH(bool, enabled);
        QFETCH(bool, scaled);
        SaveRequest request = requestIn(m_folder->path());
        request.retinaSuffix = enabled;
        const QImage image = picture({64, 48}, ratio);
        const ImageOutputOptions options{.scaleTo1x = scaled};
        const QString path = saveImage(prepareOutput(image, options), request, kTime);
        QTEST(QFileInfo(path).fileName(), "expected");
        QTEST(suggestedFileName(image, request, kTime, options), "expected");
    }

    void longNamesKeepSuffixAndNumber()
    {
        SaveRequest request = requestIn(m_folder->path(), u"{{window}}"_qs);
        request.context.window = QString(300, u'截');
        request.retinaSuffix = true;
        const QString base = QString(65, u'截') + u"@2x"_qs;
        QCOMPARE(QFileInfo(saveImage(picture({8, 8}, 2), request, kTime)).fileName(), base + u".png"_qs);
        QCOMPARE(QFileInfo(saveImage(picture({8, 8}, 2), request, kTime)).fileName(), base + u"_1.png"_qs);
    }

    void namesCannotLeaveTheFolder()
    {
        const QString inner = m_folder->filePath(u"inner"_qs);
        for (const char *name : {"..", "../../up", ".", "/etc/x", "a. ", "c:\\x"})
            QVERIFY(!saveImage(picture({4, 4}), requestIn(inner, QLatin1String(name)), kTime).isEmpty());
        QCOMPARE(filesIn(m_folder->path()), QStringList{u"inner"_qs});
        QCOMPARE(filesIn(inner).size(), 6);
    }

    void failures_data()
    {
        QTest::addColumn<QString>("directory");
        QTest::addColumn<bool>("nullImage");
        QTest::addColumn<QString>("expected");
        QTest::newRow("no folder") << QString() << false << u"未指定保存目录"_qs;
        QTest::newRow("folder is a file") << u"file"_qs << false << u"无法创建目录：%1/file"_qs;
        QTest::newRow("read-only") << u"locked"_qs << false << u"写入文件失败：%1/locked/shot.png"_qs;
        QTest::newRow("missing in a read-only one") << u"locked/sub"_qs << false << u"无法创建目录：%1/locked/sub"_qs;
    }

    void failures()
    {
        QFETCH(QString, directory);
        QFETCH(bool, nullImage);
        QFETCH(QString, expected);
        QVERIFY(QFile(m_folder->filePath(u"file"_qs)).open(QIODevice::WriteOnly));
        const QString locked = m_folder->filePath(u"locked"_qs);
        QVERIFY(QDir().mkpath(locked));
        QFile(locked).setPermissions(QFile::Permissions(0x5555));

        QString error;
        QString path;
        {
            const OrdinaryRights rights;
            const QString where = directory.isEmpty() ? QString() : m_folder->filePath(directory);
            path = saveImage(nullImage ? QImage() : picture(), requestIn(where), kTime, &error);
        }
        QCOMPARE(path, QString());
        QCOMPARE(error, expected.contains(u'%') ? expected.arg(m_folder->path()) : expected);
        QCOMPARE(filesIn(locked), QStringList());
        QCOMPARE(QFileInfo(m_folder->filePath(u"file"_qs)).size(), 0);
        QFile(locked).setPermissions(QFile::Permissions(0x7777));
    }

    void fullDisk()
    {
        SaveRequest request = requestIn(m_folder->path());
        const QString old = saveImage(picture({8, 8}), request, kTime);
        QString error;
        QString overOld;
        {
            const FileSizeLimit limit(20'000);
            QCOMPARE(saveImage(picture({400, 300}), request, kTime, &error), QString());
            overOld = saveImageTo(picture({400, 300}), old);
        }
        QCOMPARE(error, u"写入文件失败："_qs + m_folder->filePath(u"shot_1.png"_qs));
        QCOMPARE(overOld, QString());
        QCOMPARE(filesIn(m_folder->path()), QStringList{QFileInfo(old).fileName()});
        QCOMPARE(QImage(old).size(), QSize(8, 8));
    }

    void asyncSavesKeepTheirOrder()
    {
        const SaveRequest request = requestIn(m_folder->path(), u"{{HHmmss}}"_qs);
        QList<SaveResult> results;
        const auto take = [&results](const SaveResult &result) { results.append(result); };
        QObject owner;
        saveImageAsync(picture({800, 600}), request, kTime, {}, &owner, take);
        saveImageAsync(picture({20, 10}, 2), request, kTime, {.scaleTo1x = true}, &owner, take);
        saveImageAsync({}, request, kTime, {}, &owner, take);
        saveImageToAsync(picture({5, 5}), m_folder->filePath(u"mine.JPG"_qs), 92, {}, &owner, take);
        QVERIFY(results.isEmpty());
        QTRY_COMPARE(results.size(), 4);
        QCOMPARE(results.at(0).path, m_folder->filePath(u"080910.png"_qs));
        QCOMPARE(results.at(1).path, m_folder->filePath(u"080910_1.png"_qs));
        QCOMPARE(QImage(results.at(1).path).size(), QSize(10, 5));
        QCOMPARE(results.at(2).path, QString());
        QCOMPARE(results.at(2).error, u"没有可保存的图片"_qs);
        QCOMPARE(results.at(3).path, m_folder->filePath(u"mine.JPG"_qs));
        QCOMPARE(QImageReader::imageFormat(results.at(3).path), QByteArray("jpeg"));
        QTRY_VERIFY(owner.children().isEmpty());
    }

    void aDestroyedOwnerLosesTheAnswerNotTheFile()
    {
        auto owner = std::make_unique<QObject>();
        bool answered = false;
        for (int i = 0; i < 3; ++i) {
            saveImageAsync(picture({600, 400}), requestIn(m_folder->path()), kTime, {}, owner.get(),
                           [&answered](const SaveResult &) { answered = true; });
        }
        owner.reset();
        QObject other;
        QVERIFY(finishSaves(&other, QDeadlineTimer(60'000)));
        QCoreApplication::processEvents();
        QVERIFY(!answered);
        QCOMPARE(filesIn(m_folder->path()), (QStringList{u"shot.png"_qs, u"shot_1.png"_qs, u"shot_2.png"_qs}));
        QCOMPARE(QImage(m_folder->filePath(u"shot_2.png"_qs)).size(), QSize(600, 400));
    }
};

TAVREL_TEST_MAIN(QGuiApplication, SaveServiceTest)
#include "test_save_service.moc"
