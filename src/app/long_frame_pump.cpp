#include "app/long_frame_pump.h"

#include "overlay/capture_overlay.h"
#include "platform/element_detector.h"
#include "platform/window_controller.h"

#include <QCoreApplication>

#include <algorithm>

namespace tavrel {
namespace {

constexpr int kFrameMs = 30;

} // namespace

LongFramePump::LongFramePump(platform::IScreenCapturer &capturer, std::shared_ptr<platform::IWindowController> windows,
                             std::shared_ptr<platform::IElementDetector> detector, QObject *parent)
    : QObject(parent),
      m_capturer(capturer),
      m_windows(std::move(windows)),
      m_detector(std::move(detector))
{
    m_timer.setInterval(kFrameMs);
    connect(&m_timer, &QTimer::timeout, this, &LongFramePump::tick);
}

void LongFramePump::start(ui::CaptureOverlay *overlay, bool wasApplicationActive)
{
    m_windows->setWindowRole(overlay->windowHandle(), platform::WindowRole::Panel);
    m_overlay = overlay;
    m_excluded.clear();
    if (m_detector) {
        for (const platform::WindowInfo &window : m_detector->captureCandidates()) {
            if (window.processId == QCoreApplication::applicationPid() &&
                window.geometry.intersects(overlay->globalSelectionRect()))
                m_excluded.append(window.windowId);
        }
    }
    if (!wasApplicationActive && !m_excluded.isEmpty())
        m_windows->deactivateApplication(); // the page keeps the keyboard
    m_timer.start();
    tick();
}

void LongFramePump::stop()
{
    m_timer.stop();
    m_grab.reset();
    m_overlay.clear();
    m_excluded.clear();
}

void LongFramePump::tick()
{
    if (m_grab || !m_overlay)
        return;
    m_grab = std::make_unique<QObject>();
    m_capturer.capture({.includeCursor = false, .excludeOwnWindows = true, .excludeWindows = m_excluded}, m_grab.get(),
                       [this](const platform::CaptureResult &result) { take(result); });
}

void LongFramePump::take(const platform::CaptureResult &result)
{
    m_grab.reset();
    if (!m_overlay)
        return;
    // The next tick tries again.
    const bool hasCome = result.isGood() && std::any_of(result.displays.begin(), result.displays.end(),
                                                        [this](const platform::CapturedDisplay &display) {
                                                            return m_overlay && m_overlay->addLongFrame(display);
                                                        });
    if (!hasCome && m_overlay)
        m_overlay->missLongFrame();
}

} // namespace tavrel
