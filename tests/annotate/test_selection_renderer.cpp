// What is cut out of a picture, and the shapes painted on it.
#include "annotate/crop_rect.h"
#include "annotate/effect_image_cache.h"
#include "annotate/erase_pictures.h"
#include "annotate/flatten.h"
#include "annotate/selection_renderer.h"
#include "annotate/sequence_shape.h"
#include "annotate/shape_document.h"
#include "annotate/smart_erase_engine.h"
#include "annotate/text_shape.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QPainter>

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>
#include <vector>

using namespace tavrel;

namespace {

/// Grain that no solver has done with at once.
QImage grain(const QSize &size, double ratio)
{
    QImage image(size, QImage::Format_RGB32);
    test::background(QStringLiteral("grain")).draw(image, 1);
    image.setDevicePixelRatio(ratio);
    return image;
}

void drag(ShapeDocument &document, ToolType tool, const QRectF &box)
{
    document.clearSelection();
    document.setTool(tool);
    document.press(box.left(), box.top(), 1);
    for (int i = 1; i <= 8; ++i)
        document.move(box.left(), box.top(), box.left() + box.width() * i / 8,
                      box.top() + box.height() * (i % 3 + 1) / 3, false);
    document.move(box.left(), box.top(), box.right(), box.bottom(), false);
    document.release();
    if (auto *text = dynamic_cast<TextShape *>(document.selected())) {
        text->setText(QStringLiteral("Text 文字 🙂\nline"));
        text->setHandle(2, box.right(), box.top()); // turned
    }
    if (auto *badge = dynamic_cast<SequenceShape *>(document.selected()))
        badge->setLabel(QStringLiteral("label"));
    if (tool == ToolType::Arrow)
        document.selected()->setHandle(1, box.right(), box.top()); // bent
    if (tool == ToolType::Line)
        document.selected()->opacity = 0.4;
    document.commit();
}

/// Every kind of shape there is, two of each, over each other.
void drawEverything(ShapeDocument &document)
{
    for (int round = 0; round < 2; ++round) {
        document.setColor(round == 0 ? QStringLiteral("#F93442") : QStringLiteral("#80007DFF"));
        document.setMosaicMode(round == 0 ? MosaicMode::Mosaic : MosaicMode::Blur);
        document.setMarkerRectMode(round == 1);
        document.setSequenceType(round == 0 ? NumberType::Arabic : NumberType::Chinese);
        document.setSequenceArrow(round == 1);
        int place = 0;
        for (int i = 0; i < 64; ++i) {
            const auto tool = static_cast<ToolType>(i);
            if (!ShapeFactory::standard().knows(tool) || tool == ToolType::Watermark)
                continue;
            drag(document, tool, QRectF(12.3 + 45.0 * (place % 5), 10.7 + 50.0 * (place / 5) + 20 * round, 61, 43));
            ++place;
        }
    }
    drag(document, ToolType::SmartErase, {255, 190, 38, 40}); // reaches out of the selection
    document.setWatermarkText(QStringLiteral("mark 水印"));
    document.setWatermark();
    document.clearSelection();
}

/// What the window shows of a selection, once everything is solved: the shapes of the document itself, painted over the
/// picture.
QImage shown(const QImage &picture, const QRectF &selection, const ShapeDocument &document,
             const SmartEraseEngine &engine)
{
    const EffectImageCache effects(picture);
    ShapeRenderContext context;
    context.backdrop = &picture;
    context.effectSource = &effects;
    context.eraseEngine = &engine;
    context.canvasBounds = selection;
    QImage image = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    document.paintShapes(painter, context);
    painter.end();
    return image.copy(cropRect(selection, picture.devicePixelRatio(), picture.size()));
}

const QRectF kLongBox(30, 30, 200, 150);

} // namespace

class SelectionRendererTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyEdgeIsRoundedNeverTheSize_data()
    {
        QTest::addColumn<QRectF>("selection");
        QTest::addColumn<double>("ratio");
        QTest::addColumn<QRect>("crop");
        QTest::newRow("whole") << QRectF(10, 20, 30, 40) << 1.0 << QRect(10, 20, 30, 40);
        QTest::newRow("1.25: 12.5 to 37.5") << QRectF(10, 10, 20, 20) << 1.25 << QRect(13, 13, 25, 25);
        QTest::newRow("1.25: a width that rounds differently") << QRectF(1, 0, 1.2, 4) << 1.25 << QRect(1, 0, 2, 5);
        QTest::newRow("1.5") << QRectF(10.3, 0, 10.4, 2) << 1.5 << QRect(15, 0, 16, 3);
        QTest::newRow("cut to the picture") << QRectF(90, 90, 50, 50) << 1.0 << QRect(90, 90, 10, 10);
        QTest::newRow("outside") << QRectF(200, 200, 50, 50) << 1.0 << QRect();
    }

    void everyEdgeIsRoundedNeverTheSize()
    {
        QFETCH(QRectF, selection);
        QFETCH(double, ratio);
        QFETCH(QRect, crop);
        const QRect result = cropRect(selection, ratio, QSize(100, 100));
        if (crop.isNull())
            QVERIFY(result.isEmpty());
        else
            QCOMPARE(result, crop);
    }

    void theResultHasThePixelsBetweenTheRoundedEdges()
    {
        const QImage image = grain({125, 125}, 1.25);
        const QImage result = renderSelection(image, {1, 10, 1.2, 20}, {}, ShapeFactory::standard());
        QCOMPARE(result.size(), QSize(2, 25)); // 1.25 to 2.75, 12.5 to 37.5
        QCOMPARE(result.devicePixelRatio(), 1.25);
        QCOMPARE(result.pixel(0, 0), image.pixel(1, 13));
        QVERIFY(renderSelection(image, {200, 0, 10, 10}, {}, ShapeFactory::standard()).isNull());
        QVERIFY(renderSelection({}, {0, 0, 10, 10}, {}, ShapeFactory::standard()).isNull());
    }

    void flattenedOnAnyThreadItIsWhatTheWindowShows_data()
    {
        QTest::addColumn<double>("ratio");
        QTest::newRow("1") << 1.0;
        QTest::newRow("1.5") << 1.5;
    }

    void flattenedOnAnyThreadItIsWhatTheWindowShows()
    {
        QFETCH(double, ratio);
        const QImage picture = grain(QSize(300, 280) * ratio, ratio);
        const QRectF selection(5.4, 3.2, 280.9, 250.3);
        ShapeDocument document;
        drawEverything(document);
        SmartEraseEngine engine(picture);
        const QList<EraseSpec> boxes = document.eraseRegions(ratio);
        QVERIFY(boxes.size() >= 2);
        const auto effects = std::make_shared<const EffectImageCache>(picture);
        engine.solve({boxes.first()});
        engine.setSpecs(boxes); // one is known, others are on their way
        const QList<FlattenRequest> requests{flattenRequest(picture, selection, document, &engine, effects),
                                             flattenRequest(picture, selection, document)};
        std::vector<QImage> flattened(4);
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < flattened.size(); ++i)
            threads.emplace_back([&, i] { flattened[i] = flatten(requests[static_cast<qsizetype>(i % 2)]); });
        document.loadState({}, {}, {}, 0); // the window goes on
        for (std::thread &thread : threads)
            thread.join();

        drawEverything(document = ShapeDocument());
        QCOMPARE(document.eraseRegions(ratio), boxes);
        engine.solve(boxes);
        const QImage wanted = shown(picture, selection, document, engine);
        QCOMPARE(flattened[0].devicePixelRatio(), ratio);
        for (const QImage &image : flattened)
            QCOMPARE(image, wanted);
    }

    void boxesOnTheirWayAreWaitedForNotSolvedAgain()
    {
        const QImage picture = grain({260, 210}, 1);
        ShapeDocument document;
        document.setEraseWholeBox(true);
        drag(document, ToolType::SmartErase, kLongBox);
        std::optional<SmartEraseEngine> engine(std::in_place, picture);
        engine->setSpecs(document.eraseRegions(1));
        const FlattenRequest request = flattenRequest(picture, QRectF(picture.rect()), document, &*engine);
        engine.reset(); // the session closes: its engine gives up what nobody wants any more
        const QImage image = flatten(request);
        QCOMPARE(image, flatten(flattenRequest(picture, QRectF(picture.rect()), document)));
        QVERIFY(image.copy(kLongBox.toRect()) != picture.copy(kLongBox.toRect()));
        SmartEraseEngine next(request.erased);
        QVERIFY(next.solve(document.eraseRegions(1)));
        QCOMPARE(next.solveCount(), 0);
    }

    void aRequestThatIsGivenUpEndsAtOnce()
    {
        const QImage picture = grain({900, 700}, 1);
        ShapeDocument document;
        document.setEraseWholeBox(true);
        drag(document, ToolType::SmartErase, {60, 60, 780, 580}); // takes a second and more
        std::optional<SmartEraseEngine> engine(std::in_place, picture);
        engine->setSpecs(document.eraseRegions(1));
        const FlattenRequest request = flattenRequest(picture, QRectF(picture.rect()), document, &*engine);
        engine.reset();
        erase::CancelFlag cancel;
        std::atomic<bool> hasBegun = false;
        QImage image(1, 1, QImage::Format_RGB32);
        std::thread thread([&] {
            hasBegun = true;
            image = flatten(request, cancel);
        });
        while (!hasBegun)
            std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // so that it waits for the box already, mostly
        cancel.cancel();
        thread.join();
        QVERIFY(image.isNull());
    }

    void aRequestThatGoesLeavesTheWindowItsBoxes()
    {
        const QImage picture = grain({260, 210}, 1);
        ShapeDocument document;
        drag(document, ToolType::SmartErase, kLongBox);
        SmartEraseEngine engine(picture);
        engine.setSpecs(document.eraseRegions(1));
        static_cast<void>(flattenRequest(picture, QRectF(picture.rect()), document, &engine));
        QTRY_VERIFY_WITH_TIMEOUT(!engine.isSolving(), 60'000);
        QVERIFY(engine.result() != picture);
    }
};

TAVREL_TEST_MAIN(QGuiApplication, SelectionRendererTest)
#include "test_selection_renderer.moc"
