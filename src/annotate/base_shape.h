#pragma once

#include "annotate/image_transform.h"
#include "annotate/shape_attributes.h"
#include "annotate/shape_enums.h"
#include "annotate/shape_render_context.h"
#include "annotate/tool_type.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QPainter>
#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QString>

#include <memory>
#include <optional>

namespace tavrel {

/// One annotation. Every coordinate and length is in image logical units: device-independent pixels of the picture.
///
/// A shape is data with geometry and drawing; ShapeDocument owns it and turns input into calls. The hooks in the second
/// half say how a class differs from the rest, so that the document needs to know no class by name.
class BaseShape
{
public:
    explicit BaseShape(ToolType type);
    virtual ~BaseShape() = default;
    BaseShape(const BaseShape &) = delete;
    BaseShape &operator=(const BaseShape &) = delete;

    /// Draws the shape itself; the painter is left as it was.
    virtual void paint(QPainter &painter, const ShapeRenderContext &context) const = 0;
    /// Draws handles and outline of the selected shape. By default a round handle at each of handles().
    virtual void paintSelection(QPainter &painter, const ShapeRenderContext &context) const;
    [[nodiscard]] virtual bool hitTest(double x, double y) const = 0;
    /// The shape under creation follows the pointer from the press point.
    virtual void updateDrag(double startX, double startY, double x, double y) = 0;
    virtual void translate(double dx, double dy) = 0;
    [[nodiscard]] virtual QList<QPointF> handles() const { return {}; }
    /// The pointer over a handle.
    [[nodiscard]] virtual Qt::CursorShape handleCursor(int) const { return Qt::PointingHandCursor; }
    /// Moves a handle and returns the index it has afterwards: the corner of a box that is dragged past the opposite
    /// corner becomes that one. The default moves nothing.
    virtual int setHandle(int index, double x, double y);
    /// By default the box of handles(); nothing when there are none.
    [[nodiscard]] virtual std::optional<QRectF> bounds() const;
    /// Where paint() leaves ink, at least; the default is bounds().
    [[nodiscard]] virtual QRectF inkBounds() const { return bounds().value_or(QRectF()); }
    /// All that paint(), paintSelection() and the hover mark may touch at a handle scale of 1; null for everywhere.
    /// The default grows bounds() by half the thickness and 24 on each side.
    [[nodiscard]] virtual QRectF paintedBounds() const;
    /// The same in more and smaller parts, for a shape that leaves most of its box empty. Together they hold all that
    /// paintedBounds() promises.
    [[nodiscard]] virtual QList<QRectF> paintedParts() const { return {paintedBounds()}; }
    /// A count that rises while the shape is only being added to, as a stroke is under the pointer; 0 for shapes that
    /// change as a whole.
    [[nodiscard]] virtual qsizetype growth() const { return 0; }
    /// What looks different since growth() was at an earlier value.
    [[nodiscard]] virtual QRectF grownSince(qsizetype growth) const;
    /// Told the press point before a move starts.
    virtual void pressAt(double x, double y);
    /// Follows the picture. By default every handle is mapped in order; the handles are read once, before the first
    /// is set. Shapes whose handles depend on each other map what defines them instead.
    virtual void transform(const ImageTransform &transform);
    /// Multiplies thickness and every coordinate and size. The default knows thickness and nothing else.
    virtual void scale(double factor);
    /// Writes the keys of the class and, through writeBase(), those of every shape.
    virtual void toJson(QJsonObject &out) const = 0;
    /// Reads the keys of the class; the base keys follow by readBase(). Never fails: a missing key has a default.
    virtual void readJson(const QJsonObject &in) = 0;
    /// What toJson() says as compact JSON. A class with thousands of points writes them straight into the text, see
    /// jsonTextWithPoints(); the points come back through takePoints().
    [[nodiscard]] virtual QByteArray toJsonText() const;
    /// Called after readJson() with points that were read apart from the rest.
    virtual void takePoints(QList<QPointF> points);

    /// Takes what a new shape of this class has from the attributes. The default takes colour and thickness.
    virtual void takeAttributes(const ShapeAttributes &attributes);
    /// Gives back what the next shape shall have after this one was picked. The default gives the colour, the thickness
    /// unless the class has none to see, and the style of an arrow.
    virtual void giveAttributes(ShapeAttributes &attributes) const;
    /// Applies one attribute if the class has it; true when the shape has changed.
    virtual bool applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes);
    /// Whether a shape just drawn is too small to be meant. The default: the box of handles() is below 3 both ways.
    [[nodiscard]] virtual bool isTooSmall() const;
    /// Replaces a stroke under creation by a straight one; false for shapes that are no strokes.
    virtual bool straighten(const QPointF &from, const QPointF &to);
    /// The shapes that stand for a stroke just drawn once it is pulled onto the text lines it touches; none when it
    /// stays as drawn.
    [[nodiscard]] virtual QList<std::shared_ptr<BaseShape>> snappedTo(const QList<QRectF> &lines,
                                                                      const ShapeAttributes &attributes) const;
    /// Draws the hover mark along an outline of its own; false to get the common one.
    virtual bool paintHoverOutline(QPainter &painter, double handleScale) const;
    /// Whether a release leaves the shape without a commit because the host now opens its editor.
    [[nodiscard]] virtual bool waitsForEditor() const { return false; }
    [[nodiscard]] virtual bool isBeingEdited() const { return false; }
    /// Whether deselecting has to commit what an editor put in.
    [[nodiscard]] virtual bool commitsOnDeselect() const { return false; }

    /// Number and type of a shape that takes part in counting.
    struct Numbering
    {
        NumberType type = NumberType::Arabic;
        int number = 1;
    };
    [[nodiscard]] virtual std::optional<Numbering> numbering() const { return {}; }
    virtual void setNumber(int number);

    struct EraseBox
    {
        QRectF rect;
        EraseSolver solver = EraseSolver::Auto;

        /// The pixels of the box in a picture of `scale` pixels per unit (not positive: 1) whose corner lies at
        /// `origin`. The engine finds its result by this very rectangle, so that painting has to ask here too.
        [[nodiscard]] QRect pixelRect(double scale, const QPointF &origin = {}) const;
    };
    [[nodiscard]] virtual std::optional<EraseBox> eraseBox() const { return {}; }

    [[nodiscard]] ToolType type() const { return m_type; }
    /// Mosaic, brush mosaic and smart erase: they lie under every stroke whatever the order.
    [[nodiscard]] bool isEffect() const;

    void transformRotate90(double imageHeight) { transform({ImageTransform::Kind::RotateCw, imageHeight}); }
    void transformRotate90CCW(double imageWidth) { transform({ImageTransform::Kind::RotateCcw, imageWidth}); }
    void transformFlipH(double imageWidth) { transform({ImageTransform::Kind::FlipHorizontal, imageWidth}); }

    QString id;
    QString color = QStringLiteral("#F93442"); ///< see colorFromText()
    double thickness = 3.0;
    bool selected = false; ///< runtime only
    double opacity = 1.0;  ///< 0 to 1
    QString compositeOperation = QStringLiteral("source-over");
    ArrowStyle arrowStyle = ArrowStyle::Standard; ///< here so that every shape carries it through

protected:
    void writeBase(QJsonObject &out) const;

private:
    friend class ShapeFactory;
    void readBase(const QJsonObject &in);

    ToolType m_type;
};

/// 7 characters of 0-9 and a-z from the global random generator.
[[nodiscard]] QString newShapeId();

/// A stored coordinate or size, see storedLength().
[[nodiscard]] double readLength(const QJsonObject &in, const QString &key, double fallback = 0.0);
/// As readLength(), where 0 stands for the default too.
[[nodiscard]] double readNonZero(const QJsonObject &in, const QString &key, double fallback);

} // namespace tavrel
