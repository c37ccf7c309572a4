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
    void moves();
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

void TestColorLibrary::moves()
{
    const std::tuple<int, int, QList<int>> rows[]{{2, 3, {}}, // just behind
                                                  {2, 4, {0, 1, 3, 2, 4}},
                                                  {0, 5, {1, 2, 3, 4, 0}},
                                                  {4, 0, {4, 0, 1, 2, 3}},
                                                  {0, 6, {}},
                                                  {5, 0, {}}};
    for (const auto &[from, to, order] : rows) {
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
}

void TestColorLibrary::colorTexts()
{
    const QColor color(0x12, 0xab, 0xef);
    const std::tuple<QString, QColor, double> rows[]{{u" #12abEF "_qs, color, -1.0}, // no alpha
                                                     {u"#1aF"_qs, QColor(0x11, 0xaa, 0xff), -1.0},
                                                     {u"#8012abEF"_qs, color, 128 / 255.0},
                                                     {u"#0012abEF"_qs, color, 0.0},
                                                     {u"#zz12abEF"_qs, {}, -1.0},
                                                     {u"#+112abEF"_qs, {}, -1.0},
                                                     {{}, {}, -1.0}};
    for (const auto &[text, wanted, alpha] : rows) {
        const std::optional<ColorText> read = readColorText(text);
        QCOMPARE(read.value_or(ColorText()).color, wanted);
        QCOMPARE(read ? read->alpha.value_or(-1) : -1, alpha);
    }
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
