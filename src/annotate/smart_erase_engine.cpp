#include "annotate/smart_erase_engine.h"

#include "annotate/erase_workers.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <utility>
#include <vector>

namespace tavrel {
namespace {

constexpr int kSolverThreads = 2;
constexpr int kKeptSolutions = 32;
constexpr qint64 kKeptPixels = 4'000'000;

erase::Workers &solvers()
{
    static erase::Workers workers(kSolverThreads);
    return workers;
}

QEvent::Type answersCame()
{
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

} // namespace

/// One box on its way. Whoever claims it first solves it: a solver thread, or solve() that will not wait for one.
struct SmartEraseEngine::Job
{
    QImage source;
    EraseSpec spec;
    quint64 generation = 0;
    erase::CancelFlag cancel;
    bool bringsCanvas = false; ///< it copies the source too, which takes too long for the thread of the windows

    /// False when somebody else has it.
    bool work()
    {
        {
            const std::lock_guard lock(m_mutex);
            if (m_isClaimed)
                return false;
            m_isClaimed = true;
        }
        auto made = std::make_shared<erase::RegionResult>();
        if (!cancel.isSet())
            *made = erase::eraseRegion(source, spec, cancel);
        QImage canvas = bringsCanvas && !made->patch.isNull() ? source.copy() : QImage();
        const std::lock_guard lock(m_mutex);
        m_result = std::move(made);
        m_canvas = std::move(canvas);
        m_isDone = true;
        m_done.notify_all();
        return true;
    }
    /// Waits for it.
    std::shared_ptr<const erase::RegionResult> result()
    {
        std::unique_lock lock(m_mutex);
        m_done.wait(lock, [this] { return m_isDone; });
        return m_result;
    }

    /// Once it is done: a copy of the source to draw on; null when it brings none.
    QImage takeCanvas()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_canvas, {});
    }

private:
    std::shared_ptr<const erase::RegionResult> m_result;
    QImage m_canvas;
    std::mutex m_mutex;
    std::condition_variable m_done;
    bool m_isClaimed = false;
    bool m_isDone = false;
};

/// Where solver threads leave their answers, as long as there is an engine to collect them.
struct SmartEraseEngine::Mailbox
{
    std::mutex mutex;
    SmartEraseEngine *engine = nullptr;
    std::vector<JobPtr> answers;

    void post(JobPtr job)
    {
        const std::lock_guard lock(mutex);
        if (!engine || job->cancel.isSet())
            return;
        answers.push_back(std::move(job));
        QCoreApplication::postEvent(engine, new QEvent(answersCame()));
    }
    std::vector<JobPtr> collect()
    {
        const std::lock_guard lock(mutex);
        return std::exchange(answers, {});
    }
};

SmartEraseEngine::SmartEraseEngine(const QImage &source, QObject *parent)
    : QObject(parent),
      m_source(source.convertToFormat(QImage::Format_RGB32)),
      m_result(m_source),
      m_scale(source.devicePixelRatio() > 0 ? source.devicePixelRatio() : 1.0),
      m_mailbox(std::make_shared<Mailbox>())
{
    m_mailbox->engine = this;
}

SmartEraseEngine::~SmartEraseEngine()
{
    for (const JobPtr &job : std::as_const(m_jobs))
        job->cancel.cancel();
    const std::lock_guard lock(m_mailbox->mutex);
    m_mailbox->engine = nullptr;
    m_mailbox->answers.clear();
}

void SmartEraseEngine::setSpecs(const QList<EraseSpec> &specs)
{
    want(specs);
    for (const EraseSpec &spec : missing()) {
        const JobPtr job = begin(spec);
        solvers().start([job, mailbox = m_mailbox] {
            if (job->work())
                mailbox->post(job);
        });
    }
}

void SmartEraseEngine::solve(const QList<EraseSpec> &specs)
{
    want(specs);
    for (const EraseSpec &spec : missing())
        begin(spec);
    while (!m_jobs.isEmpty()) {
        const JobPtr job = m_jobs.first();
        (void)job->work();
        accept(*job);
    }
}

SmartEraseEngine::JobPtr SmartEraseEngine::begin(const EraseSpec &spec)
{
    auto job = std::make_shared<Job>();
    job->source = m_source;
    job->spec = spec;
    job->generation = ++m_generation;
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

bool SmartEraseEngine::event(QEvent *event)
{
    if (event->type() != answersCame())
        return QObject::event(event);
    for (const JobPtr &job : m_mailbox->collect())
        deliver(job);
    return true;
}

void SmartEraseEngine::deliver(const JobPtr &job)
{
    const bool isExpected = std::any_of(m_jobs.cbegin(), m_jobs.cend(),
                                        [&job](const JobPtr &known) { return known->generation == job->generation; });
    if (!isExpected)
        return;
    accept(*job);
    Q_EMIT solved(job->spec.first);
}

void SmartEraseEngine::accept(Job &job)
{
    const Solution made{job.spec, job.result()};
    if (QImage canvas = job.takeCanvas(); !canvas.isNull() && isUntouched())
        m_result = std::move(canvas);
    m_jobs.removeIf([generation = job.generation](const JobPtr &known) { return known->generation == generation; });
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
