#include "annotate/number_text.h"
#include "annotate/sequence_shape.h"
#include "annotate/shape_document.h"
#include "annotate/text_shape.h"
#include "support/test_main.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>

#include <cmath>
#include <numbers>

using namespace tavrel;

namespace {

QImage painted(const ShapeDocument &document, bool withMarks = false)
{
    QImage image(500, 400, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    if (withMarks)
        document.paint(painter, {});
    else
        document.paintShapes(painter, {});
    return image;
}

QRect inked(const QImage &image)
{
    QRect all;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) != QColor(Qt::white))
                all |= QRect(x, y, 1, 1);
        }
    }
    return all;
}

TextShape *addText(ShapeDocument &document, const QPointF &at, const QString &text)
{
    document.setTool(ToolType::Text);
    document.press(at.x(), at.y(), 15);
    auto *shape = dynamic_cast<TextShape *>(document.release());
    if (shape)
        shape->setText(text);
    document.commit();
    return shape;
}

SequenceShape *addBadge(ShapeDocument &document, const QPointF &at, const QPointF &to)
{
    document.setTool(ToolType::Sequence);
    document.press(at.x(), at.y(), 15);
    document.move(at.x(), at.y(), to.x(), to.y(), false);
    auto *shape = dynamic_cast<SequenceShape *>(document.release());
    document.clearSelection();
    return shape;
}

QList<int> numbersOf(const ShapeDocument &document)
{
    QList<int> numbers;
    for (const auto &shape : document.shapes()) {
        if (const auto numbering = shape->numbering())
            numbers.append(numbering->number);
    }
    return numbers;
}

} // namespace

class TextShapesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbers()
    {
        const auto all = [](int number) {
            QStringList texts;
            for (int type = 0; type < kNumberTypeCount; ++type)
                texts.append(numberText(number, static_cast<NumberType>(type)));
            return texts.join(u' ');
        };
        QCOMPARE(all(1), QStringLiteral("1 A a 一 I i"));
        QCOMPARE(all(10), QStringLiteral("10 J j 十 X x"));
        QCOMPARE(all(19), QStringLiteral("19 S s 十九 XIX xix"));
        QCOMPARE(all(26), QStringLiteral("26 Z z 二十六 XXVI xxvi"));
        QCOMPARE(all(27), QStringLiteral("27 AA aa 二十七 XXVII xxvii"));
        QCOMPARE(all(40), QStringLiteral("40 AN an 四十 XL xl"));
        QCOMPARE(all(100), QStringLiteral("100 CV cv 100 C c"));
        QCOMPARE(all(702), QStringLiteral("702 ZZ zz 702 DCCII dccii"));
        QCOMPARE(all(994), QStringLiteral("994 ALF alf 994 CMXCIV cmxciv"));
        QCOMPARE(numberText(0, NumberType::UpperLetter), QString());
        QCOMPARE(numberText(0, NumberType::Chinese), QStringLiteral("零"));
    }

    void badgesCountByTheirType()
    {
        ShapeDocument document;
        SequenceShape *first = addBadge(document, {50, 50}, {50, 50});
        addBadge(document, {100, 50}, {100, 50});
        SequenceShape *third = addBadge(document, {150, 50}, {150, 50});
        document.setSequenceType(NumberType::RomanUpper);
        SequenceShape *roman = addBadge(document, {200, 50}, {200, 50});
        QCOMPARE(numbersOf(document), (QList<int>{1, 2, 3, 1}));
        QCOMPARE(roman->displayText(), QStringLiteral("I"));
        document.removeShape(document.shapes().at(1).get());
        QCOMPARE(numbersOf(document), (QList<int>{1, 2, 1}));
        QVERIFY(document.takeRenumbered());
        document.select(first);
        QVERIFY(document.setSequenceValue(5));
        QCOMPARE(numbersOf(document), (QList<int>{5, 6, 1}));
        QVERIFY(document.setSequenceValue(12345));
        QCOMPARE(numbersOf(document), (QList<int>{999, 1000, 1}));
        third->setLabel(QStringLiteral("two\nlines"));
        QCOMPARE(third->displayText(), QStringLiteral("1000. twolines"));
        document.select(roman);
        document.duplicateSelected(20);
        QCOMPARE(document.selected()->numbering()->number, 1001); // behind every type
    }

    void aTailShowsOnceItIsLongEnough()
    {
        ShapeDocument document;
        SequenceShape *badge = addBadge(document, {100, 100}, {120, 100});
        const double radius = 28 * 0.6;
        QCOMPARE(badge->bounds()->width(), 2 * (radius + 5));
        // Without a tail the badge moves as a whole.
        badge->setHandle(0, 150, 140);
        QCOMPARE(badge->end(), QPointF(170, 140));
        badge->setHandle(1, 300, 140);
        QVERIFY(badge->bounds()->right() > 300);
        const QPointF tip = badge->end();
        badge->setHandle(0, 140, 200);
        QCOMPARE(badge->end(), tip);
        QVERIFY(inked(painted(document)).right() >= 298);
        document.select(badge);
        document.setSequenceArrow(false);
        QVERIFY(inked(painted(document)).right() < 170);
        // The label and its handle.
        QCOMPARE(badge->handles().size(), 2);
        badge->setLabel(QStringLiteral("label"));
        const QPointF handle = badge->handles().at(2);
        badge->setHandle(2, 200, 300);
        QCOMPARE(badge->handles().at(2), QPointF(200, 300));
        badge->setHandle(2, handle.x(), handle.y());
        QCOMPARE(badge->handles().at(2), handle);
        QVERIFY(badge->hitTest(140 + radius + 7.9, 200));
        QVERIFY(!badge->hitTest(140 + radius + 8.1, 200));
    }

    void longNumbersStayInTheirBadge()
    {
        ShapeDocument document;
        SequenceShape *badge = addBadge(document, {100, 100}, {100, 100});
        badge->color = QStringLiteral("#0000ff");
        for (const int number : {8, 88, 888}) {
            badge->setNumber(number);
            const QImage image = painted(document);
            QRect digits;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 84; x < 117; ++x) {
                    const QPoint at(x, y);
                    if (std::hypot(x - 100.0, y - 100.0) < 16 && image.pixelColor(at).red() > 200)
                        digits |= QRect(at, at);
                }
            }
            QVERIFY(digits.width() <= 27 && digits.height() >= 2);
            QVERIFY(std::abs(digits.x() + digits.width() / 2.0 - 100) < 1.6);
            QVERIFY(std::abs(digits.y() + digits.height() / 2.0 - 100) < 1.6);
        }
    }

    void textGrowsAndNeverNarrows()
    {
        ShapeDocument document;
        document.setFontSize(20);
        TextShape *text = addText(document, {100, 100}, QStringLiteral("a long first line"));
        QCOMPARE(text->box().topLeft(), QPointF(88, 80));
        const double width = text->box().width();
        const QFontMetricsF metrics(TextShape::fontOf({}, 20));
        QCOMPARE(width, metrics.horizontalAdvance(QStringLiteral("a long first line")) + 24);
        QCOMPARE(text->box().height(), 20 * 1.2 + 16);
        text->setText(QStringLiteral("a\n\nb"));
        QCOMPARE(text->box().size(), QSizeF(width, 3 * 24 + 16.0));
        // Dragged by an edge it narrows, to what it holds and no further.
        text->setHandle(1, 0, 0);
        QCOMPARE(text->box().width(), 20 + 24.0);
        QCOMPARE(text->box().left(), 88.0);
        text->setHandle(0, 40, 0);
        QCOMPARE(text->box().right(), 132.0);
        QCOMPARE(text->box().left(), 40.0);
        document.setTool(ToolType::None);
        text->setText(QStringLiteral("\n\n"));
        QCOMPARE(text->box().height(), 3 * 24 + 16.0);
    }

    /// Whatever its angle, the other side of a dragged handle stays where it was.
    void turnedTextKeepsItsOtherSide()
    {
        for (const double angle : {0.0, 0.7, 2.5, -1.2}) {
            ShapeDocument document;
            TextShape *text = addText(document, {200, 200}, QStringLiteral("turned\ntext"));
            const QRectF box = text->box();
            const QPointF middle = box.center();
            const QPointF knob(std::sin(angle), -std::cos(angle));
            text->setHandle(2, middle.x() + 90 * knob.x(), middle.y() + 90 * knob.y());
            QVERIFY(std::abs(std::remainder(text->rotation() - angle, 2 * std::numbers::pi)) < 1e-9);
            QCOMPARE(text->box(), box);
            const auto near = [](const QPointF &a, const QPointF &b) { return (a - b).manhattanLength() < 1e-6; };
            const QPointF left = text->handles().at(0);
            const QPointF along(std::cos(angle), std::sin(angle));
            const QPointF wide = left + along * 260;
            text->setHandle(1, wide.x(), wide.y());
            QVERIFY(near(text->handles().at(0), left));
            QVERIFY(near(text->handles().at(1), wide));
            const QPointF right = text->handles().at(1);
            const QPointF to = right - along * 300;
            text->setHandle(0, to.x(), to.y());
            QVERIFY(near(text->handles().at(1), right));
            QVERIFY(near(text->handles().at(0), to));
            // The corner scales around the opposite one.
            const QPointF corner = text->handles().at(3);
            const QPointF half = text->handles().at(0);
            const QPointF topLeft = half * 2 - (corner - (right - half));
            const QPointF further = topLeft + (corner - topLeft) * 1.5;
            text->setHandle(3, further.x(), further.y());
            QCOMPARE(text->fontSize(), 28 * 1.5);
            const QPointF newHalf = text->handles().at(0);
            const QPointF newCorner = text->handles().at(3);
            const QPointF newRight = text->handles().at(1);
            QVERIFY(near(newHalf * 2 - (newCorner - (newRight - newHalf)), topLeft));
        }
    }

    void stylesPaintWithinTheirBounds()
    {
        ShapeDocument document;
        TextShape *text = addText(document, {150, 150}, QStringLiteral("Áy\nmany jumping words"));
        const QPointF middle = text->box().center();
        text->setHandle(2, middle.x() + 60, middle.y() - 60);
        QList<QImage> looks;
        for (const TextStyle style :
             {TextStyle::Standard, TextStyle::Border, TextStyle::Background, TextStyle::RoundBackground}) {
            document.select(text);
            document.setTextStyle(style);
            const QImage marked = painted(document, true);
            QVERIFY(text->paintedBounds().toAlignedRect().contains(inked(marked)));
            document.clearSelection();
            const QImage bare = painted(document);
            QVERIFY(!looks.contains(bare));
            looks.append(bare);
        }
        text->setEditing(true);
        QVERIFY(inked(painted(document)).isValid()); // the plate stays under the editor
        QCOMPARE(contrastColor(Qt::white), QColor(Qt::black));
        QCOMPARE(contrastColor(Qt::black), QColor(217, 217, 217));
        QCOMPARE(contrastColor(QColor(200, 0, 0, 128)), QColor(239, 179, 179, 128));
    }

    /// Nothing is left behind on a repaint, and the hover mark goes round all of it.
    void inkStaysWithinItsBounds_data()
    {
        QTest::addColumn<QString>("json");
        QTest::newRow("large tail") << QStringLiteral(
            R"([{"type":"sequence","cx":250,"cy":200,"ex":330,"ey":190,"hasArrow":true,"fontSize":84,"thickness":12}])");
        QTest::newRow("head longer than its tail") << QStringLiteral(
            R"([{"type":"sequence","cx":250,"cy":200,"ex":250,"ey":178,"hasArrow":true,"fontSize":14,"thickness":30}])");
        QTest::newRow("label far away") << QStringLiteral(
            R"([{"type":"sequence","cx":350,"cy":300,"seqText":"label","textOffX":-320,"textOffY":-250}])");
        QTest::newRow("turned text") << QStringLiteral(
            R"([{"type":"text","x":100,"y":180,"text":"turned all the way","rotation":1.5,"textStyle":"border"}])");
    }

    void inkStaysWithinItsBounds()
    {
        QFETCH(QString, json);
        ShapeDocument document;
        document.loadState(json, {}, {}, 0);
        const BaseShape &shape = *document.shapes().first();
        QVERIFY(shape.inkBounds().toAlignedRect().contains(inked(painted(document))));
        QVERIFY(shape.paintedBounds().contains(shape.inkBounds()));
    }

    /// The border of a line lies below the letters of all lines.
    void bordersLieUnderLetters()
    {
        const auto black = [](const QString &text) {
            ShapeDocument document;
            document.loadState(
                QStringLiteral(R"([{"type":"text","x":50,"y":50,"fontSize":60,"color":"#000000","text":"%1",)"
                               R"("textStyle":"border"}])")
                    .arg(text),
                {}, {}, 0);
            const QImage image = painted(document);
            int count = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x)
                    count += image.pixelColor(x, y) == QColor(Qt::black) ? 1 : 0;
            }
            return count;
        };
        const int both = black(QStringLiteral("ggg\\nÁÁÁ"));
        QVERIFY(std::abs(both - black(QStringLiteral("ggg")) - black(QStringLiteral("ÁÁÁ"))) <= both / 100);
    }

    void absurdTextIsHarmless()
    {
        ShapeDocument document;
        const QString text = QStringLiteral("🙂שלום").repeated(100) + QStringLiteral("\n").repeated(3000);
        document.loadState(
            QStringLiteral(
                "[{\"type\":\"text\",\"w\":-1e300,\"h\":1e300,\"fontSize\":1e300,\"rotation\":1e300,"
                "\"padX\":-5,\"text\":\"%1\"},{\"type\":\"sequence\",\"seqNumber\":2000000000,\"fontSize\":-3,"
                "\"numberType\":\"roman_upper\",\"cx\":50,\"cy\":50,\"hasArrow\":true,\"ex\":1e300}]")
                .arg(QString(text).replace(u'\n', QStringLiteral("\\n"))),
            {}, {}, 0);
        QCOMPARE(document.shapes().size(), 2);
        painted(document);
        for (const auto &shape : document.shapes()) {
            shape->hitTest(1, 1);
            shape->handles();
        }
        QCOMPARE(document.shapes().at(1)->numbering()->number, 99'999);
    }
};

TAVREL_TEST_MAIN(QGuiApplication, TextShapesTest)
#include "test_text_shapes.moc"
