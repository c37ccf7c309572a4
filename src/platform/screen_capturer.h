#pragma once

#include "platform/display_info.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QWindow>

#include <functional>

namespace tavrel::platform {

struct CapturedDisplay : DisplayInfo
{
    /// Format_ARGB32_Premultiplied, device pixels, opaque; the display's device pixel ratio is set on it.
    QImage image;
};

struct CaptureOptions
{
    bool includeCursor = false;    ///< draw the mouse pointer into the images
    bool excludeOwnWindows = true; ///< no window of this process may appear
    QList<WId> excludeWindows;     ///< further top-level windows that may not appear

    friend bool operator==(const CaptureOptions &, const CaptureOptions &) = default;
};

struct CaptureResult
{
    QList<CapturedDisplay> displays; ///< in screen order
    QString error;                   ///< a finished sentence for the user, empty when all went well
    qint64 elapsedMs = 0;            ///< time the grabbing took

    [[nodiscard]] bool isGood() const { return error.isEmpty() && !displays.isEmpty(); }
};

/// Takes pictures of all displays. GUI thread only.
class IScreenCapturer : public QObject
{
    Q_OBJECT

public:
    enum CaptureAccess { Granted = 0, Denied = 1 };
    using Done = std::function<void(const CaptureResult &)>;

    using QObject::QObject;

    /// Granted when the screen may be captured; anything else makes the caller ask for access and tell the user.
    [[nodiscard]] virtual int captureAccess() const = 0;
    /// Asks the system for screen-capture access. No effect where none is needed.
    virtual void requestCaptureAccess() = 0;
    /// Grabs all screens at this moment, and calls `done` with the result exactly once, on the GUI thread, always after
    /// this call has returned, also on failure. A display that fails ends the walk with an error; the displays before
    /// it stay in the result.
    ///
    /// context  not null; `done` is not called when it is gone by then, nor when the capturer is
    ///
    /// Any number of captures may be under way, each with a `done` of its own. They need not be answered in the order
    /// in which they were begun: one that has to see behind a window takes longer than one that does not.
    virtual void capture(const CaptureOptions &options, QObject *context, Done done) = 0;

protected:
    /// For implementations: answers on the next turn of the loop.
    void answerLater(const QPointer<QObject> &context, const Done &done, const CaptureResult &result);
};

} // namespace tavrel::platform
