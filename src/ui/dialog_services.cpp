#include "ui/dialog_services.h"

#include "platform/window_controller.h"
#include "ui/theme_source.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace tavrel::ui::dialogs {
namespace {

struct Services
{
    std::shared_ptr<platform::IWindowController> windows;
    std::shared_ptr<IFileDialogHost> fileHost;
    std::function<void(bool)> suspend;
    const ThemeSource *themes = nullptr;
    int open = 0;
};

Services &services()
{
    static Services instance;
    return instance;
}

} // namespace

OpenDialog::OpenDialog()
{
    if (services().open++ == 0 && services().suspend)
        services().suspend(true);
}

OpenDialog::~OpenDialog()
{
    if (--services().open == 0 && services().suspend)
        services().suspend(false);
}

CloseWatch::CloseWatch(QWidget *window, std::function<void()> closed, QObject *parent)
    : QObject(parent),
      m_closed(std::move(closed))
{
    window->installEventFilter(this);
}

bool CloseWatch::eventFilter(QObject *, QEvent *event)
{
    // A close that is accepted hides the window before close() returns.
    if (event->type() == QEvent::Close && m_closed) {
        m_closing = true;
        QMetaObject::invokeMethod(
            this, [this] { m_closing = false; }, Qt::QueuedConnection);
    } else if (event->type() == QEvent::Hide && std::exchange(m_closing, false)) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (const auto closed = std::exchange(m_closed, nullptr))
                    closed();
            },
            Qt::QueuedConnection);
    }
    return false;
}

platform::IWindowController *windowController()
{
    return services().windows.get();
}

IFileDialogHost *fileDialogHost()
{
    return services().fileHost.get();
}

const ThemeSource &themes()
{
    if (services().themes)
        return *services().themes;
    static QPointer<ThemeSource> systems;
    if (!systems)
        systems = new ThemeSource(QString(), QCoreApplication::instance());
    return *systems;
}

QWidget *ownerWindow(QWidget *parent)
{
    QWidget *window = parent ? parent->window() : nullptr;
    // A menu is gone by the time the dialog is answered; what it hangs on is not.
    while (window && (window->windowType() == Qt::Popup || window->windowType() == Qt::ToolTip))
        window = window->parentWidget() ? window->parentWidget()->window() : nullptr;
    return window && window->isVisible() && !window->isMinimized() ? window : nullptr;
}

void setWindowController(std::shared_ptr<platform::IWindowController> controller)
{
    services().windows = std::move(controller);
}

void setFileDialogHost(std::shared_ptr<IFileDialogHost> host)
{
    services().fileHost = std::move(host);
}

void setHotkeySuspender(std::function<void(bool)> suspend)
{
    // With a dialog open the old one is owed its `false` and the new one its `true`.
    const auto before = std::exchange(services().suspend, std::move(suspend));
    if (services().open == 0)
        return;
    if (before)
        before(false);
    if (services().suspend)
        services().suspend(true);
}

void setThemeSource(const ThemeSource *themes)
{
    services().themes = themes;
}

int openDialogCount()
{
    return services().open;
}

} // namespace tavrel::ui::dialogs
