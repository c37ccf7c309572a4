#include "annotate/selection_renderer.h"
#include "annotate/shape_factory.h"
#include "redaction/covered_text.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QRegularExpression>

using namespace tavrel;
using namespace tavrel::redaction;

namespace {

Page page(int fontSize, const QString &family = QStringLiteral("DejaVu Sans"))
{
    Page result;
    result.font = QFont(family);
    result.font.setPixelSize(fontSize);
    result.size = {90 + 6 * fontSize, 90 + 2 * fontSize};
    result.origin = {33.5, 42.0 + fontSize};
    result.box = QRect(29, 38, 10 + 11 * fontSize / 2, 10 + fontSize);
    return result;
}

void multiplyByNoise(QImage &picture)
{
    quint32 state = 7;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            state = state * 1664525U + 1013904223U;
            const int grey = qGray(picture.pixel(x, y)) * (128 + static_cast<int>(state >> 25)) / 255;
            picture.setPixel(x, y, qRgb(grey, grey, grey));
        }
    }
}

} // namespace

/// How far a covered text can be read back is measured by ./dev bench redaction; here only that what is said to hold
/// nothing of the text does hold nothing.
class ReadingBackTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

private Q_SLOTS:
    void anErasedBoxHoldsNothingOfTheText_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<bool>("onTexture");
        QTest::newRow("png") << int(Format::Png) << false;
        QTest::newRow("jpeg") << int(Format::Jpeg) << false;
        QTest::newRow("png on texture") << int(Format::Png) << true;
        QTest::newRow("jpeg on texture") << int(Format::Jpeg) << true;
    }

    void anErasedBoxHoldsNothingOfTheText()
    {
        QFETCH(int, format);
        QFETCH(bool, onTexture);
        const Page at = page(16);
        const auto erased = [&](const QString &text) {
            QImage picture = at.withText(text);
            if (onTexture)
                multiplyByNoise(picture);
            const Cover cover{Cover::Effect::EraseWholeBox, 0};
            return savedFile(covered(picture, at.box, cover), m_folder.path(), Format(format));
        };
        const QByteArray empty = erased({});
        QVERIFY(!empty.isEmpty());
        for (const QString &text : {u"40718259"_qs, u"11111111"_qs, u"password"_qs})
            QVERIFY2(erased(text) == empty, qPrintable(text));
    }

    /// Effects read the picture as captured: the upper one shows what it would show alone.
    void aSecondCoverAddsNothing()
    {
        const QImage picture = page(16).withText(u"40718259"_qs);
        const auto shapes = [](const QString &below) {
            return u"[%1"_qs.arg(below) + QStringLiteral(R"({"type":"mosaic","x":29,"y":38,"w":98,"h":26}])");
        };
        const auto rendered = [&](const QString &below) {
            return renderSelection(picture, QRectF(picture.rect()), shapes(below), ShapeFactory::standard());
        };
        QCOMPARE(rendered(QStringLiteral(R"({"type":"mosaic","x":29,"y":38,"w":98,"h":26,"mosaicMode":"blur"},)")),
                 rendered({}));
        QVERIFY(rendered({}) != picture);
    }

    /// What lies outside the selection is not in the file, be it only as far from a mosaic as a block or from a blur as
    /// three radii.
    void whatWasCutOffIsNotInTheFile_data()
    {
        QTest::addColumn<QString>("shapes");
        QTest::newRow("nothing drawn") << QString();
        QTest::newRow("mosaic at the edge")
            << QStringLiteral(R"([{"type":"mosaic","x":100,"y":20,"w":200,"h":60,"mosaicIntensity":15}])");
        QTest::newRow("blur at the edge") << QStringLiteral(
            R"([{"type":"mosaic","x":100,"y":20,"w":200,"h":60,"mosaicMode":"blur","mosaicIntensity":4}])");
    }

    void whatWasCutOffIsNotInTheFile()
    {
        QFETCH(QString, shapes);
        Page wide = page(16);
        wide.size = {400, 120};
        wide.origin = {170, 60};
        const auto saved = [&](const QString &text, Format format) {
            return savedFile(
                renderSelection(wide.withText(text), QRectF(10, 10, 140, 100), shapes, ShapeFactory::standard()),
                m_folder.path(), format);
        };
        QVERIFY(wide.withText(u"40718259"_qs) != wide.withText({}));
        for (const Format format : {Format::Png, Format::Jpeg}) {
            QVERIFY(!saved({}, format).isEmpty());
            QVERIFY(saved(u"40718259"_qs, format) == saved({}, format));
        }
    }
};

TAVREL_TEST_MAIN(QGuiApplication, ReadingBackTest)
#include "test_reading_back.moc"
