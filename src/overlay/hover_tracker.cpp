#include "overlay/hover_tracker.h"

#include <QWheelEvent>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <list>
#include <mutex>
#include <thread>
#include <utility>

namespace tavrel::ui {
namespace {

constexpr int kFrameMs = 16;
constexpr double kGlideMs = 50; ///< time in which the frame covers all but 1/e of its way
constexpr double kLongestTickMs = 64;
constexpr double kArrived = 0.4;
constexpr int kWheelRestMs = 100;
constexpr int kPatienceMs = 150;     ///< how long an old rectangle stays while its elements are asked for anew
constexpr double kAskDistance = 1;   ///< Manhattan
constexpr double kFreshDistance = 2; ///< Manhattan

double distance(const QPointF &a, const QPointF &b)
{
    return (a - b).manhattanLength();
}

/// Threads that nobody waits for before the program ends.
class Threads final
{
public:
    ~Threads()
    {
        for (Thread &thread : m_threads)
            thread.handle.join();
    }

    void run(std::function<void()> work)
    {
        m_threads.remove_if([](Thread &thread) {
            if (!thread.isDone)
                return false;
            thread.handle.join();
            return true;
        });
        Thread &thread = m_threads.emplace_back();
        thread.handle = std::thread([&thread, work = std::move(work)]() mutable {
            std::exchange(work, {})(); // what it holds goes before it is done
            thread.isDone = true;
        });
    }

private:
    struct Thread
    {
        std::atomic<bool> isDone = false;
        std::thread handle;
    };
    std::list<Thread> m_threads;
};

void runOnThread(std::function<void()> work)
{
    static Threads threads;
    threads.run(std::move(work));
}

} // namespace

struct HoverTracker::Analysis
{
    std::mutex mutex;
    HoverTracker *owner;                            ///< under the mutex: null once it is abandoned
    QImage picture;                                 ///< under the mutex, until the worker takes it
    std::shared_ptr<const EdgeRegionFinder> finder; ///< under the mutex: the result

    Analysis(HoverTracker *tracker, const QImage &image) : owner(tracker), picture(image) {}

    /// On the worker.
    void run()
    {
        QImage image;
        {
            const std::lock_guard lock(mutex);
            if (!owner)
                return;
            image = std::exchange(picture, {});
        }
        auto made = std::make_shared<const EdgeRegionFinder>(image);
        const std::lock_guard lock(mutex);
        if (!owner)
            return;
        finder = std::move(made);
        QMetaObject::invokeMethod(owner, "onPrepared", Qt::QueuedConnection);
    }
};

HoverTracker::HoverTracker(Clock clock, QObject *parent)
    : QObject(parent),
      m_clock(std::move(clock)),
      m_run(runOnThread)
{
    m_animation.setInterval(kFrameMs);
    m_animation.setTimerType(Qt::PreciseTimer);
    connect(&m_animation, &QTimer::timeout, this, &HoverTracker::tick);
    m_wheelRest.setInterval(kWheelRestMs);
    m_wheelRest.setSingleShot(true);
    connect(&m_wheelRest, &QTimer::timeout, this, &HoverTracker::walkGathered);
    m_patience.setInterval(kPatienceMs);
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, &HoverTracker::giveUpWaiting);
}

HoverTracker::~HoverTracker()
{
    abandonAnalysis();
}

void HoverTracker::setPicture(const QImage &picture, const QPointF &origin)
{
    m_pictureOrigin = origin;
    if (picture.cacheKey() == m_picture.cacheKey() && picture.size() == m_picture.size())
        return;
    m_picture = picture;
    m_finder.reset();
    abandonAnalysis();
    m_sources.image.clear();
}

void HoverTracker::setSurroundings(const QList<platform::WindowInfo> &windows, const QPointF &globalOrigin,
                                   const QRectF &area)
{
    m_windows = windows;
    m_globalOrigin = globalOrigin;
    m_sources.screen = area;
}

void HoverTracker::setAnimated(bool animated)
{
    m_isAnimated = animated;
    if (animated)
        return;
    m_animation.stop();
    if (m_shown != m_target) {
        m_shown = m_target;
        Q_EMIT changed();
    }
}

// --- the list --------------------------------------------------------------------------------------------------------

void HoverTracker::prepare()
{
    if (m_finder || m_analysis || m_picture.isNull())
        return;
    m_analysis = std::make_shared<Analysis>(this, m_picture);
    m_run([analysis = m_analysis] { analysis->run(); });
}

void HoverTracker::abandonAnalysis()
{
    if (!m_analysis)
        return;
    {
        const std::lock_guard lock(m_analysis->mutex);
        m_analysis->owner = nullptr;
    }
    m_analysis.reset();
}

void HoverTracker::onPrepared()
{
    if (!m_analysis)
        return;
    {
        const std::lock_guard lock(m_analysis->mutex);
        m_finder = std::move(m_analysis->finder);
    }
    if (!m_finder)
        return; // the word of an analysis that was abandoned since
    m_analysis.reset();
    if (!m_point)
        return;
    findInPicture();
    if (!m_keepsTarget) // else with the elements, or once the wait for them is over
        rebuild(Reached::Keep);
}

void HoverTracker::findInPicture()
{
    m_sources.image.clear();
    if (!m_finder || !m_sources.screen.contains(*m_point))
        return;
    m_sources.image = m_finder->candidatesAt(*m_point - m_pictureOrigin);
    for (QRectF &box : m_sources.image)
        box.translate(m_pictureOrigin);
}

void HoverTracker::update(const QPointF &point)
{
    m_point = point;
    prepare();
    findInPicture();

    const QPointF global = point + m_globalOrigin;
    const platform::WindowInfo *window = windowAt(m_windows, global);
    const bool isSameWindow = window && window->processId == m_processId;
    const bool hadElements = !m_sources.elements.isEmpty();
    m_sources.window = window ? std::optional(window->geometry.translated(-m_globalOrigin)) : std::nullopt;
    m_processId = window ? window->processId : 0;
    if (!isSameWindow) {
        m_sources.elements.clear();
        m_isWaiting = false;
    }
    if (window && m_ask && (!m_askedAt || distance(*m_askedAt, global) >= kAskDistance)) {
        m_askedAt = global;
        // Counted from the oldest question without an answer: a pointer that keeps moving does not wait for ever.
        if (!std::exchange(m_isWaiting, true)) {
            m_waitingSince = m_clock();
            m_patience.start();
        }
        m_ask(global, m_processId);
    }
    if (hadElements && isSameWindow && m_isWaiting && m_clock() - m_waitingSince < kPatienceMs && !m_target.isNull()) {
        m_keepsTarget = true;
        return;
    }
    dropElementsBeside();
    rebuild(Reached::Drop);
}

void HoverTracker::takeElements(const QPointF &global, qint64 processId, const QList<QRectF> &chain)
{
    if (!m_point || processId != m_processId)
        return;
    const QPointF pointer = *m_point + m_globalOrigin;
    if (distance(global, pointer) > kFreshDistance && (chain.isEmpty() || !chain.first().contains(pointer)))
        return;
    m_isWaiting = false;
    m_patience.stop();
    QList<QRectF> elements = chain;
    for (QRectF &element : elements)
        element.translate(-m_globalOrigin);
    const QList<QRectF> &known = m_sources.elements;
    const bool isNew = elements != known && !(elements.isEmpty() && known.first().contains(*m_point));
    if (isNew)
        m_sources.elements = elements;
    // Elements that stay the same do not make the list so: it may have waited for them since the pointer moved.
    if (isNew || m_keepsTarget)
        rebuild(Reached::Keep);
}

void HoverTracker::giveUpWaiting()
{
    if (!m_isWaiting || !m_keepsTarget)
        return;
    dropElementsBeside();
    rebuild(Reached::Drop);
}

void HoverTracker::dropElementsBeside()
{
    m_sources.elements.removeIf([this](const QRectF &element) { return !element.contains(*m_point); });
}

void HoverTracker::rebuild(Reached reached)
{
    m_keepsTarget = false;
    const QList<QRectF> merged = mergedCandidates(m_sources);
    if (merged.isEmpty()) {
        const auto point = m_point; // the picture may have something for it yet
        clear();
        m_point = point;
        return;
    }
    if (merged == m_candidates && !m_target.isNull())
        return;
    const bool isDefault = m_target.isNull() || m_target == m_candidates.value(0);
    m_candidates = merged;
    if (reached == Reached::Keep && !isDefault && merged.contains(m_target))
        return;
    m_gathered = 0;
    setTarget(merged.first());
}

void HoverTracker::clear()
{
    m_point.reset();
    m_sources.image.clear();
    m_sources.elements.clear();
    m_sources.window.reset();
    m_processId = 0;
    m_askedAt.reset();
    m_isWaiting = false;
    m_keepsTarget = false;
    m_candidates.clear();
    m_smoothWheel.reset();
    m_gathered = 0;
    m_patience.stop();
    m_wheelRest.stop();
    m_animation.stop();
    const bool wasShown = !shown().isNull();
    m_target = {};
    m_shown = {};
    if (wasShown)
        Q_EMIT changed();
}

// --- the level -------------------------------------------------------------------------------------------------------

void HoverTracker::wheel(const QWheelEvent &event, bool isReversed)
{
    if (event.phase() == Qt::ScrollBegin)
        m_smoothWheel.reset();
    const int value = wheelValue(event, isReversed);
    if (isSmoothWheel(event)) {
        walkSmoothly(value);
        return;
    }
    m_gathered += value;
    m_wheelRest.start();
}

void HoverTracker::walkSmoothly(int wheelValue)
{
    walk(m_smoothWheel.take(wheelValue));
}

void HoverTracker::walkGathered()
{
    walk(qRound(std::exchange(m_gathered, 0) / double(kWheelStep)));
}

void HoverTracker::walk(int steps)
{
    if (m_target.isNull())
        return;
    const QRectF end = walked(m_candidates, m_target, steps);
    if (end != m_target)
        setTarget(end);
}

void HoverTracker::toggleWindow()
{
    const auto next = windowToggled(m_candidates, m_target, m_sources);
    if (!next)
        return;
    m_gathered = 0;
    setTarget(*next);
}

// --- the frame -------------------------------------------------------------------------------------------------------

void HoverTracker::setTarget(const QRectF &target)
{
    m_target = target;
    if (!m_target.isNull() && !m_shown.isNull() && m_isAnimated) {
        if (m_target != m_shown && !m_animation.isActive()) {
            m_lastTick = m_clock();
            m_animation.start();
        }
    } else {
        m_shown = m_target;
        m_animation.stop();
    }
    Q_EMIT changed();
}

void HoverTracker::tick()
{
    if (m_target.isNull() || m_shown.isNull()) {
        m_animation.stop();
        return;
    }
    const double now = m_clock();
    const double elapsed = std::min(now - std::exchange(m_lastTick, now), kLongestTickMs);
    const double share = 1 - std::exp(-elapsed / kGlideMs);
    const auto moved = [share](double from, double to) { return from + (to - from) * share; };
    m_shown.setCoords(moved(m_shown.left(), m_target.left()), moved(m_shown.top(), m_target.top()),
                      moved(m_shown.right(), m_target.right()), moved(m_shown.bottom(), m_target.bottom()));
    const auto isNear = [](double a, double b) { return std::abs(a - b) < kArrived; };
    if (isNear(m_shown.left(), m_target.left()) && isNear(m_shown.top(), m_target.top()) &&
        isNear(m_shown.right(), m_target.right()) && isNear(m_shown.bottom(), m_target.bottom())) {
        m_shown = m_target;
        m_animation.stop();
    }
    Q_EMIT changed();
}

} // namespace tavrel::ui
