#include "ui/shell_panel.h"

#include <QPainter>

namespace tavrel::ui {

ShellPanel::ShellPanel(Surface surface, Qt::Edges lines, const Theme &theme, QWidget *parent)
    : QWidget(parent),
      m_surface(surface),
      m_lines(lines),
      m_theme(theme)
{}

void ShellPanel::setTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

void ShellPanel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), m_surface == Surface::TitleBar ? m_theme.titleBarSurface()
                             : m_surface == Surface::Rail   ? m_theme.railSurface()
                                                            : m_theme.studioPanel());
    const QColor line = m_theme.hairline();
    if (m_lines & Qt::TopEdge)
        painter.fillRect(QRect(0, 0, width(), 1), line);
    if (m_lines & Qt::BottomEdge)
        painter.fillRect(QRect(0, height() - 1, width(), 1), line);
    if (m_lines & Qt::LeftEdge)
        painter.fillRect(QRect(0, 0, 1, height()), line);
    if (m_lines & Qt::RightEdge)
        painter.fillRect(QRect(width() - 1, 0, 1, height()), line);
}

} // namespace tavrel::ui
