#pragma once

#include "ui/window_mover.h"

#include <QList>
#include <QObject>
#include <QPointer>

class QMouseEvent;

namespace tavrel::ui {

class ThemeSource;
class WindowBorder;
class WindowButtons;
class WindowGrip;

/// What a frameless window needs in place of the window manager's frame: a hairline round it, the three buttons at its
/// top right, edges and corners that change its size, a strip at the top that moves it.
///
/// The strip is the top of the window wherever a child does not take the pointer for itself: buttons, fields and what
/// else can be clicked or focused stay usable, disabled or not. A child with the property "noWindowDrag" is kept out,
/// too. The window owns the chrome. GUI thread only.
class WindowChrome final : public QObject
{
    Q_OBJECT

public:
    /// Makes the window frameless; to be called before it is first shown.
    /// titleBarHeight  logical pixels
    static WindowChrome *install(QWidget *window, const ThemeSource &themes, int titleBarHeight);
    /// The chrome of a window; null when it has none.
    [[nodiscard]] static WindowChrome *of(const QWidget *window);

    [[nodiscard]] QWidget *window() const { return m_window; }
    [[nodiscard]] WindowBorder *border() const { return m_border; }
    [[nodiscard]] WindowButtons *buttons() const { return m_buttons; }
    [[nodiscard]] int titleBarHeight() const { return m_titleBarHeight; }

    /// Moves the window by an event that a layer above the window has got, in that layer's coordinates, which are the
    /// window's. Returns whether the event was taken.
    bool moveBy(const QMouseEvent &event);
    /// Brings the parts above whatever has been put into the window.
    void restack();
    /// A child of the window that covers all of it, a dialog's sheet for instance: it stays above border and buttons,
    /// and below the grips, so that the window's size can still be changed.
    void addCover(QWidget *cover);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    WindowChrome(QWidget *window, const ThemeSource &themes, int titleBarHeight);

    void layOut();
    void restackLater();
    [[nodiscard]] bool isTitleBar(const QPoint &point) const;

    QWidget *m_window; // owns the parts and the chrome alike
    WindowBorder *m_border;
    WindowButtons *m_buttons;
    QList<WindowGrip *> m_grips;
    QList<QPointer<QWidget>> m_covers;
    WindowMover m_mover;
    int m_titleBarHeight;
    bool m_restackAsked = false;
};

} // namespace tavrel::ui
