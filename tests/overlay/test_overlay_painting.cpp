#include "overlay/magnifier.h"
#include "overlay/overlay_hints.h"
#include "overlay/overlay_marks.h"
#include "overlay/overlay_picture.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QPainter>

using namespace tavrel;
using namespace tavrel::ui;

namespace {

QImage speckled(const QSize &size, double ratio)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb((x * 37) & 0xff, (y * 53) & 0xff, ((x + y) * 91) & 0xff));
    }
    image.setDevicePixelRatio(ratio);
    return image;
}

QImage surface(const QSize &pixels, double ratio)
{
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::magenta);
    return image;
}

QStringList texts(const QList<HintRow> &rows)
{
    QStringList result;
    for (const HintRow &row : rows)
        result.append(row.key + u'|' + row.description);
    return result;
}

} // namespace

class OverlayPaintingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theClearPictureHidesTheDimOnEveryDevicePixelItTouches()
    {
        for (const auto &[ratio, first, last] :
             {std::tuple(1.0, 10, 20), {1.25, 12, 25}, {1.5, 15, 31}, {2.0, 20, 41}}) {
            const QImage image = speckled({60, 40}, ratio);
            const OverlayPicture picture(image);
            const QImage dark = dimmedImage(image);
            QImage shown = surface(image.size(), ratio);
            QPainter painter(&shown);
            picture.paintDimmed(painter, ratio);
            picture.paintClear(painter, QRectF(10.3, 0, 10.4, 100), ratio);
            painter.end();
            for (int x = 0; x < image.width(); ++x)
                QCOMPARE(shown.pixel(x, 20), (x >= first && x <= last ? image : dark).pixel(x, 20));
        }
    }

    /// A picture of another ratio is resampled: both layers have to show each pixel in the same place.
    void aResampledPictureDoesNotShiftInTheSelection()
    {
        const OverlayPicture picture(speckled({120, 80}, 2.0), QPointF(7, 3));
        const auto paint = [&picture](const QRectF &clear) {
            QImage image = surface({90, 60}, 1.0);
            QPainter painter(&image);
            picture.paintDimmed(painter, 1.0);
            if (!clear.isEmpty())
                picture.paintClear(painter, clear, 1.0);
            return image;
        };
        const QImage dark = paint({});
        const QImage whole = paint({7, 3, 60, 40});
        const QImage part = paint({20.4, 10.2, 11.3, 9.1});
        for (int y = 0; y < dark.height(); ++y) {
            for (int x = 0; x < dark.width(); ++x) {
                const bool isClear = QRect(20, 10, 12, 10).contains(x, y);
                QCOMPARE(part.pixel(x, y), (isClear ? whole : dark).pixel(x, y));
            }
        }
    }

    void theLensShowsThePixelsAroundThePointer_data()
    {
        QTest::addColumn<double>("ratio");
        for (const double ratio : {1.0, 1.25, 1.5, 2.0})
            QTest::addRow("%g", ratio) << ratio;
    }

    void theLensShowsThePixelsAroundThePointer()
    {
        QFETCH(double, ratio);
        const QImage image = speckled({400, 400}, ratio);
        const OverlayPicture picture(image);
        const QPointF pointer(3.2, 60.7); // the left cells lie outside the picture
        const MagnifierLook look{.lens = true, .colors = true, .colorFormat = QStringLiteral("hex")};
        const QRectF box(20, 30, 150, 214);
        QImage shown = surface({400, 400}, ratio);
        const QRgb background = shown.pixel(0, 0);
        MagnifierPainter magnifier;
        QPainter painter(&shown);
        magnifier.paint(painter, box, ratio, picture, pointer, look);
        painter.end();

        const QPoint centre(static_cast<int>(3.2 * ratio), static_cast<int>(60.7 * ratio));
        const QPointF corner(std::round(box.left() * ratio), std::round(box.top() * ratio));
        for (int cellY = 3; cellY < 12; ++cellY) {
            for (int cellX = 3; cellX < 12; ++cellX) {
                const QPoint source = centre + QPoint(cellX - 7, cellY - 7);
                const QPointF at = corner + QPointF(cellX + 0.5, cellY + 0.5) * 10 * ratio;
                const QRgb pixel = shown.pixel(static_cast<int>(at.x()), static_cast<int>(at.y()));
                if (image.rect().contains(source))
                    QCOMPARE(pixel, image.pixel(source));
                else
                    QVERIFY(qRed(pixel) > 150 && qGreen(pixel) == 0); // through the shadow
            }
        }
        // Nothing beyond the box.
        for (int x = 0; x < shown.width(); ++x) {
            for (int y = 0; y < shown.height(); ++y) {
                if (!QRectF(box.topLeft() * ratio, box.size() * ratio).adjusted(-2, -2, 2, 2).contains(x, y))
                    QCOMPARE(shown.pixel(x, y), background);
            }
        }
    }

    void theSizeLabelStaysInView()
    {
        const QString text = sizeLabelText({1234, 567});
        QCOMPARE(text, QStringLiteral("1234 × 567"));
        const QRectF above = sizeLabelBox({100, 200, 300, 300}, text, 800);
        QCOMPARE(above.bottomLeft(), QPointF(100, 195));
        QCOMPARE(sizeLabelBox({100, above.height() + 5, 300, 300}, text, 800).top(), 0.0);
        QCOMPARE(sizeLabelBox({100, above.height() + 4, 300, 300}, text, 800).top(), above.height() + 9);
        QCOMPARE(sizeLabelBox({795, 200, 5, 300}, text, 800).right(), 800.0);
    }

    void hintsFollowToolAndBindings()
    {
        BuiltinKeys keys;
        keys.pin.enabled = false;
        keys.copySelection.combo = KeyCombo();
        const QStringList plain = texts(hintRows(ToolType::None, false, keys));
        QCOMPARE(plain, (QStringList{QStringLiteral("Esc|取消截图"), QStringLiteral("Enter|快速复制"),
                                     QStringLiteral("Ctrl+A|框选全屏"), QStringLiteral("Ctrl+S|保存截图"),
                                     QStringLiteral(",|上一个历史截图"), QStringLiteral(".|下一个历史截图")}));
        QCOMPARE(texts(hintRows(ToolType::Rect, false, keys)).mid(3), plain); // behind what the tool has
        QVERIFY(hintRows(ToolType::Marker, true, keys).first().key !=
                hintRows(ToolType::Marker, false, keys).first().key);
    }
};

TAVREL_TEST_MAIN(QGuiApplication, OverlayPaintingTest)
#include "test_overlay_painting.moc"
