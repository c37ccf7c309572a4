#include "output/save_service.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QPainter>
#include <QRegularExpression>
#include <QtEndian>

#include <array>

using namespace tavrel;

namespace {

struct Block
{
    QByteArray name; ///< chunk type of a PNG, marker of a JPEG in hex
    QByteArray data;
};

struct Blocks
{
    QList<Block> list;
    QString error; ///< what is wrong with the file, empty for nothing

    [[nodiscard]] QByteArray all(const QByteArray &name) const
    {
        QByteArray joined;
        for (const Block &block : list) {
            if (block.name == name)
                joined += block.data;
        }
        return joined;
    }
};

quint32 pngChecksum(const QByteArray &bytes)
{
    quint32 crc = 0xffffffffU;
    for (const char byte : bytes) {
        crc ^= static_cast<uchar>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? 0xedb88320U ^ (crc >> 1) : crc >> 1;
    }
    return ~crc;
}

Blocks pngChunks(const QByteArray &file)
{
    Blocks blocks;
    if (!file.startsWith("\x89PNG\r\n\x1a\n"))
        return {{}, u"no PNG"_qs};
    qsizetype at = 8;
    while (at + 12 <= file.size()) {
        const auto length = qsizetype(qFromBigEndian<quint32>(file.constData() + at));
        if (length > file.size() - at - 12)
            return {{}, u"a chunk is cut off"_qs};
        const QByteArray named = file.mid(at + 4, 4 + length);
        if (pngChecksum(named) != qFromBigEndian<quint32>(file.constData() + at + 8 + length))
            return {{}, u"wrong checksum"_qs};
        blocks.list.append({named.left(4), named.mid(4)});
        at += 12 + length;
        if (named.startsWith("IEND"))
            break;
    }
    if (blocks.list.isEmpty() || blocks.list.last().name != "IEND" || !blocks.list.last().data.isEmpty())
        blocks.error = u"no end"_qs;
    else if (at != file.size())
        blocks.error = u"%1 bytes after the end"_qs.arg(file.size() - at);
    return blocks;
}

Blocks jpegSegments(const QByteArray &file)
{
    Blocks blocks;
    const auto byte = [&file](qsizetype at) { return at < file.size() ? static_cast<uchar>(file.at(at)) : 0U; };
    if (!file.startsWith("\xff\xd8"))
        return {{}, u"no JPEG"_qs};
    qsizetype at = 2;
    while (at + 4 <= file.size()) {
        const unsigned marker = byte(at + 1);
        if (byte(at) != 0xff)
            return {{}, u"no marker at %1"_qs.arg(at)};
        if (marker == 0xd9)
            break;
        const auto length = qsizetype(byte(at + 2) << 8 | byte(at + 3));
        blocks.list.append({QByteArray::number(marker, 16), file.mid(at + 4, length - 2)});
        at += 2 + length;
        if (marker != 0xda)
            continue;
        // Entropy-coded data ends at a marker that is neither a stuffed byte nor a restart.
        while (at < file.size() && !(byte(at) == 0xff && byte(at + 1) != 0 && (byte(at + 1) & 0xf8U) != 0xd0))
            ++at;
    }
    if (byte(at) != 0xff || byte(at + 1) != 0xd9)
        blocks.error = u"no end"_qs;
    else if (at + 2 != file.size())
        blocks.error = u"%1 bytes after the end"_qs.arg(file.size() - at - 2);
    return blocks;
}

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
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_qs)); }

    void formats_data()
    {
        QTest::addColumn<int>("format");
        QTest::newRow("translucent") << int(QImage::Format_ARGB32_Premultiplied);
        QTest::newRow("opaque") << int(QImage::Format_RGB32);
        QTest::newRow("palette") << int(QImage::Format_Indexed8);
        QTest::newRow("grey") << int(QImage::Format_Grayscale8);
    }

    void pngHoldsPixelsOnly_data() { formats_data(); }
    void pngHoldsPixelsOnly()
    {
        QFETCH(int, format);
        const QByteArray file = saved(talkativePicture(QImage::Format(format)), u"a.png"_qs);
        const Blocks chunks = pngChunks(file);
        QVERIFY2(chunks.error.isEmpty(), qPrintable(chunks.error));
        // pHYs is the resolution, gAMA and sRGB say how colours are meant.
        const QList<QByteArray> allowed{"IHDR", "PLTE", "tRNS", "IDAT", "IEND", "pHYs", "gAMA", "sRGB"};
        for (const Block &chunk : chunks.list)
            QVERIFY2(allowed.contains(chunk.name), chunk.name.constData());
        QVERIFY(!file.contains("secret"));

        // The compressed stream is as long as its rows: nothing lies behind the last pixel.
        const QByteArray header = chunks.all("IHDR");
        QCOMPARE(header.size(), 13);
        const auto width = qFromBigEndian<qint32>(header.constData());
        const auto height = qFromBigEndian<qint32>(header.constData() + 4);
        QCOMPARE(QSize(width, height), QSize(90, 60));
        const std::array channels{1, 0, 3, 1, 2, 0, 4};
        const int rowBits = width * header.at(8) * channels[std::size_t(header.at(9))];
        QByteArray stream(4, '\0');
        qToBigEndian(1 << 20, stream.data());
        QCOMPARE(qUncompress(stream + chunks.all("IDAT")).size(), qsizetype(height) * (1 + (rowBits + 7) / 8));
    }

    void jpegHoldsPixelsOnly_data() { formats_data(); }
    void jpegHoldsPixelsOnly()
    {
        QFETCH(int, format);
        const QByteArray file = saved(talkativePicture(QImage::Format(format)), u"a.jpg"_qs);
        const Blocks segments = jpegSegments(file);
        QVERIFY2(segments.error.isEmpty(), qPrintable(segments.error));
        // Header, tables, frame and scan; no comment (fe) and no application segment (e1 to ef), where EXIF, previews
        // and profiles are kept.
        const QList<QByteArray> allowed{"e0", "db", "c0", "c2", "c4", "da", "dd"};
        for (const Block &segment : segments.list)
            QVERIFY2(allowed.contains(segment.name), segment.name.constData());
        const QByteArray header = segments.all("e0");
        QVERIFY(header.startsWith(QByteArray("JFIF\0", 5)));
        QCOMPARE(header.size(), 14); // a preview would follow
        QCOMPARE(header.right(2), QByteArray(2, '\0'));
        QVERIFY(!file.contains("secret"));
    }

    void whatAPictureCarriesChangesNoByte_data() { formats_data(); }
    void whatAPictureCarriesChangesNoByte()
    {
        QFETCH(int, format);
        for (const QString &name : {u"c.png"_qs, u"c.jpg"_qs})
            QCOMPARE(saved(talkativePicture(QImage::Format(format)), name),
                     saved(plainPicture(QImage::Format(format)), name));
    }

    /// The checks above see what they are there for.
    void checksFindMore()
    {
        const QByteArray png = saved(talkativePicture(QImage::Format_RGB32), u"b.png"_qs);
        QVERIFY(!pngChunks(png + '\0').error.isEmpty());
        QVERIFY(!pngChunks(png.chopped(1)).error.isEmpty());
        QByteArray text("tEXtTitle\0x", 11);
        QByteArray number(4, '\0');
        qToBigEndian(quint32(text.size() - 4), number.data());
        QByteArray sum(4, '\0');
        qToBigEndian(pngChecksum(text), sum.data());
        const Blocks chunks = pngChunks(png.chopped(12) + number + text + sum + png.right(12));
        QCOMPARE(chunks.error, QString());
        QCOMPARE(chunks.all("tEXt"), QByteArray("Title\0x", 7));

        QByteArray jpeg = saved(talkativePicture(QImage::Format_RGB32), u"b.jpg"_qs);
        QVERIFY(!jpegSegments(jpeg + jpeg).error.isEmpty());
        QVERIFY(!jpegSegments(jpeg.chopped(1)).error.isEmpty());
        jpeg.insert(2, QByteArray("\xff\xe1\0\x06"
                                  "Exif",
                                  8));
        QCOMPARE(jpegSegments(jpeg).all("e1"), QByteArray("Exif"));
    }
};

TAVREL_TEST_MAIN(QGuiApplication, SavedBytesTest)
#include "test_saved_bytes.moc"
