#include "platform/linux/capture_exclusions.h"

#include "base/host_clock.h"
#include "platform/linux/x_connection.h"

#include <xcb/composite.h>

namespace tavrel::platform {

namespace {

// A capture often follows a capture, and redirecting anew copies every window on the desktop.
constexpr int kLingerMs = 30'000;

} // namespace

CaptureExclusions::CaptureExclusions(std::shared_ptr<XConnection> x, QObject *parent)
    : QObject(parent),
      m_x(std::move(x))
{
    m_linger.setSingleShot(true);
    m_linger.setInterval(kLingerMs);
    connect(&m_linger, &QTimer::timeout, this, &CaptureExclusions::letGo);
}

CaptureExclusions::~CaptureExclusions()
{
    letGo();
}

void CaptureExclusions::add(WId window)
{
    if (window == 0 || m_windows.contains(window))
        return;
    m_windows.insert(window);
    m_linger.stop();
    if (m_kept || !m_x->extensions().composite || m_x->isBroken())
        return;
    redirect();
    // The answer also says that the redirection has happened: Qt shows the window on a connection of its own.
    const auto attributes = xAnswer<xcb_get_window_attributes_reply_t>(
        m_x->xcb(), xcb_get_window_attributes(m_x->xcb(), static_cast<xcb_window_t>(window)),
        xcb_get_window_attributes_reply);
    if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
        m_incompleteUntilMs = 0;
}

void CaptureExclusions::remove(WId window)
{
    if (m_windows.remove(window) && m_windows.isEmpty() && m_kept)
        m_linger.start();
}

void CaptureExclusions::keepContents()
{
    if (!m_x->extensions().composite || m_x->isBroken())
        return;
    if (!m_kept)
        redirect();
    if (m_windows.isEmpty())
        m_linger.start();
}

bool CaptureExclusions::contentsComplete() const
{
    if (hostClockMs() >= m_incompleteUntilMs)
        return true;
    // A compositing manager has had every window redirected all along.
    const XReply<xcb_get_selection_owner_reply_t> manager{xcb_get_selection_owner_reply(
        m_x->xcb(), xcb_get_selection_owner(m_x->xcb(), m_x->atom(XAtom::CompositeManager)), nullptr)};
    return !manager || manager->owner != XCB_WINDOW_NONE;
}

void CaptureExclusions::redirect()
{
    xcb_composite_redirect_subwindows(m_x->xcb(), m_x->root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    xcb_flush(m_x->xcb());
    m_kept = true;
    m_incompleteUntilMs = hostClockMs() + kRepaintMs;
}

void CaptureExclusions::letGo()
{
    if (!m_kept)
        return;
    m_kept = false;
    if (!m_x->isBroken()) {
        xcb_composite_unredirect_subwindows(m_x->xcb(), m_x->root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
        xcb_flush(m_x->xcb());
    }
}

} // namespace tavrel::platform
