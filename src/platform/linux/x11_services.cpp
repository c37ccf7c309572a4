#include "platform/linux/x11_services.h"

#include "platform/linux/capture_exclusions.h"
#include "platform/linux/x11_element_detector.h"
#include "platform/linux/x11_screen_capturer.h"
#include "platform/linux/x11_window_controller.h"
#include "platform/linux/x_connection.h"

namespace tavrel::platform {

struct X11Services::Shared
{
    std::shared_ptr<XConnection> x;
    std::shared_ptr<CaptureExclusions> exclusions;
};

std::unique_ptr<X11Services> X11Services::create(QString *error)
{
    std::shared_ptr<XConnection> x = XConnection::create(error);
    if (!x)
        return nullptr;
    auto exclusions = std::make_shared<CaptureExclusions>(x);
    return std::unique_ptr<X11Services>(
        new X11Services(std::make_unique<Shared>(Shared{std::move(x), std::move(exclusions)})));
}

X11Services::X11Services(std::unique_ptr<Shared> shared) : m_shared(std::move(shared)) {}

X11Services::~X11Services() = default;

std::unique_ptr<IScreenCapturer> X11Services::screenCapturer() const
{
    return std::make_unique<X11ScreenCapturer>(m_shared->x, m_shared->exclusions);
}

std::shared_ptr<IWindowController> X11Services::windowController() const
{
    return std::make_shared<X11WindowController>(m_shared->x, m_shared->exclusions);
}

std::shared_ptr<IElementDetector> X11Services::elementDetector() const
{
    return std::make_shared<X11ElementDetector>(m_shared->x);
}

} // namespace tavrel::platform
