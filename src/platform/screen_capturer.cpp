#include "platform/screen_capturer.h"

#include <QTimer>

namespace tavrel::platform {

void IScreenCapturer::answerLater(const QPointer<QObject> &context, const Done &done, const CaptureResult &result)
{
    QTimer::singleShot(0, this, [context, done, result] {
        if (context)
            done(result);
    });
}

} // namespace tavrel::platform
