#include "annotate/shape_document.h"
#include "annotate/test_shapes.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QMap>
#include <QRandomGenerator>
#include <QSet>

using namespace tavrel;
using test::box;
using test::stroke;

namespace {

BaseShape *addBox(ShapeDocument &document, double x, ToolType type = ToolType::Rect)
{
    auto shape = std::make_shared<test::BoxShape>(type);
    shape->setBox(QRectF(x, 0, 10, 10));
    BaseShape *raw = shape.get();
    document.append(std::move(shape));
    return raw;
}

/// What the text would be without any bytes kept from before.
QString writtenAnew(const ShapeDocument &document)
{
    QByteArrayList all;
    for (const auto &shape : document.shapes()) {
        QJsonObject object;
        shape->toJson(object);
        all.append(QJsonDocument(object).toJson(QJsonDocument::Compact));
    }
    return QString::fromUtf8('[' + all.join(',') + ']');
}

QList<double> places(const ShapeDocument &document)
{
    QList<double> all;
    for (const auto &shape : document.shapes())
        all.append(box(shape.get())->box().x());
    return all;
}

class CountedStroke final : public PathShape
{
public:
    using PathShape::PathShape;
    QByteArray toJsonText() const override
    {
        ++written;
        return PathShape::toJsonText();
    }
    mutable int written = 0;
};

/// All that a state holds, as text and as the value.
struct Kept
{
    QString shapes;
    QString counters;
    QStringList stack;
    int index = 0;
    quint64 revision = 0;
    ShapeDocument::State state;

    bool operator==(const Kept &other) const
    {
        return shapes == other.shapes && counters == other.counters && stack == other.stack && index == other.index;
    }
};

Kept keep(const ShapeDocument &document)
{
    return {document.shapesJson(), document.countersJson(), document.undoStack(),
            document.undoIndex(),  document.revision(),     document.state()};
}

} // namespace

class ShapeStateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wordsAndValuesBelongTogether()
    {
        QSet<QString> words;
        for (int i = 0; i <= 26; ++i) {
            const QString word = toolTypeName(static_cast<ToolType>(i));
            QCOMPARE(toolTypeFromName(word), static_cast<ToolType>(i));
            words.insert(word);
        }
        QCOMPARE(words.size(), 27);
        QCOMPARE(toolTypeName(static_cast<ToolType>(27)), QString());
        QCOMPARE(toolTypeName(static_cast<ToolType>(-1)), QString());
        QCOMPARE(toolTypeFromName(QStringLiteral("Rect"), ToolType::Pen), ToolType::Pen);
        QCOMPARE(enumName(static_cast<NumberType>(6)), QString());
        for (int i = 0; i < kNumberTypeCount; ++i)
            QCOMPARE(static_cast<int>(numberTypeFromName(enumName(static_cast<NumberType>(i)))), i);
        QCOMPARE(eraseSolverFromName(QStringLiteral("wholeBox")), EraseSolver::WholeBox);
        QCOMPARE(arrowStyleFromName(QStringLiteral("no"), ArrowStyle::Double), ArrowStyle::Double);
    }

    /// What is stored, and what it is written as again; keys not named have their defaults.
    void storedBaseKeys_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<QByteArray>("written");
        QTest::newRow("all") << QByteArray(R"("thickness":5.5,"opacity":0.25,"color":"#abc",)"
                                           R"("compositeOperation":"multiply","arrowStyle":"double")")
                             << QByteArray(R"("thickness":5.5,"opacity":0.25,"color":"#abc",)"
                                           R"("compositeOperation":"multiply","arrowStyle":"double")");
        QTest::newRow("zero and empty") << QByteArray(R"("thickness":0,"opacity":0,"color":"",)"
                                                      R"("compositeOperation":"","arrowStyle":"")")
                                        << QByteArray();
        QTest::newRow("ranges") << QByteArray(R"("thickness":-4,"opacity":7)") << QByteArray();
        QTest::newRow("huge") << QByteArray(R"("thickness":1e300,"opacity":-1)") << QByteArray(R"("thickness":10000)");
        QTest::newRow("types") << QByteArray(R"("thickness":"5","opacity":[],"color":5,)"
                                             R"("compositeOperation":null,"arrowStyle":"fancy")")
                               << QByteArray();
    }

    void storedBaseKeys()
    {
        QFETCH(QByteArray, stored);
        QFETCH(QByteArray, written);
        const QByteArray type = R"({"type":"rect")";
        const auto shape = test::shapeFactory().read(type + ',' + stored + '}');
        QVERIFY(shape);
        QCOMPARE(shape->id.size(), 7);
        QJsonObject wanted = QJsonDocument::fromJson(R"({"thickness":3,"opacity":1,"color":"#F93442",)"
                                                     R"("compositeOperation":"source-over","arrowStyle":"standard"})")
                                 .object();
        const QJsonObject other = QJsonDocument::fromJson('{' + written + '}').object();
        for (auto it = other.begin(); it != other.end(); ++it)
            wanted.insert(it.key(), it.value());
        QJsonObject found;
        shape->toJson(found);
        for (auto it = wanted.begin(); it != wanted.end(); ++it)
            QCOMPARE(found.value(it.key()), it.value());
    }

    void storedTypes()
    {
        const auto read = [](const char *json) { return test::shapeFactory().read(QByteArray(json)); };
        QVERIFY(stroke(read(R"({"type":"marker","markerRect":false})").get()));
        QVERIFY(box(read(R"({"type":"marker","markerRect":true})").get()));
        for (const char *json : {R"({"type":"none"})", R"({"type":"eraser"})", R"({"type":"undo"})",
                                 R"({"type":"hexagon"})", "{}", R"({"type":"rect",)"})
            QVERIFY(!read(json));
    }

    void loadedStates_data()
    {
        QTest::addColumn<QString>("shapes");
        QTest::addColumn<QStringList>("stack");
        QTest::addColumn<int>("index");
        QTest::addColumn<qsizetype>("count");
        QTest::addColumn<int>("indexAfter");
        const QString one = QStringLiteral(R"([{"type":"rect","id":"a","x":5}])");
        const QString odd =
            QStringLiteral(" [ {\"type\":\"hexagon\"} , {\"type\":\"rect\",\"color\":\"]}\\\\\\\"[{\"}, {}, "
                           "{\"type\":\"circle\"} ] ");
        const QStringList three{QStringLiteral("[]"), one, odd};
        QTest::newRow("nothing") << QString() << QStringList() << 0 << qsizetype(0) << 0;
        QTest::newRow("no stack") << one << QStringList() << 7 << qsizetype(1) << 0;
        QTest::newRow("index in range") << one << three << 1 << qsizetype(1) << 1;
        QTest::newRow("index too small") << one << three << -3 << qsizetype(1) << 0;
        QTest::newRow("index too large") << one << three << 99 << qsizetype(1) << 2;
        QTest::newRow("strange entries") << odd << three << 2 << qsizetype(2) << 2;
        QTest::newRow("mixed elements") << QStringLiteral(R"([1,{"type":"rect"},"x",null,[{"type":"rect"}]])")
                                        << QStringList() << 0 << qsizetype(1) << 0;
        QTest::newRow("one malformed inside")
            << QStringLiteral(R"([{"type":"rect"},{"type":}])") << QStringList() << 0 << qsizetype(1) << 0;
        for (const char *text : {"nonsense", "[", "[{", "[{]}", "[{\"type\":\"rect\"}", "[{\"type\":\"rect\\\"",
                                 "[{\"type\":\"rect\"}]]", "[{\"type\":\"rect\"},]", "{\"type\":\"rect\"}", "[\\"})
            QTest::newRow(text) << QString::fromLatin1(text) << QStringList{QString::fromLatin1(text)} << 0
                                << qsizetype(0) << 0;
    }

    void loadedStates()
    {
        QFETCH(QString, shapes);
        QFETCH(QStringList, stack);
        QFETCH(int, index);
        ShapeDocument document(test::shapeFactory());
        document.setTool(ToolType::Pen);
        document.press(0, 0, 6);
        const quint64 generation = document.generation();
        document.loadState(shapes, QString(), stack, index);
        QCOMPARE(document.generation(), generation + 1);
        QVERIFY(!document.isInteracting() && !document.selected() && !document.lastCreated());
        document.move(0, 0, 50, 50, false);
        document.release();
        QTEST(document.shapes().size(), "count");
        QTEST(document.undoIndex(), "indexAfter");
        QCOMPARE(document.undoStack().size(), std::max<qsizetype>(stack.size(), 1));
        // Walking through whatever was stored ends at both ends.
        for (int i = 0; i < 5; ++i)
            document.undo();
        QCOMPARE(document.undoIndex(), 0);
        for (int i = 0; i < 5; ++i)
            document.redo();
        QVERIFY(!document.canRedo());
    }

    void aLoadedStateIsNoChange()
    {
        ShapeDocument document(test::shapeFactory());
        const QString shapes = QStringLiteral(R"([{"type":"rect","x":5, "thickness": 0}])");
        document.loadState(shapes, QString(), {QStringLiteral("[]"), shapes}, 1);
        document.commit();
        QCOMPARE(document.undoStack().size(), 2);
        document.translateAll(1, 0);
        document.commit();
        QCOMPARE(document.undoIndex(), 2);
    }

    void countersAreLoadedEntryByEntry()
    {
        ShapeDocument document(test::shapeFactory());
        const QString badges = QStringLiteral(R"([{"type":"sequence","number":4}])");
        document.loadState(badges, QStringLiteral(R"({"chinese":12,"roman_upper":-5,"arabic":"x","other":3})"), {}, 0);
        QCOMPARE(document.countersJson(), QStringLiteral(R"({"arabic":5,"chinese":12,"lower_letter":1,)"
                                                         R"("roman_lower":1,"roman_upper":1,"upper_letter":1})"));
        document.loadState(badges, QStringLiteral("{"), {}, 0);
        QCOMPARE(document.sequenceValue(), 5);
    }

    // --- undo ----------------------------------------------------------------------------------------------------

    void thirtyStatesAreKept()
    {
        ShapeDocument document(test::shapeFactory());
        QCOMPARE(document.undoStack(), QStringList{QStringLiteral("[]")});
        document.commit();
        QCOMPARE(document.undoStack().size(), 1);
        for (int i = 0; i < 29; ++i) {
            addBox(document, i);
            document.commit();
            document.commit();
        }
        QCOMPARE(document.undoStack().size(), 30);
        QCOMPARE(document.undoStack().first(), QStringLiteral("[]"));
        addBox(document, 29);
        document.commit();
        QCOMPARE(document.undoStack().size(), 30);
        QCOMPARE(document.undoIndex(), 29);
        while (document.canUndo())
            document.undo();
        QCOMPARE(document.shapes().size(), 1);
        document.undo();
        QCOMPARE(document.undoIndex(), 0);
        while (document.canRedo())
            document.redo();
        QCOMPARE(document.shapes().size(), 30);
    }

    void drawingAfterUndoDropsWhatWasUndone()
    {
        ShapeDocument document(test::shapeFactory());
        for (const double x : {1.0, 2.0, 3.0}) {
            addBox(document, x);
            document.commit();
        }
        document.undo();
        document.undo();
        document.commit();
        QVERIFY(document.canRedo());
        addBox(document, 9);
        document.commit();
        QVERIFY(!document.canRedo());
        QCOMPARE(document.undoStack().size(), 3);
        document.undo();
        QCOMPARE(places(document), QList<double>({1}));
        document.redo();
        QCOMPARE(places(document), QList<double>({1, 9}));
    }

    void undoLetsGoOfEveryPointer()
    {
        ShapeDocument document(test::shapeFactory());
        BaseShape *kept = addBox(document, 1);
        document.commit();
        BaseShape *gone = addBox(document, 50);
        document.commit();
        document.select(gone);
        document.duplicateSelected(5);
        document.setHovered(kept);
        document.setTool(ToolType::None);
        document.press(52, 2, 6);
        QVERIFY(document.isInteracting());
        const quint64 generation = document.generation();
        document.undo();
        QVERIFY(!document.selected() && !document.hovered() && !document.lastCreated() && !document.takeActivated());
        QVERIFY(!document.isInteracting());
        QCOMPARE(document.generation(), generation + 1);
        for (const auto &shape : document.shapes())
            QVERIFY(!shape->selected);
        QCOMPARE(places(document), QList<double>({1, 50}));
        document.move(52, 2, 90, 90, false);
        document.release();
        QCOMPARE(places(document), QList<double>({1, 50}));
    }

    void equalShapesAreNotMixedUp()
    {
        ShapeDocument document(test::shapeFactory());
        BaseShape *first = addBox(document, 1);
        BaseShape *second = addBox(document, 1);
        second->id = first->id;
        document.commit();
        addBox(document, 2);
        document.commit();
        document.undo();
        QCOMPARE(document.shapes().size(), 2);
        QVERIFY(document.shapes().at(0) != document.shapes().at(1));
    }

    void whatDidNotChangeIsNeitherWrittenNorRead()
    {
        ShapeDocument document(test::shapeFactory());
        auto line = std::make_shared<CountedStroke>(ToolType::Pen);
        line->takePoints({{0, 0}, {5, 5}});
        document.append(line);
        for (int i = 0; i < 10; ++i) {
            addBox(document, i);
            document.commit();
        }
        QCOMPARE(line->written, 1);
        document.undo();
        document.redo();
        QCOMPARE(document.shapes().first(), std::static_pointer_cast<BaseShape>(line));
        document.select(line.get());
        line->translate(1, 1);
        document.commit();
        QCOMPARE(line->written, 2);
        document.undo();
        QCOMPARE(stroke(document.shapes().first().get())->points().list().first(), QPointF(0, 0));
    }

    void aStateSharesWhatItIsMadeOf()
    {
        ShapeDocument document(test::shapeFactory());
        for (int i = 0; i < 10; ++i)
            addBox(document, i);
        document.commit();
        const ShapeDocument::State before = document.state();
        QCOMPARE(before.shapes.constData(), document.state().shapes.constData());
        QCOMPARE(before.shapes.constData(), before.history.present().shapes.constData());
        const auto shapes = document.shapes();
        document.removeShape(shapes.at(4).get());
        document.restore(before);
        for (int i = 0; i < 10; ++i)
            QCOMPARE(document.shapes().at(i) == shapes.at(i), i != 4);
        QCOMPARE(document.state().shapes.constData(), before.shapes.constData());
        // What was changed since is read again although its text was not written in between.
        box(shapes.at(2).get())->text = QStringLiteral("changed");
        document.markChanged(shapes.at(2).get());
        document.restore(before);
        QVERIFY(box(document.shapes().at(2).get())->text.isEmpty());
        document.undo();
        QVERIFY(document.shapes().isEmpty());
    }

    /// Whatever a user does, the kept bytes say the same as writing every shape anew, and every step comes back.
    void keptBytesNeverLieUnderAnyOrderOfGestures_data()
    {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 1; seed <= 12; ++seed)
            QTest::newRow(qPrintable(QString::number(seed))) << seed;
    }

    void keptBytesNeverLieUnderAnyOrderOfGestures()
    {
        QFETCH(quint32, seed);
        QRandomGenerator random(seed);
        const auto pick = [&random](int below) { return random.bounded(below); };
        ShapeDocument document(test::shapeFactory());
        const QList<ToolType> tools{ToolType::None,     ToolType::Rect, ToolType::Pen,    ToolType::Sequence,
                                    ToolType::Sequence, ToolType::Text, ToolType::Marker, ToolType::Eraser};
        QMap<quint64, QString> revisions;
        quint64 newest = 0;
        QList<Kept> kept;
        for (int step = 0; step < 300; ++step) {
            const double x = pick(300);
            const double y = pick(300);
            switch (pick(16)) {
            case 0:
                document.setTool(tools.at(pick(static_cast<int>(tools.size()))));
                break;
            case 1:
                document.undo();
                break;
            case 2:
                document.redo();
                break;
            case 3:
                document.setThickness(1 + pick(9), pick(2) ? ShapeDocument::Commit::Yes : ShapeDocument::Commit::No);
                break;
            case 4:
                document.duplicateSelected(pick(20));
                break;
            case 5:
                document.setSequenceValue(pick(20));
                document.commit();
                break;
            case 6:
                pick(3) ? document.removeSelected() : static_cast<void>(document.cancelCreation());
                break;
            case 7:
                if (box(document.selected()))
                    box(document.selected())->text = QString::number(step);
                document.clearSelection();
                break;
            case 8:
                pick(2) ? document.rotateAllCW(300) : document.flipAllH(300);
                document.commit();
                break;
            case 9:
                document.press(x, y, 6);
                if (pick(3) == 0)
                    document.undo();
                document.move(x, y, pick(300), pick(300), pick(2) == 0);
                break;
            case 10:
                kept.append(keep(document));
                break;
            case 11:
                if (!kept.isEmpty()) {
                    const Kept &wanted = kept.at(pick(static_cast<int>(kept.size())));
                    document.restore(wanted.state);
                    QCOMPARE(keep(document), wanted);
                    QCOMPARE(document.revision(), wanted.revision);
                }
                break;
            default:
                document.press(x, y, 6);
                document.move(x, y, pick(300), pick(300), false);
                document.release();
                break;
            }
            // A number stands for one state, whatever was undone or put back in between.
            const QString committed = document.undoStack().at(document.undoIndex());
            if (!revisions.contains(document.revision())) {
                QVERIFY(document.revision() > newest || revisions.isEmpty());
                newest = document.revision();
                revisions.insert(newest, committed);
            }
            QCOMPARE(committed, revisions.value(document.revision()));
            QCOMPARE(document.shapesJson(), writtenAnew(document));
            QVERIFY(document.undoStack().size() <= 30);
            QVERIFY(document.undoIndex() >= 0 && document.undoIndex() < document.undoStack().size());
        }
        document.commit();
        const QStringList stack = document.undoStack();
        while (document.canUndo())
            document.undo();
        for (int i = 0; i < stack.size(); ++i) {
            QCOMPARE(document.shapesJson(), stack.at(i));
            QCOMPARE(writtenAnew(document), stack.at(i));
            document.redo();
        }
        ShapeDocument other(test::shapeFactory());
        other.loadState(document.shapesJson(), document.countersJson(), stack, document.undoIndex());
        QCOMPARE(keep(other), keep(document));
        other.loadState({}, {}, {}, 0);
        const quint64 before = other.revision();
        other.restore(document.state());
        QCOMPARE(keep(other), keep(document));
        addBox(other, 7);
        other.commit();
        QVERIFY(other.revision() > std::max(before, newest));
    }
};

TAVREL_TEST_MAIN(QCoreApplication, ShapeStateTest)
#include "test_shape_state.moc"
