#pragma once

#include "annotate/erase_pixels.h"
#include "annotate/flatten.h"
#include "base/answer.h"
#include "base/work_queue.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>

namespace tavrel {

/// Makes the pictures of captures that have ended, beside the GUI thread: shapes take some ten milliseconds at 4K, a
/// large smart erase that was just drawn takes seconds. Two are made at a time, so that one that takes long holds up no
/// other (but for its boxes of smart erase, which all wait for the same solvers); answers come in the order in which
/// pictures are done. GUI thread only.
class Flattener final : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const QImage &picture)>;

    explicit Flattener(QObject *parent = nullptr);
    /// Gives up what is not done.
    ~Flattener() override;

    /// done  called later; with a null picture when there was no memory for it, or nothing in the selection
    void flatten(const FlattenRequest &request, Done done);
    [[nodiscard]] bool isBusy() const { return m_running > 0; }
    /// For the end of the program: waits for the pictures under way and answers. False when one was not done in time.
    [[nodiscard]] bool finish(const QDeadlineTimer &deadline);

Q_SIGNALS:
    void busyChanged(bool busy);
    /// It has been busy for half a second, or is no longer.
    void lastingChanged(bool lasting);

private:
    void end();
    void setLasting(bool lasting);

    WorkQueue m_queue;
    std::shared_ptr<erase::CancelFlag> m_cancel; ///< shared with the work
    QTimer m_patience;
    int m_running = 0;
    bool m_isLasting = false;
    Answers m_answers; ///< last, see there
};

} // namespace tavrel
