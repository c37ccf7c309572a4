#pragma once

#include <QString>

#include <chrono>
#include <functional>

namespace tavrel::platform {

/// A notice that the desktop shows for a while.
struct Notification
{
    QString title;
    QString text; ///< plain text, several lines are allowed
    bool isWarning = false;
    std::chrono::milliseconds duration{4000};
};

/// The desktop's own way to show notices. GUI thread only.
class INotifier
{
public:
    INotifier() = default;
    INotifier(const INotifier &) = delete;
    INotifier &operator=(const INotifier &) = delete;
    virtual ~INotifier() = default;

    /// Shows the notice and never waits. `done` arrives on the GUI thread, possibly within the call, with false when
    /// the desktop has nobody who shows notices; it is dropped when the notifier goes before.
    virtual void notify(const Notification &notification, std::function<void(bool shown)> done) = 0;
};

} // namespace tavrel::platform
