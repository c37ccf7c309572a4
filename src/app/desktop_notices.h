#pragma once

#include "app/user_notices.h"
#include "platform/notifier.h"

#include <QObject>

#include <functional>
#include <memory>

namespace tavrel {

/// Notices on their way to the user: through the desktop's own service, else beside the icon in the notification area,
/// else, for a warning, as a message wherever the program itself can show one. All of them go to the log.
class DesktopNotices final : public QObject, public IUserNotices
{
    Q_OBJECT

public:
    struct Ways
    {
        std::shared_ptr<platform::INotifier> notifier; ///< may be null
        /// False when there is no notification area.
        std::function<bool(const QString &title, const QString &text, Kind, std::chrono::milliseconds)> showBesideIcon;
        std::function<void(const QString &title, const QString &text)> showMessage;
    };

    explicit DesktopNotices(Ways ways, QObject *parent = nullptr) : QObject(parent), m_ways(std::move(ways)) {}

    void show(const QString &title, const QString &text, Kind kind, std::chrono::milliseconds duration) override;

private:
    void showOurselves(const QString &title, const QString &text, Kind kind, std::chrono::milliseconds duration);

    Ways m_ways;
};

} // namespace tavrel
