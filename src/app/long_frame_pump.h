#pragma once

#include "platform/screen_capturer.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>

namespace tavrel {

namespace platform {
class IElementDetector;
class IWindowController;
} // namespace platform
namespace ui {
class CaptureOverlay;
}

/// Gives a scrolling capture its frames: one grab at a time, at most one every 30 ms, without the windows of this
/// program. GUI thread only.
class LongFramePump final : public QObject
{
    Q_OBJECT

public:
    LongFramePump(platform::IScreenCapturer &capturer, std::shared_ptr<platform::IWindowController> windows,
                  std::shared_ptr<platform::IElementDetector> detector, QObject *parent = nullptr);

    /// wasApplicationActive  whether this program was the active one when the overlay came up
    void start(ui::CaptureOverlay *overlay, bool wasApplicationActive);
    void stop();
    /// Whether an answer of the capturer is that of a frame; it is then handed on, or dropped when it comes too late.
    [[nodiscard]] bool take(const platform::CaptureResult &result);

private:
    void tick();

    platform::IScreenCapturer &m_capturer;
    std::shared_ptr<platform::IWindowController> m_windows;
    std::shared_ptr<platform::IElementDetector> m_detector;
    QTimer m_timer;
    QPointer<ui::CaptureOverlay> m_overlay;
    QList<WId> m_excluded;
    bool m_isBusy = false; ///< a grab is on its way
};

} // namespace tavrel
