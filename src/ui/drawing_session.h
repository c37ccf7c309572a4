#pragma once

#include "annotate/flatten.h"
#include "annotate/shape_document.h"
#include "settings/key_combo.h"
#include "ui/brush_cursor.h"
#include "ui/marker_lines.h"
#include "ui/shape_text_editor.h"
#include "ui/tool_steps.h"
#include "ui/wheel_steps.h"

#include <QCursor>
#include <QImage>
#include <QObject>
#include <QRegion>
#include <QTimer>

#include <memory>

class QWheelEvent;
class QWidget;

namespace tavrel {
class EffectImageCache;
class SmartEraseEngine;
class ToolMemory;
} // namespace tavrel

namespace tavrel::ui {

/// Drawing on one picture, for any widget that shows it: the document with its text editor, effects, erased places,
/// highlighter lines, pointer, wheel and tool memory.
///
/// The host says where the picture lies (setView) and which part of it may be drawn on (setArea), passes on presses,
/// moves, keys and the wheel, paints by paint() inside its own paint event and repaints takeDamage() at changed().
/// Points that come from the host are in its widget coordinates, areas in those of the picture: logical units from its
/// top-left. What a press means when it meets nothing drawable is the host's affair. GUI thread only.
class DrawingSession final : public QObject
{
    Q_OBJECT

public:
    using View = ShapeTextEditor::View;

    /// In what hosts differ. Distances are in widget units.
    struct Manner
    {
        double handleReach = 15; ///< half side of the square around a handle of a shape
        double click = 4;        ///< a press that moves less far is a click
        double hitSlop = 0;      ///< how far beside a shape a click takes it, beyond what the shape allows
        double eraserRadius = 0;
        ToolStepLimits steps;
    };

    explicit DrawingSession(QWidget *host);
    DrawingSession(QWidget *host, const Manner &manner);
    ~DrawingSession() override;

    [[nodiscard]] ShapeDocument &document() { return m_document; }
    [[nodiscard]] const ShapeDocument &document() const { return m_document; }

    // --- what is drawn on ----------------------------------------------------------------------------------------

    /// Another picture; what is drawn stays. Erased places are solved anew, lines of text are looked for anew.
    void setPicture(const QImage &picture);
    [[nodiscard]] const QImage &picture() const { return m_picture; }
    /// What is drawn from then on is as thick on the screen at any zoom.
    void setView(const View &view);
    /// Where shapes show, and what spotlights and watermarks fill; empty while nothing may be drawn.
    void setArea(const QRectF &area);
    [[nodiscard]] QPointF inPicture(const QPointF &point) const { return (point - m_view.origin) / m_view.zoom; }

    /// Takes up a stored drawing, without a tool.
    void load(const QString &shapes, const QString &counters, const QStringList &undoStack, int undoIndex);
    /// Goes back to a state of the document, for a host with an undo list of its own.
    void restore(const ShapeDocument::State &state);
    /// The host has changed the document itself.
    void documentChanged();
    /// Throws everything away, undo as well, and puts the tool down.
    void clear();

    // --- tools ---------------------------------------------------------------------------------------------------

    /// What tools were set to before; the document starts with it and keeps it up to date.
    void setToolMemory(std::shared_ptr<ToolMemory> memory);
    /// Finds the lines of text that highlighter strokes are pulled onto; without it there are none.
    void setLineSearch(LineSearch search);
    void setMarkerSnap(bool snaps);
    void setTool(ToolType tool);
    [[nodiscard]] bool hasTool() const { return m_document.tool() != ToolType::None; }
    /// How the next shape, and the selected one, look has been changed from outside.
    void takeAttributes();

    // --- pointer -------------------------------------------------------------------------------------------------

    /// A press anywhere on the host ends the edit of a text; its shape stays selected for a press on its own handles.
    void settle(const QPointF &point);
    /// Whether a handle or body of something drawn is there.
    [[nodiscard]] bool meets(const QPointF &point) const;
    void press(const QPointF &point);
    void move(const QPointF &point, bool shift);
    void release(const QPointF &point);
    /// Ends what press() began where it is.
    void finishDrawing();
    /// What is being drawn is taken back.
    void cancelDrawing() { m_document.cancelCreation(); }
    void hover(const QPointF &point);
    void leave() { m_document.setHovered(nullptr); }
    /// The pointer over the area, or over something drawn beside it.
    [[nodiscard]] QCursor cursor(const QPointF &point);

    // --- wheel and keys ------------------------------------------------------------------------------------------

    void wheel(const QWheelEvent &event, bool isReversed);
    /// A zoom gesture; value as gestureValue() gives it.
    void gesture(int value, bool shift);
    void forgetWheel();
    /// Undo, redo, delete, label; false for a key that means nothing here.
    bool key(const KeyCombo &combo);
    void undo();
    void redo();
    [[nodiscard]] bool isEditingText() const { return m_textEditor.isOpen(); }
    void endTextEdit(bool keepSelection = false) { m_textEditor.end(keepSelection); }

    // --- painting ------------------------------------------------------------------------------------------------

    /// exposed  what has to be painted, in widget coordinates
    void paint(QPainter &painter, const QRegion &exposed) const;
    /// Where the host looks different since the last call.
    [[nodiscard]] QRegion takeDamage();
    /// What a part of the picture with everything drawn on it is made from, for any thread.
    ///
    /// selection  in coordinates of the picture
    [[nodiscard]] FlattenRequest flattenRequest(const QRectF &selection) const;

Q_SIGNALS:
    void changed();      ///< something looks different
    void stateChanged(); ///< tool, attributes, selected shape or history are others; follows every such call
    void keyboardReturned();
    void linesUnavailable(); ///< lines of text are wanted, and there is nothing to find them with
    void markerSnapChanged(bool snaps);

private:
    void step(int value, int sizeValue, bool isSize);
    void removeSelected();
    [[nodiscard]] bool isOnEditedHandle(const QPointF &point) const;
    [[nodiscard]] double handleReach() const { return m_manner.handleReach / m_view.zoom; }
    [[nodiscard]] QRectF inHost(const QRectF &area) const;
    /// Lets the boxes of smart erase be solved that have no result yet.
    void refreshErase();
    void onEraseTick();
    void ensureLines();
    void announce();

    QWidget *m_host;
    Manner m_manner;
    ShapeDocument m_document;
    QImage m_picture;
    View m_view;
    QRectF m_area;
    std::shared_ptr<ToolMemory> m_toolMemory;
    std::shared_ptr<EffectImageCache> m_effects;
    std::unique_ptr<SmartEraseEngine> m_eraseEngine; ///< from the first box on
    QTimer m_eraseTimer;                             ///< moves the light over boxes that are being solved
    ShapeTextEditor m_textEditor;
    MarkerLines m_markerLines;
    BrushCursor m_brush;
    WheelAccumulator m_toolWheel;
    WheelAccumulator m_sizeWheel;
    QPointF m_pressPoint;
    QPointF m_lastPoint;
    qsizetype m_shapesAtPress = 0;
    bool m_isDrawing = false;
    bool m_markerSnap = false; ///< as last told
};

} // namespace tavrel::ui
