#pragma once

#include "platform/screen_capturer.h"

#include <QApplication>
#include <QMouseEvent>
#include <QTest>
#include <QWheelEvent>

namespace tavrel {

/// A display of one colour at the origin, of the program's ratio.
inline platform::CapturedDisplay flatDisplay(const QSize &size, const QColor &color)
{
    platform::CapturedDisplay display;
    display.id = 1;
    display.geometry = QRect(QPoint(0, 0), size);
    display.devicePixelRatio = qApp->devicePixelRatio();
    display.image = QImage((QSizeF(size) * display.devicePixelRatio).toSize(), QImage::Format_ARGB32_Premultiplied);
    display.image.fill(color);
    display.image.setDevicePixelRatio(display.devicePixelRatio);
    return display;
}

/// A mouse event, also between whole units; a move has `held` down.
inline void sendMouse(QWidget *widget, QEvent::Type type, const QPointF &at, Qt::MouseButton held = Qt::LeftButton)
{
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : held;
    QMouseEvent event(type, at, at, at, button, held, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

/// Notches of `angle` eighths of a degree and motion of `pixels`.
inline void sendWheel(QWidget *widget, const QPointF &at, int angle, const QPoint &pixels = {},
                      Qt::KeyboardModifiers modifiers = {})
{
    QWheelEvent event(at, at, pixels, {0, angle}, Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &event);
}

/// The left button goes down at one point and up at another.
inline void drag(QWidget *widget, const QPoint &from, const QPoint &to)
{
    QTest::mousePress(widget, Qt::LeftButton, {}, from);
    QTest::mouseMove(widget, (from + to) / 2);
    QTest::mouseMove(widget, to);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, to);
}

/// Stands for the overlay: notes what reaches it through its children.
class Ground final : public QWidget
{
public:
    int events = 0;

protected:
    bool event(QEvent *event) override
    {
        static const QList<QEvent::Type> noted{QEvent::MouseButtonPress,
                                               QEvent::MouseButtonRelease,
                                               QEvent::MouseButtonDblClick,
                                               QEvent::MouseMove,
                                               QEvent::Wheel,
                                               QEvent::KeyPress,
                                               QEvent::KeyRelease};
        events += noted.contains(event->type()) ? 1 : 0;
        return QWidget::event(event);
    }
};

} // namespace tavrel
