#pragma once

#include "platform/element_detector.h"
#include "platform/linux/accessibility_bus.h"
#include "platform/linux/frame_placement.h"

#include <QDeadlineTimer>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>

namespace tavrel::platform {

/// The elements of other applications, read from the accessibility bus (AT-SPI).
///
/// A query goes down from the window to the innermost element: at each level, of the first 400 children in order, it
/// takes the last one on the screen whose rectangle holds the point and is at least 2 x 2 pixels, for up to 24 levels.
/// An application's own hit test is not used, since many answer it with one large pane.
///
/// Everything that a level asks is sent together, the children from the last backwards, so that a level costs a few
/// round trips however many children it has. The applications' cache (Cache.GetItems) would save the smaller part of
/// these only: it holds the whole application's tree, and no rectangles.
///
/// Queries end by their deadline with what they have by then, whatever the buses or the application do. Any thread but
/// the GUI thread; queries from several threads take turns.
class AtspiTree final
{
public:
    /// Where to look.
    struct Target
    {
        qint64 processId = 0;
        NativeFrame window;
        QPoint point; ///< a pixel of the root
    };

    /// Whether there is an accessibility bus. With an expired deadline any thread may ask.
    [[nodiscard]] bool isAvailable(QDeadlineTimer deadline) const { return m_bus.isThere(deadline); }

    /// The elements at the point from the innermost out to the window, in pixels of the root.
    [[nodiscard]] QList<QRect> rectanglesAt(const Target &target, QDeadlineTimer deadline) const;
    /// The innermost element.
    [[nodiscard]] ElementInfo elementAt(const Target &target, QDeadlineTimer deadline) const;
    /// The address of the web page at the point; that of the page as a whole, not of a frame within it.
    [[nodiscard]] QString pageAddressAt(const Target &target, QDeadlineTimer deadline) const;

private:
    AccessibilityBus m_bus;
};

} // namespace tavrel::platform
