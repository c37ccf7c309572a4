#pragma once

#include "annotate/flatten.h"
#include "capture/overlay_snapshot.h"
#include "platform/element_detector.h"

#include <QMetaType>
#include <QRect>
#include <QString>

#include <optional>

namespace tavrel {

/// What a session on an overlay has come to. Everything that follows from it is in here, so that nobody asks the
/// overlay afterwards: it may be gone.
struct CaptureOutcome
{
    enum class Action {
        Leave,     ///< without a result
        CopyColor, ///< of the pixel under the pointer, see text
        Copy,
        Save,
        Pin,
        Edit,
        Pick, ///< the selection itself was asked for; its picture has no annotations
    };

    Action action = Action::Leave;
    FlattenRequest picture;                     ///< null for Leave and CopyColor
    OverlaySnapshot snapshot;                   ///< the state that the picture was made from
    std::optional<platform::WindowInfo> window; ///< under the middle of the selection
    QRect rectangle;                            ///< of the selection, global logical coordinates
    QString text;                               ///< for CopyColor
};

} // namespace tavrel

Q_DECLARE_METATYPE(tavrel::CaptureOutcome)
