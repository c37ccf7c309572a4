#include "ui/outlined_text_edit.h"

#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPlainTextDocumentLayout>
#include <QSignalBlocker>
#include <QTextBlock>
#include <QTextLayout>

#include <cmath>
#include <utility>

namespace tavrel::ui {
namespace {

/// Puts every line at a distance of its own instead of the font's.
class FixedLines final : public QPlainTextDocumentLayout
{
public:
    using QPlainTextDocumentLayout::QPlainTextDocumentLayout;

    double lineHeight = 0;
    double baseline = 0;

    QRectF blockBoundingRect(const QTextBlock &block) const override
    {
        QRectF box = QPlainTextDocumentLayout::blockBoundingRect(block);
        QTextLayout *layout = block.layout();
        if (lineHeight <= 0 || !layout || layout->lineCount() == 0)
            return box;
        QTextLine line = layout->lineAt(0);
        const QPointF place(line.position().x(), baseline - line.ascent());
        if (line.position() != place)
            line.setPosition(place);
        box.setHeight(lineHeight);
        return box;
    }
};

} // namespace

OutlinedTextEdit::OutlinedTextEdit(QWidget *parent) : QPlainTextEdit(parent)
{
    document()->setDocumentLayout(new FixedLines(document()));
    document()->setDocumentMargin(0);
    setFrameShape(QFrame::NoFrame);
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAttribute(Qt::WA_InputMethodEnabled);
    viewport()->setAutoFillBackground(false);
    setViewportMargins(0, 0, 0, 0);
    setUndoRedoEnabled(true);
}

void OutlinedTextEdit::setTextColor(const QColor &color)
{
    if (std::exchange(m_textColor, color) == color)
        return;
    setStyleSheet(QStringLiteral("QPlainTextEdit { background: transparent; border: none; color: %1; }")
                      .arg(color.name(QColor::HexArgb)));
}

void OutlinedTextEdit::setOutline(const QColor &color, double width)
{
    m_outlineColor = color;
    m_outlineWidth = width;
    const int margin = outlineMargin();
    setViewportMargins(margin, margin, margin, margin);
    viewport()->update();
}

void OutlinedTextEdit::setLines(double lineHeight, double baseline)
{
    auto *lines = static_cast<FixedLines *>(document()->documentLayout());
    lines->lineHeight = lineHeight;
    lines->baseline = baseline;
    viewport()->update();
}

int OutlinedTextEdit::outlineMargin() const
{
    return m_outlineWidth > 0 ? static_cast<int>(std::ceil(m_outlineWidth / 2)) + 1 : 0;
}

void OutlinedTextEdit::paintEvent(QPaintEvent *event)
{
    if (m_outlineWidth > 0) {
        QPainter painter(viewport());
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setClipping(false);
        const QPen pen(m_outlineColor, m_outlineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
        for (QTextBlock block = firstVisibleBlock(); block.isValid(); block = block.next()) {
            const QRectF box = blockBoundingGeometry(block).translated(contentOffset());
            const QTextLayout *layout = block.layout();
            if (!layout || layout->lineCount() == 0)
                continue;
            const QTextLine line = layout->lineAt(0);
            QString text = block.text();
            const QString composing = layout->preeditAreaText();
            if (!composing.isEmpty())
                text.insert(layout->preeditAreaPosition(), composing);
            QPainterPath letters;
            letters.addText(box.topLeft() + line.position() + QPointF(0, line.ascent()), font(), text);
            painter.strokePath(letters, pen);
        }
    }
    QPlainTextEdit::paintEvent(event);
}

void OutlinedTextEdit::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        Q_EMIT escaped();
        return;
    }
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        bool isTaken = false;
        Q_EMIT entered(event->modifiers(), &isTaken);
        if (isTaken)
            return;
        insertPlainText(QStringLiteral("\n"));
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}

void OutlinedTextEdit::inputMethodEvent(QInputMethodEvent *event)
{
    m_composition = event->preeditString();
    QPlainTextEdit::inputMethodEvent(event);
    Q_EMIT compositionChanged();
}

void OutlinedTextEdit::dropComposition()
{
    if (m_composition.isEmpty())
        return;
    m_composition.clear();
    const QSignalBlocker blocker(this);
    QInputMethodEvent nothing;
    QPlainTextEdit::inputMethodEvent(&nothing);
}

// The wheel is the tool's; there is nothing to scroll.
void OutlinedTextEdit::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

} // namespace tavrel::ui
