#include "ui/glyphs.h"

#include "ui/glyph_pen.h"

#include <QFile>
#include <QPainter>
#include <QPixmap>

#include <algorithm>
#include <cmath>

/// A static library's resources are linked only when something names them, from outside any namespace.
static void registerBrandResources()
{
    Q_INIT_RESOURCE(brand);
}

namespace tavrel::ui {
namespace {

using Draw = void (*)(GlyphPen &);

Draw find(std::span<const Glyph> table, const QString &name)
{
    const auto found = std::ranges::find_if(table, [&name](const Glyph &glyph) { return glyph.name == name; });
    return found == table.end() ? nullptr : found->draw;
}

Draw findNamed(const QString &name)
{
    return find(name.startsWith(QLatin1StringView("ed_")) ? editorGlyphs() : lineGlyphs(), name);
}

Draw findTool(ToolType tool)
{
    const std::span<const ToolGlyph> table = toolGlyphTable();
    const auto found = std::ranges::find(table, tool, &ToolGlyph::tool);
    return found == table.end() ? nullptr : found->draw;
}

QStringList names(std::span<const Glyph> table)
{
    QStringList list;
    for (const Glyph &glyph : table)
        list.append(glyph.name);
    return list;
}

void paint(QPainter &painter, Draw draw, const QRectF &rect, const QColor &color)
{
    const qreal side = std::min(rect.width(), rect.height());
    if (!draw || side <= 0)
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.center() - QPointF(side, side) / 2);
    painter.scale(side / GlyphPen::box, side / GlyphPen::box);
    GlyphPen pen(painter, color);
    draw(pen);
    pen.finish();
    painter.restore();
}

QIcon icon(Draw draw, const QColor &color, int size)
{
    QIcon result;
    if (size <= 0)
        return result;
    for (const qreal ratio : {1.0, 2.0}) {
        const int pixels = static_cast<int>(std::lround(size * ratio));
        QPixmap pixmap(pixels, pixels);
        pixmap.setDevicePixelRatio(ratio);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(painter, draw, QRectF(0, 0, size, size), color);
        painter.end();
        result.addPixmap(pixmap, QIcon::Normal, QIcon::Off);
    }
    return result;
}

} // namespace

QIcon glyphIcon(const QString &name, const QColor &color, int size)
{
    return icon(findNamed(name), color, size);
}

QIcon toolIcon(ToolType tool, const QColor &color, int size)
{
    return icon(findTool(tool), color, size);
}

QIcon attributeIcon(const QString &name, const QColor &color, int size)
{
    return icon(find(attributeGlyphs(), name), color, size);
}

void paintGlyph(QPainter &painter, const QString &name, const QRectF &rect, const QColor &color)
{
    paint(painter, findNamed(name), rect, color);
}

void paintToolGlyph(QPainter &painter, ToolType tool, const QRectF &rect, const QColor &color)
{
    paint(painter, findTool(tool), rect, color);
}

void paintAttributeGlyph(QPainter &painter, const QString &name, const QRectF &rect, const QColor &color)
{
    paint(painter, find(attributeGlyphs(), name), rect, color);
}

QStringList glyphNames()
{
    return names(editorGlyphs());
}

QStringList lineGlyphNames()
{
    return names(lineGlyphs());
}

QStringList attributeGlyphNames()
{
    return names(attributeGlyphs());
}

QList<ToolType> toolGlyphs()
{
    QList<ToolType> tools;
    for (const ToolGlyph &glyph : toolGlyphTable())
        tools.append(glyph.tool);
    return tools;
}

QIcon appIcon()
{
    registerBrandResources();
    const QString path = QStringLiteral(":/brand/app_icon.png");
    return QFile::exists(path) ? QIcon(path) : QIcon();
}

} // namespace tavrel::ui
