#pragma once

#include "annotate/erase_region.h"
#include "base/answer.h"

#include <QImage>
#include <QList>
#include <QObject>

#include <memory>

namespace tavrel {

/// Keeps the picture with all boxes of smart erase removed from it.
///
/// A box is solved once and its result kept, also for a while after it is gone, so that moving one of many boxes or an
/// undo repeats nothing. Solving runs on threads of its own; all functions are called on the thread of the engine and
/// solved() comes there. Going down while a box is being solved waits for nobody.
///
/// memory  the source, a second picture of its size once something was erased, 4 bytes for each replaced pixel
class SmartEraseEngine final : public QObject
{
    Q_OBJECT

public:
    /// source  the picture without annotations; read as RGB32, so that transparent pixels count with their colour alone
    explicit SmartEraseEngine(const QImage &source, QObject *parent = nullptr);

    struct Known;
    /// What an engine has found out and what it is waiting for, to be read on any thread. Boxes on their way stay
    /// wanted while a copy of it lives, whatever the engine does meanwhile.
    using Progress = std::shared_ptr<const Known>;
    [[nodiscard]] Progress progress() const;
    /// Goes on from there, with no wanted boxes yet; on another thread as well.
    explicit SmartEraseEngine(const Progress &progress);
    ~SmartEraseEngine() override;

    /// The boxes wanted from now on, later ones over earlier ones. Begins to solve those without a result, gives up
    /// those no longer wanted and returns at once. The same list again does nothing.
    void setSpecs(const QList<EraseSpec> &specs);
    /// As setSpecs(), but returns when all of them are solved, without solved(). Slow: not for the GUI thread.
    ///
    /// returns  false when it was cancelled, or the program ends, before all were solved
    bool solve(const QList<EraseSpec> &specs, const erase::CancelFlag &cancel = erase::CancelFlag::never());
    [[nodiscard]] const QList<EraseSpec> &specs() const { return m_specs; }

    /// The source with every solved box replaced; RGB32 at the ratio of the source.
    [[nodiscard]] const QImage &result() const { return m_result; }
    /// Device pixel ratio of the source; 1 when that has none.
    [[nodiscard]] double scale() const { return m_scale; }
    /// The source pixels around a wanted box that result() is right for; null when it is not solved, empty or outside
    /// the picture.
    [[nodiscard]] QRect window(const EraseSpec &spec) const;
    /// The same for the first wanted box of that place.
    [[nodiscard]] QRect window(const QRect &rect) const;
    [[nodiscard]] bool isSolving(const EraseSpec &spec) const;
    [[nodiscard]] bool isSolving() const { return !m_jobs.isEmpty(); }
    /// One for each of specs(); Path::None for those without a result.
    [[nodiscard]] QList<erase::RegionInfo> regionInfos() const;
    /// How many boxes have been begun so far.
    [[nodiscard]] quint64 solveCount() const { return m_solveCount; }

Q_SIGNALS:
    /// The result of a box begun by setSpecs() is in.
    ///
    /// rect  of the box in source pixels
    void solved(const QRect &rect);

private:
    struct Job;
    struct WantedJob;
    struct JobEnd;
    using JobPtr = std::shared_ptr<Job>;
    using WantedPtr = std::shared_ptr<const WantedJob>;
    struct Solution
    {
        EraseSpec spec;
        std::shared_ptr<const erase::RegionResult> result;
    };

    [[nodiscard]] const Solution *solution(const EraseSpec &spec) const;
    enum class Answer { Delivered, WaitedFor };
    /// Puts a box on its way.
    void begin(const EraseSpec &spec, Answer answer);
    /// Makes a list of boxes the wanted one and gives up the jobs of others.
    void want(const QList<EraseSpec> &specs);
    /// The boxes that have neither a result nor a job.
    [[nodiscard]] QList<EraseSpec> missing() const;
    /// canvas  a copy of the source to draw on; may be null
    void deliver(const JobPtr &job, QImage canvas);
    void accept(const JobPtr &job, QImage canvas);
    /// Whether result() still shares the pixels of the source.
    [[nodiscard]] bool isUntouched() const;
    /// Puts parts of the result together anew.
    void compose(const QList<QRect> &dirty);
    void forgetOldSolutions();

    QImage m_source;
    QImage m_result;
    double m_scale = 1.0;
    QList<EraseSpec> m_specs;
    QList<Solution> m_solutions; ///< the latest first
    QList<WantedPtr> m_jobs;
    quint64 m_solveCount = 0;
    Answers m_answers;
};

} // namespace tavrel
