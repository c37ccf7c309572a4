#pragma once

#include "annotate/flatten.h"
#include "overlay/capture_overlay.h"

#include <QImage>
#include <QList>
#include <QObject>

#include <algorithm>

namespace tavrel {

/// Takes every outcome of an overlay, as the one who offers all of them would.
class Outcomes final : public QObject
{
public:
    using Action = CaptureOutcome::Action;

    explicit Outcomes(ui::CaptureOverlay &overlay)
    {
        overlay.setOffered({Action::CopyColor, Action::Copy, Action::Save, Action::Pin, Action::Edit, Action::Pick});
        connect(&overlay, &ui::CaptureOverlay::finished, this,
                [this](const CaptureOutcome &outcome) { all.append(outcome); });
    }

    [[nodiscard]] qsizetype count(Action action) const
    {
        return std::count_if(all.begin(), all.end(),
                             [action](const CaptureOutcome &outcome) { return outcome.action == action; });
    }

    /// The picture of the latest one.
    [[nodiscard]] QImage picture() const { return flatten(all.last().picture); }

    QList<CaptureOutcome> all;
};

} // namespace tavrel
