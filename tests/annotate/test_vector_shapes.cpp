#include "annotate/arrow_geometry.h"
#include "annotate/arrow_shape.h"
#include "annotate/path_shape.h"
#include "annotate/shape_document.h"
#include "annotate/vector_shapes.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QImage>
#include <QJsonDocument>

#include <cmath>
#include <limits>

using namespace tavrel;

namespace {

QImage blank(const QColor &color = Qt::white, const QSize &size = {400, 300})
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(color);
    return image;
}

void paintInto(QImage &image, const ShapeDocument &document, const QRectF &exposed = {}, double scale = 1,
               const QPointF &offset = {})
{
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(offset);
    painter.scale(scale, scale);
    ShapeRenderContext context;
    if (!exposed.isNull()) {
        painter.setClipRect(exposed);
        context.exposed = {exposed};
    }
    document.paint(painter, context);
}

/// Draws with a tool from one point to the others.
BaseShape *drawn(ShapeDocument &document, ToolType tool, const QList<QPointF> &way)
{
    document.setTool(tool);
    const QPointF from = way.first();
    document.press(from.x(), from.y(), 15);
    for (qsizetype i = 1; i < way.size(); ++i)
        document.move(from.x(), from.y(), way[i].x(), way[i].y(), false);
    document.release();
    BaseShape *shape = document.lastCreated();
    document.clearSelection();
    return shape;
}

QList<QPointF> wave(int count, double step = 1.3)
{
    QList<QPointF> points;
    for (int i = 0; i < count; ++i)
        points.append({20 + step * i - 200 * std::floor(step * i / 340), 150 + 70 * std::sin(i * 0.21)});
    return points;
}

const QList<ToolType> kTools{ToolType::Rect,  ToolType::Circle, ToolType::Line,
                             ToolType::Arrow, ToolType::Pen,    ToolType::Marker};

int differingPixels(const QImage &a, const QImage &b, int tolerance = 0)
{
    if (a == b)
        return 0;
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            count += std::abs(qRed(p) - qRed(q)) > tolerance || std::abs(qGreen(p) - qGreen(q)) > tolerance ||
                     std::abs(qBlue(p) - qBlue(q)) > tolerance;
        }
    }
    return count;
}

} // namespace

class VectorShapesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hits_data()
    {
        QTest::addColumn<int>("tool");
        QTest::addColumn<QPointF>("place");
        QTest::addColumn<bool>("isHit");
        const auto add = [](const char *name, ToolType tool, QPointF place, bool isHit) {
            QTest::newRow(name) << static_cast<int>(tool) << place << isHit;
        };
        // All from (100, 100) to (200, 160), thickness 4.
        add("rectangle, at 10 from an edge", ToolType::Rect, {90, 130}, true);
        add("rectangle, beyond", ToolType::Rect, {89.9, 130}, false);
        add("rectangle, inside", ToolType::Rect, {150, 130}, false);
        add("rectangle, outside a corner", ToolType::Rect, {210, 170}, true);
        add("ellipse, on it", ToolType::Circle, {200, 130}, true);
        add("ellipse, centre", ToolType::Circle, {150, 130}, false);
        add("ellipse, by a corner of its box", ToolType::Circle, {113.9, 113.9}, true);
        add("ellipse, 14 from a corner", ToolType::Circle, {86, 100}, false);
        add("line, beside", ToolType::Line, {150, 141}, true);
        add("line, off", ToolType::Line, {150, 142}, false);
        add("arrow, beside", ToolType::Arrow, {150, 143.9}, true);
        add("arrow, off", ToolType::Arrow, {150, 144.5}, false);
        add("pen, beside", ToolType::Pen, {150, 136.9}, true);
        add("pen, off", ToolType::Pen, {150, 138}, false);
    }

    void hits()
    {
        QFETCH(int, tool);
        QFETCH(QPointF, place);
        QFETCH(bool, isHit);
        ShapeDocument document;
        document.setThickness(4);
        BaseShape *shape = drawn(document, static_cast<ToolType>(tool), {{100, 100}, {200, 160}});
        QCOMPARE(shape->hitTest(place.x(), place.y()), isHit);
    }

    void markersAreHitByTheirKind()
    {
        ShapeDocument document;
        document.setMarkerRectMode(true);
        BaseShape *box = drawn(document, ToolType::Marker, {{100, 100}, {200, 160}});
        QVERIFY(box->hitTest(150, 130));
        QVERIFY(box->hitTest(96, 164));
        QVERIFY(!box->hitTest(95.9, 130));
        document.setMarkerRectMode(false);
        document.setThickness(20);
        BaseShape *stroke = drawn(document, ToolType::Marker, {{100, 100}, {200, 100}});
        QVERIFY(stroke->hitTest(150, 113.9));
        QVERIFY(!stroke->hitTest(150, 114.1));
    }

    /// A corner dragged past the opposite one goes on being dragged, and the other stays.
    void cornersCrossOver()
    {
        ShapeDocument document;
        document.setTool(ToolType::Rect);
        document.select(drawn(document, ToolType::Rect, {{100, 100}, {200, 160}}));
        document.press(100, 100, 15);
        for (const QPointF to : {QPointF(150, 150), QPointF(250, 150), QPointF(250, 200), QPointF(240, 210)})
            document.move(100, 100, to.x(), to.y(), false);
        document.release();
        QCOMPARE(*document.selected()->bounds(), QRectF(200, 160, 40, 50));
    }

    void arrowCourse()
    {
        const ArrowCourse bent = ArrowCourse::make({0, 0}, {100, 0}, {80, 40});
        QCOMPARE(bent.handle(), QPointF(75, 40)); // along the chord no further than a quarter
        QCOMPARE(bent.at(0.5), bent.handle());
        QVERIFY(bent.isCurved());
        QVERIFY(!ArrowCourse::make({0, 0}, {100, 0}, {0.5, -0.5}).isCurved());
        QCOMPARE(bent.parameterAt(0), 0.0);
        QCOMPARE(bent.parameterAt(bent.length() + 1), 1.0);
        const double half = bent.parameterAt(bent.length() / 2);
        QVERIFY(half > 0.3 && half < 0.7);

        // The head of a short arrow is half of it.
        QCOMPARE(ArrowMetrics::make(ArrowStyle::Standard, 3, 20).headLength, 10.0);
        QCOMPARE(ArrowMetrics::make(ArrowStyle::Standard, 3, 200).headLength, 36.0);
        QCOMPARE(ArrowMetrics::make(ArrowStyle::Double, 3, 54).headLength, 18.0);
        QVERIFY(arrowParts(ArrowCourse::make({0, 0}, {0.9, 0}, {}), ArrowStyle::Standard, 3).isEmpty());
        // Where nothing gives a direction there still is one.
        const ArrowCourse point{{5, 5}, {5, 5}, {}};
        QCOMPARE(point.direction(0.5), QPointF(1, 0));
    }

    /// Nothing of an arrow may lie outside what it says it paints, and its tip is where it ends.
    void arrowsStayInTheirBounds()
    {
        for (int style = 0; style < 5; ++style) {
            for (const QPointF handle : {QPointF(200, 150), QPointF(60, 280), QPointF(330, 30)}) {
                ShapeDocument document;
                document.setThickness(30);
                document.setArrowStyle(static_cast<ArrowStyle>(style));
                auto *arrow = drawn(document, ToolType::Arrow, {{120, 90}, {280, 210}});
                arrow->setHandle(1, handle.x(), handle.y());
                QImage image = blank(Qt::white, {500, 400});
                paintInto(image, document, {}, 1, {50, 50});
                const QRect allowed = arrow->paintedBounds().translated(50, 50).toAlignedRect();
                for (int y = 0; y < image.height(); ++y) {
                    for (int x = 0; x < image.width(); ++x)
                        QVERIFY(image.pixelColor(x, y) == QColor(Qt::white) || allowed.contains(x, y));
                }
                const QImage tip = image.copy(326, 256, 9, 9);
                QVERIFY(differingPixels(tip, blank(Qt::white, tip.size())) > 0);
            }
        }
    }

    void turnsAndMirrors()
    {
        ShapeDocument document;
        auto *arrow = drawn(document, ToolType::Arrow, {{10, 20}, {110, 20}});
        arrow->setHandle(1, 60, 50);
        auto *box = drawn(document, ToolType::Rect, {{10, 20}, {60, 40}});
        auto *stroke = drawn(document, ToolType::Pen, {{0, 0}, {30, 10}});
        document.rotateAllCW(300);
        QCOMPARE(arrow->handles(), (QList<QPointF>{{280, 10}, {250, 60}, {280, 110}}));
        QCOMPARE(*box->bounds(), QRectF(260, 10, 20, 50));
        document.rotateAllCCW(300);
        document.flipAllH(200);
        QCOMPARE(arrow->handles(), (QList<QPointF>{{190, 20}, {140, 50}, {90, 20}}));
        QCOMPARE(*box->bounds(), QRectF(140, 20, 50, 20));
        QCOMPARE(stroke->bounds()->topRight(), QPointF(201.5, -1.5));
        document.scaleAll(2);
        for (const double odd : {0.0, -2.0, 1.0, std::nan(""), std::numeric_limits<double>::infinity()})
            document.scaleAll(odd);
        document.translateAll(-80, 5);
        QCOMPARE(arrow->handles().at(1), QPointF(200, 105));
        QCOMPARE(*box->bounds(), QRectF(200, 45, 100, 40));
        QCOMPARE(box->thickness, 6.0);
        document.commit();
        QVERIFY(document.undoStack().last().contains(u"\"w\":100"));
    }

    void opacityCountsForLinesAndStrokesOnly()
    {
        for (const ToolType tool : kTools) {
            ShapeDocument document;
            document.setThickness(10);
            BaseShape *shape = drawn(document, tool, {{50, 50}, {250, 50}, {250, 200}});
            shape->compositeOperation = QStringLiteral("source-over");
            QImage full = blank();
            paintInto(full, document);
            shape->opacity = 0.5;
            QImage faded = blank();
            paintInto(faded, document);
            const bool fades = tool == ToolType::Line || tool == ToolType::Pen || tool == ToolType::Marker;
            QCOMPARE(full != faded, fades);
        }
    }

    /// Over black the highlighter shows faintly, over white and text it multiplies.
    void theHighlighterShowsOnBlackAndKeepsText()
    {
        for (const bool isBox : {false, true}) {
            ShapeDocument document;
            document.setColor(QStringLiteral("#ffff00"));
            document.setThickness(40);
            document.setMarkerRectMode(isBox);
            drawn(document, ToolType::Marker, {{50, 130}, {350, 170}});
            QImage white = blank();
            QImage black = blank(Qt::black);
            paintInto(white, document);
            paintInto(black, document);
            QCOMPARE(white.pixelColor(200, 150), QColor(255, 255, 0));
            QCOMPARE(black.pixelColor(200, 150), QColor(38, 38, 0));
            QImage grey = blank(QColor(100, 100, 100));
            paintInto(grey, document);
            const QColor mixed = grey.pixelColor(200, 150);
            QCOMPARE(mixed.blue(), 0);
            QVERIFY(mixed.red() > 115 && mixed.red() < 130);
        }
    }

    /// The mask behind long strokes shows what the plain path shows, whatever the steps it was painted in.
    void longStrokesLookLikeTheirPath_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<QPointF>("offset");
        QTest::newRow("one to one") << 1.0 << QPointF();
        QTest::newRow("1.5, between pixels") << 1.5 << QPointF(-40.25, -30.5);
        QTest::newRow("0.4") << 0.4 << QPointF(3, 3);
    }

    void longStrokesLookLikeTheirPath()
    {
        QFETCH(double, scale);
        QFETCH(QPointF, offset);
        ShapeDocument document;
        document.setThickness(5);
        document.setTool(ToolType::Pen);
        const QList<QPointF> points = wave(900);
        document.press(points[0].x(), points[0].y(), 15);
        for (const QPointF &point : points) {
            document.move(points[0].x(), points[0].y(), point.x(), point.y(), false);
            QImage ignored = blank(Qt::white, {40, 40});
            paintInto(ignored, document, {}, scale, offset);
        }
        document.release();
        document.clearSelection();
        QImage layered = blank();
        paintInto(layered, document, {}, scale, offset);

        QImage plain = blank();
        {
            QPainter painter(&plain);
            painter.setRenderHint(QPainter::Antialiasing);
            painter.translate(offset);
            painter.scale(scale, scale);
            const auto *stroke = dynamic_cast<PathShape *>(document.shapes().first().get());
            painter.strokePath(smoothPath(stroke->points().list()),
                               QPen(QColor(0xf9, 0x34, 0x42), 5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        }
        QVERIFY(differingPixels(plain, blank()) > 1000);
        QVERIFY(differingPixels(layered, plain, 64) < 5);
        ShapeDocument again;
        again.loadState(document.shapesJson(), {}, {}, 0);
        QImage fresh = blank();
        paintInto(fresh, again, {}, scale, offset);
        QCOMPARE(fresh, layered);
    }

    /// A scribble longer than any mask is kept whole, on the screen and when it is read again.
    void aLongScribbleKeepsAllOfItsInk()
    {
        ShapeDocument document;
        document.setTool(ToolType::Pen);
        document.press(10, 10, 15);
        for (int i = 0; i < 3000; ++i)
            document.move(10, 10, i % 2 ? 10 : 390, 10 + i * 0.09, false);
        document.release();
        document.clearSelection();
        ShapeDocument again;
        again.loadState(document.shapesJson(), {}, {}, 0);
        QImage grown = blank();
        QImage fresh = blank();
        paintInto(grown, document);
        paintInto(fresh, again);
        QCOMPARE(fresh, grown);
        QVERIFY(grown.pixelColor(200, 270) != QColor(Qt::white));
    }

    /// Other shapes with the same box, at the address of those before them, are other shapes.
    void aLoadedStateIsPaintedAnew()
    {
        ShapeDocument document;
        drawn(document, ToolType::Rect, {{100, 100}, {200, 160}});
        const QString json = document.shapesJson();
        for (int i = 0; i < 8; ++i) {
            static_cast<void>(document.takeDamage());
            document.loadState(QString(json).replace(QStringLiteral("F93442"), QStringLiteral("00FF0%1").arg(i)), {},
                               {}, 0);
            QVERIFY(!document.takeDamage().isEmpty());
        }
    }

    void stepsWhileDraggingAreOneState()
    {
        ShapeDocument document;
        document.setTool(ToolType::Rect);
        document.press(100, 100, 15);
        document.move(100, 100, 150, 150, false);
        document.setThickness(6);
        document.move(100, 100, 200, 200, false);
        document.release();
        QCOMPARE(document.undoIndex(), 1);
        QCOMPARE(document.selected()->thickness, 6.0);
        document.press(200, 200, 15); // a corner, held without a move
        document.setThickness(8);
        QCOMPARE(document.undoIndex(), 1);
        document.release();
        QCOMPARE(document.undoIndex(), 2);
    }

    /// Repainting only what the document says has changed gives the same picture as painting everything.
    void damageCoversEveryChange()
    {
        ShapeDocument document;
        QImage kept = blank();
        const auto repaint = [&] {
            for (const QRectF &damage : document.takeDamage()) {
                const QRectF exposed = damage.toAlignedRect();
                QPainter(&kept).fillRect(exposed, Qt::white);
                paintInto(kept, document, exposed);
            }
            QImage whole = blank();
            paintInto(whole, document);
            return differingPixels(kept, whole);
        };
        for (const ToolType tool : kTools) {
            document.setTool(tool);
            document.setThickness(tool == ToolType::Marker ? 24 : 6);
            document.press(50, 60, 15);
            for (const QPointF &point : wave(120, 2)) {
                document.move(50, 60, point.x(), point.y(), false);
                QCOMPARE(repaint(), 0);
            }
            document.move(50, 60, 300, 200, tool == ToolType::Pen);
            QCOMPARE(repaint(), 0);
            document.release();
            QCOMPARE(repaint(), 0);
        }
        document.setTool(ToolType::None);
        for (const QPointF at : {QPointF(300, 200), QPointF(50, 60)}) {
            document.press(at.x(), at.y(), 15);
            document.move(at.x(), at.y(), at.x() + 31, at.y() + 17.5, false);
            QCOMPARE(repaint(), 0);
            document.release();
            document.setColor(QStringLiteral("#00aa00"));
            QCOMPARE(repaint(), 0);
        }
        document.setHovered(document.shapes().first().get());
        QCOMPARE(repaint(), 0);
        document.undo();
        QCOMPARE(repaint(), 0);
        document.removeShape(document.shapes().at(1).get());
        QCOMPARE(repaint(), 0);
        document.scaleAll(0.7);
        QCOMPARE(repaint(), 0);
        QVERIFY(document.takeDamage().isEmpty());
    }

    void markersSnapToTheTextTheyTouch()
    {
        ShapeDocument document;
        QList<QRectF> lines{{20, 40, 200, 16}, {20, 70, 180, 16}, {20, 100, 90, 16}};
        document.setTextLineProvider([&lines] { return lines; });
        document.setThickness(12);
        document.setColor(QStringLiteral("#80ff00"));
        QVERIFY(dynamic_cast<PathShape *>(drawn(document, ToolType::Marker, {{100, 30}, {100, 97}})));
        document.removeShape(document.shapes().first().get());
        document.setMarkerSnapText(true);
        // One segment that crosses two lines between its points, and ends 3 above the third.
        BaseShape *last = drawn(document, ToolType::Marker, {{100, 30}, {100, 97}});
        QCOMPARE(document.shapes().size(), 3);
        QCOMPARE(*last->bounds(), QRectF(18, 98.5, 94, 19));
        QCOMPARE(last->color, QStringLiteral("#80ff00"));
        QCOMPARE(last->compositeOperation, QStringLiteral("multiply"));
        QCOMPARE(document.shapes().first()->bounds()->top(), 38.5);

        drawn(document, ToolType::Marker, {{300, 30}, {310, 200}});
        QCOMPARE(document.shapes().size(), 4);
        QVERIFY(dynamic_cast<PathShape *>(document.shapes().last().get()));
        lines.clear();
        drawn(document, ToolType::Marker, {{100, 30}, {100, 97}});
        QCOMPARE(document.shapes().size(), 5);
    }

    /// Absurd numbers in a stored drawing neither hang the painting nor harm the other shapes.
    void absurdShapesHarmNoOthers()
    {
        QByteArray points = "[";
        for (int i = 0; i < 50'000; ++i)
            points += (i ? ",{" : "{") + QByteArray("\"x\":") + (i % 2 ? "1e300" : "-1e300") +
                      ",\"y\":" + QByteArray::number(i * 1e5) + "}";
        points += "]";
        const QByteArray json =
            "[{\"type\":\"pen\",\"thickness\":5,\"points\":" + points +
            "},{\"type\":\"marker\",\"thickness\":1e9,\"compositeOperation\":\"multiply\",\"points\":[{\"x\":1},{\"x\":"
            "9}]},"
            "{\"type\":\"arrow\",\"startX\":-1e300,\"endX\":1e300,\"ctrlOffY\":1e99,\"arrowStyle\":\"wedge_outline\"},"
            "{\"type\":\"arrow\",\"startX\":\"x\",\"endX\":null,\"thickness\":-4,\"arrowStyle\":\"double\"},"
            "{\"type\":\"circle\",\"startX\":-1e18,\"endX\":1e18,\"endY\":1e18,\"thickness\":1e-300},"
            "{\"type\":\"rect\",\"w\":-50,\"h\":1e300},{\"type\":\"line\",\"x1\":1e300,\"y2\":-1e300,\"opacity\":7},"
            "{\"type\":\"rect\",\"x\":10,\"y\":10,\"w\":20,\"h\":20,\"color\":\"#00ff00\",\"thickness\":6}]";
        ShapeDocument document;
        document.loadState(QString::fromUtf8(json), {}, {}, 0);
        QCOMPARE(document.shapes().size(), 8);
        QImage image = blank(Qt::white, {1920, 1080});
        paintInto(image, document);
        for (const auto &shape : document.shapes()) {
            shape->hitTest(5, 5);
            QVERIFY(shape->paintedBounds().width() < 1e8);
            document.setHovered(shape.get());
            QImage hovered = blank();
            paintInto(hovered, document);
        }
        QCOMPARE(image.pixelColor(10, 20), QColor(0, 255, 0));
    }
};

TAVREL_TEST_MAIN(QGuiApplication, VectorShapesTest)
#include "test_vector_shapes.moc"
