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
    void aListIsCleanedAndCut();
    void addRefusesWhatItCannotTake();
    void moves_data();
    void moves();
    void colorTexts_data();
    void colorTexts();
    void hsvComesBackToTheSameColor();
};

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
    QTest::newRow("just behind") << 2 << 3 << QList<int>{};
    QTest::newRow("swap with the next") << 2 << 4 << QList<int>{0, 1, 3, 2, 4};
    QTest::newRow("to the end") << 0 << 5 << QList<int>{1, 2, 3, 4, 0};
    QTest::newRow("to the front") << 4 << 0 << QList<int>{4, 0, 1, 2, 3};
    QTest::newRow("beyond the end") << 0 << 6 << QList<int>{};
    QTest::newRow("from nowhere") << 5 << 0 << QList<int>{};
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

void TestColorLibrary::colorTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("color"); // invalid for no colour
    QTest::addColumn<double>("alpha"); // negative for none
    QTest::newRow("plain") << QStringLiteral(" #12abEF ") << QColor(0x12, 0xab, 0xef) << -1.0;
    QTest::newRow("three digits") << QStringLiteral("#1aF") << QColor(0x11, 0xaa, 0xff) << -1.0;
    QTest::newRow("alpha") << QStringLiteral("#8012abEF") << QColor(0x12, 0xab, 0xef) << 128 / 255.0;
    QTest::newRow("no alpha at all") << QStringLiteral("#0012abEF") << QColor(0x12, 0xab, 0xef) << 0.0;
    QTest::newRow("bad alpha") << QStringLiteral("#zz12abEF") << QColor() << -1.0;
    QTest::newRow("sign for a digit") << QStringLiteral("#+112abEF") << QColor() << -1.0;
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

TAVREL_TEST_MAIN(QGuiApplication, TestColorLibrary)
#include "test_color_library.moc"
