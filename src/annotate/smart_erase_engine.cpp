#include "annotate/smart_erase_engine.h"

#include "base/claimed_work.h"
#include "base/work_queue.h"

#include <algorithm>
#include <utility>

namespace tavrel {
namespace {

constexpr int kSolverThreads = 2;
constexpr int kKeptSolutions = 32;
constexpr qint64 kKeptPixels = 4'000'000;

/// A static one: the end of the process waits for the box at hand, which its engine has cancelled.
WorkQueue &solvers()
{
    static WorkQueue queue(kSolverThreads);
    return queue;
}

} // namespace

/// One box on its way: solved by a solver thread, or by solve() that will not wait for one.
struct SmartEraseEngine::Job
{
    struct Solved
    {
        std::shared_ptr<const erase::RegionResult> region;
        QImage canvas; ///< a copy of the source to draw on; null when the job brings none
    };

    QImage source;
    EraseSpec spec;
    erase::CancelFlag cancel;
    bool bringsCanvas = false; ///< it copies the source too, which takes too long for the thread of the windows
    ClaimedWork<std::shared_ptr<Solved>> work{[this] { return solved(); }};

private:
    [[nodiscard]] std::shared_ptr<Solved> solved() const
    {
        auto made = std::make_shared<Solved>();
        auto region = std::make_shared<erase::RegionResult>();
        if (!cancel.isSet())
            *region = erase::eraseRegion(source, spec, cancel);
        if (bringsCanvas && !region->patch.isNull())
            made->canvas = source.copy();
        made->region = std::move(region);
        return made;
    }
};

SmartEraseEngine::SmartEraseEngine(const QImage &source, QObject *parent)
    : QObject(parent),
      m_source(source.convertToFormat(QImage::Format_RGB32)),
      m_result(m_source),
      m_scale(source.devicePixelRatio() > 0 ? source.devicePixelRatio() : 1.0)
{}

SmartEraseEngine::~SmartEraseEngine()
{
    for (const JobPtr &job : std::as_const(m_jobs))
        job->cancel.cancel();
}

void SmartEraseEngine::setSpecs(const QList<EraseSpec> &specs)
{
    want(specs);
    for (const EraseSpec &spec : missing()) {
        const JobPtr job = begin(spec);
        solvers().run([this, job, answer = m_answers.handle()] {
            if (job->work.tryDo() && !job->cancel.isSet())
                answer.post([this, job] { deliver(job); });
        });
    }
}

void SmartEraseEngine::solve(const QList<EraseSpec> &specs)
{
    want(specs);
    for (const EraseSpec &spec : missing())
        begin(spec);
    while (!m_jobs.isEmpty())
        accept(JobPtr(m_jobs.first()));
}

SmartEraseEngine::JobPtr SmartEraseEngine::begin(const EraseSpec &spec)
{
    auto job = std::make_shared<Job>();
    job->source = m_source;
    job->spec = spec;
    ++m_solveCount;
    job->bringsCanvas = isUntouched() && std::none_of(m_jobs.cbegin(), m_jobs.cend(),
                                                      [](const JobPtr &other) { return other->bringsCanvas; });
    m_jobs.append(job);
    return job;
}

void SmartEraseEngine::want(const QList<EraseSpec> &specs)
{
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
    m_jobs.removeIf([this](const JobPtr &job) {
        const bool isWanted = m_specs.contains(job->spec);
        if (!isWanted)
            job->cancel.cancel();
        return !isWanted;
    });
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

void SmartEraseEngine::deliver(const JobPtr &job)
{
    if (!m_jobs.contains(job))
        return;
    accept(job);
    Q_EMIT solved(job->spec.first);
}

void SmartEraseEngine::accept(const JobPtr &job)
{
    const std::shared_ptr<Job::Solved> solved = job->work.result();
    const Solution made{job->spec, solved->region};
    // Taken out of the job, which its solver may still hold: a canvas with two owners would be copied to draw on it.
    if (QImage canvas = std::exchange(solved->canvas, {}); !canvas.isNull() && isUntouched())
        m_result = std::move(canvas);
    m_jobs.removeIf([&job](const JobPtr &known) { return known == job; });
    m_solutions.prepend(made);
    compose({made.spec.first});
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
    return std::any_of(m_jobs.cbegin(), m_jobs.cend(), [&spec](const JobPtr &job) { return job->spec == spec; });
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
