#pragma once

#include <QColor>
#include <QPlainTextEdit>

namespace tavrel::ui {

/// A bare editor for text on a picture: nothing but letters, caret and selection, with a line around the letters if
/// wanted. Its lines stand exactly where a text shape will paint them.
class OutlinedTextEdit final : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit OutlinedTextEdit(QWidget *parent);

    void setTextColor(const QColor &color);
    /// The line around the letters, half of it outside of them; none for a width of 0.
    void setOutline(const QColor &color, double width);
    /// lineHeight  distance of lines
    /// baseline    of the first line, from the top of the text
    void setLines(double lineHeight, double baseline);
    /// Room that the outline takes on every side of the text.
    [[nodiscard]] int outlineMargin() const;
    /// What an input method is about to put in.
    [[nodiscard]] QString composition() const { return m_composition; }
    /// Forgets it without putting it in.
    void dropComposition();

Q_SIGNALS:
    void compositionChanged();
    void escaped();
    /// Enter or Return; whoever takes it sets `isTaken`, else it goes into the text.
    void entered(Qt::KeyboardModifiers modifiers, bool *isTaken);

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    QColor m_textColor;
    QColor m_outlineColor;
    double m_outlineWidth = 0;
    QString m_composition;
};

} // namespace tavrel::ui
