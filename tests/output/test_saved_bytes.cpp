#include "output/save_service.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QPainter>
#include <QRegularExpression>

using namespace tavrel;

namespace {

QImage plainPicture(QImage::Format format)
{
    QImage image(90, 60, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.fillRect(20, 10, 30, 30, QColor(200, 30, 90));
    painter.drawLine(0, 0, 90, 60);
    painter.end();
    image.convertTo(format);
    return image;
}

/// The same picture carrying more than its pixels.
QImage talkativePicture(QImage::Format format)
{
    QImage image = plainPicture(format);
    image.setText(u"Title"_qs, u"the-secret-title"_qs);
    image.setText(u"Description"_qs, u"第四份合同"_qs);
    image.setDevicePixelRatio(2);
    image.setDotsPerMeterX(1234);
    image.setDotsPerMeterY(4321);
    image.setOffset({17, 19});
    return image;
}

} // namespace

/// A saved file is the picture and nothing else: no texts, no preview of an earlier state, nothing behind the end.
class SavedBytesTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    QByteArray saved(const QImage &image, const QString &name)
    {
        QString error;
        const QString path = saveImageTo(image, m_folder.filePath(name), 92, &error);
        QFile file(path);
        if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
            return {};
        return file.readAll();
    }

private Q_SLOTS:
    void formats_data()
    {
        QTest::addColumn<int>("format");
        QTest::newRow("translucent") << int(QImage::Format_ARGB32_Premultiplied);
        QTest::newRow("opaque") << int(QImage::Format_RGB32);
        QTest::newRow("palette") << int(QImage::Format_Indexed8);
        QTest::newRow("grey") << int(QImage::Format_Grayscale8);
    }

    void whatAPictureCarriesChangesNoByte_data() { formats_data(); }
    void whatAPictureCarriesChangesNoByte()
    {
        QFETCH(int, format);
        for (const QString &name : {u"c.png"_qs, u"c.jpg"_qs})
            QCOMPARE(saved(talkativePicture(QImage::Format(format)), name),
                     saved(plainPicture(QImage::Format(format)), name));
    }

    void nothingLiesAroundThePixels_data() { formats_data(); }
    void nothingLiesAroundThePixels()
    {
        QFETCH(int, format);
        const QImage image = talkativePicture(QImage::Format(format));
        const QByteArray png = saved(image, u"a.png"_qs);
        const QByteArray jpeg = saved(image, u"a.jpg"_qs);
        QVERIFY(png.endsWith("IEND\xae\x42\x60\x82") && png.count("IEND") == 1);
        QVERIFY(jpeg.endsWith("\xff\xd9"));
        for (const char *word : {"secret", "tEXt", "zTXt", "iTXt", "tIME", "eXIf", "Exif", "JFXX", "http:"})
            QVERIFY2(!png.contains(word) && !jpeg.contains(word), word);
        // JFIF without a preview: its header says 16 bytes and no thumbnail of 0 x 0.
        QCOMPARE(jpeg.mid(2, 4), QByteArray("\xff\xe0\x00\x10", 4));
        QCOMPARE(jpeg.mid(18, 2), QByteArray(2, '\0'));
    }
};

TAVREL_TEST_MAIN(QGuiApplication, SavedBytesTest)
#include "test_saved_bytes.moc"
