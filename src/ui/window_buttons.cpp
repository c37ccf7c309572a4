#include "ui/window_buttons.h"

#include "ui/window_control_button.h"
#include "ui/window_mover.h"

#include <QHBoxLayout>

namespace tavrel::ui {

WindowButtons::WindowButtons(const Theme &theme, QWidget *window)
    : QWidget(window),
      m_minimize(new WindowControlButton(WindowControlButton::Kind::Minimize, theme, this)),
      m_maximize(new WindowControlButton(WindowControlButton::Kind::Maximize, theme, this)),
      m_close(new WindowControlButton(WindowControlButton::Kind::Close, theme, this))
{
    setObjectName(QStringLiteral("windowButtons"));
    setFixedSize(kWidth, WindowControlButton::kHeight);
    setFocusPolicy(Qt::NoFocus);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    for (WindowControlButton *button : {m_minimize, m_maximize, m_close})
        row->addWidget(button);
    connect(m_minimize, &QAbstractButton::clicked, window, &QWidget::showMinimized);
    connect(m_maximize, &QAbstractButton::clicked, window, [window] { toggleMaximized(window); });
    // Queued: closing may delete the window, and this button with it, while it still handles the click.
    connect(m_close, &QAbstractButton::clicked, window, &QWidget::close, Qt::QueuedConnection);
}

void WindowButtons::setTheme(const Theme &theme)
{
    for (WindowControlButton *button : {m_minimize, m_maximize, m_close})
        button->setTheme(theme);
}

void WindowButtons::refresh()
{
    m_maximize->setRestores(window()->isMaximized());
    m_maximize->setEnabled(isResizable(window()));
}

} // namespace tavrel::ui
