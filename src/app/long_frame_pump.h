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

private:
    void tick();
    void take(const platform::CaptureResult &result);

    platform::IScreenCapturer &m_capturer;
    std::shared_ptr<platform::IWindowController> m_windows;
    std::shared_ptr<platform::IElementDetector> m_detector;
    QTimer m_timer;
    QPointer<ui::CaptureOverlay> m_overlay;
    QList<WId> m_excluded;
    std::unique_ptr<QObject> m_grab; ///< one on its way; it answers nobody when this goes
};

} // namespace tavrel
