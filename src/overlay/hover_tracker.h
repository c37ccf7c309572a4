#pragma once

#include "base/answer.h"
#include "base/host_clock.h"
#include "overlay/edge_region_finder.h"
#include "overlay/hover_candidates.h"
#include "ui/wheel_steps.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace tavrel::ui {

/// The rectangle that a click takes while nothing is selected, and the frame that glides to it.
///
/// Boxes of the picture, elements and windows are merged into one list; the smallest is the target until the wheel or
/// Space chooses another. The picture is analysed on a worker, once, beginning with the first update(); until that is
/// done it gives nothing, then the list is made anew. Nobody waits for the worker: a tracker that ends or gets another
/// picture leaves it behind. Elements come from outside as answers to questions.
/// Coordinates are those of the overlay unless they are called global. GUI thread only.
class HoverTracker final : public QObject
{
    Q_OBJECT

public:
    using Clock = std::function<double()>; ///< monotonic, milliseconds
    using Ask = std::function<void(const QPointF &global, qint64 processId)>;
    using Run = std::function<void(std::function<void()> work)>; ///< beside the GUI thread, some time

    explicit HoverTracker(Clock clock = hostClockMs, QObject *parent = nullptr);
    ~HoverTracker() override;

    /// origin  of the picture in the overlay
    void setPicture(const QImage &picture, const QPointF &origin);
    /// windows       top-most first, global
    /// globalOrigin  of the overlay's coordinates in the global ones
    /// area          what can be selected
    void setSurroundings(const QList<platform::WindowInfo> &windows, const QPointF &globalOrigin, const QRectF &area);
    /// Where questions for elements go; takeElements() gets the answers. Without it there are no elements.
    void setElementSource(Ask ask) { m_ask = std::move(ask); }
    /// Where pictures are analysed; on threads of their own at first.
    void setRunner(Run run) { m_run = std::move(run); }
    /// Whether the frame glides; true at first.
    void setAnimated(bool animated);

    /// The pointer is at a point, with nothing selected and no tool.
    void update(const QPointF &point);
    /// An answer; an old one is ignored unless its innermost element is still under the pointer.
    void takeElements(const QPointF &global, qint64 processId, const QList<QRectF> &chain);
    void clear();

    /// A wheel that reports motion moves at once; the notches of a classic one are gathered until it rests.
    void wheel(const QWheelEvent &event, bool isReversed);
    void walkSmoothly(int wheelValue);
    /// Towards larger candidates for a positive number.
    void walk(int steps);
    /// Between the window and the smallest candidate.
    void toggleWindow();
    /// One step of the animation; called by its timer.
    void tick();

    /// What a click takes; null for nothing.
    [[nodiscard]] QRectF target() const { return m_target; }
    /// Where the frame is now; null for none.
    [[nodiscard]] QRectF shown() const { return m_shown.isNull() ? m_target : m_shown; }
    [[nodiscard]] const QList<QRectF> &candidates() const { return m_candidates; }
    [[nodiscard]] bool isPictureReady() const { return m_finder != nullptr; }

Q_SIGNALS:
    /// Target or frame are others than before.
    void changed();

private:
    enum class Reached { Keep, Drop }; ///< what happens to a target that the user chose

    void prepare();
    void abandonAnalysis();
    void takeFinder(std::shared_ptr<const EdgeRegionFinder> finder);
    void findInPicture();
    void giveUpWaiting();
    void dropElementsBeside();
    void rebuild(Reached reached);
    void setTarget(const QRectF &target);
    void walkGathered();

    Clock m_clock;
    Ask m_ask;
    Run m_run;
    QImage m_picture;
    QPointF m_pictureOrigin;
    QList<platform::WindowInfo> m_windows;
    QPointF m_globalOrigin;
    std::shared_ptr<const EdgeRegionFinder> m_finder;
    bool m_isPreparing = false; ///< the finder

    std::optional<QPointF> m_point; ///< of the last update
    HoverSources m_sources;
    qint64 m_processId = 0; ///< of the window under the pointer
    std::optional<QPointF> m_askedAt;
    bool m_isWaiting = false;   ///< for an answer
    double m_waitingSince = 0;  ///< by the clock
    QTimer m_patience;          ///< ends the wait when the pointer rests
    bool m_keepsTarget = false; ///< the list is older than the pointer, until the answer comes
    QList<QRectF> m_candidates;
    QRectF m_target;

    QRectF m_shown;
    bool m_isAnimated = true;
    QTimer m_animation;
    double m_lastTick = 0; ///< by the clock

    WheelAccumulator m_smoothWheel;
    int m_gathered = 0; ///< wheel value of notches that wait
    QTimer m_wheelRest;
    Answers m_answers;
};

} // namespace tavrel::ui
