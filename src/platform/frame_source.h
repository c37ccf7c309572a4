#pragma once

#include "platform/display_info.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QWindow>

namespace tavrel::platform {

/// Slow live pictures of all displays, for guides.
class IFrameSource : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual void setExcludedWindows(const QList<QPointer<QWindow>> &windows) = 0;
    /// A first frame is grabbed at once. The interval may be raised. True also when already running.
    virtual bool start(int intervalMs, QString *error) = 0;
    virtual void stop() = 0;
    [[nodiscard]] virtual bool isRunning() const = 0;

Q_SIGNALS:
    /// On the GUI thread, one per display and tick.
    void frame(const tavrel::platform::DisplayInfo &display, const QImage &image, double hostMs);
};

} // namespace tavrel::platform
