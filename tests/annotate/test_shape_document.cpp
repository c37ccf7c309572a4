#include "annotate/shape_document.h"
#include "annotate/test_shapes.h"
#include "support/test_main.h"

#include <QCoreApplication>

using namespace tavrel;
using test::box;
using test::stroke;

namespace {

/// A document with the pointer gestures of a user.
class Board final
{
public:
    BaseShape *draw(ToolType tool, QPointF from, QPointF to, bool shift = false)
    {
        document.setTool(tool);
        document.press(from.x(), from.y(), 6);
        document.move(from.x(), from.y(), to.x(), to.y(), shift);
        return document.release();
    }
    BaseShape *click(double x, double y)
    {
        document.press(x, y, 6);
        return document.release();
    }
    void drag(QPointF from, QPointF to)
    {
        document.press(from.x(), from.y(), 6);
        document.move(from.x(), from.y(), to.x(), to.y(), false);
        document.release();
    }
    [[nodiscard]] qsizetype count() const { return document.shapes().size(); }
    [[nodiscard]] BaseShape *at(qsizetype index) const { return document.shapes().at(index).get(); }
    [[nodiscard]] QList<int> numbers() const
    {
        QList<int> all;
        for (const auto &shape : document.shapes())
            all.append(box(shape.get())->number);
        return all;
    }

    ShapeDocument document{test::shapeFactory()};
};

} // namespace

class ShapeDocumentTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // --- press, move, release ------------------------------------------------------------------------------------

    void aDrawnShapeIsSelectedAndOneUndoStep()
    {
        Board board;
        board.document.setColor(QStringLiteral("#123456"));
        board.document.setThickness(7);
        BaseShape *shape = board.draw(ToolType::Rect, {10, 20}, {110, 70});
        QCOMPARE(shape, board.document.selected());
        QCOMPARE(shape, board.document.lastCreated());
        QVERIFY(shape->selected);
        QVERIFY(!board.document.isInteracting());
        QCOMPARE(box(shape)->box(), QRectF(10, 20, 100, 50));
        QCOMPARE(shape->color, QStringLiteral("#123456"));
        QCOMPARE(shape->thickness, 7.0);
        QCOMPARE(board.document.undoIndex(), 1);
        board.document.undo();
        QCOMPARE(board.count(), 0);
        QVERIFY(!board.document.canUndo());
    }

    void aHandleWinsOverAShapeOnTopOfIt()
    {
        Board board;
        board.draw(ToolType::Rect, {10, 10}, {60, 60});
        board.draw(ToolType::Rect, {200, 200}, {300, 300});
        board.document.setTool(ToolType::None);
        BaseShape *below = board.click(30, 30);
        board.draw(ToolType::Circle, {50, 50}, {150, 150});
        board.document.setTool(ToolType::None);
        board.document.select(below);
        const qsizetype top = board.count() - 1;
        BaseShape *above = board.at(top);
        QVERIFY(above->hitTest(60, 60));
        board.drag({60, 60}, {80, 90});
        QCOMPARE(board.document.selected(), below);
        QCOMPARE(box(below)->box(), QRectF(10, 10, 70, 80));
        QCOMPARE(board.at(top), above);
        // Exactly the tolerance away is no handle any more.
        board.document.press(86, 90, 6);
        QCOMPARE(board.document.selected(), above);
        board.document.release();
    }

    void aPressRaisesButOnlyAMoveIsAStep()
    {
        Board board;
        board.draw(ToolType::Rect, {0, 0}, {50, 50});
        board.draw(ToolType::Rect, {100, 100}, {150, 150});
        BaseShape *first = board.at(0);
        board.document.setTool(ToolType::None);
        const int index = board.document.undoIndex();
        board.click(20, 20);
        QCOMPARE(board.at(1), first);
        QCOMPARE(box(first)->pressed, QPointF(20, 20));
        QCOMPARE(board.document.undoIndex(), index);
        board.drag({20, 20}, {25, 28});
        QCOMPARE(board.document.undoIndex(), index + 1);
        QCOMPARE(box(first)->box(), QRectF(5, 8, 50, 50));
        board.document.undo();
        QCOMPARE(box(board.at(0))->box().topLeft(), QPointF(0, 0));
    }

    void whichShapesAToolGrabsAgain_data()
    {
        QTest::addColumn<ToolType>("tool");
        QTest::addColumn<bool>("keepSelected"); // the older shape is the selected one
        QTest::addColumn<bool>("keepLast");     // and still the one drawn last
        QTest::addColumn<bool>("grabs");
        QTest::newRow("pen, just drawn") << ToolType::Pen << true << true << true;
        QTest::newRow("pen, selected again") << ToolType::Pen << true << false << false;
        QTest::newRow("pen, deselected") << ToolType::Pen << false << true << false;
        QTest::newRow("rect, selected again") << ToolType::Rect << true << false << true;
        QTest::newRow("rect, deselected") << ToolType::Rect << false << true << false;
        QTest::newRow("sequence, deselected") << ToolType::Sequence << false << false << true;
        QTest::newRow("text, deselected") << ToolType::Text << false << false << true;
    }

    void whichShapesAToolGrabsAgain()
    {
        QFETCH(ToolType, tool);
        QFETCH(bool, keepSelected);
        QFETCH(bool, keepLast);
        QFETCH(bool, grabs);
        Board board;
        BaseShape *shape = board.draw(tool, {100, 100}, {200, 200});
        if (tool == ToolType::Text) {
            box(shape)->text = QStringLiteral("a");
            board.document.commit();
        }
        if (!keepLast) {
            board.document.setTool(ToolType::None);
            board.document.setTool(tool);
        }
        if (!keepSelected)
            board.document.clearSelection();
        board.document.press(150, 150, 6);
        QCOMPARE(board.document.selected() == shape, grabs);
        QCOMPARE(board.count(), grabs ? 1 : 2);
    }

    void aToolLeavesShapesOfOtherKindsAlone()
    {
        Board board;
        BaseShape *text = board.draw(ToolType::Text, {100, 100}, {200, 200});
        box(text)->text = QStringLiteral("a");
        BaseShape *badge = board.draw(ToolType::Sequence, {150, 150}, {250, 250});
        QVERIFY(badge != text);
        board.document.clearSelection();
        board.document.setTool(ToolType::Text);
        QCOMPARE(board.document.press(180, 180, 6), text);
    }

    void shiftMakesSquaresAndStraightStrokes_data()
    {
        QTest::addColumn<ToolType>("tool");
        QTest::addColumn<QPointF>("to");
        QTest::addColumn<QRectF>("box");
        QTest::newRow("wide") << ToolType::Rect << QPointF(140, 110) << QRectF(100, 100, 40, 40);
        QTest::newRow("up and left") << ToolType::Circle << QPointF(90, 70) << QRectF(70, 70, 30, 30);
        QTest::newRow("level goes down") << ToolType::Spotlight << QPointF(60, 100) << QRectF(60, 100, 40, 40);
        QTest::newRow("mosaic is free") << ToolType::Mosaic << QPointF(140, 110) << QRectF(100, 100, 40, 10);
    }

    void shiftMakesSquaresAndStraightStrokes()
    {
        QFETCH(ToolType, tool);
        QFETCH(QPointF, to);
        QFETCH(QRectF, box);
        Board board;
        QCOMPARE(test::box(board.draw(tool, {100, 100}, to, true))->box(), box);
        board.document.setTool(ToolType::Pen);
        board.document.press(0, 0, 6);
        board.document.move(0, 0, 30, 50, false);
        board.document.move(0, 0, 60, 10, true);
        QCOMPARE(stroke(board.document.selected())->points().list(), QList<QPointF>({{0, 0}, {60, 10}}));
    }

    void whatIsTooSmallGivesWayToTheShapeBelow()
    {
        Board board;
        board.document.setColor(QStringLiteral("#111111"));
        board.document.setDisplayScale(2);
        board.document.setThickness(4);
        BaseShape *below = board.draw(ToolType::Rect, {0, 0}, {100, 100});
        board.draw(ToolType::Pen, {300, 300}, {400, 400});
        board.document.setColor(QStringLiteral("#222222"));
        board.document.setThickness(9);
        board.document.clearSelection();
        const QStringList before = board.document.undoStack();

        BaseShape *picked = board.draw(ToolType::Circle, {50, 50}, {52, 52});
        QCOMPARE(picked, below);
        QCOMPARE(board.document.selected(), below);
        QCOMPARE(board.document.lastCreated(), below);
        QCOMPARE(board.document.takeActivated(), below);
        QCOMPARE(board.document.takeActivated(), nullptr);
        QCOMPARE(board.at(board.count() - 1), below);
        QCOMPARE(board.count(), 2);
        QCOMPARE(board.document.attributes().color, QStringLiteral("#111111"));
        QCOMPARE(board.document.attributes().thickness, 8.0);
        QCOMPARE(board.document.attributes().baseThickness, 4.0);
        QCOMPARE(board.document.undoStack(), before);

        QCOMPARE(board.draw(ToolType::Circle, {600, 600}, {602, 602}), nullptr);
        QCOMPARE(board.document.selected(), nullptr);
        QVERIFY(board.draw(ToolType::Circle, {600, 600}, {603, 600}));
        QCOMPARE(board.count(), 3);
    }

    void aClickPicksWithinTheSlop()
    {
        Board board;
        BaseShape *shape = board.draw(ToolType::Rect, {0, 0}, {100, 100});
        board.document.clearSelection();
        QVERIFY(!board.draw(ToolType::Rect, {108, 50}, {108, 50}));
        board.document.setHitSlop(10);
        QCOMPARE(board.draw(ToolType::Rect, {108, 50}, {108, 50}), shape);
        board.document.clearSelection();
        QVERIFY(!board.draw(ToolType::Rect, {112, 50}, {112, 50}));
        board.document.setTool(ToolType::Text);
        QCOMPARE(board.document.pickAt(50, 50), nullptr);
        board.document.setTool(ToolType::Eraser);
        QCOMPARE(board.document.pickAt(50, 50), nullptr);
    }

    void anEmptyTextWaitsForItsEditor()
    {
        Board board;
        BaseShape *text = board.draw(ToolType::Text, {10, 10}, {10, 10});
        QCOMPARE(text, board.document.selected());
        QCOMPARE(board.document.undoIndex(), 0);
        box(text)->editing = true;
        box(text)->text = QStringLiteral(" ");
        board.document.clearSelection();
        QCOMPARE(board.document.undoIndex(), 0);
        board.document.select(text);
        box(text)->text = QStringLiteral("note");
        board.document.clearSelection();
        QCOMPARE(board.document.undoIndex(), 1);
        QVERIFY(board.document.undoStack().last().contains(u"note"));
    }

    void whatAnEditorWroteBeforeDeselectingIsCommitted()
    {
        Board board;
        BaseShape *text = board.draw(ToolType::Text, {10, 10}, {90, 90});
        box(text)->text = QStringLiteral("old");
        board.document.commit();
        board.document.clearSelection();
        board.document.commit();
        board.document.select(text);
        box(text)->text = QStringLiteral("new");
        board.document.clearSelection();
        board.document.commit();
        QVERIFY(board.document.undoStack().last().contains(u"new"));
        board.document.undo();
        QCOMPARE(box(board.at(0))->text, QStringLiteral("old"));
        board.document.redo();
        QCOMPARE(box(board.at(0))->text, QStringLiteral("new"));
    }

    void cancellingLeavesNothingBehind()
    {
        Board board;
        for (int i = 0; i < 3; ++i)
            board.draw(ToolType::Sequence, {100.0 * i, 0}, {100.0 * i + 20, 20});
        board.document.clearSelection();
        QVERIFY(board.document.setSequenceValue(2));
        const QStringList before = board.document.undoStack();
        board.document.press(500, 500, 6);
        QVERIFY(board.document.isInteracting());
        QVERIFY(board.document.cancelCreation());
        QVERIFY(!board.document.cancelCreation());
        QVERIFY(!board.document.isInteracting());
        QCOMPARE(board.numbers(), QList<int>({1, 2, 3}));
        QCOMPARE(board.document.sequenceValue(), 4);
        QVERIFY(!board.document.takeRenumbered());
        QCOMPARE(board.document.undoStack(), before);

        QVERIFY(board.document.setSequenceValue(9));
        board.document.setTool(ToolType::Rect);
        board.document.press(500, 500, 6);
        QVERIFY(board.document.cancelCreation());
        QCOMPARE(board.document.sequenceValue(), 9);
    }

    void deletingWhileAHandleIsHeldEndsTheGesture()
    {
        Board board;
        board.draw(ToolType::Rect, {0, 0}, {100, 100});
        board.document.press(100, 100, 6);
        QVERIFY(board.document.isInteracting());
        board.document.removeSelected();
        QVERIFY(!board.document.isInteracting());
        board.document.move(100, 100, 150, 150, false);
        QCOMPARE(board.document.release(), nullptr);
        QCOMPARE(board.count(), 0);
        board.document.undo();
        QCOMPARE(box(board.at(0))->box(), QRectF(0, 0, 100, 100));
    }

    void hitAnyAgreesWithPress()
    {
        Board board;
        board.draw(ToolType::Rect, {0, 0}, {100, 100});
        QVERIFY(board.document.hitAny(104, 104, 6));
        QVERIFY(board.document.hitAny(50, 50, 6));
        board.document.clearSelection();
        QVERIFY(!board.document.hitAny(50, 50, 6));
        board.document.setTool(ToolType::None);
        QVERIFY(board.document.hitAny(50, 50, 6));
        QVERIFY(!board.document.hitAny(104, 104, 6));
    }

    // --- eraser --------------------------------------------------------------------------------------------------

    void theEraserReachesAsFarAsItsSamples_data()
    {
        QTest::addColumn<double>("radius");
        QTest::addColumn<double>("scale");
        QTest::addColumn<double>("x");
        QTest::addColumn<bool>("erased");
        QTest::newRow("on it, no radius") << 0.0 << 1.0 << 105.0 << true;
        QTest::newRow("beside it, no radius") << 0.0 << 1.0 << 99.0 << false;
        QTest::newRow("outer ring") << 10.0 << 1.0 << 91.0 << true;
        QTest::newRow("past the outer ring") << 10.0 << 1.0 << 89.0 << false;
        QTest::newRow("scaled") << 10.0 << 2.0 << 81.0 << true;
        // The shape is 10 wide: a ring of 40 steps over it, the one of 20 meets it.
        QTest::newRow("inner ring") << 40.0 << 1.0 << 85.0 << true;
        QTest::newRow("between the rings") << 70.0 << 1.0 << 80.0 << false;
    }

    void theEraserReachesAsFarAsItsSamples()
    {
        QFETCH(double, radius);
        QFETCH(double, scale);
        QFETCH(double, x);
        QFETCH(bool, erased);
        Board board;
        board.draw(ToolType::Rect, {100, 100}, {110, 110});
        board.document.clearSelection();
        board.document.setDisplayScale(scale);
        board.document.setEraserRadius(radius);
        board.document.setTool(ToolType::Eraser);
        QCOMPARE(board.document.press(x, 105, 6), nullptr);
        board.document.release();
        QCOMPARE(board.count(), erased ? 0 : 1);
        QCOMPARE(board.document.undoIndex(), erased ? 2 : 1);
    }

    void oneEraserStrokeIsOneStepAndClosesGaps()
    {
        Board board;
        for (int i = 0; i < 5; ++i)
            board.draw(ToolType::Sequence, {100.0 * i, 0}, {100.0 * i + 20, 20});
        board.document.clearSelection();
        const int index = board.document.undoIndex();
        board.document.setTool(ToolType::Eraser);
        board.document.press(110, 10, 6);
        board.document.move(110, 10, 310, 10, false);
        board.document.release();
        QCOMPARE(board.document.undoIndex(), index + 1);
        QCOMPARE(board.numbers(), QList<int>({1, 2, 3}));
        QVERIFY(board.document.takeRenumbered());
        QVERIFY(!board.document.takeRenumbered());
        QCOMPARE(board.document.sequenceValue(), 4);
        board.document.undo();
        QCOMPARE(board.numbers(), QList<int>({1, 2, 3, 4, 5}));
        QCOMPARE(board.document.sequenceValue(), 6);
    }

    // --- attributes ----------------------------------------------------------------------------------------------

    void aSliderIsOneStepHoweverOftenItMoves()
    {
        Board board;
        BaseShape *shape = board.draw(ToolType::Rect, {0, 0}, {100, 100});
        const int index = board.document.undoIndex();
        for (int width = 4; width < 9; ++width)
            board.document.setThickness(width, ShapeDocument::Commit::No);
        QCOMPARE(shape->thickness, 8.0);
        QCOMPARE(board.document.undoIndex(), index);
        // Somebody saves in between.
        QVERIFY(board.document.shapesJson().contains(u"\"thickness\":8"));
        board.document.setThickness(8);
        QCOMPARE(board.document.undoIndex(), index + 1);
        board.document.setThickness(8);
        board.document.setFontSize(50);
        QCOMPARE(board.document.undoIndex(), index + 1);
        board.document.clearSelection();
        board.document.setColor(QStringLiteral("#00FF00"));
        QCOMPARE(board.document.undoIndex(), index + 1);
    }

    void theDisplayScaleIsBoundedAndScalesTheBases()
    {
        ShapeDocument document(test::shapeFactory());
        document.setThickness(4);
        document.setDisplayScale(1.5);
        QCOMPARE(document.attributes().thickness, 6.0);
        QCOMPARE(document.attributes().fontSize, 42.0);
        for (const double odd : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
            document.setDisplayScale(odd);
            QCOMPARE(document.attributes().displayScale, 1.0);
            QCOMPARE(document.attributes().thickness, 4.0);
        }
    }

    void thereIsOneWatermark()
    {
        Board board;
        board.draw(ToolType::Watermark, {10, 10}, {90, 90});
        QCOMPARE(board.count(), 0);
        board.document.setWatermarkText(QStringLiteral("mine"));
        board.document.setWatermark(ShapeDocument::Commit::No);
        board.document.setWatermarkText(QStringLiteral("ours"));
        board.document.setWatermark(ShapeDocument::Commit::No);
        QCOMPARE(board.count(), 1);
        QCOMPARE(box(board.at(0))->text, QStringLiteral("ours"));
        QCOMPARE(board.document.undoIndex(), 0);
        board.document.setTool(ToolType::None);
        QCOMPARE(board.document.undoIndex(), 1);
        board.document.setWatermarkText({});
        board.document.setTool(ToolType::Watermark);
        QCOMPARE(board.document.attributes().watermarkText, QStringLiteral("ours"));
        board.document.undo();
        QCOMPARE(board.document.attributes().watermarkText, QString());
        board.document.redo();
        QCOMPARE(board.document.attributes().watermarkText, QStringLiteral("ours"));
        board.document.setWatermarkText({});
        board.document.setWatermark();
        QCOMPARE(board.count(), 0);
        board.document.setWatermarkOpacity(7);
        QCOMPARE(board.document.attributes().watermarkOpacity, 1.0);
    }

    // --- sequence and duplicates ---------------------------------------------------------------------------------

    void aSetNumberPushesTheHigherOnes_data()
    {
        QTest::addColumn<int>("selected");
        QTest::addColumn<int>("value");
        QTest::addColumn<QList<int>>("numbers");
        QTest::newRow("up") << 1 << 7 << QList<int>({1, 7, 8, 9});
        QTest::newRow("down") << 2 << 1 << QList<int>({1, 2, 1, 2});
        QTest::newRow("too large") << 3 << 12345 << QList<int>({1, 2, 3, 999});
        QTest::newRow("too small") << 0 << -4 << QList<int>({1, 2, 3, 4});
    }

    void aSetNumberPushesTheHigherOnes()
    {
        QFETCH(int, selected);
        QFETCH(int, value);
        QFETCH(QList<int>, numbers);
        Board board;
        for (int i = 0; i < 4; ++i)
            board.draw(ToolType::Sequence, {100.0 * i, 0}, {100.0 * i + 20, 20});
        board.document.select(board.at(selected));
        const bool changed = board.numbers() != numbers;
        QCOMPARE(board.document.setSequenceValue(value), changed);
        QCOMPARE(board.numbers(), numbers);
        board.document.clearSelection();
        QCOMPARE(board.document.sequenceValue(), *std::max_element(numbers.begin(), numbers.end()) + 1);
    }

    void aDuplicateIsItsOwnShape()
    {
        Board board;
        board.document.setDisplayScale(2);
        BaseShape *badge = board.draw(ToolType::Sequence, {0, 0}, {20, 20});
        board.document.setColor(QStringLiteral("#ABCDEF"));
        board.document.duplicateSelected(10);
        QCOMPARE(board.count(), 2);
        BaseShape *copy = board.document.selected();
        QVERIFY(copy != badge && copy->id != badge->id);
        QVERIFY(!badge->selected);
        QCOMPARE(box(copy)->box(), QRectF(20, 20, 20, 20));
        QCOMPARE(copy->color, QStringLiteral("#ABCDEF"));
        QCOMPARE(board.numbers(), QList<int>({1, 2}));
        QCOMPARE(board.document.takeActivated(), copy);
        QCOMPARE(board.document.lastCreated(), copy);

        BaseShape *text = board.draw(ToolType::Text, {300, 300}, {400, 400});
        box(text)->editing = true;
        board.document.duplicateSelected(10);
        QCOMPARE(board.count(), 3);
    }

    // --- whole picture -------------------------------------------------------------------------------------------

    void cropKeepsWhatTouchesTheRest_data()
    {
        QTest::addColumn<ToolType>("tool");
        QTest::addColumn<QRectF>("shape");
        QTest::addColumn<bool>("stays");
        QTest::newRow("a corner inside") << ToolType::Rect << QRectF(50, 50, 100, 100) << true;
        QTest::newRow("around it") << ToolType::Rect << QRectF(0, 0, 900, 900) << true;
        QTest::newRow("through it, no height") << ToolType::Rect << QRectF(0, 150, 900, 0) << true;
        QTest::newRow("beside it") << ToolType::Rect << QRectF(0, 0, 90, 90) << false;
        QTest::newRow("stroke through it") << ToolType::Pen << QRectF(0, 150, 900, 10) << true;
        QTest::newRow("stroke beside it") << ToolType::Pen << QRectF(400, 400, 50, 50) << false;
    }

    void cropKeepsWhatTouchesTheRest()
    {
        QFETCH(ToolType, tool);
        QFETCH(QRectF, shape);
        QFETCH(bool, stays);
        Board board;
        board.draw(tool, shape.topLeft(), shape.bottomRight());
        QCOMPARE(board.document.cropTo(QRectF(100, 100, 200, 200)), stays ? 0 : 1);
        QCOMPARE(board.count(), stays ? 1 : 0);
        if (stays)
            QCOMPARE(board.at(0)->bounds()->center(), shape.center() - QPointF(100, 100));
        else
            QCOMPARE(board.document.selected(), nullptr);
    }

    void cropClosesTheGapsItMakes()
    {
        Board board;
        for (int i = 0; i < 4; ++i)
            board.draw(ToolType::Sequence, {100.0 * i, 0}, {100.0 * i + 20, 20});
        board.document.setWatermarkText(QStringLiteral("mine"));
        board.document.setWatermark();
        QCOMPARE(board.document.cropTo(QRectF(90, 0, 140, 50)), 2);
        QCOMPARE(board.count(), 3);
        QCOMPARE(box(board.at(0))->number, 1);
        QCOMPARE(box(board.at(1))->number, 2);
        QCOMPARE(board.at(2)->type(), ToolType::Watermark);
    }

    void erasedBoxesInPixels()
    {
        Board board;
        board.draw(ToolType::SmartErase, {10.3, 20.3}, {20.7, 30.7});
        board.draw(ToolType::Rect, {0, 0}, {100, 100});
        const QPair<QRect, EraseSolver> logical{QRect(10, 20, 10, 10), EraseSolver::WholeBox};
        const QPair<QRect, EraseSolver> doubled{QRect(21 - 10, 41 - 20, 21, 21), EraseSolver::WholeBox};
        QCOMPARE(board.document.eraseRegions(0), (QList{logical}));
        QCOMPARE(board.document.eraseRegions(2, {5, 10}), (QList{doubled}));
    }
};

TAVREL_TEST_MAIN(QCoreApplication, ShapeDocumentTest)
#include "test_shape_document.moc"
