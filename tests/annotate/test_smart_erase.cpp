// The engine that keeps the erased picture, and the shape that shows it.
#include "annotate/erase_pictures.h"
#include "annotate/shape_document.h"
#include "annotate/smart_erase_engine.h"
#include "annotate/smart_erase_shape.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QSignalSpy>

#include <memory>

using namespace tavrel;

namespace {

constexpr QRgb kPaper = qRgb(230, 235, 240);
constexpr QRgb kInk = qRgb(200, 20, 20);

/// Paper with a small blot in each of ten boxes.
QList<QRect> tenBoxes()
{
    QList<QRect> boxes;
    for (int i = 0; i < 10; ++i)
        boxes.append(QRect(20 + 120 * (i % 5), 20 + 120 * (i / 5), 60, 50));
    return boxes;
}

QImage blottedPaper()
{
    QImage image(620, 260, QImage::Format_RGB32);
    image.fill(kPaper);
    for (const QRect &box : tenBoxes()) {
        for (int y = 20; y < 30; ++y)
            for (int x = 20; x < 35; ++x)
                image.setPixel(box.topLeft() + QPoint(x, y), kInk);
    }
    return image;
}

int inkIn(const QImage &image, const QRect &area)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x)
            count += image.pixel(x, y) == kInk ? 1 : 0;
    }
    return count;
}

QList<EraseSpec> specsOf(const QList<QRect> &boxes, EraseSolver solver = EraseSolver::Auto)
{
    QList<EraseSpec> specs;
    for (const QRect &box : boxes)
        specs.append({box, solver});
    return specs;
}

/// A box whose solving takes long enough that the engine can be taken away meanwhile.
QImage grain()
{
    QImage image(900, 700, QImage::Format_RGB32);
    test::background(QStringLiteral("grain")).draw(image, 1);
    return image;
}
const EraseSpec kLongWork{QRect(100, 100, 700, 500), EraseSolver::WholeBox};

std::shared_ptr<SmartEraseShape> shapeAt(const QRectF &box)
{
    auto shape = std::make_shared<SmartEraseShape>();
    shape->setBox(box);
    return shape;
}

QImage painted(const SmartEraseShape &shape, const QSize &size, const ShapeRenderContext &context)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::black);
    QPainter painter(&image);
    shape.paint(painter, context);
    return image;
}

} // namespace

class SmartEraseTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void solvesBesideTheCaller()
    {
        SmartEraseEngine engine(blottedPaper());
        QSignalSpy solved(&engine, &SmartEraseEngine::solved);
        const QList<EraseSpec> specs = specsOf(tenBoxes());
        engine.setSpecs(specs);
        QVERIFY(engine.isSolving());
        QVERIFY(engine.window(specs[3]).isNull());
        QCOMPARE(engine.result(), blottedPaper()); // nothing arrives before the loop turns
        QTRY_COMPARE(solved.size(), 10);
        QVERIFY(!engine.isSolving());
        QCOMPARE(inkIn(engine.result(), engine.result().rect()), 0);
        for (const EraseSpec &spec : specs)
            QVERIFY(engine.window(spec).contains(spec.first));
        QCOMPARE(engine.window(specs[3].first), engine.window(specs[3]));
        QVERIFY(engine.window(QRect(1, 2, 3, 4)).isNull());
    }

    void solvesBeforeItReturns()
    {
        SmartEraseEngine engine(blottedPaper());
        QSignalSpy solved(&engine, &SmartEraseEngine::solved);
        engine.setSpecs(specsOf(tenBoxes().mid(0, 4))); // some of them are on their way already
        engine.solve(specsOf(tenBoxes()));
        QCOMPARE(engine.solveCount(), 10);
        QCOMPARE(inkIn(engine.result(), engine.result().rect()), 0);
        QCoreApplication::processEvents();
        QCOMPARE(solved.size(), 0);
        QCOMPARE(engine.regionInfos().size(), 10);
        QCOMPARE(engine.regionInfos().first().path, erase::Path::Smooth);
    }

    void movingOneOfTenSolvesOne()
    {
        SmartEraseEngine engine(blottedPaper());
        QList<QRect> boxes = tenBoxes();
        engine.solve(specsOf(boxes));
        QCOMPARE(engine.solveCount(), 10);
        engine.solve(specsOf(boxes));
        QCOMPARE(engine.solveCount(), 10);

        const QRect old = boxes[6];
        boxes[6].translate(5, -3);
        engine.setSpecs(specsOf(boxes));
        QCOMPARE(engine.solveCount(), 11);
        QVERIFY(inkIn(engine.result(), old) > 0); // the old place shows the source again
        QTRY_VERIFY(!engine.isSolving());
        QCOMPARE(inkIn(engine.result(), engine.result().rect()), 0);

        boxes[6] = old; // undone
        engine.setSpecs(specsOf(boxes));
        QVERIFY(!engine.isSolving());
        QCOMPARE(engine.solveCount(), 11);
        QCOMPARE(inkIn(engine.result(), engine.result().rect()), 0);

        boxes.removeAt(2);
        engine.setSpecs(specsOf(boxes));
        QCOMPARE(engine.solveCount(), 11);
        QVERIFY(inkIn(engine.result(), tenBoxes().at(2)) > 0);
        engine.setSpecs({});
        QCOMPARE(engine.result(), blottedPaper());
    }

    void anotherSolverIsAnotherResult()
    {
        SmartEraseEngine engine(blottedPaper());
        const QRect box = tenBoxes().first();
        engine.solve({{box, EraseSolver::Auto}});
        engine.setSpecs({{box, EraseSolver::WholeBox}});
        QCOMPARE(engine.solveCount(), 2);
        QVERIFY(engine.window({box, EraseSolver::Auto}).isNull());
        QVERIFY(engine.window({box, EraseSolver::WholeBox}).isNull());
        QTRY_VERIFY(!engine.window({box, EraseSolver::WholeBox}).isNull());
    }

    void laterBoxesLieOverEarlierOnes()
    {
        // Both see the source: the second would otherwise find the first one's paper.
        QImage image = blottedPaper();
        const QRect box = tenBoxes().first();
        const QRect other = box.translated(30, 10);
        SmartEraseEngine both(image);
        both.solve({{box, EraseSolver::WholeBox}, {other, EraseSolver::WholeBox}});
        SmartEraseEngine second(image);
        second.solve({{other, EraseSolver::WholeBox}});
        QCOMPARE(both.result().copy(other), second.result().copy(other));
        both.solve({{other, EraseSolver::WholeBox}, {box, EraseSolver::WholeBox}});
        QCOMPARE(both.solveCount(), 2);
        SmartEraseEngine first(image);
        first.solve({{box, EraseSolver::WholeBox}});
        QCOMPARE(both.result().copy(box), first.result().copy(box));
    }

    void anAnswerNobodyWaitsForIsDropped()
    {
        SmartEraseEngine engine(grain());
        QSignalSpy solved(&engine, &SmartEraseEngine::solved);
        engine.setSpecs({kLongWork});
        engine.setSpecs({});
        QVERIFY(!engine.isSolving());
        engine.setSpecs({{QRect(10, 10, 30, 30), EraseSolver::Texture}});
        QTRY_COMPARE_WITH_TIMEOUT(solved.size(), 1, 60'000);
        QCOMPARE(solved.first().first().toRect(), QRect(10, 10, 30, 30));
        QCOMPARE(engine.solveCount(), 2);
        QImage outside = engine.result();
        QCOMPARE(outside.copy(kLongWork.first), grain().copy(kLongWork.first));
    }

    void goingDownWaitsForNobody()
    {
        for (const bool hasAnAnswer : {false, true}) {
            auto engine = std::make_unique<SmartEraseEngine>(grain());
            engine->setSpecs({kLongWork, {QRect(20, 20, 60, 50), EraseSolver::Texture}});
            if (hasAnAnswer)
                QTRY_VERIFY_WITH_TIMEOUT(!engine->window({QRect(20, 20, 60, 50), EraseSolver::Texture}).isNull(),
                                         60'000);
            engine.reset();
            QCoreApplication::processEvents();
        }
    }

    void picturesWithNothingInThem()
    {
        QImage dot(1, 1, QImage::Format_ARGB32);
        dot.fill(Qt::red);
        for (const QImage &image : {QImage(), dot}) {
            SmartEraseEngine engine(image);
            engine.solve({{QRect(0, 0, 1, 1), EraseSolver::Auto},
                          {QRect(), EraseSolver::Auto},
                          {QRect(-5, -5, 20, 20), EraseSolver::WholeBox}});
            QCOMPARE(engine.result().size(), image.size());
            QCOMPARE(engine.scale(), 1.0);
            QCOMPARE(engine.regionInfos().size(), 3);
        }
    }

    void theShapeShowsTheResult_data()
    {
        QTest::addColumn<double>("ratio");
        QTest::addColumn<QPointF>("origin");
        QTest::newRow("plain") << 1.0 << QPointF(0, 0);
        QTest::newRow("two pixels a unit") << 2.0 << QPointF(0, 0);
        QTest::newRow("shifted") << 1.0 << QPointF(15, 7);
        QTest::newRow("both") << 2.0 << QPointF(-15, 7);
    }

    void theShapeShowsTheResult()
    {
        QFETCH(double, ratio);
        QFETCH(QPointF, origin);
        QImage picture = blottedPaper();
        picture.setDevicePixelRatio(ratio);
        SmartEraseEngine engine(picture);
        const QRect pixels = tenBoxes().at(1);
        const auto shape = shapeAt(QRectF(QPointF(pixels.topLeft()) / ratio + origin, QSizeF(pixels.size()) / ratio));
        ShapeDocument document;
        document.append(shape);
        const QList<EraseSpec> regions = document.eraseRegions(engine.scale(), origin);
        QCOMPARE(regions, (QList<EraseSpec>{{pixels, EraseSolver::Auto}}));

        ShapeRenderContext context;
        context.eraseEngine = &engine;
        context.origin = origin;
        QVERIFY(!shape->isPending(context));
        engine.setSpecs(regions);
        QVERIFY(shape->isPending(context));
        engine.solve(regions);
        QVERIFY(!shape->isPending(context));

        QImage canvas(picture.size(), QImage::Format_RGB32);
        canvas.setDevicePixelRatio(ratio);
        QPainter painter(&canvas);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        painter.translate(-origin);
        painter.drawImage(origin, picture);
        document.paintShapes(painter, context);
        painter.end();
        QCOMPARE(inkIn(canvas, pixels), 0);
        QCOMPARE(canvas.pixel(pixels.topLeft()), kPaper);
        QCOMPARE(inkIn(canvas, canvas.rect()), 9 * 150); // the others stay
    }

    void theShapeWaitsUnderATint()
    {
        const QRectF box(10, 10, 100, 40);
        auto shape = shapeAt(box);
        const QRgb tint = qRgb(16, 30, 46); // the blue at 46 of 255 over black
        const auto isTint = [tint](QRgb color) {
            return std::abs(qRed(color) - qRed(tint)) <= 1 && std::abs(qGreen(color) - qGreen(tint)) <= 1 &&
                   std::abs(qBlue(color) - qBlue(tint)) <= 1;
        };
        const QImage waiting = painted(*shape, {130, 60}, {});
        QVERIFY(isTint(waiting.pixel(10, 10)));
        QVERIFY(isTint(waiting.pixel(109, 49)));
        QCOMPARE(waiting.pixel(110, 30), qRgb(0, 0, 0));

        // A result that the host declares out of date is not shown.
        SmartEraseEngine engine(blottedPaper());
        engine.solve({{box.toRect(), EraseSolver::Auto}});
        ShapeRenderContext context;
        context.eraseEngine = &engine;
        QCOMPARE(painted(*shape, {130, 60}, context).pixel(12, 12), kPaper);
        shape->pending = true;
        QVERIFY(painted(*shape, {130, 60}, context).pixel(12, 12) != kPaper);
    }

    void aLightSweepsOverTheBox()
    {
        const auto brightness = [](double sweep, int x) {
            QImage image(130, 60, QImage::Format_RGB32);
            image.fill(Qt::black);
            QPainter painter(&image);
            paintErasePlaceholder(painter, {10, 10, 100, 40}, sweep);
            return qRed(image.pixel(x, 30));
        };
        // The band is 35 wide; its middle goes from 17.5 before the box to 17.5 behind it.
        const QList<QPair<double, int>> middles{{0.25, 26}, {0.5, 60}, {0.75, 94}};
        for (const auto &[sweep, x] : middles) {
            QVERIFY(brightness(sweep, x) > 100);
            QCOMPARE(brightness(sweep, x == 60 ? 20 : 60), brightness(0, 60));
        }
    }

    void aStoredShapeComesBack()
    {
        const QList<QPair<QByteArray, EraseSolver>> stored{
            {R"({"type":"smart_erase","x":1,"y":2,"w":3,"h":4,"eraseSolver":"wholeBox"})", EraseSolver::WholeBox},
            {R"({"type":"smart_erase","x":1,"y":2,"w":3,"h":4})", EraseSolver::Auto},
            {R"({"type":"smart_erase","x":1,"y":2,"w":3,"h":4,"eraseSolver":3})", EraseSolver::Auto}};
        for (const auto &[json, solver] : stored) {
            const auto shape = ShapeFactory::standard().read(json);
            QCOMPARE(shape->eraseBox()->rect, QRectF(1, 2, 3, 4));
            QCOMPARE(shape->eraseBox()->solver, solver);
            QCOMPARE(ShapeFactory::standard().read(shape->toJsonText())->toJsonText(), shape->toJsonText());
            QVERIFY(shape->hitTest(-3, 10));
            QVERIFY(!shape->hitTest(-3.1, 10));
        }
    }

    void theAttributeChoosesTheSolver()
    {
        ShapeDocument document;
        document.setTool(ToolType::SmartErase);
        document.setEraseWholeBox(true);
        document.press(10, 10, 5);
        document.move(10, 10, 60, 50, false);
        document.release();
        const QRect pixels(10, 10, 50, 40);
        QCOMPARE(document.eraseRegions(1), (QList<EraseSpec>{{pixels, EraseSolver::WholeBox}}));
        document.setEraseWholeBox(false); // the drawn shape is still the selected one
        QCOMPARE(document.eraseRegions(1), (QList<EraseSpec>{{pixels, EraseSolver::Auto}}));
        document.undo();
        QCOMPARE(document.eraseRegions(1), (QList<EraseSpec>{{pixels, EraseSolver::WholeBox}}));
    }
};

TAVREL_TEST_MAIN(QCoreApplication, SmartEraseTest)
#include "test_smart_erase.moc"
