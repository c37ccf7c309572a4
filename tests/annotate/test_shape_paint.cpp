#include "annotate/outline_glow.h"
#include "annotate/selection_marks.h"
#include "annotate/shape_document.h"
#include "annotate/test_shapes.h"
#include "annotate/vector_shapes.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QImage>

#include <limits>

using namespace tavrel;
using test::box;

namespace {

QImage canvas(int width = 200, int height = 200)
{
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

BaseShape *add(ShapeDocument &document, ToolType type, const QRectF &place, const char *color)
{
    auto shape = std::make_shared<test::BoxShape>(type);
    shape->setBox(place);
    shape->color = QString::fromLatin1(color);
    BaseShape *raw = shape.get();
    document.append(std::move(shape));
    return raw;
}

QImage painted(const ShapeDocument &document, const ShapeRenderContext &context = {})
{
    QImage image = canvas();
    QPainter painter(&image);
    document.paint(painter, context);
    return image;
}

/// The pixels that are not transparent.
QRect inked(const QImage &image)
{
    QRect all;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y).alpha() > 0)
                all |= QRect(x, y, 1, 1);
        }
    }
    return all;
}

} // namespace

class ShapePaintTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void effectsLieUnderStrokesWhateverTheOrder()
    {
        ShapeDocument document(test::shapeFactory());
        BaseShape *rect = add(document, ToolType::Rect, {50, 50, 100, 100}, "#ff0000");
        BaseShape *spotlight = add(document, ToolType::Spotlight, {0, 0, 10, 10}, "#00ff00");
        add(document, ToolType::Spotlight, {10, 0, 10, 10}, "#00ff00");
        BaseShape *mosaic = add(document, ToolType::Mosaic, {0, 60, 200, 20}, "#0000ff");
        const QImage image = painted(document);
        QCOMPARE(image.pixelColor(100, 70), QColor(Qt::red));
        QCOMPARE(image.pixelColor(20, 70), QColor(Qt::blue));
        QCOMPARE(box(rect)->seenSpotlights, 2);
        QCOMPARE(box(spotlight)->seenSpotlights, 2);
        QCOMPARE(box(mosaic)->seenSpotlights, -1);
    }

    void shapesAreClippedTheirMarksAreNot()
    {
        ShapeDocument document(test::shapeFactory());
        BaseShape *shape = add(document, ToolType::Rect, {50, 50, 100, 100}, "#ff0000");
        ShapeRenderContext context;
        context.contentClip = QRectF(0, 0, 100, 200);
        document.select(shape);
        const QImage image = painted(document, context);
        QCOMPARE(image.pixelColor(99, 100), QColor(Qt::red));
        QCOMPARE(image.pixelColor(101, 100).alpha(), 0);
        QCOMPARE(image.pixelColor(150, 50), QColor(Qt::white));
        QImage saved = canvas();
        {
            QPainter painter(&saved);
            document.paintShapes(painter, context);
        }
        QCOMPARE(inked(saved), QRect(50, 50, 100, 100));
    }

    void theGlowLiesAroundTheShapeOnly()
    {
        ShapeDocument document(test::shapeFactory());
        BaseShape *shape = add(document, ToolType::Rect, {80, 80, 40, 40}, "#80ff0000");
        document.setHovered(shape);
        const QImage image = painted(document);
        const QColor beside = image.pixelColor(79, 100);
        QVERIFY(beside.alpha() > 100);
        QVERIFY(beside.blue() > beside.red());
        QVERIFY(image.pixelColor(76, 100).alpha() > 0);
        QVERIFY(image.pixelColor(76, 100).alpha() < beside.alpha());
        QVERIFY(inked(image).contains(QRect(76, 76, 48, 48)));
        QVERIFY(QRect(73, 73, 54, 54).contains(inked(image)));
        // A see-through shape cuts as much of the glow away as it covers.
        QImage bare = canvas();
        {
            QPainter painter(&bare);
            document.paintShapes(painter, {});
        }
        QVERIFY(image.pixelColor(100, 100).alpha() > bare.pixelColor(100, 100).alpha());

        document.select(shape);
        QCOMPARE(painted(document).pixelColor(76, 100).alpha(), 0);
    }

    void largeShapesGlowAsSmallOnesDo_data()
    {
        QTest::addColumn<int>("side");
        QTest::addColumn<bool>("isOutline");
        for (const int side : {498, 500, 150, 333, 1000}) { // the first two end where a part ends
            QTest::addRow("filled %d", side) << side << false;
            QTest::addRow("outline %d", side) << side << true;
        }
    }

    /// Large shapes are glowing in parts; no part may be missing.
    void largeShapesGlowAsSmallOnesDo()
    {
        QFETCH(int, side);
        QFETCH(bool, isOutline);
        const auto glow = [isOutline](int length) {
            test::BoxShape filled(ToolType::Rect, QRectF(20, 20, length, length));
            RectShape outline;
            outline.setBox(filled.box());
            return isOutline ? makeOutlineGlow(outline, {}, 1.0).image : makeOutlineGlow(filled, {}, 1.0).image;
        };
        const QImage small = glow(80);
        const QImage large = glow(side);
        const int middle = small.width() / 2;
        const int more = large.width() - small.width();
        for (int y = 0; y < small.height(); ++y) {
            for (int x = 0; x < small.width(); ++x)
                QCOMPARE(large.pixel(x < middle ? x : x + more, y < middle ? y : y + more), small.pixel(x, y));
        }
        for (int along = middle; along < middle + more; ++along) {
            for (int across = 0; across < small.width(); ++across) {
                const int there = across < middle ? across : across + more;
                QCOMPARE(large.pixel(there, along), small.pixel(across, middle));
                QCOMPARE(large.pixel(along, there), small.pixel(middle, across));
            }
        }
    }

    void theGlowFollowsAChangedShape()
    {
        ShapeDocument document(test::shapeFactory());
        BaseShape *shape = add(document, ToolType::Rect, {20, 20, 40, 40}, "#ff0000");
        document.setHovered(shape);
        const QImage before = painted(document);
        QCOMPARE(painted(document), before);
        document.translateAll(100, 100);
        QCOMPARE(painted(document).copy(100, 100, 100, 100), before.copy(0, 0, 100, 100));
        document.setHovered(nullptr);
        QCOMPARE(inked(painted(document)), QRect(120, 120, 40, 40));
    }

    void whichShapesGetNoOutlineGlow_data()
    {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        QTest::addColumn<ToolType>("type");
        QTest::addColumn<QRectF>("place");
        QTest::addColumn<double>("scale");
        QTest::addColumn<bool>("glows");
        QTest::newRow("plain") << ToolType::Rect << QRectF(0, 0, 100, 100) << 1.0 << true;
        QTest::newRow("spotlight") << ToolType::Spotlight << QRectF(0, 0, 100, 100) << 1.0 << false;
        QTest::newRow("no bounds") << ToolType::Watermark << QRectF(0, 0, 100, 100) << 1.0 << false;
        QTest::newRow("no scale") << ToolType::Rect << QRectF(0, 0, 100, 100) << 0.0 << false;
        // 11.5 of padding on each side, which ends on whole pixels
        QTest::newRow("largest") << ToolType::Rect << QRectF(-0.5, -0.5, 1477, 977) << 1.0 << true;
        QTest::newRow("too large") << ToolType::Rect << QRectF(0, 0, 1478, 978) << 1.0 << false;
        QTest::newRow("not larger by zoom") << ToolType::Rect << QRectF(-0.5, -0.5, 1477, 977) << 4.0 << true;
        QTest::newRow("smaller by zoom") << ToolType::Rect << QRectF(0, 0, 2000, 2000) << 0.5 << true;
        QTest::newRow("absurd") << ToolType::Rect << QRectF(-1e6, -1e6, 2e6, 2e6) << 1.0 << false;
        QTest::newRow("endless") << ToolType::Rect << QRectF(0, 0, infinity, infinity) << 1.0 << false;
        QTest::newRow("no number") << ToolType::Rect << QRectF(std::nan(""), 0, 10, 10) << 1.0 << false;
    }

    void whichShapesGetNoOutlineGlow()
    {
        QFETCH(ToolType, type);
        QFETCH(QRectF, place);
        QFETCH(double, scale);
        QFETCH(bool, glows);
        test::BoxShape shape(type);
        shape.setBox(place);
        QCOMPARE(!makeOutlineGlow(shape, {}, scale).image.isNull(), glows);
    }

    void aDeclinedGlowGivesWayToTheFrame()
    {
        ShapeDocument document(test::shapeFactory());
        document.setHovered(add(document, ToolType::Spotlight, {80, 80, 40, 40}, "#ff0000"));
        const QImage image = painted(document);
        const QColor frame = image.pixelColor(100, 76);
        QVERIFY(frame.alpha() > 200);
        QVERIFY(frame.blue() > frame.red());
    }

    void boundsCoverWhatIsPainted()
    {
        ShapeDocument document(test::shapeFactory());
        QVERIFY(document.boundsPadded().isNull());
        add(document, ToolType::Rect, {50, 60, 10, 10}, "#ff0000")->thickness = 8;
        add(document, ToolType::Rect, {100, 100, 20, 20}, "#ff0000");
        QCOMPARE(document.boundsPadded(), QRectF(QPointF(22, 32), QPointF(145.5, 145.5)));
    }

    void marksKeepTheirSizeOnTheScreen()
    {
        for (const double handleScale : {0.5, 1.0, 2.0}) {
            QImage image = canvas();
            {
                QPainter painter(&image);
                painter.setPen(Qt::red);
                paintRoundHandle(painter, {100, 100}, handleScale);
                QCOMPARE(painter.pen().color(), QColor(Qt::red));
            }
            QCOMPARE(image.pixelColor(100, 100), QColor(Qt::white));
            const double radius = 8.2 * handleScale; // white disc and the widest ring
            QCOMPARE(inked(image), QRectF(100 - radius, 100 - radius, 2 * radius, 2 * radius).toAlignedRect());

            image.fill(Qt::transparent);
            {
                QPainter painter(&image);
                paintCornerBrackets(painter, {50, 50, 100, 20}, handleScale);
                paintEdgeTicks(painter, {50, 50, 100, 20}, 6, 4 * handleScale, handleScale);
            }
            const double arm = std::min(12 * handleScale, 8.0);
            const double reach = (5.0 + 4.4) / 2 * handleScale;
            QCOMPARE(inked(image), QRectF(50 - reach, 50 - reach, 100 + 2 * reach, 20 + 2 * reach).toAlignedRect());
            QCOMPARE(image.pixelColor(static_cast<int>(50 + arm) - 1, 50), QColor(Qt::white));
            QCOMPARE(image.pixelColor(75, 50).alpha(), 0);
            QCOMPARE(image.pixelColor(100, 50), QColor(Qt::white));
            QCOMPARE(image.pixelColor(150, 60), QColor(Qt::white));
        }
    }
};

TAVREL_TEST_MAIN(QGuiApplication, ShapePaintTest)
#include "test_shape_paint.moc"
