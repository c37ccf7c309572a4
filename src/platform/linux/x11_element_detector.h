#pragma once

#include "platform/element_detector.h"

#include "platform/linux/screen_mapping.h"

#include <memory>

namespace tavrel::platform {

class XConnection;

/// Other applications' windows from the X server. What needs the accessibility bus is not here: isAvailable() is
/// false and the element queries answer with nothing.
///
/// The list is read in a fixed number of round trips whatever the number of windows; budget 5 ms for 60 windows.
/// A window that goes away while it is read is left out. Make it on the GUI thread; the list may then be read on any.
class X11ElementDetector : public IElementDetector
{
public:
    explicit X11ElementDetector(std::shared_ptr<XConnection> x);
    ~X11ElementDetector() override;

    [[nodiscard]] QList<WindowInfo> topLevelWindows() override;
    [[nodiscard]] bool isAvailable() const override;
    void requestAccess() override;
    [[nodiscard]] QList<QRectF> elementChain(const QPointF &global, qint64 processId) override;
    [[nodiscard]] QString sourceUrl(const QPointF &global, qint64 processId) override;
    [[nodiscard]] ElementInfo elementAt(const QPointF &global, qint64 processId) override;
    [[nodiscard]] QImage applicationIcon(qint64 processId, int sizePx) override;

protected:
    /// The mapping at this moment. Any thread.
    [[nodiscard]] ScreenMapping mapping() const;

private:
    std::shared_ptr<XConnection> m_x;
    DisplayWatch m_displays;
};

} // namespace tavrel::platform
