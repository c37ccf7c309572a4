#include "overlay/hover_tracker.h"

#include "base/work_queue.h"

#include <QWheelEvent>

#include <algorithm>
#include <cmath>
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

void runOnWorker(std::function<void()> work)
{
    // Two threads, so that an analysis that was left behind does not hold up the next one.
    static WorkQueue queue(2);
    queue.run(std::move(work));
}

} // namespace

HoverTracker::HoverTracker(Clock clock, QObject *parent)
    : QObject(parent),
      m_clock(std::move(clock)),
      m_run(runOnWorker)
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

HoverTracker::~HoverTracker() = default;

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
    if (m_finder || m_isPreparing || m_picture.isNull())
        return;
    m_isPreparing = true;
    m_run([this, picture = m_picture, answer = m_answers.handle()] {
        if (answer.isVoid())
            return;
        const auto finder = std::make_shared<const EdgeRegionFinder>(picture);
        answer.post([this, finder] { takeFinder(finder); });
    });
}

void HoverTracker::abandonAnalysis()
{
    m_answers.abandon();
    m_isPreparing = false;
}

void HoverTracker::takeFinder(std::shared_ptr<const EdgeRegionFinder> finder)
{
    m_finder = std::move(finder);
    m_isPreparing = false;
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
