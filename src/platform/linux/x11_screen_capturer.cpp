#include "platform/linux/x11_screen_capturer.h"

#include "platform/linux/capture_exclusions.h"
#include "platform/linux/screen_mapping.h"
#include "platform/linux/x_connection.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QTimer>

#include <malloc.h>

namespace tavrel::platform {

namespace {

Q_LOGGING_CATEGORY(lcCapture, "tavrel.capture")

constexpr int kIdleMs = 10'000;

} // namespace

X11ScreenCapturer::X11ScreenCapturer(std::shared_ptr<XConnection> x, std::shared_ptr<CaptureExclusions> exclusions,
                                     QObject *parent)
    : IScreenCapturer(parent),
      m_x(std::move(x)),
      m_exclusions(std::move(exclusions)),
      m_grabber(m_x, m_exclusions)
{
    // Each thread that works on a picture would get a heap of its own, and every heap keeps some megabytes for good:
    // after a day of captures at 4K 13 instead of 9 over those at the start.
    mallopt(M_ARENA_MAX, 2);
    m_idle.setSingleShot(true);
    m_idle.setInterval(kIdleMs);
    connect(&m_idle, &QTimer::timeout, this, [this] {
        m_grabber.dropPages();
        // The pictures handed out are gone by now, but the allocator keeps tens of megabytes of them for later.
        malloc_trim(0);
    });
}

int X11ScreenCapturer::captureAccess() const
{
    return Granted;
}

void X11ScreenCapturer::requestCaptureAccess() {}

QSet<WId> X11ScreenCapturer::windowsToHide(const CaptureOptions &options) const
{
    QSet<WId> windows(options.excludeWindows.begin(), options.excludeWindows.end());
    if (options.excludeOwnWindows) {
        for (const QWindow *window : QGuiApplication::topLevelWindows()) {
            // winId() of a window without a native handle would make one.
            if (window->handle() && window->isVisible() && window->type() != Qt::ForeignWindow)
                windows.insert(window->winId());
        }
    }
    windows.remove(0);
    return windows;
}

void X11ScreenCapturer::capture(const CaptureOptions &options, QObject *context, Done done)
{
    QElapsedTimer started;
    started.start();
    // What the program itself has shown, hidden or painted until now is to be in the picture.
    syncQtConnection();
    m_x->drainEvents();

    const X11ScreenGrabber::Hidden hidden = m_grabber.findHidden(windowsToHide(options));
    if (!hidden.region.isEmpty())
        m_exclusions->keepContents();
    if (hidden.region.isEmpty() || m_exclusions->contentsComplete()) {
        CaptureResult result = grabAll(options, hidden);
        result.elapsedMs = started.elapsed();
        answerLater(context, done, result);
        return;
    }
    // The windows behind have only now been asked to exist as a whole. Their programs, and this one, repaint first.
    QTimer::singleShot(CaptureExclusions::kRepaintMs, this,
                       [this, options, started, context = QPointer(context), done = std::move(done)] {
                           if (!context)
                               return;
                           syncQtConnection();
                           CaptureResult result = grabAll(options, m_grabber.findHidden(windowsToHide(options)));
                           result.elapsedMs = started.elapsed();
                           done(result);
                       });
}

CaptureResult X11ScreenCapturer::grabAll(const CaptureOptions &options, const X11ScreenGrabber::Hidden &hidden)
{
    CaptureResult result;
    QSet<QString> names;
    const ScreenMapping mapping(currentDisplays(), nativeMonitors(*m_x));
    for (const ScreenMapping::Entry &entry : mapping.entries()) {
        CapturedDisplay display;
        static_cast<DisplayInfo &>(display) = entry.display;
        display.image = m_grabber.grab(entry.display.name, entry.native, hidden);
        if (display.image.isNull()) {
            result.error = tr("抓取屏幕失败：%1").arg(entry.display.name);
            qCWarning(lcCapture).noquote()
                << QStringLiteral("抓取屏幕失败：%1%2")
                       .arg(entry.display.name, m_x->isBroken() ? u"，"_qs + m_x->brokenText() : QString());
            break;
        }
        if (options.includeCursor)
            m_grabber.drawCursor(display.image, entry.native);
        display.image.setDevicePixelRatio(entry.display.devicePixelRatio);
        names.insert(entry.display.name);
        result.displays.append(display);
    }
    m_grabber.keepOnly(names);
    m_idle.start();
    return result;
}

} // namespace tavrel::platform
