#include "output/clipboard_writer.h"
#include "output/copy_image.h"
#include "output/image_file.h"
#include "settings/settings_config.h"
#include "support/fake_clipboard.h"
#include "support/test_main.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QRegularExpression>

using namespace tavrel;

namespace {

const QDateTime kTime(QDate(2024, 3, 7), QTime(8, 9, 10), Qt::UTC);

QImage picture(QSize size = {40, 30}, double ratio = 1.0)
{
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgba(x * 6 % 256, y * 8 % 256, 77, 255 - x));
    image.setDevicePixelRatio(ratio);
    return image;
}

QImage decoded(const QByteArray &bytes)
{
    return QImage::fromData(bytes).convertToFormat(QImage::Format_ARGB32);
}

} // namespace

class ClipboardWriterTest : public QObject
{
    Q_OBJECT

private:
    /// What `begin` was told in the end.
    static std::optional<bool> answered(const std::function<void(QObject *, ClipboardWriter::Done)> &begin)
    {
        QObject context;
        std::optional<bool> answer;
        begin(&context, [&answer](bool written) { answer = written; });
        [&answer] { QTRY_VERIFY(answer.has_value()); }();
        return answer;
    }

private Q_SLOTS:
    void init()
    {
        m_config = {};
        m_copier.reset();
        m_writer.reset();
        m_clipboard = std::make_unique<test::FakeClipboard>();
        m_writer = std::make_unique<ClipboardWriter>(*m_clipboard);
        m_copier = std::make_unique<ImageCopier>(*m_writer);
    }
    void cleanup() { QDir(clipboardFileFolder()).removeRecursively(); }

    void retriesUntilItHolds_data()
    {
        QTest::addColumn<int>("thefts");
        QTest::addColumn<int>("writes");
        QTest::addColumn<bool>("expected");
        QTest::newRow("nobody else") << 0 << 1 << true;
        QTest::newRow("held in the last round") << 19 << 20 << true;
        QTest::newRow("stolen for good") << 1000 << 20 << false;
    }

    void retriesUntilItHolds()
    {
        QFETCH(int, thefts);
        m_clipboard->thefts = thefts;
        const auto answer =
            answered([&](QObject *context, auto done) { m_writer->setText(u"text"_qs, context, done); });
        QTEST(answer.value(), "expected");
        QTEST(m_clipboard->writes, "writes");
        QCOMPARE(m_clipboard->contents()->text(), u"text"_qs);
    }

    void firstRoundIsOverOnReturnTheAnswerComesLater()
    {
        int answers = 0;
        m_writer->setText(u"a"_qs, this, [&answers](bool) { ++answers; });
        QCOMPARE(m_clipboard->contents()->text(), u"a"_qs);
        QCOMPARE(answers, 0);
        QTRY_COMPARE(answers, 1);

        auto owner = std::make_unique<QObject>();
        m_writer->setText(u"b"_qs, owner.get(), [&answers](bool) { ++answers; });
        m_clipboard->thefts = 1;
        m_writer->setText(u"c"_qs, owner.get(), [&answers](bool) { ++answers; });
        owner.reset();
        QTRY_COMPARE(m_clipboard->writes, 4);
        QCoreApplication::processEvents();
        QCOMPARE(answers, 1);
        m_writer->setText(u"d"_qs, nullptr, [&answers](bool) { ++answers; });
        QTRY_COMPARE(answers, 2);
    }

    void aNewerWriteReplacesOneThatRetries()
    {
        m_clipboard->thefts = 1;
        QString answers;
        m_writer->setText(u"old"_qs, this, [&](bool written) { answers += written ? u"+old"_qs : u"-old"_qs; });
        m_writer->setImage({}, this, [&](bool written) { answers += written ? u"+null"_qs : u"-null"_qs; });
        m_writer->setText(u"new"_qs, this, [&](bool written) { answers += written ? u"+new"_qs : u"-new"_qs; });
        QTRY_COMPARE(answers, u"-null-old+new"_qs);
        QCOMPARE(m_clipboard->writes, 2);
        QCOMPARE(m_clipboard->contents()->text(), u"new"_qs);
    }

    void somebodyMayWriteInAnswerToAWrite()
    {
        m_clipboard->onSet = [&] {
            m_clipboard->onSet = {};
            m_writer->setText(u"inner"_qs);
        };
        const auto answer =
            answered([&](QObject *context, auto done) { m_writer->setText(u"outer"_qs, context, done); });
        QCOMPARE(answer, false);
        QCOMPARE(m_clipboard->contents()->text(), u"inner"_qs);
    }

    void offersPictures()
    {
        QImage image = picture({40, 30}, 2.0);
        image.setText(u"Title"_qs, u"secret"_qs);
        m_clipboard->thefts = 1;
        QCOMPARE(answered([&](QObject *context, auto done) { m_writer->setImage(image, context, done); }), true);
        const QMimeData *data = m_clipboard->contents();
        QCOMPARE(data->formats(), (QStringList{u"image/png"_qs, u"image/bmp"_qs}));
        QVERIFY(data->hasImage());
        QVERIFY(!data->hasText() && !data->hasUrls());
        QCOMPARE(qvariant_cast<QImage>(data->imageData()), image);
        QCOMPARE(decoded(data->data(u"image/png"_qs)), picture());
        QVERIFY(!data->data(u"image/png"_qs).contains("secret"));
        QCOMPARE(decoded(data->data(u"image/bmp"_qs)).pixelColor(39, 0), flattenedOnWhite(picture()).pixelColor(39, 0));
    }

    void offersFiles()
    {
        const QList<QUrl> urls{QUrl::fromLocalFile(u"/a b/截.png"_qs), QUrl::fromLocalFile(u"/c"_qs)};
        for (const QImage &image : {QImage(), picture()}) {
            QCOMPARE(answered([&](QObject *context, auto done) { m_writer->setFiles(urls, image, context, done); }),
                     true);
            const QMimeData *data = m_clipboard->contents();
            QCOMPARE(data->urls(), urls);
            QCOMPARE(data->data(u"text/uri-list"_qs), QByteArray("file:///a%20b/%E6%88%AA.png\r\nfile:///c\r\n"));
            QCOMPARE(data->data(u"x-special/gnome-copied-files"_qs),
                     QByteArray("copy\nfile:///a%20b/%E6%88%AA.png\nfile:///c"));
            QCOMPARE(data->hasImage(), !image.isNull());
            if (!image.isNull())
                QCOMPARE(decoded(data->data(u"image/png"_qs)), image);
        }
    }

    void copies_data()
    {
        QTest::addColumn<QString>("form");
        QTest::addColumn<double>("ratio");
        QTest::addColumn<bool>("scaled");
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<bool>("hasImage");
        const QStringList plain{u"2024-5.png"_qs};
        const QStringList retina{u"2024-5@2x.png"_qs};
        QTest::newRow("picture") << u"image"_qs << 2.0 << false << QStringList() << true;
        QTest::newRow("both") << u"imageAndFile"_qs << 1.0 << false << plain << true;
        QTest::newRow("scaled file") << u"file"_qs << 2.0 << true << plain << false;
    }

    void copies()
    {
        QFETCH(QString, form);
        QFETCH(double, ratio);
        QFETCH(bool, scaled);
        QFETCH(QStringList, files);
        m_config.clipboardFormat = form;
        m_config.scaleRetinaTo1x = scaled;
        m_config.retinaSuffix = true;
        m_config.filenameFormat = u"{{yyyy}}-{{index}}"_qs;
        m_config.filenameCounter = 4;
        const QImage image = picture({40, 30}, ratio);
        QCOMPARE(answered([&](QObject *context, auto done) {
                     m_copier->copyImage(image, kTime, {}, m_config, context, done);
                 }),
                 true);
        QCOMPARE(QDir(clipboardFileFolder()).entryList(QDir::Files | QDir::Hidden), files);
        const QMimeData *data = m_clipboard->contents();
        QTEST(data->hasImage(), "hasImage");
        const QSize size = scaled ? QSize(20, 15) : QSize(40, 30);
        if (data->hasImage())
            QCOMPARE(decoded(data->data(u"image/png"_qs)).size(), size);
        QCOMPARE(data->urls().size(), files.size());
        if (!files.isEmpty()) {
            QCOMPARE(data->urls().first().toLocalFile(), clipboardFileFolder() + u'/' + files.first());
            QCOMPARE(QImage(data->urls().first().toLocalFile()).size(), size);
        }
    }

    void fallsBackToThePictureWithoutAFile()
    {
        QDir().mkpath(QFileInfo(clipboardFileFolder()).path());
        QFile blocker(clipboardFileFolder());
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        m_config.clipboardFormat = u"file"_qs;
        QCOMPARE(answered([&](QObject *context, auto done) {
                     m_copier->copyImage(picture(), kTime, {}, m_config, context, done);
                 }),
                 true);
        QVERIFY(blocker.remove());
        QVERIFY(m_clipboard->contents()->hasImage());
        QVERIFY(!m_clipboard->contents()->hasUrls());
    }

    void deletesFilesOfEarlierDays()
    {
        const QDir folder(clipboardFileFolder());
        QVERIFY(folder.mkpath(u"kept folder"_qs));
        const auto make = [&folder](const QString &name, qint64 age) {
            QFile file(folder.filePath(name));
            return file.open(QIODevice::WriteOnly) &&
                   file.setFileTime(kTime.addSecs(-age), QFile::FileModificationTime);
        };
        QVERIFY(make(u"old.png"_qs, 86401) && make(u".old.part"_qs, 1'000'000));
        QVERIFY(make(u"day.png"_qs, 86400) && make(u"future.png"_qs, -1'000'000));
        m_config.clipboardFormat = u"file"_qs;
        m_config.filenameFormat = u"new"_qs;
        answered(
            [&](QObject *context, auto done) { m_copier->copyImage(picture(), kTime, {}, m_config, context, done); });
        QCOMPARE(folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name),
                 (QStringList{u"day.png"_qs, u"future.png"_qs, u"kept folder"_qs, u"new.png"_qs}));
    }

    void theLatestCopyWins()
    {
        m_config.clipboardFormat = u"file"_qs;
        QString answers;
        const auto note = [&answers](const QString &name) {
            return [&answers, name](bool written) { answers += (written ? u'+' : u'-') + name; };
        };
        m_copier->copyImage(picture({500, 400}), kTime, {}, m_config, this, note(u"1"_qs));
        m_copier->copyImage(picture({20, 20}), kTime, {}, m_config, this, note(u"2"_qs));
        QTRY_COMPARE(answers, u"-1+2"_qs);
        QCOMPARE(QImage(m_clipboard->contents()->urls().first().toLocalFile()).size(), QSize(20, 20));

        m_copier->copyImage(picture({500, 400}), kTime, {}, m_config, this, note(u"3"_qs));
        m_copier->copyImage({}, kTime, {}, m_config, this, note(u"4"_qs));
        m_writer->setText(u"text"_qs, this, note(u"5"_qs));
        QTRY_COMPARE(answers, u"-1+2-4+5-3"_qs);
        QCOMPARE(m_clipboard->contents()->text(), u"text"_qs);
    }

private:
    SettingsConfig m_config;
    std::unique_ptr<test::FakeClipboard> m_clipboard;
    std::unique_ptr<ClipboardWriter> m_writer;
    std::unique_ptr<ImageCopier> m_copier;
};

TAVREL_TEST_MAIN(QGuiApplication, ClipboardWriterTest)
#include "test_clipboard_writer.moc"
