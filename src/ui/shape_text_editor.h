#pragma once

#include "ui/outlined_text_edit.h"

#include <QObject>
#include <QPointF>

#include <memory>

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
/// An undo, a load or the removal of the shape in between makes the edit void. GUI thread only.
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
    /// Begins to edit a shape of the document; false for one that has no text. Another edit is ended first; the one of
    /// the same shape goes on.
    bool open(BaseShape *shape);
    /// Applies what was typed, with a commit; what is being composed is put in if the input method does so at once. A
    /// text that is blank goes away.
    void end(bool keepSelection = false);
    /// Attributes of the shape have changed.
    void relayout();
    [[nodiscard]] bool isOpen() const { return m_text || m_badge; }
    /// Null when there is none any more.
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
    [[nodiscard]] bool isVoid() const;

    ShapeDocument &m_document;
    QWidget *m_host;
    OutlinedTextEdit *m_edit = nullptr;
    View m_view;
    std::weak_ptr<BaseShape> m_shape; ///< owner of the next two
    TextShape *m_text = nullptr;
    SequenceShape *m_badge = nullptr;
    quint64 m_generation = 0;
    double m_compositionWidth = -1; ///< of the box before composing began; below 0 for none
};

} // namespace tavrel::ui
