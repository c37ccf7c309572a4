#pragma once

#include <QFont>
#include <QGlyphRun>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>

class QPainter;

namespace tavrel {

/// One line of text, shaped once and drawn many times.
///
/// Only what is visible is drawn, also of a single very long text, so that a repaint costs what it shows.
class TextStamp final
{
public:
    TextStamp() = default;
    TextStamp(const QString &text, const QFont &font);

    [[nodiscard]] const QString &text() const { return m_text; }
    [[nodiscard]] const QFont &font() const { return m_font; }
    /// The tight box of the ink around a baseline that begins at the origin; empty for a text without ink.
    [[nodiscard]] const QRectF &box() const { return m_box; }

    /// In the painter's pen; letters that are pictures take its transparency alone.
    ///
    /// baseline  where it begins
    /// visible   what of the painter's coordinates can be seen
    void draw(QPainter &painter, const QPointF &baseline, const QRectF &visible) const;

private:
    struct Piece
    {
        QGlyphRun run;
        QRectF box; ///< of all its ink and a little more
        bool isPicture = false;
    };

    QString m_text;
    QFont m_font;
    QRectF m_box;
    QRectF m_reach; ///< of all pieces
    QList<Piece> m_pieces;
};

} // namespace tavrel
