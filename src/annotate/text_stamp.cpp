#include "annotate/text_stamp.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QRawFont>
#include <QTextLayout>

#include <algorithm>

namespace tavrel {
namespace {

constexpr qsizetype kPieceGlyphs = 32;

/// Whether the letters of a font are pictures in colours of their own, which no pen makes translucent.
bool hasPictures(const QRawFont &font)
{
    return !font.fontTable("CBLC").isEmpty() || !font.fontTable("COLR").isEmpty() || !font.fontTable("sbix").isEmpty();
}

} // namespace

TextStamp::TextStamp(const QString &text, const QFont &font) : m_text(text), m_font(font)
{
    m_box = QFontMetricsF(font).tightBoundingRect(text);
    if (m_box.isEmpty())
        return;
    QString line = text;
    line.replace(QChar::LineSeparator, u' '); // would begin another one
    QTextLayout layout(line, font);
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    const QTextLine shaped = layout.createLine();
    layout.endLayout();
    if (!shaped.isValid())
        return;
    const QPointF toBaseline(0, -shaped.ascent());
    const double overhang = QFontMetricsF(font).height();
    for (const QGlyphRun &whole : shaped.glyphRuns()) {
        const bool isPicture = hasPictures(whole.rawFont());
        const QList<quint32> glyphs = whole.glyphIndexes();
        const QList<QPointF> positions = whole.positions();
        for (qsizetype from = 0; from < glyphs.size(); from += kPieceGlyphs) {
            const qsizetype count = std::min(kPieceGlyphs, glyphs.size() - from);
            QGlyphRun run = whole;
            run.setGlyphIndexes(glyphs.mid(from, count));
            QList<QPointF> places = positions.mid(from, count);
            for (QPointF &place : places)
                place += toBaseline;
            run.setPositions(places);
            const auto [left, right] = std::minmax_element(
                places.begin(), places.end(), [](const QPointF &a, const QPointF &b) { return a.x() < b.x(); });
            const QRectF box = QRectF(left->x(), -overhang, right->x() - left->x(), 2 * overhang)
                                   .adjusted(-overhang, 0, 2 * overhang, 0);
            m_pieces.append({run, box, isPicture});
            m_reach |= box;
        }
    }
}

void TextStamp::draw(QPainter &painter, const QPointF &baseline, const QRectF &visible) const
{
    const QRectF here = visible.translated(-baseline);
    if (!m_reach.intersects(here))
        return;
    for (const Piece &piece : m_pieces) {
        if (!piece.box.intersects(here))
            continue;
        // Only where it is needed: letters under an opacity are painted far more slowly.
        const double opacity = painter.opacity();
        if (piece.isPicture)
            painter.setOpacity(opacity * painter.pen().color().alphaF());
        painter.drawGlyphRun(baseline, piece.run);
        if (piece.isPicture)
            painter.setOpacity(opacity);
    }
}

} // namespace tavrel
