#pragma once

#include "platform/element_detector.h"
#include "platform/screen_capturer.h"
#include "platform/window_controller.h"

#include <QString>

#include <memory>

namespace tavrel::platform {

/// The services of one process that talk to the X server. They share one connection and the set of windows that no
/// picture may show. GUI thread only. Services outlive this object.
class X11Services final
{
public:
    /// Null when the X server of $DISPLAY cannot be reached; `error` then holds a diagnostic text.
    [[nodiscard]] static std::unique_ptr<X11Services> create(QString *error = nullptr);
    ~X11Services();
    X11Services(const X11Services &) = delete;
    X11Services &operator=(const X11Services &) = delete;

    [[nodiscard]] std::unique_ptr<IScreenCapturer> screenCapturer() const;
    [[nodiscard]] std::shared_ptr<IWindowController> windowController() const;
    [[nodiscard]] std::shared_ptr<IElementDetector> elementDetector() const;

private:
    struct Shared;
    explicit X11Services(std::unique_ptr<Shared> shared);
    std::unique_ptr<Shared> m_shared;
};

} // namespace tavrel::platform
