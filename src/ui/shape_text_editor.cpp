#include "ui/shape_text_editor.h"

#include "annotate/sequence_shape.h"
#include "annotate/shape_document.h"
#include "annotate/text_shape.h"
#include "base/color_text.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QInputMethod>
#include <QSignalBlocker>
#include <QTextBlock>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrel::ui {
namespace {

constexpr int kSmallestFont = 4;
constexpr double kSmallestLabel = 120;
constexpr double kLabelRoom = 24;
constexpr double kLabelHeightRoom = 4;

} // namespace

ShapeTextEditor::ShapeTextEditor(QWidget *host, ShapeDocument &document)
    : QObject(host),
      m_document(document),
      m_host(host)
{}

void ShapeTextEditor::makeEdit()
{
    m_edit = new OutlinedTextEdit(m_host);
    m_edit->hide();
    connect(m_edit, &QPlainTextEdit::textChanged, this, &ShapeTextEditor::relayout);
    connect(m_edit, &OutlinedTextEdit::compositionChanged, this, &ShapeTextEditor::relayout);
    connect(m_edit, &OutlinedTextEdit::escaped, this, &ShapeTextEditor::endByKey);
    connect(m_edit, &OutlinedTextEdit::entered, this, [this](Qt::KeyboardModifiers modifiers, bool *isTaken) {
        const bool breaksLine = m_text && (modifiers & (Qt::ControlModifier | Qt::MetaModifier));
        *isTaken = !breaksLine;
        if (!breaksLine)
            endByKey();
    });
}

const BaseShape *ShapeTextEditor::shape() const
{
    return m_shape.lock().get();
}

bool ShapeTextEditor::isVoid() const
{
    return m_shape.expired() || m_document.generation() != m_generation;
}

void ShapeTextEditor::setView(const View &view)
{
    m_view = view;
    relayout();
}

bool ShapeTextEditor::open(BaseShape *shape)
{
    if (isOpen() && !isVoid() && shape == this->shape()) {
        m_edit->setFocus(Qt::OtherFocusReason);
        return true;
    }
    end();
    const auto &shapes = m_document.shapes();
    const auto owner =
        std::find_if(shapes.begin(), shapes.end(), [shape](const auto &each) { return each.get() == shape; });
    if (owner == shapes.end())
        return false;
    m_text = dynamic_cast<TextShape *>(shape);
    m_badge = dynamic_cast<SequenceShape *>(shape);
    if (!isOpen())
        return false;
    m_shape = *owner;
    if (!m_edit)
        makeEdit();
    m_generation = m_document.generation();
    m_compositionWidth = -1;
    m_document.select(shape);
    if (m_text)
        m_text->setEditing(true);
    else
        m_badge->setEditing(true);
    m_document.markChanged(shape);
    {
        const QSignalBlocker blocker(m_edit);
        m_edit->setPlainText(m_text ? m_text->text() : m_badge->label());
    }
    m_edit->setTextColor(colorFromText(shape->color));
    relayout();
    m_edit->show();
    m_edit->raise();
    m_edit->setFocus(Qt::OtherFocusReason);
    m_edit->moveCursor(QTextCursor::End);
    return true;
}

void ShapeTextEditor::relayout()
{
    if (!isOpen() || isVoid())
        return;
    if (m_text)
        layoutText();
    else
        layoutLabel();
    m_document.markChanged(shape());
    Q_EMIT changed();
}

void ShapeTextEditor::layoutText()
{
    const QString composition = m_edit->composition();
    if (composition.isEmpty()) {
        if (m_compositionWidth >= 0)
            m_text->setWidth(std::exchange(m_compositionWidth, -1));
        m_text->setText(m_edit->toPlainText());
    } else {
        if (m_compositionWidth < 0)
            m_compositionWidth = m_text->box().width();
        const QTextCursor cursor = m_edit->textCursor();
        const QFontMetricsF metrics(TextShape::fontOf(m_text->fontFamily(), m_text->fontSize()));
        QStringList lines = m_edit->toPlainText().split(u'\n');
        lines[cursor.blockNumber()].insert(cursor.positionInBlock(), composition);
        double widest = m_text->fontSize();
        for (const QString &line : std::as_const(lines))
            widest = std::max(widest, line.isEmpty() ? m_text->fontSize() * 0.5 : metrics.horizontalAdvance(line));
        m_text->setWidth(std::max(m_compositionWidth, widest + 2 * m_text->padding().width()));
    }

    const double zoom = m_view.zoom;
    const int pixels = std::max(kSmallestFont, static_cast<int>(std::lround(m_text->fontSize() * zoom)));
    const QFont font = TextShape::fontOf(m_text->fontFamily(), pixels);
    const QColor ink = colorFromText(m_text->color);
    m_edit->setTextColor(ink);
    m_edit->setFont(font);
    const bool hasBorder = m_text->textStyle() == TextStyle::Border;
    m_edit->setOutline(contrastColor(ink), hasBorder ? textBorderWidth(m_text->fontSize()) * zoom : 0.0);
    const QStringList lines = m_edit->toPlainText().split(u'\n');
    const double lineHeight = textLineHeight(m_text->fontSize()) * zoom;
    m_edit->setLines(lineHeight, textBaseline(lines, font, lineHeight));

    const int margin = m_edit->outlineMargin();
    const QSizeF padding = m_text->padding();
    const double width =
        std::max((m_text->box().width() - 2 * padding.width()) * zoom, 2 * QFontMetricsF(font).averageCharWidth());
    const QPointF corner = (m_text->box().topLeft() + QPointF(padding.width(), padding.height())) * zoom +
                           m_view.origin - QPointF(margin, margin);
    m_edit->setGeometry(
        QRect(corner.toPoint(),
              QSize(static_cast<int>(std::ceil(width)) + 2 * margin + 2,
                    static_cast<int>(std::ceil(static_cast<double>(lines.size()) * lineHeight)) + 2 * margin + 2)));
}

void ShapeTextEditor::layoutLabel()
{
    const double zoom = m_view.zoom;
    const int pixels = std::max(kSmallestFont, static_cast<int>(std::lround(m_badge->fontSize() * zoom)));
    const QFont font = TextShape::fontOf({}, pixels);
    const QFontMetricsF metrics(font);
    m_edit->setTextColor(colorFromText(m_badge->color));
    m_edit->setFont(font);
    m_edit->setOutline({}, 0);
    m_edit->setLines(metrics.height(), metrics.ascent());
    const double width =
        std::max(kSmallestLabel, metrics.horizontalAdvance(m_edit->toPlainText() + m_edit->composition()) + kLabelRoom);
    const QPointF corner = m_badge->labelOrigin() * zoom + m_view.origin - QPointF(0, metrics.ascent());
    m_edit->setGeometry(QRect(corner.toPoint(), QSizeF(width, metrics.height() + kLabelHeightRoom).toSize()));
}

void ShapeTextEditor::endByKey()
{
    end();
    Q_EMIT ended(true);
}

void ShapeTextEditor::hide()
{
    m_text = nullptr;
    m_badge = nullptr;
    m_shape.reset();
    m_compositionWidth = -1;
    m_edit->dropComposition();
    m_edit->hide();
}

void ShapeTextEditor::end(bool keepSelection)
{
    if (!isOpen())
        return;
    if (!isVoid() && !m_edit->composition().isEmpty())
        QGuiApplication::inputMethod()->commit();
    if (isVoid()) {
        hide();
        return;
    }
    TextShape *text = m_text;
    SequenceShape *badge = m_badge;
    const QString typed = m_edit->toPlainText();
    if (text) {
        if (m_compositionWidth >= 0)
            text->setWidth(m_compositionWidth);
        text->setEditing(false);
        text->setText(typed);
        m_document.markChanged(text);
    } else {
        badge->setEditing(false);
        badge->setLabel(typed);
        m_document.markChanged(badge);
    }
    hide();
    if (text && typed.trimmed().isEmpty()) {
        m_document.removeShape(text);
    } else {
        if (!keepSelection)
            m_document.clearSelection();
        m_document.commit();
    }
    Q_EMIT ended(false);
}

} // namespace tavrel::ui
