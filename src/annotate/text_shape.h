#pragma once

#include "annotate/base_shape.h"

#include <QFont>
#include <QMarginsF>
#include <QStringList>
#include <QTransform>

namespace tavrel {

/// A label of one or more lines in a box that can be turned.
class TextShape final : public BaseShape
{
public:
    TextShape();

    void paint(QPainter &painter, const ShapeRenderContext &context) const override;
    void paintSelection(QPainter &painter, const ShapeRenderContext &context) const override;
    [[nodiscard]] bool hitTest(double x, double y) const override;
    /// Places the first line where the press was.
    void updateDrag(double startX, double startY, double x, double y) override;
    void translate(double dx, double dy) override;
    /// Left edge, right edge, the knob that turns, and the corner that scales.
    [[nodiscard]] QList<QPointF> handles() const override;
    [[nodiscard]] Qt::CursorShape handleCursor(int index) const override;
    int setHandle(int index, double x, double y) override;
    /// The box before it is turned.
    [[nodiscard]] std::optional<QRectF> bounds() const override { return m_box; }
    [[nodiscard]] QRectF inkBounds() const override;
    [[nodiscard]] QRectF paintedBounds() const override;
    /// The middle follows the picture; the text stays upright.
    void transform(const ImageTransform &transform) override;
    void scale(double factor) override;
    void toJson(QJsonObject &out) const override;
    void readJson(const QJsonObject &in) override;
    void takeAttributes(const ShapeAttributes &attributes) override;
    void giveAttributes(ShapeAttributes &attributes) const override;
    bool applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes) override;
    [[nodiscard]] bool isTooSmall() const override { return false; }
    [[nodiscard]] bool waitsForEditor() const override { return m_text.isEmpty(); }
    [[nodiscard]] bool isBeingEdited() const override { return m_isEditing; }
    [[nodiscard]] bool commitsOnDeselect() const override { return m_isEditing && !m_text.trimmed().isEmpty(); }

    [[nodiscard]] const QString &text() const { return m_text; }
    /// Lines are parted by line feeds. The box grows with the text and never narrows.
    void setText(const QString &text);
    /// While it is being edited an editor stands where the text is. An editor stands upright, and so does the box then.
    void setEditing(bool editing) { m_isEditing = editing; }
    [[nodiscard]] const QRectF &box() const { return m_box; }
    void setWidth(double width) { m_box.setWidth(width); }
    [[nodiscard]] double fontSize() const { return m_fontSize; }
    [[nodiscard]] double rotation() const { return m_rotation; } ///< radians, clockwise
    [[nodiscard]] TextStyle textStyle() const { return m_style; }
    [[nodiscard]] QString fontFamily() const { return m_family; }
    [[nodiscard]] QSizeF padding() const { return m_padding; }
    [[nodiscard]] static QFont fontOf(const QString &family, double pixelSize);

private:
    [[nodiscard]] QFont font() const { return fontOf(m_family, m_fontSize); }
    [[nodiscard]] QStringList lines() const { return m_text.split(u'\n'); }
    [[nodiscard]] double contentWidth() const;
    void measure();
    void measureInk();
    /// From the box's middle, upright, to the picture.
    [[nodiscard]] QTransform placed() const;
    [[nodiscard]] double shownRotation() const { return m_isEditing ? 0.0 : m_rotation; }
    [[nodiscard]] QRectF shownBox(const QMarginsF &margins) const;
    void keepInPlace(const QPointF &local, const QPointF &where);
    void dragEdge(bool isLeft, const QPointF &to);
    void dragCorner(const QPointF &to);
    void paintPlate(QPainter &painter) const;
    void paintLines(QPainter &painter) const;

    QRectF m_box{0, 0, 20, 30};
    QString m_text;
    double m_fontSize = 28.0;
    double m_rotation = 0;
    bool m_isEditing = false;
    TextStyle m_style = TextStyle::Standard;
    QString m_family; ///< empty for the application's
    QSizeF m_padding{12, 8};
    QSizeF m_ink; ///< all lines, without padding
};

/// What stands out against a colour: black on very light ones, else the colour mixed far towards white.
[[nodiscard]] QColor contrastColor(const QColor &color);
/// Width of the line around letters of a size in the style `Border`.
[[nodiscard]] double textBorderWidth(double fontSize);
/// Distance of lines for a font size.
[[nodiscard]] double textLineHeight(double fontSize);
/// Base line of the first of some lines, from the top of their block. The ink of all lines together, not the font's own
/// idea of a line, stands in the middle of the block.
[[nodiscard]] double textBaseline(const QStringList &lines, const QFont &font, double lineHeight);

} // namespace tavrel
