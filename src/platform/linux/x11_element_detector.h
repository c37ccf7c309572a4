#pragma once

#include "platform/element_detector.h"

#include "platform/linux/atspi_tree.h"
#include "platform/linux/screen_mapping.h"

#include <memory>
#include <optional>

namespace tavrel::platform {

class XConnection;

/// Other applications' windows from the X server, and their elements from the accessibility bus.
///
/// The list is read in a fixed number of round trips whatever the number of windows; budget 5 ms for 60 windows.
/// A window that goes away while it is read is left out. Make it on the GUI thread; the list may then be read on any.
class X11ElementDetector : public IElementDetector
{
public:
    explicit X11ElementDetector(std::shared_ptr<XConnection> x);
    ~X11ElementDetector() override;

    [[nodiscard]] QList<WindowInfo> topLevelWindows() override;
    /// Whether there is an accessibility bus. On the GUI thread it does not wait for the first look to end.
    [[nodiscard]] bool isAvailable() const override;
    /// Asks the applications of the session to offer their elements, as screen readers do.
    void requestAccess() override;
    [[nodiscard]] QList<QRectF> elementChain(const QPointF &global, qint64 processId) override;
    [[nodiscard]] QString sourceUrl(const QPointF &global, qint64 processId) override;
    [[nodiscard]] ElementInfo elementAt(const QPointF &global, qint64 processId) override;
    [[nodiscard]] QImage applicationIcon(qint64 processId, int sizePx) override;

protected:
    /// The mapping at this moment. Any thread.
    [[nodiscard]] ScreenMapping mapping() const;

private:
    /// The top-most window of the process at a pixel of the root; nothing for a process id below 1.
    [[nodiscard]] std::optional<AtspiTree::Target> targetAt(const QPoint &point, qint64 processId) const;

    std::shared_ptr<XConnection> m_x;
    DisplayWatch m_displays;
    AtspiTree m_tree;
};

} // namespace tavrel::platform
