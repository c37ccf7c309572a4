#include "support/test_main.h"

#include "ui/color_library.h"
#include "ui/color_paint.h"
#include "ui/color_value.h"
#include "ui/eyedropper_sample.h"

#include <QGuiApplication>
#include <QPainter>
#include <QSignalSpy>

using namespace tavrel::ui;

namespace {

QString colorNumber(int number)
{
    return QStringLiteral("#%1").arg(number, 6, 16, QLatin1Char('0')).toUpper();
}

QStringList colorNumbers(int count)
{
    QStringList colors;
    for (int i = 0; i < count; ++i)
        colors.append(colorNumber(i));
    return colors;
}

} // namespace

class TestColorLibrary : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void normalize_data();
    void normalize();
    void aListIsCleanedAndCut();
    void addRefusesWhatItCannotTake();
    void moves_data();
    void moves();
    void removeAndReset();
    void hexForms_data();
    void hexForms();
    void colorTexts_data();
    void colorTexts();
    void hsvComesBackToTheSameColor();
    void greyKeepsTheHue_data();
    void greyKeepsTheHue();
    void chessboardStaysInItsOutline();
    void samples_data();
    void samples();
};

void TestColorLibrary::normalize_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("upper case") << QStringLiteral("#ff8c00") << QStringLiteral("#FF8C00");
    QTest::newRow("without hash, blanks around") << QStringLiteral("  aAbBcC\n") << QStringLiteral("#AABBCC");
    QTest::newRow("two hashes") << QStringLiteral("##AABBCC") << QString();
    QTest::newRow("three digits") << QStringLiteral("#ABC") << QString();
    QTest::newRow("with alpha") << QStringLiteral("#80AABBCC") << QString();
    QTest::newRow("blank inside") << QStringLiteral("#AAB BCC") << QString();
    QTest::newRow("wide digits") << QStringLiteral("#１１２２３３") << QString();
    QTest::newRow("second line") << QStringLiteral("#AABBCC\n#112233") << QString();
    QTest::newRow("name") << QStringLiteral("red") << QString();
    QTest::newRow("empty") << QString() << QString();
}

void TestColorLibrary::normalize()
{
    QFETCH(QString, text);
    QTEST(ColorLibrary::normalize(text), "expected");
}

void TestColorLibrary::aListIsCleanedAndCut()
{
    ColorLibrary library;
    QSignalSpy changed(&library, &ColorLibrary::changed);
    library.setColors({QStringLiteral("#ff0000"), QStringLiteral("red"), QStringLiteral(" FF0000 "), QString(),
                       QStringLiteral("#00ff00")});
    QCOMPARE(library.colors(), QStringList({QStringLiteral("#FF0000"), QStringLiteral("#00FF00")}));
    QCOMPARE(changed.count(), 1);
    library.setColors({QStringLiteral("ff0000"), QStringLiteral("00FF00")});
    QCOMPARE(changed.count(), 1); // the same list

    library.setColors(colorNumbers(35));
    QCOMPARE(library.colors(), colorNumbers(30));
    QVERIFY(library.isFull());
    library.setColors({});
    QVERIFY(library.colors().isEmpty());
}

void TestColorLibrary::addRefusesWhatItCannotTake()
{
    ColorLibrary library;
    library.setColors(colorNumbers(29));
    QSignalSpy changed(&library, &ColorLibrary::changed);
    QVERIFY(!library.add(QStringLiteral("#000001"))); // there
    QVERIFY(!library.add(QStringLiteral("#00001")));
    QCOMPARE(changed.count(), 0);
    QVERIFY(library.add(QStringLiteral("abcdef")));
    QCOMPARE(library.colors().last(), QStringLiteral("#ABCDEF"));
    QCOMPARE(changed.count(), 1);
    QVERIFY(!library.add(QStringLiteral("#123456"))); // the thirty-first
    QCOMPARE(library.colors().size(), 30);
    QCOMPARE(changed.count(), 1);
}

void TestColorLibrary::moves_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<QList<int>>("order"); // empty for none
    QTest::newRow("just before") << 2 << 2 << QList<int>{};
    QTest::newRow("just behind") << 2 << 3 << QList<int>{};
    QTest::newRow("swap with the next") << 2 << 4 << QList<int>{0, 1, 3, 2, 4};
    QTest::newRow("to the end") << 0 << 5 << QList<int>{1, 2, 3, 4, 0};
    QTest::newRow("to the front") << 4 << 0 << QList<int>{4, 0, 1, 2, 3};
    QTest::newRow("beyond the end") << 0 << 6 << QList<int>{};
    QTest::newRow("before the front") << 2 << -1 << QList<int>{};
    QTest::newRow("from nowhere") << 5 << 0 << QList<int>{};
    QTest::newRow("from before") << -1 << 3 << QList<int>{};
}

void TestColorLibrary::moves()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(QList<int>, order);
    ColorLibrary library;
    library.setColors(colorNumbers(5));
    QSignalSpy changed(&library, &ColorLibrary::changed);
    library.move(from, to);
    QCOMPARE(changed.count(), order.isEmpty() ? 0 : 1);
    QStringList expected;
    for (const int number : order)
        expected.append(colorNumber(number));
    QCOMPARE(library.colors(), order.isEmpty() ? colorNumbers(5) : expected);
}

void TestColorLibrary::removeAndReset()
{
    ColorLibrary library;
    QSignalSpy changed(&library, &ColorLibrary::changed);
    library.reset();
    QCOMPARE(changed.count(), 0); // nothing to bring back
    library.remove(QStringLiteral("ff8c00"));
    library.remove(QStringLiteral("#ff8c00"));
    library.remove(QStringLiteral("none"));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(library.colors().size(), 9);
    library.setColors({});
    library.reset();
    QCOMPARE(library.colors(), ColorLibrary::defaults());
    QCOMPARE(library.colors().size(), 10);
    QCOMPARE(changed.count(), 3);
}

void TestColorLibrary::hexForms_data()
{
    QTest::addColumn<double>("alpha");
    QTest::addColumn<QString>("expected");
    QTest::newRow("opaque") << 1.0 << QStringLiteral("#0AB1FF");
    QTest::newRow("0.995 is opaque") << 0.995 << QStringLiteral("#0AB1FF");
    QTest::newRow("below 0.995") << 0.9949 << QStringLiteral("#FE0AB1FF");
    QTest::newRow("0.99") << 0.99 << QStringLiteral("#FC0AB1FF");
    QTest::newRow("half rounds up") << 0.5 << QStringLiteral("#800AB1FF");
    QTest::newRow("one digit is filled up") << 0.03 << QStringLiteral("#080AB1FF");
}

void TestColorLibrary::hexForms()
{
    QFETCH(double, alpha);
    const QColor color(0x0a, 0xb1, 0xff);
    QTEST(hexOf(color, alpha), "expected");
    QColor withAlpha = color;
    withAlpha.setAlphaF(static_cast<float>(alpha));
    if (std::abs(alpha - 0.995) > 0.001) // a QColor is too coarse for the threshold itself
        QTEST(hexOf(withAlpha), "expected");
}

void TestColorLibrary::colorTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("color"); // invalid for no colour
    QTest::addColumn<double>("alpha"); // negative for none
    QTest::newRow("plain") << QStringLiteral(" #12abEF ") << QColor(0x12, 0xab, 0xef) << -1.0;
    QTest::newRow("three digits") << QStringLiteral("#1aF") << QColor(0x11, 0xaa, 0xff) << -1.0;
    QTest::newRow("alpha") << QStringLiteral("#8012abEF") << QColor(0x12, 0xab, 0xef) << 128 / 255.0;
    QTest::newRow("no alpha at all") << QStringLiteral("#0012abEF") << QColor(0x12, 0xab, 0xef) << 0.0;
    QTest::newRow("eight without hash") << QStringLiteral("8012abEF") << QColor() << -1.0;
    QTest::newRow("bad alpha") << QStringLiteral("#zz12abEF") << QColor() << -1.0;
    QTest::newRow("sign for a digit") << QStringLiteral("#+112abEF") << QColor() << -1.0;
    QTest::newRow("bad digit") << QStringLiteral("#12abEG") << QColor() << -1.0;
    QTest::newRow("empty") << QString() << QColor() << -1.0;
}

void TestColorLibrary::colorTexts()
{
    QFETCH(QString, text);
    QFETCH(QColor, color);
    QFETCH(double, alpha);
    const std::optional<ColorText> read = readColorText(text);
    QCOMPARE(read.has_value(), color.isValid());
    if (!read)
        return;
    QCOMPARE(read->color, color);
    QCOMPARE(read->alpha.value_or(-1), alpha);
}

void TestColorLibrary::hsvComesBackToTheSameColor()
{
    for (int red = 0; red < 256; red += 5) {
        for (int green = 0; green < 256; green += 3) {
            for (int blue = 0; blue < 256; blue += 3) {
                const QColor color(red, green, blue);
                if (colorOf(hsvOf(color, 0.3)) != color)
                    QCOMPARE(colorOf(hsvOf(color, 0.3)), color);
            }
        }
    }
    QCOMPARE(colorOf({1, 1, 1}), QColor(255, 0, 0)); // the end of the circle is its beginning
    QCOMPARE(hsvOf(QColor(0, 0, 255), 0).hue, 240 / 360.0);
    QCOMPARE(hsvOf(QColor(255, 0, 255), 0).hue, 300 / 360.0);
}

void TestColorLibrary::greyKeepsTheHue_data()
{
    QTest::addColumn<QColor>("color");
    QTest::addColumn<double>("hue");
    QTest::newRow("black") << QColor(0, 0, 0) << 0.7;
    QTest::newRow("grey") << QColor(128, 128, 128) << 0.7;
    QTest::newRow("white") << QColor(255, 255, 255) << 0.7;
    QTest::newRow("nearly grey has its own") << QColor(128, 129, 128) << 120 / 360.0;
}

void TestColorLibrary::greyKeepsTheHue()
{
    QFETCH(QColor, color);
    QTEST(hsvOf(color, 0.7).hue, "hue");
}

void TestColorLibrary::chessboardStaysInItsOutline()
{
    QImage image(40, 30, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    paintChessboard(painter, QRectF(2, 2, 36, 26), 6, true);
    painter.end();
    QCOMPARE(qAlpha(image.pixel(2, 2)), 0); // its corner is round
    QCOMPARE(qAlpha(image.pixel(39, 15)), 0);
    QCOMPARE(image.pixelColor(16, 10), QColor(100, 100, 106)); // third column, second row
    QCOMPARE(image.pixelColor(22, 10), QColor(70, 70, 74));
    QCOMPARE(image.pixelColor(22, 16), QColor(100, 100, 106));
}

void TestColorLibrary::samples_data()
{
    QTest::addColumn<double>("ratio");
    QTest::addColumn<QPointF>("point");
    QTest::addColumn<QPoint>("pixel"); // negative for none
    QTest::newRow("1") << 1.0 << QPointF(20, 10) << QPoint(20, 10);
    QTest::newRow("1.5, between points") << 1.5 << QPointF(10.5, 7.4) << QPoint(15, 11);
    QTest::newRow("2, second half of a point") << 2.0 << QPointF(10.5, 7) << QPoint(21, 14);
    QTest::newRow("corner") << 1.0 << QPointF(0, 0) << QPoint(0, 0);
    QTest::newRow("last pixel") << 2.0 << QPointF(19.9, 14.9) << QPoint(39, 29);
    QTest::newRow("beside") << 2.0 << QPointF(20, 5) << QPoint(-1, -1);
    QTest::newRow("above") << 1.0 << QPointF(5, -0.1) << QPoint(-1, -1);
}

void TestColorLibrary::samples()
{
    QFETCH(double, ratio);
    QFETCH(QPointF, point);
    QFETCH(QPoint, pixel);
    QImage picture(40, 30, QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, qRgb(x, y, 200));
    }
    picture.setDevicePixelRatio(ratio);
    const QImage sample = eyedropperSample(picture, point);
    QCOMPARE(sample.isNull(), pixel.x() < 0);
    if (sample.isNull())
        return;
    QCOMPARE(sample.size(), QSize(11, 11));
    for (const QPoint offset : {QPoint(0, 0), QPoint(-5, -5), QPoint(5, 5), QPoint(5, -5)}) {
        const QPoint from = pixel + offset;
        const QRgb expected = picture.rect().contains(from) ? qRgb(from.x(), from.y(), 200) : 0U;
        QCOMPARE(sample.pixel(QPoint(5, 5) + offset), expected);
    }
}

TAVREL_TEST_MAIN(QGuiApplication, TestColorLibrary)
#include "test_color_library.moc"
