#include "annotate/smart_erase_engine.h"

#include "base/work_queue.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace tavrel {
namespace {

constexpr int kSolverThreads = 2;
constexpr auto kCancelPoll = std::chrono::milliseconds(20);
constexpr int kKeptSolutions = 32;
constexpr qint64 kKeptPixels = 4'000'000;

/// A static one: the end of the process waits for the box at hand, which its engine has cancelled.
WorkQueue &solvers()
{
    static WorkQueue queue(kSolverThreads);
    return queue;
}

} // namespace

/// One box on its way, for the thread that solves it and all who wait for that.
struct SmartEraseEngine::Job
{
    Job(QImage picture, EraseSpec wanted, bool withCanvas)
        : source(std::move(picture)),
          spec(std::move(wanted)),
          bringsCanvas(withCanvas)
    {}

    const QImage source;
    const EraseSpec spec;
    const bool bringsCanvas; ///< it copies the source too, which takes too long for the thread of the windows
    erase::CancelFlag cancel;

    /// Only the first result counts.
    void finish(const std::shared_ptr<const erase::RegionResult> &made)
    {
        const std::lock_guard lock(m_mutex);
        if (m_isDone)
            return;
        m_result = made;
        m_isDone = true;
        m_done.notify_all();
    }
    /// Null while it is not done, and when it was given up.
    [[nodiscard]] std::shared_ptr<const erase::RegionResult> result() const
    {
        const std::lock_guard lock(m_mutex);
        return m_result;
    }
    void wait(const erase::CancelFlag &giveUp) const
    {
        std::unique_lock lock(m_mutex);
        while (!giveUp.isSet() && !m_done.wait_for(lock, kCancelPoll, [this] { return m_isDone; })) {
        }
    }

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_done;
    std::shared_ptr<const erase::RegionResult> m_result;
    bool m_isDone = false;
};

/// Shared by all who want a job: the last of them to go gives it up.
struct SmartEraseEngine::WantedJob
{
    explicit WantedJob(JobPtr wanted) : job(std::move(wanted)) {}
    WantedJob(const WantedJob &) = delete;
    WantedJob &operator=(const WantedJob &) = delete;
    ~WantedJob() { job->cancel.cancel(); }

    const JobPtr job;
};

struct SmartEraseEngine::Known
{
    QImage source;
    double scale = 1.0;
    QList<Solution> solutions;
    QList<WantedPtr> jobs;
};

/// Goes along with the work on a job. When that is dropped before it ran, as at the end of the program, the job ends
/// all the same, so that nobody waits for it.
struct SmartEraseEngine::JobEnd
{
    explicit JobEnd(JobPtr wanted) : job(std::move(wanted)) {}
    JobEnd(const JobEnd &) = delete;
    JobEnd &operator=(const JobEnd &) = delete;
    ~JobEnd() { job->finish({}); }

    const JobPtr job;
};

SmartEraseEngine::SmartEraseEngine(const QImage &source, QObject *parent)
    : QObject(parent),
      m_source(source.convertToFormat(QImage::Format_RGB32)),
      m_result(m_source),
      m_scale(source.devicePixelRatio() > 0 ? source.devicePixelRatio() : 1.0)
{}

SmartEraseEngine::SmartEraseEngine(const Progress &progress)
    : m_source(progress->source),
      m_result(m_source),
      m_scale(progress->scale),
      m_solutions(progress->solutions),
      m_jobs(progress->jobs)
{}

SmartEraseEngine::Progress SmartEraseEngine::progress() const
{
    // Without the result: shared, it would have to be copied on this thread when the next box comes in.
    return std::make_shared<const Known>(Known{m_source, m_scale, m_solutions, m_jobs});
}

SmartEraseEngine::~SmartEraseEngine() = default;

void SmartEraseEngine::setSpecs(const QList<EraseSpec> &specs)
{
    want(specs);
    for (const EraseSpec &spec : missing())
        begin(spec, Answer::Delivered);
}

bool SmartEraseEngine::solve(const QList<EraseSpec> &specs, const erase::CancelFlag &cancel)
{
    want(specs);
    for (const EraseSpec &spec : missing())
        begin(spec, Answer::WaitedFor);
    while (!m_jobs.isEmpty()) {
        const JobPtr job = m_jobs.first()->job;
        job->wait(cancel);
        if (!job->result()) {
            m_jobs.clear();
            return false;
        }
        accept(job, {});
    }
    return true;
}

void SmartEraseEngine::begin(const EraseSpec &spec, Answer answer)
{
    const bool isFirst =
        std::none_of(m_jobs.cbegin(), m_jobs.cend(), [](const WantedPtr &other) { return other->job->bringsCanvas; });
    const bool isDelivered = answer == Answer::Delivered;
    const auto job = std::make_shared<Job>(m_source, spec, isDelivered && isUntouched() && isFirst);
    m_jobs.append(std::make_shared<const WantedJob>(job));
    ++m_solveCount;
    solvers().run([this, isDelivered, home = m_answers.handle(), end = std::make_shared<const JobEnd>(job)] {
        const JobPtr &done = end->job;
        if (done->cancel.isSet())
            return;
        const auto made =
            std::make_shared<const erase::RegionResult>(erase::eraseRegion(done->source, done->spec, done->cancel));
        done->finish(made);
        if (!isDelivered || done->cancel.isSet())
            return;
        QImage canvas = done->bringsCanvas && !made->patch.isNull() ? done->source.copy() : QImage();
        // With one owner: it would be copied again to draw on it.
        home.post([this, done, canvas = std::move(canvas)]() mutable { deliver(done, std::move(canvas)); });
    });
}

void SmartEraseEngine::want(const QList<EraseSpec> &specs)
{
    m_jobs.removeIf([&specs](const WantedPtr &wanted) { return !specs.contains(wanted->job->spec); });
    if (specs == m_specs)
        return;
    QList<QRect> dirty;
    for (qsizetype i = 0; i < std::max(specs.size(), m_specs.size()); ++i) {
        const bool isBoth = i < specs.size() && i < m_specs.size();
        if (isBoth && specs[i] == m_specs[i])
            continue;
        if (i < specs.size())
            dirty.append(specs[i].first);
        if (i < m_specs.size())
            dirty.append(m_specs[i].first);
    }
    m_specs = specs;
    compose(dirty);
    forgetOldSolutions();
}

QList<EraseSpec> SmartEraseEngine::missing() const
{
    QList<EraseSpec> result;
    for (const EraseSpec &spec : m_specs) {
        if (!spec.first.isEmpty() && !solution(spec) && !isSolving(spec) && !result.contains(spec))
            result.append(spec);
    }
    return result;
}

void SmartEraseEngine::deliver(const JobPtr &job, QImage canvas)
{
    const bool isExpected =
        std::any_of(m_jobs.cbegin(), m_jobs.cend(), [&job](const WantedPtr &known) { return known->job == job; });
    if (!isExpected)
        return;
    accept(job, std::move(canvas));
    Q_EMIT solved(job->spec.first);
}

void SmartEraseEngine::accept(const JobPtr &job, QImage canvas)
{
    if (!canvas.isNull() && isUntouched())
        m_result = std::move(canvas);
    m_jobs.removeIf([&job](const WantedPtr &known) { return known->job == job; });
    m_solutions.prepend({job->spec, job->result()});
    compose({job->spec.first});
}

bool SmartEraseEngine::isUntouched() const
{
    return m_result.constBits() == m_source.constBits();
}

void SmartEraseEngine::compose(const QList<QRect> &dirty)
{
    const bool hasPatches = std::any_of(m_specs.cbegin(), m_specs.cend(), [this](const EraseSpec &spec) {
        const Solution *solved = solution(spec);
        return solved && !solved->result->patch.isNull();
    });
    if (isUntouched() && !hasPatches)
        return;
    for (const QRect &wanted : dirty) {
        const QRect part = wanted & m_source.rect();
        for (int y = part.top(); y <= part.bottom(); ++y) {
            const auto *from = reinterpret_cast<const QRgb *>(m_source.constScanLine(y));
            std::copy_n(from + part.left(), part.width(), reinterpret_cast<QRgb *>(m_result.scanLine(y)) + part.left());
        }
        for (const EraseSpec &spec : std::as_const(m_specs)) {
            if (const Solution *solved = solution(spec))
                solved->result->pasteInto(m_result, part);
        }
    }
}

void SmartEraseEngine::forgetOldSolutions()
{
    int kept = 0;
    qint64 pixels = 0;
    m_solutions.removeIf([&](const Solution &solved) {
        if (m_specs.contains(solved.spec))
            return false;
        const QSize size = solved.result->patch.size();
        pixels += qint64{size.width()} * size.height();
        return ++kept > kKeptSolutions || pixels > kKeptPixels;
    });
}

const SmartEraseEngine::Solution *SmartEraseEngine::solution(const EraseSpec &spec) const
{
    const auto at = std::find_if(m_solutions.cbegin(), m_solutions.cend(),
                                 [&spec](const Solution &solved) { return solved.spec == spec; });
    return at == m_solutions.cend() ? nullptr : &*at;
}

QRect SmartEraseEngine::window(const EraseSpec &spec) const
{
    const Solution *solved = m_specs.contains(spec) ? solution(spec) : nullptr;
    return solved ? solved->result->window : QRect();
}

QRect SmartEraseEngine::window(const QRect &rect) const
{
    const auto at =
        std::find_if(m_specs.cbegin(), m_specs.cend(), [&rect](const EraseSpec &spec) { return spec.first == rect; });
    return at == m_specs.cend() ? QRect() : window(*at);
}

bool SmartEraseEngine::isSolving(const EraseSpec &spec) const
{
    return std::any_of(m_jobs.cbegin(), m_jobs.cend(),
                       [&spec](const WantedPtr &wanted) { return wanted->job->spec == spec; });
}

QList<erase::RegionInfo> SmartEraseEngine::regionInfos() const
{
    QList<erase::RegionInfo> infos;
    for (const EraseSpec &spec : m_specs) {
        const Solution *solved = solution(spec);
        infos.append(solved ? solved->result->info : erase::RegionInfo());
    }
    return infos;
}

} // namespace tavrel
