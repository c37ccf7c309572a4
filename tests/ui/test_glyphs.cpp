#include "support/test_main.h"

#include "ui/app_mark.h"
#include "ui/glyphs.h"
#include "ui/icon_sheet.h"

#include <QGuiApplication>
#include <QPainter>

using namespace tavrel;
using namespace tavrel::ui;

namespace {

QImage canvas(int side)
{
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

/// The box of all pixels that something was painted on.
QRect painted(const QImage &image)
{
    QRect box;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) > 8)
                box |= QRect(x, y, 1, 1);
    return box;
}

} // namespace

class TestGlyphs : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void everyNamePaintsInsideItsBox_data();
    void everyNamePaintsInsideItsBox();
    void translucentColoursDoNotDoubleUpWhereStrokesCross();
    void theMarkInTheFileIsTheDrawnOne();
};

void TestGlyphs::everyNamePaintsInsideItsBox_data()
{
    QTest::addColumn<int>("set");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("tool");
    for (const QString &name : glyphNames() + lineGlyphNames())
        QTest::addRow("%s", qPrintable(name)) << 0 << name << 0;
    for (const QString &name : attributeGlyphNames())
        QTest::addRow("attribute %s", qPrintable(name)) << 1 << name << 0;
    for (int tool = static_cast<int>(ToolType::Rect); tool <= static_cast<int>(ToolType::Cloud); ++tool)
        QTest::addRow("tool %d", tool) << 2 << QString() << tool;
}

void TestGlyphs::everyNamePaintsInsideItsBox()
{
    QFETCH(int, set);
    QFETCH(QString, name);
    QFETCH(int, tool);
    // The box is 240 pixels at 10 a unit, in the middle of a larger canvas: what leaves the box stays visible.
    QImage image = canvas(280);
    const QRectF box(20, 20, 240, 240);
    QPainter painter(&image);
    if (set == 0)
        paintGlyph(painter, name, box, Qt::black);
    else if (set == 1)
        paintAttributeGlyph(painter, name, box, Qt::black);
    else
        paintToolGlyph(painter, static_cast<ToolType>(tool), box, Qt::black);
    painter.end();

    const QRect ink = painted(image);
    QVERIFY2(!ink.isEmpty(), "nothing painted");
    // At least one unit of air all round, nearly centred, and large enough to be seen.
    const QByteArray where = QByteArray::number(ink.left() - 20) + " " + QByteArray::number(ink.top() - 20) + " " +
                             QByteArray::number(ink.right() - 20) + " " + QByteArray::number(ink.bottom() - 20);
    QVERIFY2(box.toRect().adjusted(10, 10, -10, -10).contains(ink), where);
    QVERIFY2(ink.width() + ink.height() >= 160, where);
    QVERIFY2(qAbs(ink.center().x() - 140) <= 12, where);
}

void TestGlyphs::translucentColoursDoNotDoubleUpWhereStrokesCross()
{
    QImage image = canvas(240);
    QPainter painter(&image);
    paintGlyph(painter, QStringLiteral("ed_close"), QRectF(0, 0, 240, 240), QColor(0, 0, 0, 100));
    painter.end();
    QCOMPARE(qAlpha(image.pixel(120, 120)), 100);
}

void TestGlyphs::theMarkInTheFileIsTheDrawnOne()
{
    const QString target = qEnvironmentVariable("TAVREL_WRITE_APP_ICON");
    if (!target.isEmpty())
        QVERIFY(renderAppIcon(512).save(target));
    QVERIFY(renderAppIcon(0).isNull());
    const QIcon icon = appIcon();
    QVERIFY(!icon.isNull());
    const QImage stored = icon.pixmap(QSize(512, 512), 1.0).toImage().convertToFormat(QImage::Format_ARGB32);
    const QImage drawn = renderAppIcon(512).convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(stored.size(), drawn.size());
    int different = 0;
    for (int y = 0; y < drawn.height(); ++y) {
        for (int x = 0; x < drawn.width(); ++x) {
            const QRgb a = stored.pixel(x, y);
            const QRgb b = drawn.pixel(x, y);
            if (qAbs(qAlpha(a) - qAlpha(b)) > 8 || qAbs(qRed(a) - qRed(b)) > 16 || qAbs(qBlue(a) - qBlue(b)) > 16)
                ++different;
        }
    }
    QVERIFY2(different < 200, QByteArray::number(different));
}

TAVREL_TEST_MAIN(QGuiApplication, TestGlyphs)
#include "test_glyphs.moc"
