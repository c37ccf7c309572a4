#include "platform/input_collector.h"
#include "platform/linux/motion_resolver.h"
#include "support/test_main.h"

#include <QCoreApplication>

using namespace tavrel;
using namespace tavrel::platform;
using Type = InputEventRecord::Type;

namespace {

InputEventRecord record(int type, double x = 0, double y = 0, int key = 0)
{
    InputEventRecord made;
    made.type = type;
    made.x = x;
    made.y = y;
    made.virtualKey = key;
    return made;
}

/// The types of events, one letter each.
QString letters(const QList<InputEventRecord> &events)
{
    QString text;
    for (const InputEventRecord &event : events)
        text += QStringLiteral("mduKkw").at(event.type);
    return text;
}

} // namespace

class InputCollectorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachModeKeepsAndTellsWhatItIsFor_data()
    {
        QTest::addColumn<bool>("clicksOnly");
        QTest::addColumn<bool>("keysWithClicks");
        QTest::addColumn<QString>("kept");
        QTest::addColumn<QString>("told");
        QTest::newRow("everything") << false << false << "mdKumwkKk"
                                    << "dKukKk";
        QTest::newRow("clicks only") << true << false << ""
                                     << "du";
        QTest::newRow("clicks and keys") << true << true << ""
                                         << "dKuK";
    }

    void eachModeKeepsAndTellsWhatItIsFor()
    {
        QFETCH(bool, clicksOnly);
        QFETCH(bool, keysWithClicks);
        InputCollector collector;
        for (int run = 0; run < 2; ++run) { // nothing of the first run is left for the second
            collector.begin({clicksOnly, keysWithClicks});
            QList<InputEventRecord> told;
            for (const InputEventRecord &event :
                 {record(Type::Move, 1.4, 2.4), record(Type::Move, 1.2, 1.6), record(Type::ButtonDown, 1.4, 2.4),
                  record(Type::KeyDown, 0, 0, 7), record(Type::KeyDown, 0, 0, 7), record(Type::ButtonUp),
                  record(Type::Move, 1.6, 2), record(Type::Wheel), record(Type::KeyUp, 0, 0, 7),
                  record(Type::KeyDown, 0, 0, 7), record(Type::KeyUp, 0, 0, 7)}) {
                if (collector.add(event))
                    told.append(event);
            }
            const QList<InputEventRecord> kept = collector.take();
            QTEST(letters(kept), "kept");
            QTEST(letters(told), "told");
            if (!kept.isEmpty()) {
                QCOMPARE(QPointF(kept[0].x, kept[0].y), QPointF(1, 2));
                QCOMPARE(QPointF(kept[1].x, kept[1].y), QPointF(1.4, 2.4)); // a click stays where it was
            }
            QVERIFY(collector.take().isEmpty());
            static_cast<void>(collector.add(record(Type::KeyDown, 0, 0, 9))); // held into the next run
        }
    }

    void motionsAreStepsOrPlaces_data()
    {
        using Motions = std::vector<MotionResolver::Motion>;
        using Path = std::vector<QPointF>;
        QTest::addColumn<Motions>("motions");
        QTest::addColumn<QPointF>("end");
        QTest::addColumn<Path>("path");
        QTest::newRow("steps") << Motions{{5, 2}, {{}, -3}, {4, {}}} << QPointF(109, 99)
                               << Path{{105, 102}, {105, 99}, {109, 99}};
        QTest::newRow("places") << Motions{{5, 2}, {{}, 40}, {90, {}}} << QPointF(90, 40)
                                << Path{{5, 2}, {5, 40}, {90, 40}};
        QTest::newRow("a fraction that the server kept")
            << Motions{{5, 0}, {5, 0}} << QPointF(110.5, 100) << Path{{105.25, 100}, {110.5, 100}};
        QTest::newRow("against the edge")
            << Motions{{-80, 0}, {-80, 0}, {10, 0}} << QPointF(10, 100) << Path{{20, 100}, {0, 100}, {10, 100}};
        QTest::newRow("stopped by a barrier")
            << Motions{{10, 0}, {10, 0}} << QPointF(104, 100) << Path{{102, 100}, {104, 100}};
        QTest::newRow("a tablet between steps") << Motions{{5, 0}, {50, 60, true}, {{}, 70, true}, {5, 5}}
                                                << QPointF(55, 75) << Path{{105, 100}, {50, 60}, {50, 70}, {55, 75}};
        QTest::newRow("a tablet mapped to a part of the desktop")
            << Motions{{90, 100, true}, {80, 100, true}} << QPointF(60, 100) << Path{{80, 100}, {60, 100}};
        QTest::newRow("nothing") << Motions{} << QPointF(7, 7) << Path{};
    }

    void motionsAreStepsOrPlaces()
    {
        QFETCH(std::vector<MotionResolver::Motion>, motions);
        QFETCH(QPointF, end);
        QFETCH(std::vector<QPointF>, path);
        QCOMPARE(MotionResolver(QRectF(0, 0, 200, 200)).resolve({100, 100}, motions, end), path);
    }
};

TAVREL_TEST_MAIN(QCoreApplication, InputCollectorTest)
#include "test_input_collector.moc"
