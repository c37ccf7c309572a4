#include "annotate/effect_image_cache.h"
#include "annotate/effect_shapes.h"
#include "annotate/magnifier_shape.h"
#include "annotate/shape_document.h"
#include "annotate/watermark_shape.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QImage>

using namespace tavrel;

namespace {

QImage noise(const QSize &size, double ratio = 1)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    quint32 state = 7;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            state = state * 1664525U + 1013904223U;
            image.setPixel(x, y, 0xff000000U | (state >> 8));
        }
    }
    image.setDevicePixelRatio(ratio);
    return image;
}

/// The part `crop` (pixels) of the picture with the shapes, the picture lying at `origin` of their coordinates.
QImage rendered(const QImage &picture, const QString &shapes, const QRect &crop, const QPointF &origin)
{
    ShapeDocument document;
    document.loadState(shapes, {}, {}, 0);
    const EffectImageCache cache(picture);
    const double ratio = picture.devicePixelRatio();
    QImage result = picture.copy(crop);
    result.setDevicePixelRatio(ratio);
    ShapeRenderContext context;
    context.effectSource = &cache;
    context.backdrop = &picture;
    context.origin = origin;
    context.canvasBounds = QRectF(origin, QSizeF(picture.size()) / ratio);
    QPainter painter(&result);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.translate(-QPointF(crop.topLeft()) / ratio - origin);
    document.paintShapes(painter, context);
    return result;
}

} // namespace

class EffectShapesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blockMeansEndAtTheEdge()
    {
        QImage image(5, 1, QImage::Format_ARGB32_Premultiplied);
        for (int x = 0; x < 5; ++x)
            image.setPixel(x, 0, qRgb(x * 10, 0, 0));
        const QImage means = blockMeans(image, 2);
        QCOMPARE(qRed(means.pixel(0, 0)), 5);
        QCOMPARE(qRed(means.pixel(3, 0)), 25);
        QCOMPARE(qRed(means.pixel(4, 0)), 40);
    }

    /// Three rounds of plain means along and across, rounded to nearest, with the edge repeated. Of sizes that are no
    /// multiple of what is worked on at once, where lines and bands meet.
    void blurIsThreeRoundsOfMeans()
    {
        for (const auto &[size, radius] : QList<QPair<QSize, int>>{
                 {{21, 230}, 1}, {{21, 230}, 9}, {{21, 230}, 127}, {{21, 230}, 140}, {{300, 1}, 2}, {{300, 1}, 900}}) {
            const QImage image = noise(size);
            QImage expected = image;
            const auto mean = [&expected, radius = radius](bool isAlong) {
                const QImage from = expected;
                for (int y = 0; y < from.height(); ++y) {
                    for (int x = 0; x < from.width(); ++x) {
                        int sum = radius; // half of the width
                        for (int i = -radius; i <= radius; ++i) {
                            const int fromX = isAlong ? std::clamp(x + i, 0, from.width() - 1) : x;
                            const int fromY = isAlong ? y : std::clamp(y + i, 0, from.height() - 1);
                            sum += qBlue(from.pixel(fromX, fromY));
                        }
                        expected.setPixel(x, y, qRgb(0, 0, sum / (2 * radius + 1)));
                    }
                }
            };
            for (int round = 0; round < 3; ++round) {
                mean(true);
                mean(false);
            }
            const QImage blurred = boxBlur(image, radius);
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x)
                    QCOMPARE(qBlue(blurred.pixel(x, y)), qBlue(expected.pixel(x, y)));
            }
        }
    }

    void blurOfAPartIsThePartOfTheBlur()
    {
        for (const int radius : {1, 2, 7, 130}) {
            const QImage image = noise({900, 12});
            const QRect part(0, 0, 440 + 3 * radius, 12);
            const QRect seen(0, 0, 440, 12);
            QCOMPARE(boxBlur(image.copy(part), radius).copy(seen), boxBlur(image, radius).copy(seen));
            QImage plain(90, 3, QImage::Format_ARGB32_Premultiplied);
            plain.fill(qRgb(255, 128, 1));
            QCOMPARE(boxBlur(plain, radius), plain);
        }
    }

    void previewAndFileAreTheSamePixels_data()
    {
        QTest::addColumn<QString>("shapes");
        QTest::addColumn<double>("ratio");
        const auto add = [](const char *name, const QString &shapes) {
            QTest::addRow("%s, ratio 1", name) << shapes << 1.0;
            QTest::addRow("%s, ratio 2", name) << shapes << 2.0;
        };
        add("mosaic", QStringLiteral(R"([{"type":"mosaic","x":33.5,"y":20,"w":60,"h":50}])"));
        add("blur beyond the edge",
            QStringLiteral(
                R"([{"type":"mosaic","x":-40,"y":-9,"w":160,"h":70,"mosaicMode":"blur","mosaicIntensity":9}])"));
        add("brush", QStringLiteral(R"([{"type":"mosaic_pen","thickness":18,"points":[{"x":20,"y":20},{"x":60,"y":70},)"
                                    R"({"x":120,"y":30}]}])"));
        add("watermark", QStringLiteral(R"([{"type":"watermark","text":"A mark","mode":"center","stamp":5}])"));
        add("magnifier", QStringLiteral(R"([{"type":"magnifier","ax":30,"ay":30,"bx":55.5,"by":50}])"));
        add("spotlights", QStringLiteral(R"([{"type":"spotlight","x":30,"y":30,"w":50,"h":30,"isRound":true},)"
                                         R"({"type":"spotlight","x":70,"y":30,"w":50,"h":30,"dim":0.7}])"));
    }

    void previewAndFileAreTheSamePixels()
    {
        QFETCH(QString, shapes);
        QFETCH(double, ratio);
        const QImage picture = noise(QSize(160, 100) * ratio, ratio);
        const QImage whole = rendered(picture, shapes, picture.rect(), {});
        QVERIFY(whole != picture);
        const QRect crop(QPoint(26, 14) * ratio, QSize(110, 70) * ratio);
        QCOMPARE(rendered(picture, shapes, crop, {}), whole.copy(crop));
        // Wherever the picture lies in the coordinates of the shapes.
        for (const QPointF &origin : {QPointF(1000, -300), QPointF(-64.5, 17.5) * (ratio - 1)}) {
            ShapeDocument moved;
            moved.loadState(shapes, {}, {}, 0);
            moved.translateAll(origin.x(), origin.y());
            QCOMPARE(rendered(picture, moved.shapesJson(), crop, origin), whole.copy(crop));
        }
    }

    void brushAndBoxShowTheSame()
    {
        const QImage picture = noise({160, 100});
        for (const QString &mode : {u"mosaic"_qs, u"blur"_qs}) {
            const QString box = u"[{\"type\":\"mosaic\",\"w\":160,\"h\":100,\"mosaicMode\":\"%1\"}]"_qs.arg(mode);
            const QString brush = uR"([{"type":"mosaic_pen","thickness":40,"mosaicMode":"%1",)"
                                  uR"("points":[{"x":9,"y":50},{"x":150,"y":50}]}])"_qs.arg(mode);
            const QRect inside(10, 35, 138, 30);
            QCOMPARE(rendered(picture, brush, inside, {}), rendered(picture, box, inside, {}));
        }
    }

    /// A box that reaches beyond the picture changes what it covers of it and nothing else.
    void effectsEndWithThePicture_data()
    {
        QTest::addColumn<QString>("shape");
        for (const char *mode : {"mosaic", "blur"}) {
            QTest::addRow("%s at the corner", mode)
                << QStringLiteral(R"({"type":"mosaic","x":-30,"y":-30,"w":50,"h":50,"mosaicMode":"%1"})")
                       .arg(QLatin1String(mode));
            QTest::addRow("%s around everything", mode)
                << QStringLiteral(R"({"type":"mosaic","x":-99,"y":-99,"w":900,"h":900,"mosaicMode":"%1"})")
                       .arg(QLatin1String(mode));
            QTest::addRow("%s of a brush", mode)
                << QStringLiteral(
                       R"({"type":"mosaic_pen","thickness":20,"points":[{"x":-20,"y":20},{"x":60,"y":8},{"x":90,"y":70}],)"
                       R"("mosaicMode":"%1"})")
                       .arg(QLatin1String(mode));
        }
    }

    void effectsEndWithThePicture()
    {
        QFETCH(QString, shape);
        for (const double ratio : {1.0, 2.0}) {
            const QImage picture = noise(QSize(60, 50) * ratio, ratio);
            const int around = static_cast<int>(20 * ratio);
            const QRect wide = picture.rect().adjusted(-around, -around, around, around);
            QImage seen = rendered(picture, u'[' + shape + u']', wide, {});
            const QRect inside = picture.rect().translated(around, around);
            QVERIFY(seen.copy(inside) != picture);
            seen.setDevicePixelRatio(1);
            QPainter painter(&seen);
            painter.setCompositionMode(QPainter::CompositionMode_Clear);
            painter.fillRect(inside, Qt::transparent);
            painter.end();
            QImage nothing(seen.size(), seen.format());
            nothing.fill(Qt::transparent);
            QCOMPARE(seen, nothing);
        }
    }

    void everythingFitsOnOnePixel()
    {
        const QImage picture = noise({1, 1});
        for (const char *mode : {"mosaic", "blur"}) {
            const QString box = QStringLiteral(R"([{"type":"mosaic","x":-5,"y":-5,"w":20,"h":20,"mosaicMode":"%1"}])")
                                    .arg(QLatin1String(mode));
            QCOMPARE(rendered(picture, box, picture.rect(), {}), picture);
        }
        for (const char *type : {"mosaic_pen", "spotlight", "watermark", "magnifier", "smart_erase"}) {
            const QString shape =
                QStringLiteral(R"([{"type":"%1","x":-1,"y":-1,"w":9,"h":9,"ax":-3,"ay":-3,"bx":9,"by":9,"text":"mark",)"
                               R"("points":[{"x":0,"y":0},{"x":3,"y":3}]}])")
                    .arg(QLatin1String(type));
            QCOMPARE(rendered(picture, shape, picture.rect(), {}).size(), QSize(1, 1));
        }
    }

    /// Shapes without any size, and numbers that are none.
    void poorShapesAreHarmless_data()
    {
        QTest::addColumn<QString>("type");
        for (int tool = 0; tool < 64; ++tool) {
            if (const auto type = static_cast<ToolType>(tool); ShapeFactory::standard().knows(type))
                QTest::newRow(qPrintable(toolTypeName(type))) << toolTypeName(type);
        }
    }

    void poorShapesAreHarmless()
    {
        QFETCH(QString, type);
        const QImage picture = noise({40, 30});
        rendered(picture, QStringLiteral(R"([{"type":"%1"}])").arg(type), picture.rect(), {});
        QJsonObject in{{QStringLiteral("type"), type}};
        const QStringList keys =
            u"x y w h ax ay bx by cx cy ex ey offX textOffX zoom dash fontSize rotation padX padY thickness opacity mosaicIntensity dim stamp startX endY x1"_qs
                .split(u' ');
        for (const double odd : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                                 -std::numeric_limits<double>::infinity(), -1.0}) {
            for (const QString &key : keys)
                in.insert(key, odd);
            const auto shape = ShapeFactory::standard().read(in);
            QVERIFY(shape);
            const QRectF box = shape->paintedBounds();
            QVERIFY(std::isfinite(box.x()) && std::isfinite(box.y()));
            QVERIFY(std::isfinite(box.width()) && std::isfinite(box.height()));
            QJsonObject out;
            shape->toJson(out);
            for (auto it = out.constBegin(); it != out.constEnd(); ++it)
                QVERIFY2(!it->isDouble() || std::isfinite(it->toDouble()), qPrintable(it.key()));
            rendered(picture, u"[%1]"_qs.arg(QString::fromUtf8(shape->toJsonText())), picture.rect(), {});
        }
    }

    void oddBoxesPaintNothing()
    {
        const QImage picture = noise({160, 100});
        for (const char *shape :
             {R"({"type":"mosaic","x":900,"y":900,"w":60,"h":50})", R"({"type":"mosaic","x":20,"y":20})",
              R"({"type":"mosaic_pen","points":[{"x":9,"y":9}]})",
              R"({"type":"mosaic","x":1e300,"y":-1e18,"w":3,"h":4,"mosaicIntensity":1e300,"mosaicMode":7})"})
            QCOMPARE(rendered(picture, u"[%1]"_qs.arg(QLatin1String(shape)), picture.rect(), {}), picture);
    }

    void spotlightsDarkenOnceByTheStrongest()
    {
        QImage picture(100, 60, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::white);
        const QImage result = rendered(picture,
                                       QStringLiteral(R"([{"type":"spotlight","x":10,"y":10,"w":20,"h":20,"dim":0.4},)"
                                                      R"({"type":"spotlight","x":60,"y":10,"w":20,"h":20,"dim":0.7}])"),
                                       picture.rect(), {});
        QCOMPARE(qRed(result.pixel(20, 20)), 255);
        QCOMPARE(qRed(result.pixel(70, 20)), 255);
        QVERIFY(std::abs(qRed(result.pixel(45, 20)) - 76) <= 1);
    }

    void fillsInTokens()
    {
        const qint64 stamp = QDateTime(QDate(2026, 3, 4), QTime(0, 5, 9)).toMSecsSinceEpoch();
        for (const auto &[text, shown] : QList<QPair<QString, QString>>{
                 {u"on {{yyyy-MM-dd}}!"_qs, u"on 2026-03-04!"_qs},
                 {u"{{hh:mm:ss a}} {{HH}}"_qs, u"12:05:09 上午 00"_qs},
                 {u"{{yy}} {{MM"_qs, u"26 {{MM"_qs},
                 {u"{{q}} yyyy}}"_qs, u"q yyyy}}"_qs},
             })
            QCOMPARE(WatermarkShape::expand(text, stamp), shown);
    }

    /// A repaint of a part leaves no seam, however long the text is and whatever is in it.
    void watermarkInPartsIsTheWholeWatermark_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("mode");
        for (const char *mode : {"tile", "br"}) {
            QTest::addRow("words, %s", mode) << QStringLiteral("Draft of today") << QString::fromLatin1(mode);
            QTest::addRow("10,000 characters, %s", mode)
                << QStringLiteral("words ").repeated(1667) << QString::fromLatin1(mode);
            QTest::addRow("emoji and right to left, %s", mode)
                << QStringLiteral("😀שלום عربي 👩‍👩‍👧 abc\u2028x").repeated(9)
                << QString::fromLatin1(mode);
        }
    }

    void watermarkInPartsIsTheWholeWatermark()
    {
        QFETCH(QString, text);
        QFETCH(QString, mode);
        ShapeDocument document;
        document.setWatermarkText(text);
        document.setWatermarkMode(mode);
        document.setWatermark();
        ShapeRenderContext context;
        context.canvasBounds = QRectF(0, 0, 500, 300);
        QImage whole(500, 300, QImage::Format_ARGB32_Premultiplied);
        whole.fill(Qt::white);
        QImage parts = whole;
        const QImage plain = whole;
        QPainter painter(&whole);
        document.paint(painter, context);
        painter.end();
        for (int y = 0; y < 300; y += 60) {
            for (int x = 0; x < 500; x += 70) {
                painter.begin(&parts);
                painter.setClipRect(x, y, 70, 60);
                document.paint(painter, context);
                painter.end();
            }
        }
        QVERIFY(whole != plain);
        QCOMPARE(parts, whole);
    }

    void watermarkKeepsItsTimeUntilTheTextChanges()
    {
        WatermarkShape shape;
        ShapeAttributes attributes;
        attributes.watermarkText = QStringLiteral("{{ss}}");
        shape.takeAttributes(attributes);
        shape.stamp = 5;
        attributes.watermarkMode = QStringLiteral("br");
        QVERIFY(shape.applyAttribute(ShapeAttribute::Watermark, attributes));
        QCOMPARE(shape.stamp, 5);
        attributes.watermarkText = QStringLiteral("x");
        QVERIFY(shape.applyAttribute(ShapeAttribute::Watermark, attributes));
        QVERIFY(shape.stamp > 5);
    }

    void lensFindsItsPlace_data()
    {
        QTest::addColumn<QRectF>("source");
        QTest::addColumn<double>("zoom");
        QTest::addColumn<QRectF>("canvas");
        QTest::addColumn<QRectF>("lens");
        const QRectF canvas(0, 0, 400, 300);
        QTest::newRow("right") << QRectF(50, 100, 60, 40) << 2.0 << canvas << QRectF(126, 80, 120, 80);
        QTest::newRow("below") << QRectF(330, 100, 60, 40) << 1.0 << canvas << QRectF(330, 156, 60, 40);
        QTest::newRow("left") << QRectF(330, 250, 60, 40) << 2.0 << QRectF(0, 0, 400, 310) << QRectF(194, 230, 120, 80);
        QTest::newRow("above") << QRectF(20, 250, 360, 40) << 1.0 << canvas << QRectF(20, 194, 360, 40);
        QTest::newRow("pushed in") << QRectF(20, 20, 360, 260) << 1.0 << canvas << QRectF(40, 20, 360, 260);
        QTest::newRow("anywhere") << QRectF(330, 100, 60, 40) << 1.0 << QRectF() << QRectF(406, 100, 60, 40);
        QTest::newRow("largest") << QRectF(0, 0, 200, 100) << 10.0 << QRectF() << QRectF(216, -175, 900, 450);
    }

    void lensFindsItsPlace()
    {
        QFETCH(QRectF, source);
        QFETCH(double, zoom);
        QFETCH(QRectF, canvas);
        MagnifierShape shape;
        shape.zoom = zoom;
        shape.updateDrag(source.left(), source.top(), source.right(), source.bottom());
        QTEST(shape.lens(canvas), "lens");
    }

    void draggedLensKeepsItsOffset()
    {
        MagnifierShape shape;
        shape.updateDrag(50, 100, 110, 140);
        shape.pressAt(186, 120);
        shape.translate(10, 5);
        QCOMPARE(shape.source(), QRectF(50, 100, 60, 40));
        QCOMPARE(shape.lens({}), QRectF(136, 85, 120, 80));
        shape.pressAt(60, 120);
        shape.translate(1, 1);
        QCOMPARE(shape.source(), QRectF(51, 101, 60, 40));
        QCOMPARE(shape.lens({}), QRectF(137, 86, 120, 80));
    }

    void zeroIntensityIsTheDefault()
    {
        MosaicShape shape;
        shape.readJson({{QStringLiteral("mosaicIntensity"), 0}});
        QCOMPARE(shape.look.intensity, 15.0);
    }
};

TAVREL_TEST_MAIN(QGuiApplication, EffectShapesTest)
#include "test_effect_shapes.moc"
