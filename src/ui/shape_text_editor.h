#pragma once

#include "ui/outlined_text_edit.h"

#include <QObject>
#include <QPointF>

namespace tavrel {
class BaseShape;
class SequenceShape;
class ShapeDocument;
class TextShape;
} // namespace tavrel

namespace tavrel::ui {

/// Edits the text of a text shape or the label of a badge in place, for any host that shows a document.
///
/// The shape hides what the editor shows, and the editor stands where the shape will paint it, so that nothing jumps.
/// An undo or a load in between makes the edit void. GUI thread only.
class ShapeTextEditor final : public QObject
{
    Q_OBJECT

public:
    /// How the host shows shape coordinates: widget = point * zoom + origin.
    struct View
    {
        double zoom = 1;
        QPointF origin;
    };

    /// document  has to outlive the editor
    ShapeTextEditor(QWidget *host, ShapeDocument &document);

    void setView(const View &view);
    /// Begins to edit a shape of the document; false for one that has no text. Another edit is ended first.
    bool open(BaseShape *shape);
    /// Applies what was typed, with a commit. A text that is blank goes away.
    void end(bool keepSelection = false);
    /// Attributes of the shape have changed.
    void relayout();
    [[nodiscard]] bool isOpen() const { return m_text || m_badge; }
    [[nodiscard]] const BaseShape *shape() const;
    /// Null before the first edit.
    [[nodiscard]] OutlinedTextEdit *edit() { return m_edit; }

Q_SIGNALS:
    void changed(); ///< the shape's extent
    void ended(bool byKey);

private:
    void makeEdit();
    void layoutText();
    void layoutLabel();
    void endByKey();
    void hide();

    ShapeDocument &m_document;
    QWidget *m_host;
    OutlinedTextEdit *m_edit = nullptr;
    View m_view;
    TextShape *m_text = nullptr;
    SequenceShape *m_badge = nullptr;
    quint64 m_generation = 0;
    double m_compositionWidth = -1; ///< of the box before composing began; below 0 for none
};

} // namespace tavrel::ui
