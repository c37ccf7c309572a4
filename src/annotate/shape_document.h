#pragma once

#include "annotate/base_shape.h"
#include "annotate/erase_region.h"
#include "annotate/outline_glow.h"
#include "annotate/shape_attributes.h"
#include "annotate/shape_factory.h"
#include "annotate/shape_history.h"
#include "annotate/shape_render_context.h"
#include "annotate/shape_store.h"

#include <QList>
#include <QPainter>
#include <QStringList>

#include <array>
#include <functional>
#include <memory>
#include <optional>

namespace tavrel {

/// Everything drawn on one picture: the shapes in z order, the tool and what its next shape will look like, the
/// selection, and undo.
///
/// A plain object without widget or signals: the host feeds it press, move and release in image logical units and
/// paints it. The last shape of the list is on top. Undo is by snapshots: an operation ends in commit(), which costs
/// the JSON of the shapes that changed since the last one and nothing for the others. A shape changed from outside
/// must be told by markChanged(); the selected one is always looked at anew.
///
/// Budget with 100,000 freehand points in the document: commit 30 ms, undo 80 ms, a pick 1 ms, a stored undo list of
/// 30 states 30 ms; bench_annotate_shape_document shows it.
///
/// GUI thread; what another thread has to render it gets as a value, see state() and flatten().
class ShapeDocument final
{
public:
    using TextLineProvider = std::function<QList<QRectF>()>;

    /// factory  has to outlive the document
    explicit ShapeDocument(const ShapeFactory &factory = ShapeFactory::standard());
    /// A copy would share its shapes with the original; shapesJson() and loadState() make a true one.
    ShapeDocument(const ShapeDocument &) = delete;
    ShapeDocument &operator=(const ShapeDocument &) = delete;
    ShapeDocument(ShapeDocument &&) = default;
    ShapeDocument &operator=(ShapeDocument &&) = default;
    ~ShapeDocument() = default;

    [[nodiscard]] const ShapeFactory &factory() const { return *m_factory; }

    // --- tool and attributes -------------------------------------------------------------------------------------

    /// Leaving the watermark commits; entering it takes over what a watermark in the document says.
    void setTool(ToolType tool);
    [[nodiscard]] ToolType tool() const { return m_tool; }
    [[nodiscard]] const ShapeAttributes &attributes() const { return m_attributes; }

    /// What the next shapes will look like, all at once: no shape there is changes. The display scale stays.
    void setAttributes(const ShapeAttributes &attributes);

    /// A scale that is not positive and finite counts as 1.
    void setDisplayScale(double scale);

    enum class Commit { Yes, No }; ///< No while a slider is dragged
    /// Each stores the value, applies it to the selected shape if its class has the attribute, and commits when that
    /// shape changed. Thickness and font size are logical; they are stored multiplied by the display scale.
    void setColor(const QString &color, Commit commit = Commit::Yes);
    void setThickness(double thickness, Commit commit = Commit::Yes);
    void setFontSize(double size, Commit commit = Commit::Yes);
    void setFontFamily(const QString &family, Commit commit = Commit::Yes);
    void setArrowStyle(ArrowStyle style);
    void setTextStyle(TextStyle style);
    void setMosaicMode(MosaicMode mode);
    void setMosaicStrength(double strength, Commit commit = Commit::Yes);
    void setBlurStrength(double strength, Commit commit = Commit::Yes);
    void setSpotlightRound(bool round);
    void setSpotlightDim(double dim);
    void setMagnifierRound(bool round);
    void setMagnifierZoom(double zoom);
    void setMagnifierDash(double dash);
    void setEraseWholeBox(bool wholeBox);
    void setSequenceArrow(bool arrow);
    void setMarkerRectMode(bool rect) { m_attributes.markerRectMode = rect; }
    void setSequenceType(NumberType type) { m_attributes.sequenceType = type; }

    void setWatermarkText(const QString &text) { m_attributes.watermarkText = text; }
    void setWatermarkMode(const QString &mode) { m_attributes.watermarkMode = mode; }
    void setWatermarkOpacity(double opacity);
    void setWatermarkFontSize(double logical);
    /// Brings the one watermark of the document in line with the fields: made when missing, removed for an empty text.
    void setWatermark(Commit commit = Commit::Yes);

    void setEraserRadius(double logical) { m_eraserRadius = logical; }
    [[nodiscard]] double eraserRadius() const { return m_eraserRadius; }
    /// Extra radius of a pick after a click that drew nothing.
    void setHitSlop(double slop) { m_hitSlop = slop; }
    void setMarkerSnapText(bool snap) { m_markerSnapText = snap; }
    [[nodiscard]] bool markerSnapText() const { return m_markerSnapText; }
    /// Where the picture has text, for strokes that are pulled onto it.
    void setTextLineProvider(TextLineProvider provider) { m_textLines = std::move(provider); }
    [[nodiscard]] bool hasTextLineProvider() const { return static_cast<bool>(m_textLines); }

    // --- pointer -------------------------------------------------------------------------------------------------

    /// tolerance  half side of the square in which a handle of the selected shape is hit
    /// returns    the shape that is selected afterwards, null for none and for an eraser stroke
    BaseShape *press(double x, double y, double tolerance);
    void move(double startX, double startY, double x, double y, bool shift);
    /// Ends what press() began. Returns the shape that the host should know about: one just drawn, moved or picked.
    BaseShape *release();
    /// Creating, dragging, or a handle is held.
    [[nodiscard]] bool isInteracting() const;
    /// Takes the shape under creation out again; false when none was being created.
    bool cancelCreation();
    /// A handle of the selected shape, its body, or a shape that press() would pick.
    [[nodiscard]] bool hitAny(double x, double y, double tolerance) const;
    /// The handle of the selected shape at a point, -1 for none.
    [[nodiscard]] int handleAt(double x, double y, double tolerance) const;
    /// The top-most shape at a point that a click with the present tool picks.
    [[nodiscard]] BaseShape *pickAt(double x, double y) const;

    // --- shapes --------------------------------------------------------------------------------------------------

    [[nodiscard]] const QList<std::shared_ptr<BaseShape>> &shapes() const { return m_store.list(); }
    [[nodiscard]] BaseShape *selected() const { return m_selected; }
    [[nodiscard]] BaseShape *hovered() const { return m_hovered; }
    void setHovered(BaseShape *shape) { m_hovered = shape; }
    [[nodiscard]] BaseShape *lastCreated() const { return m_lastCreated; }
    /// The shape whose attributes the host shall show; asking clears it.
    [[nodiscard]] BaseShape *takeActivated();
    /// Whether numbers have moved up since the last question.
    [[nodiscard]] bool takeRenumbered();

    /// Appends a shape made elsewhere, on top, without a commit.
    void append(std::shared_ptr<BaseShape> shape);
    void select(BaseShape *shape);
    void removeShape(BaseShape *shape); ///< with commit
    void removeSelected();              ///< with commit
    void clearSelection();
    /// offset  in logical units; a text being edited is not duplicated
    void duplicateSelected(double offset);
    /// Tells that a shape was changed from outside, so that the next commit writes it anew.
    void markChanged(const BaseShape *shape, ShapeDamage::Change change = ShapeDamage::Change::Whole);

    /// 1 to 999 for the selected number, or for the next one when none is selected; whether anything changed.
    bool setSequenceValue(int value);
    /// What the number field shows: the selected number, else the next one of the present type.
    [[nodiscard]] int sequenceValue() const;

    void scaleAll(double factor);
    void translateAll(double dx, double dy);
    /// Keeps what has a handle in `rect` or touches it, moved so that the rectangle's corner is the origin. Shapes
    /// without an extent stay. Returns how many were removed.
    int cropTo(const QRectF &rect);
    void rotateAllCW(double imageHeight);
    void rotateAllCCW(double imageWidth);
    void flipAllH(double imageWidth);

    // --- state ---------------------------------------------------------------------------------------------------

    void undo();
    void redo();
    [[nodiscard]] bool canUndo() const { return m_history.canUndo(); }
    [[nodiscard]] bool canRedo() const { return m_history.canRedo(); }
    /// Makes the present shapes an undo state; without a change nothing happens, so callers commit freely.
    void commit();
    /// Grows with every commit that makes a new state, and is never given again; after undo it is that of the state
    /// that is shown. A host with an undo list of its own knows by it whether the document has younger steps.
    [[nodiscard]] quint64 revision() const { return m_history.present().revision; }

    /// The next number of each type, by NumberType.
    using Counters = std::array<int, kNumberTypeCount>;
    /// Everything at one moment, as a value that shares its texts with the undo states and with other values; for any
    /// thread.
    struct State
    {
        ShapeTexts shapes; ///< the present ones, committed or not
        Counters counters;
        ShapeHistory history;
    };
    /// Microseconds, whatever the number of shapes, unless they have changed since the last commit.
    [[nodiscard]] State state() const;
    /// Puts everything back, the undo states included; costs what differs. Revisions go on from the highest there was.
    void restore(const State &state);

    [[nodiscard]] QString shapesJson() const;
    /// Next number of each type.
    [[nodiscard]] QString countersJson() const;
    [[nodiscard]] QStringList undoStack() const { return m_history.texts(); }
    [[nodiscard]] int undoIndex() const { return m_history.index(); }
    /// Replaces everything. Malformed text gives no shapes; entries that are no known shape are skipped.
    void loadState(const QString &shapes, const QString &counters, const QStringList &undoStack, int undoIndex);
    /// Grows with every reload of the shapes: pointers from before it are gone.
    [[nodiscard]] quint64 generation() const { return m_generation; }

    // --- drawing -------------------------------------------------------------------------------------------------

    /// Effects, then spotlights and strokes in order, clipped to the context's clip; then the marks of the selected
    /// and the glow of the hovered shape, unclipped.
    void paint(QPainter &painter, const ShapeRenderContext &context) const;
    /// The shapes alone: what goes into a saved picture.
    void paintShapes(QPainter &painter, const ShapeRenderContext &context) const;
    /// All that paint() may touch.
    [[nodiscard]] QRectF boundsPadded() const;
    /// The places that look different since the last call; a null rectangle stands for everywhere.
    [[nodiscard]] QList<QRectF> takeDamage();
    /// Pixel boxes of all erased places with their solvers.
    ///
    /// imageScale  device pixels per unit
    /// origin      of the picture in shape coordinates
    [[nodiscard]] QList<EraseSpec> eraseRegions(double imageScale, const QPointF &origin = {}) const;

private:
    using ShapePtr = std::shared_ptr<BaseShape>;

    void change(ShapeAttribute attribute, Commit commit);
    [[nodiscard]] BaseShape *grabAt(double x, double y) const;
    [[nodiscard]] bool mayRegrab() const;
    [[nodiscard]] bool isPickedAt(const BaseShape &shape, double x, double y) const;
    void raise(BaseShape *shape);
    /// Takes a shape out of the list and renumbers those behind it.
    void takeOut(BaseShape *shape);
    /// Takes out a shape that never counted, because it was still being created.
    void takeOutUnfinished(BaseShape *shape);
    void forget(const BaseShape *shape);
    void closeGap(const BaseShape::Numbering &removed);
    void recomputeCounters();
    BaseShape *beginShape(double x, double y);
    void eraseAt(double x, double y);
    BaseShape *releaseCreated(BaseShape *shape, bool wasCreating);
    void adopt(const BaseShape &shape);
    [[nodiscard]] int &counter(NumberType type) { return m_counters[static_cast<std::size_t>(type)]; }
    /// Ends every interaction and replaces the shapes.
    void show(const ShapeTexts &texts);
    void paintHoverMark(QPainter &painter, const ShapeRenderContext &context) const;
    void loadWatermarkFields();

    const ShapeFactory *m_factory;
    ShapeStore m_store;
    mutable GlowCache m_glow;
    ShapeHistory m_history;
    ShapeAttributes m_attributes;
    ToolType m_tool = ToolType::None;
    BaseShape *m_selected = nullptr;
    BaseShape *m_hovered = nullptr;
    BaseShape *m_lastCreated = nullptr;
    BaseShape *m_activated = nullptr;
    double m_eraserRadius = 0;
    double m_hitSlop = 0;
    bool m_markerSnapText = false;
    TextLineProvider m_textLines;
    static constexpr Counters kFirstNumbers{1, 1, 1, 1, 1, 1};
    Counters m_counters = kFirstNumbers;
    int m_activeHandle = -1;
    bool m_dragging = false;
    bool m_creating = false;
    bool m_erasing = false;
    bool m_moved = false;
    bool m_renumbered = false;
    bool m_unsettled = false; ///< an attribute was applied without the commit that is due
    QPointF m_pressPoint;
    QPointF m_dragPoint;
    quint64 m_generation = 0;
};

} // namespace tavrel
