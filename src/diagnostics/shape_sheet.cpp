#include "diagnostics/shape_sheet.h"

#include "annotate/selection_renderer.h"
#include "annotate/shape_document.h"
#include "annotate/shape_factory.h"
#include "annotate/text_shape.h"

#include <QDir>
#include <QPainter>

#include <cstdio>

namespace tavrel {
namespace {

constexpr QSize kCell(260, 150);
constexpr int kColumns = 6;
constexpr int kGap = 12;
constexpr int kCaption = 18;

QString box(const char *type, const QString &more)
{
    return QStringLiteral(R"([{"type":"%1","x":40,"y":28,"w":170,"h":90,"color":"#F93442"%2}])")
        .arg(QLatin1String(type), more);
}

QString arrow(const QString &style, const QString &more)
{
    return QStringLiteral(
               R"([{"type":"arrow","startX":36,"startY":116,"endX":222,"endY":40,"color":"#F93442","thickness":4,)"
               R"("arrowStyle":"%1"%2}])")
        .arg(style, more);
}

/// A wavy stroke of many points.
QString stroke(const char *type, const QString &more)
{
    QStringList points;
    for (int i = 0; i <= 40; ++i)
        points.append(
            QStringLiteral(R"({"x":%1,"y":%2})").arg(32 + i * 5).arg(74 + (i % 10 < 5 ? i % 5 : 5 - i % 5) * 9));
    return QStringLiteral(R"([{"type":"%1","points":[%2],"color":"#FFDD00"%3}])")
        .arg(QLatin1String(type), points.join(u','), more);
}

/// A text that was only written down knows nothing of its box yet.
QString measured(const QString &shapes)
{
    ShapeDocument document;
    document.loadState(shapes, {}, {}, 0);
    for (const auto &shape : document.shapes()) {
        if (auto *text = dynamic_cast<TextShape *>(shape.get()))
            text->setText(text->text());
        document.markChanged(shape.get());
    }
    return document.shapesJson();
}

QString text(const char *style, const QString &more)
{
    return measured(QStringLiteral(R"([{"type":"text","x":30,"y":34,"text":"Text 文字\nsecond line","fontSize":24,)"
                                   R"("color":"#007DFF","textStyle":"%1"%2}])")
                        .arg(QLatin1String(style), more));
}

QString badge(const char *type, int number)
{
    return QStringLiteral(R"([{"type":"sequence","cx":60,"cy":96,"ex":150,"ey":46,"hasArrow":true,"textOffX":10,)"
                          R"("textOffY":0,"seqNumber":%2,"numberType":"%1","seqText":"label 标签","fontSize":26,)"
                          R"("color":"#F93442"}])")
        .arg(QLatin1String(type))
        .arg(number);
}

QImage drawn(const SheetCell &cell, const QImage &ground)
{
    const QRectF whole(QPointF(0, 0), QSizeF(kCell));
    QImage image = renderSelection(ground, whole, cell.shapes, ShapeFactory::standard());
    if (!cell.withHandles)
        return image;
    ShapeDocument document;
    document.loadState(cell.shapes, {}, {}, 0);
    ShapeRenderContext context;
    context.canvasBounds = whole;
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const auto &shape : document.shapes())
        shape->paintSelection(painter, context);
    return image;
}

} // namespace

QSize sheetCellSize()
{
    return kCell;
}

QList<SheetCell> sheetCells()
{
    QList<SheetCell> cells{
        {QStringLiteral("rect"), box("rect", QStringLiteral(R"(,"thickness":4)"))},
        {QStringLiteral("circle"),
         QStringLiteral(
             R"([{"type":"circle","startX":40,"startY":28,"endX":210,"endY":118,"color":"#F93442","thickness":4}])")},
        {QStringLiteral("line"),
         QStringLiteral(R"([{"type":"line","x1":36,"y1":116,"x2":222,"y2":40,"color":"#F93442","thickness":4}])")},
    };
    for (const char *style : {"standard", "wedge", "wedge_outline", "line", "double"})
        cells.append({QStringLiteral("arrow, %1").arg(QLatin1String(style)), arrow(QLatin1String(style), {})});
    for (const char *style : {"standard", "wedge", "wedge_outline", "line", "double"})
        cells.append({QStringLiteral("arrow, %1, curved").arg(QLatin1String(style)),
                      arrow(QLatin1String(style), QStringLiteral(R"(,"ctrlOffX":-40,"ctrlOffY":-50)"))});
    for (const char *style : {"standard", "wedge", "wedge_outline", "double"})
        cells.append({QStringLiteral("arrow, %1, thick").arg(QLatin1String(style)),
                      arrow(QLatin1String(style), QStringLiteral(R"(,"ctrlOffX":10,"ctrlOffY":26,"thickness":14)"))});
    cells.append({QStringLiteral("pen"), stroke("pen", QStringLiteral(R"(,"thickness":5)"))});
    cells.append({QStringLiteral("marker"),
                  stroke("marker", QStringLiteral(R"(,"thickness":18,"compositeOperation":"multiply")"))});
    cells.append({QStringLiteral("marker, area"),
                  QStringLiteral(R"([{"type":"marker","markerRect":true,"x":30,"y":40,"w":190,"h":40,)"
                                 R"("color":"#FFDD00","compositeOperation":"multiply"}])")});
    for (const char *style : {"standard", "border", "background", "round_bg"})
        cells.append({QStringLiteral("text, %1").arg(QLatin1String(style)), text(style, {})});
    cells.append({QStringLiteral("text, turned"), text("round_bg", QStringLiteral(R"(,"rotation":-0.35)"))});
    cells.append({QStringLiteral("text, other scripts"),
                  measured(QStringLiteral(
                      R"([{"type":"text","x":16,"y":4,"text":"שלום abc\nسلام\n🙂👍 Ágjy","fontSize":30,)"
                      R"("color":"#FF9500","textStyle":"round_bg"}])"))});
    for (const char *type : {"arabic", "upper_letter", "lower_letter", "chinese", "roman_upper", "roman_lower"})
        cells.append({QStringLiteral("number, %1").arg(QLatin1String(type)), badge(type, 8)});
    for (const char *type : {"arabic", "upper_letter", "chinese", "roman_upper"})
        cells.append({QStringLiteral("number, %1, wide").arg(QLatin1String(type)), badge(type, 88)});
    cells.append({QStringLiteral("mosaic"), box("mosaic", QStringLiteral(R"(,"mosaicIntensity":12)"))});
    cells.append(
        {QStringLiteral("blur"), box("mosaic", QStringLiteral(R"(,"mosaicMode":"blur","mosaicIntensity":10)"))});
    cells.append({QStringLiteral("mosaic brush"),
                  stroke("mosaic_pen", QStringLiteral(R"(,"thickness":26,"mosaicIntensity":8)"))});
    cells.append({QStringLiteral("blur brush"),
                  stroke("mosaic_pen", QStringLiteral(R"(,"thickness":26,"mosaicMode":"blur","mosaicIntensity":8)"))});
    cells.append({QStringLiteral("spotlight"), box("spotlight", {})});
    cells.append({QStringLiteral("spotlights, round"),
                  QStringLiteral(R"([{"type":"spotlight","x":20,"y":20,"w":110,"h":80,"isRound":true,"dim":0.4},)"
                                 R"({"type":"spotlight","x":110,"y":50,"w":110,"h":80,"isRound":true,"dim":0.7}])")});
    for (const bool isRound : {true, false})
        cells.append({isRound ? QStringLiteral("magnifier, round") : QStringLiteral("magnifier"),
                      QStringLiteral(R"([{"type":"magnifier","ax":30,"ay":50,"bx":80,"by":90,"isRound":%1,"zoom":2,)"
                                     R"("color":"#007DFF","thickness":3}])")
                          .arg(isRound ? u"true" : u"false")});
    for (const char *mode : {"tile", "br", "bl", "tr", "tl", "tc", "bc", "center"})
        cells.append({QStringLiteral("watermark, %1").arg(QLatin1String(mode)),
                      QStringLiteral(R"([{"type":"watermark","text":"Draft {{yyyy}}","mode":"%1","fontSize":16,)"
                                     R"("opacity":0.5,"color":"#F93442","stamp":1767225600000}])")
                          .arg(QLatin1String(mode))});
    for (const char *solver : {"auto", "wholeBox"})
        cells.append({QStringLiteral("smart erase, %1").arg(QLatin1String(solver)),
                      QStringLiteral(R"([{"type":"smart_erase","x":167,"y":26,"w":50,"h":50,"eraseSolver":"%1"}])")
                          .arg(QLatin1String(solver))});
    // Some once more with what is seen while they are selected.
    const QList<SheetCell> plain = cells;
    for (const char *name : {"rect", "circle", "line", "arrow, standard, curved", "marker, area", "text, round_bg",
                             "text, turned", "number, arabic", "mosaic", "spotlight", "magnifier, round"}) {
        for (const SheetCell &cell : plain) {
            if (cell.name == QLatin1String(name))
                cells.append({cell.name + QStringLiteral(", selected"), cell.shapes, true});
        }
    }
    return cells;
}

QImage sheetGround(bool dark, double ratio)
{
    QImage image((QSizeF(kCell) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(dark ? QColor(32, 33, 36) : QColor(250, 250, 252));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font;
    font.setPixelSize(12);
    painter.setFont(font);
    painter.setPen(dark ? QColor(200, 204, 210) : QColor(60, 64, 70));
    for (int row = 0; row < 7; ++row)
        painter.drawText(QPointF(14, 24 + row * 19), QStringLiteral("Row %1 of the page below").arg(row + 1));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(52, 168, 83));
    painter.drawEllipse(QRectF(175, 35, 32, 30)); // what smart erase takes out
    painter.setBrush(QColor(66, 133, 244));
    painter.drawRoundedRect(QRectF(180, 100, 60, 30), 6, 6);
    return image;
}

int renderShapeSheet(const QStringList &values)
{
    if (values.size() != 1) {
        std::fprintf(stderr, "用法: tavrel --render-shape-sheet <文件夹>\n");
        return 2;
    }
    const QDir folder(values.first());
    if (!folder.mkpath(QStringLiteral("."))) {
        std::fprintf(stderr, "无法写入 %s\n", qPrintable(folder.path()));
        return 1;
    }
    const QList<SheetCell> cells = sheetCells();
    const int rows = (static_cast<int>(cells.size()) + kColumns - 1) / kColumns;
    const QSize size(kGap + kColumns * (kCell.width() + kGap), kGap + rows * (kCell.height() + kCaption + kGap));
    for (const bool dark : {false, true}) {
        for (const int ratio : {1, 2}) {
            QImage sheet(size * ratio, QImage::Format_RGB32);
            sheet.setDevicePixelRatio(ratio);
            sheet.fill(QColor(128, 132, 140));
            QPainter painter(&sheet);
            const QImage ground = sheetGround(dark, ratio);
            for (int i = 0; i < cells.size(); ++i) {
                const QPoint at(kGap + i % kColumns * (kCell.width() + kGap),
                                kGap + i / kColumns * (kCell.height() + kCaption + kGap));
                painter.setPen(Qt::white);
                painter.drawText(QRect(at, QSize(kCell.width(), kCaption)), Qt::AlignLeft | Qt::AlignVCenter,
                                 cells[i].name);
                painter.drawImage(at + QPoint(0, kCaption), drawn(cells[i], ground));
            }
            painter.end();
            const QString path =
                folder.filePath(QStringLiteral("shapes-%1-%2.png").arg(dark ? u"dark" : u"light").arg(ratio));
            if (!sheet.save(path)) {
                std::fprintf(stderr, "无法写入 %s\n", qPrintable(path));
                return 1;
            }
            std::printf("%s\n", qPrintable(path));
        }
    }
    return 0;
}

} // namespace tavrel
