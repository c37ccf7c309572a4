#pragma once

#include "platform/screen_capturer.h"

#include "platform/linux/x11_screen_grabber.h"

#include <QTimer>

#include <memory>

namespace tavrel::platform {

class CaptureExclusions;
class XConnection;

/// Pictures of all displays from the X server, pixel for pixel what is on them at any scale factor.
///
/// What pictures took of memory is given back when none has been asked for for a while: a resident program is idle
/// for hours between two of them, and faulting the pages of a 4K segment in again costs the next one milliseconds.
///
/// Budget: 15 ms for a display of 3840 x 2160, at most twice that when a picture has to be put together behind an
/// excluded window. Windows that were not kept by the server until now first get CaptureExclusions::kRepaintMs to
/// repaint what was covered; this only happens when a window to be left out was already on the screen when it
/// was first named.
class X11ScreenCapturer final : public IScreenCapturer
{
    Q_OBJECT

public:
    X11ScreenCapturer(std::shared_ptr<XConnection> x, std::shared_ptr<CaptureExclusions> exclusions,
                      QObject *parent = nullptr);

    [[nodiscard]] int captureAccess() const override;
    void requestCaptureAccess() override;
    void capture(const CaptureOptions &options, QObject *context, Done done) override;

private:
    [[nodiscard]] QSet<WId> windowsToHide(const CaptureOptions &options) const;
    [[nodiscard]] CaptureResult grabAll(const CaptureOptions &options, const X11ScreenGrabber::Hidden &hidden);

    std::shared_ptr<XConnection> m_x;
    std::shared_ptr<CaptureExclusions> m_exclusions;
    X11ScreenGrabber m_grabber;
    QTimer m_idle;
};

} // namespace tavrel::platform
