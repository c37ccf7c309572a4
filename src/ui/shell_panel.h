#pragma once

#include "ui/theme.h"

#include <QWidget>

namespace tavrel::ui {

/// The surface of an area of a studio window, a title bar, rail or side panel, with hairlines on the edges where it
/// meets others.
class ShellPanel final : public QWidget
{
    Q_OBJECT

public:
    enum class Surface { TitleBar, Rail, Side };

    ShellPanel(Surface surface, Qt::Edges lines, const Theme &theme, QWidget *parent = nullptr);

    void setTheme(const Theme &theme);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Surface m_surface;
    Qt::Edges m_lines;
    Theme m_theme;
};

} // namespace tavrel::ui
