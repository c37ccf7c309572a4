#include "ui/window_border.h"

#include <QPainter>

namespace tavrel::ui {

WindowBorder::WindowBorder(const Theme &theme, QWidget *window) : QWidget(window), m_theme(theme)
{
    setObjectName(QStringLiteral("windowBorder"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setFocusPolicy(Qt::NoFocus);
}

void WindowBorder::setTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

void WindowBorder::paintEvent(QPaintEvent *)
{
    // Four strips and not a pen: they meet without overlapping, so the corners are no darker than the rest.
    QPainter painter(this);
    const QColor line = m_theme.hairline();
    painter.fillRect(QRect(0, 0, width(), 1), line);
    painter.fillRect(QRect(0, height() - 1, width(), 1), line);
    painter.fillRect(QRect(0, 1, 1, height() - 2), line);
    painter.fillRect(QRect(width() - 1, 1, 1, height() - 2), line);
}

} // namespace tavrel::ui
