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
    test::backgrounds().at(6).draw(image, 1);
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
        QTRY_COMPARE(solved.size(), 1);
        QCOMPARE(solved.first().first().toRect(), QRect(10, 10, 30, 30));
        QCOMPARE(engine.solveCount(), 2);
        QImage outside = engine.result();
        QCOMPARE(outside.copy(kLongWork.first), grain().copy(kLongWork.first));
    }

    void goingDownWaitsForNobody()
    {
        for (int i = 0; i < 20; ++i) {
            auto engine = std::make_unique<SmartEraseEngine>(grain());
            engine->setSpecs({kLongWork, {QRect(20, 20, 60, 50), EraseSolver::Texture}});
            if (i % 2)
                QTRY_VERIFY_WITH_TIMEOUT(!engine->window({QRect(20, 20, 60, 50), EraseSolver::Texture}).isNull(),
                                         60'000);
            engine.reset();
            QCoreApplication::processEvents();
        }
    }

    void picturesWithNothingInThem_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::newRow("null") << QImage();
        QImage dot(1, 1, QImage::Format_ARGB32);
        dot.fill(Qt::red);
        QTest::newRow("1 x 1") << dot;
    }

    void picturesWithNothingInThem()
    {
        QFETCH(QImage, image);
        SmartEraseEngine engine(image);
        engine.solve({{QRect(0, 0, 1, 1), EraseSolver::Auto},
                      {QRect(), EraseSolver::Auto},
                      {QRect(-5, -5, 20, 20), EraseSolver::WholeBox}});
        QCOMPARE(engine.result().size(), image.size());
        QCOMPARE(engine.scale(), 1.0);
        QCOMPARE(engine.regionInfos().size(), 3);
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
        const QRectF box(10, 10, 100, 40);
        const auto brightest = [&box](double sweep) {
            QImage image(130, 60, QImage::Format_RGB32);
            image.fill(Qt::black);
            QPainter painter(&image);
            paintErasePlaceholder(painter, box, sweep);
            painter.end();
            int at = -1;
            for (int x = 0; x < image.width(); ++x) {
                if (qRed(image.pixel(x, 30)) > (at < 0 ? 40 : qRed(image.pixel(at, 30))))
                    at = x;
            }
            return at;
        };
        // The band is 35 wide; its middle goes from 17.5 before the box to 17.5 behind it.
        QCOMPARE(brightest(0), -1);
        QVERIFY(std::abs(brightest(0.25) - 26) <= 1);
        QVERIFY(std::abs(brightest(0.5) - 60) <= 1);
        QVERIFY(std::abs(brightest(0.75) - 94) <= 1);
        QVERIFY(brightest(0.999) < 110);
    }

    void hitsAndHandles()
    {
        auto shape = shapeAt({10, 20, 30, 40});
        QVERIFY(shape->hitTest(25, 40));
        QVERIFY(shape->hitTest(6, 16));
        QVERIFY(!shape->hitTest(5.9, 30));
        QVERIFY(shape->hitTest(44, 64));
        QVERIFY(!shape->hitTest(44.1, 64));
        QCOMPARE(shape->handles().size(), 4);
        QCOMPARE(shape->setHandle(0, 60, 70), 2); // dragged past the opposite corner
        QCOMPARE(shape->box(), QRectF(40, 60, 20, 10));
        QVERIFY(shape->isEffect());
    }

    void aStoredShapeComesBack_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QRectF>("box");
        QTest::addColumn<EraseSolver>("solver");
        QTest::newRow("whole") << QByteArray(
                                      R"({"type":"smart_erase","x":1,"y":2,"w":3,"h":4,"eraseSolver":"wholeBox"})")
                               << QRectF(1, 2, 3, 4) << EraseSolver::WholeBox;
        QTest::newRow("texture") << QByteArray(R"({"type":"smart_erase","w":3,"h":4,"eraseSolver":"texture"})")
                                 << QRectF(0, 0, 3, 4) << EraseSolver::Texture;
        QTest::newRow("no solver") << QByteArray(R"({"type":"smart_erase","x":1.5,"y":2,"w":3,"h":4})")
                                   << QRectF(1.5, 2, 3, 4) << EraseSolver::Auto;
        QTest::newRow("unknown solver") << QByteArray(R"({"type":"smart_erase","eraseSolver":"magic"})") << QRectF()
                                        << EraseSolver::Auto;
        QTest::newRow("of another type") << QByteArray(R"({"type":"smart_erase","x":"a","w":[],"eraseSolver":3})")
                                         << QRectF() << EraseSolver::Auto;
    }

    void aStoredShapeComesBack()
    {
        QFETCH(QByteArray, json);
        QFETCH(QRectF, box);
        QFETCH(EraseSolver, solver);
        const auto read = ShapeFactory::standard().read(json);
        const auto *shape = dynamic_cast<SmartEraseShape *>(read.get());
        QVERIFY(shape);
        QCOMPARE(shape->box(), box);
        QCOMPARE(shape->eraseSolver, solver);
        const auto again = ShapeFactory::standard().read(shape->toJsonText());
        QCOMPARE(again->toJsonText(), shape->toJsonText());
        QCOMPARE(dynamic_cast<SmartEraseShape *>(again.get())->eraseSolver, solver);
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
