#pragma once

#include "ui/theme.h"

#include <QAbstractButton>

class QPainter;

namespace tavrel::ui {

/// What the buttons of the studio windows share: a rounded face that answers the pointer, a ring for the keyboard.
/// Tab reaches it, a click leaves the focus where it is; Return and Space press it. An ampersand in the text is a
/// mnemonic, as everywhere; the tool tip is the accessible name where there is no text.
class StudioButton : public QAbstractButton
{
    Q_OBJECT

public:
    StudioButton(const Theme &theme, QWidget *parent);

    void setTheme(const Theme &theme);
    [[nodiscard]] const Theme &theme() const { return m_theme; }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void keyPressEvent(QKeyEvent *event) override;

    /// Fills the face and, with the focus, rings it.
    void paintFace(QPainter &painter, const QRectF &face, qreal radius, const QColor &fill) const;
    [[nodiscard]] bool isLit() const; ///< the pointer is on it and it can be pressed
    [[nodiscard]] QFont sized(int pixels, QFont::Weight weight = QFont::Normal) const;
    /// The button's text in one line, in smaller letters where it would not fit, cut with an ellipsis below `least`.
    void paintFitted(QPainter &painter, const QRect &room, int pixels, int least, const QColor &color) const;

private:
    Theme m_theme;
};

} // namespace tavrel::ui
