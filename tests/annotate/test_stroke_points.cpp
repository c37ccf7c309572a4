#include "annotate/stroke_points.h"
#include "annotate/test_shapes.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QRandomGenerator>

#include <cmath>
#include <limits>

using namespace tavrel;

namespace {

QList<QPointF> wander(int count, quint32 seed)
{
    QRandomGenerator random(seed);
    QList<QPointF> points;
    QPointF at(300, 200);
    for (int i = 0; i < count; ++i) {
        points.append(at);
        at += {(random.generateDouble() - 0.5) * 8, (random.generateDouble() - 0.5) * 8};
    }
    return points;
}

bool passesNearSlowly(const QList<QPointF> &points, const QPointF &place, double radius)
{
    for (qsizetype i = 0; i + 1 < points.size(); ++i) {
        const QPointF along = points[i + 1] - points[i];
        const QPointF offset = place - points[i];
        const double t = std::clamp(QPointF::dotProduct(offset, along) / QPointF::dotProduct(along, along), 0.0, 1.0);
        const QPointF away = offset - along * t;
        if (std::hypot(away.x(), away.y()) <= radius)
            return true;
    }
    return false;
}

} // namespace

class StrokePointsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesTheBytesOfTheJsonClasses_data()
    {
        QTest::addColumn<QList<QPointF>>("points");
        QTest::newRow("none") << QList<QPointF>();
        QTest::newRow("whole") << QList<QPointF>{{0, -0.0}, {12, -7}, {1000000, -1000000}};
        QTest::newRow("fractions") << QList<QPointF>{{0.1, 1.0 / 3}, {-123456.789, 0.0001}, {99999.5, 100000.25}};
        QList<QPointF> powers;
        for (int exponent = -12; exponent <= 5; ++exponent)
            powers.append({1.25 * std::pow(10, exponent), -std::pow(10, exponent) / 3});
        QTest::newRow("powers") << powers;
        QTest::newRow("tiny") << QList<QPointF>{{0.00009, 1e-9}, {-1e-300, 5e-324}};
        QTest::newRow("out of range") << QList<QPointF>{{1e300, -1e7}, {std::numeric_limits<double>::infinity(), 0}};
        QTest::newRow("no number") << QList<QPointF>{{std::nan(""), 1}};
        QTest::newRow("long") << wander(5000, 1);
    }

    void writesTheBytesOfTheJsonClasses()
    {
        QFETCH(QList<QPointF>, points);
        StrokePoints stroke;
        stroke.assign(points);
        QCOMPARE(stroke.toJsonText(), QJsonDocument(stroke.toJson()).toJson(QJsonDocument::Compact));
    }

    void aStoredStrokeComesBackBothWays()
    {
        PathShape shape(ToolType::Pen);
        shape.takePoints(wander(500, 2));
        shape.color = QStringLiteral("\"points\":[] {[\\");
        QJsonObject plain;
        shape.toJson(plain);
        const QByteArray text = shape.toJsonText();
        QCOMPARE(text, QJsonDocument(plain).toJson(QJsonDocument::Compact));
        const QByteArray indented = QJsonDocument(plain).toJson(QJsonDocument::Indented);
        QVERIFY(!partStroke(indented));
        for (const QByteArray &stored : {text, indented}) {
            const auto back = test::shapeFactory().read(stored);
            QVERIFY(back);
            QCOMPARE(test::stroke(back.get())->points().list(), shape.points().list());
            QCOMPARE(back->color, shape.color);
            QCOMPARE(back->id, shape.id);
        }
    }

    void onlyTheStrictFormIsParted()
    {
        for (const char *json : {R"({"a":1,"points":[{"x":1,"y":2.5}],"z":0})", R"({"points":[]})"})
            QVERIFY2(partStroke(json), json);
        for (const char *json :
             {R"({"a":1})", R"({"a":{"points":[]}})", R"([{"points":[]}])", R"({"points":[{"y":1,"x":2}]})",
              R"({"points":[ {"x":1,"y":2}]})", R"({"points":[{"x":"1","y":2}]})", R"({"points":[{"x":nan,"y":2}]})",
              R"({"points":[{"x":1,"y":2},]})", R"({"points":[{"x":1,"y":2)", R"({"points":[{"x":1,"y":2})"})
            QVERIFY2(!partStroke(json), json);
    }

    void absurdCoordinatesAreBroughtIntoRange()
    {
        const auto shape =
            test::shapeFactory().read(QByteArray(R"({"type":"pen","points":[{"x":1e200,"y":-1e200},{"x":"a"},{},5]})"));
        const QList<QPointF> expected{{1e6, -1e6}, {0, 0}, {0, 0}, {0, 0}};
        QCOMPARE(test::stroke(shape.get())->points().list(), expected);
        const auto strict = test::shapeFactory().read(QByteArray(R"({"points":[{"x":1e200,"y":2}],"type":"pen"})"));
        QCOMPARE(test::stroke(strict.get())->points().list(), QList<QPointF>({{1e6, 2}}));
    }

    void theBoxesHideNoSegment_data()
    {
        QTest::addColumn<int>("count");
        for (const int count : {2, 63, 64, 65, 66, 128, 129, 1000})
            QTest::newRow(qPrintable(QString::number(count))) << count;
    }

    void theBoxesHideNoSegment()
    {
        QFETCH(int, count);
        StrokePoints stroke;
        for (const QPointF &point : wander(count, 3))
            stroke.append(point);
        stroke.translate(5, -3);
        stroke.scale(1.5);
        stroke.transform({ImageTransform::Kind::RotateCw, 700});
        const QRectF area = stroke.box()->adjusted(-20, -20, 20, 20);
        QRandomGenerator random(4);
        int hits = 0;
        for (int i = 0; i < 2000; ++i) {
            const QPointF place(area.x() + random.generateDouble() * area.width(),
                                area.y() + random.generateDouble() * area.height());
            const bool isNear = stroke.passesNear(place, 6);
            QCOMPARE(isNear, passesNearSlowly(stroke.list(), place, 6));
            hits += isNear ? 1 : 0;
        }
        QVERIFY(hits > 0 && hits < 2000);
    }

    void aSinglePointIsASquare()
    {
        StrokePoints stroke;
        QVERIFY(!stroke.passesNear({0, 0}, 100));
        QVERIFY(stroke.staysWithin(0));
        stroke.append({10, 10});
        QVERIFY(stroke.passesNear({15.9, 15.9}, 6));
        QVERIFY(!stroke.passesNear({16.1, 10}, 6));
        stroke.append({11.5, 8.5});
        QVERIFY(stroke.staysWithin(1.5));
        stroke.append({10, 11.6});
        QVERIFY(!stroke.staysWithin(1.5));
    }
};

TAVREL_TEST_MAIN(QCoreApplication, StrokePointsTest)
#include "test_stroke_points.moc"
