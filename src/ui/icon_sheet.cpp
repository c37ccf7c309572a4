#include "ui/icon_sheet.h"

#include "ui/app_mark.h"
#include "ui/glyphs.h"
#include "ui/theme.h"

#include <QFont>
#include <QPainter>

#include <algorithm>
#include <functional>
#include <vector>

namespace tavrel::ui {
namespace {

using PaintIcon = std::function<void(QPainter &painter, const QRectF &rect, const QColor &color)>;

struct Cell
{
    QString label;
    PaintIcon paint;
};

struct Section
{
    QString title;
    std::vector<Cell> cells;
};

constexpr int sizes[] = {18, 24, 48};
constexpr int cellWidth = 132;
constexpr int cellHeight = 84;
constexpr int columns = 7;
constexpr int margin = 16;
constexpr int titleHeight = 30;
constexpr int themeWidth = columns * cellWidth + 2 * margin;

Cell named(const QString &name)
{
    return {name, [name](QPainter &painter, const QRectF &rect, const QColor &color) {
                if (attributeGlyphNames().contains(name) && !lineGlyphNames().contains(name))
                    paintAttributeGlyph(painter, name, rect, color);
                else
                    paintGlyph(painter, name, rect, color);
            }};
}

Cell attribute(const QString &name)
{
    return {name, [name](QPainter &painter, const QRectF &rect, const QColor &color) {
                paintAttributeGlyph(painter, name, rect, color);
            }};
}

Cell tool(ToolType type)
{
    return {toolTypeName(type), [type](QPainter &painter, const QRectF &rect, const QColor &color) {
                paintToolGlyph(painter, type, rect, color);
            }};
}

template <typename List, typename MakeCell>
Section section(const QString &title, const List &list, MakeCell makeCell)
{
    Section result{title, {}};
    for (const auto &entry : list)
        result.cells.push_back(makeCell(entry));
    return result;
}

int heightOf(const Section &section)
{
    const int rows = (static_cast<int>(section.cells.size()) + columns - 1) / columns;
    return titleHeight + rows * cellHeight;
}

void setPixelSize(QPainter &painter, int size, QFont::Weight weight)
{
    QFont font = painter.font();
    font.setPixelSize(size);
    font.setWeight(weight);
    painter.setFont(font);
}

void paintCell(QPainter &painter, const Cell &cell, int left, int top, const Theme &theme)
{
    int x = left + 4;
    for (const int size : sizes) {
        cell.paint(painter, QRectF(x, top + (56 - size) / 2, size, size), theme.toolIcon());
        x += size + 12;
    }
    painter.setPen(theme.secondaryText());
    painter.drawText(QRect(left, top + 58, cellWidth - 4, 16), Qt::AlignLeft | Qt::AlignVCenter, cell.label);
}

QImage render(const std::vector<Section> &sections)
{
    int height = 2 * margin;
    for (const Section &part : sections)
        height += heightOf(part);
    QImage sheet(2 * themeWidth, height, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::Antialiasing);
    int left = 0;
    for (const Theme &theme : {lightTheme(), darkTheme()}) {
        painter.fillRect(left, 0, themeWidth, height, theme.studioWindow());
        int top = margin;
        for (const Section &part : sections) {
            setPixelSize(painter, 14, QFont::DemiBold);
            painter.setPen(theme.primaryText());
            painter.drawText(QRect(left + margin, top, themeWidth, titleHeight), Qt::AlignLeft | Qt::AlignVCenter,
                             part.title);
            setPixelSize(painter, 11, QFont::Normal);
            int index = 0;
            for (const Cell &cell : part.cells) {
                paintCell(painter, cell, left + margin + index % columns * cellWidth,
                          top + titleHeight + index / columns * cellHeight, theme);
                ++index;
            }
            top += heightOf(part);
        }
        left += themeWidth;
    }
    painter.end();
    return sheet;
}

} // namespace

QImage renderIconSheet()
{
    const Section mark{QStringLiteral("application"),
                       {{QStringLiteral("app_icon"),
                         [](QPainter &painter, const QRectF &rect, const QColor &) { paintAppMark(painter, rect); }}}};
    return render({section(QStringLiteral("ed_"), glyphNames(), named),
                   section(QStringLiteral("line"), lineGlyphNames(), named),
                   section(QStringLiteral("attribute"), attributeGlyphNames(), attribute),
                   section(QStringLiteral("tool"), toolGlyphs(), tool), mark});
}

QImage renderGlyphSheet(const QStringList &names)
{
    return render(
        {section(QStringLiteral("glyphs"), names.isEmpty() ? glyphNames() + lineGlyphNames() : names, named)});
}

} // namespace tavrel::ui
