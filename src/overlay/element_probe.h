#pragma once

#include "base/answer.h"
#include "base/work_queue.h"

#include <QList>
#include <QObject>
#include <QPointF>
#include <QRectF>

#include <memory>

namespace tavrel::platform {
class IElementDetector;
}

namespace tavrel::ui {

/// Asks for the elements under a point, on a thread of its own: one query at a time, and only the newest waits.
///
/// A query that a newer request has overtaken is not begun, or its result is dropped. Whether elements can be read at
/// all is looked up on that thread too, before each query; where they cannot, the answer is an empty chain.
/// Destruction waits for the query that runs, which the detector ends within 250 ms.
class ElementProbe final : public QObject
{
    Q_OBJECT

public:
    explicit ElementProbe(std::shared_ptr<platform::IElementDetector> detector, QObject *parent = nullptr);
    ~ElementProbe() override;

    /// global  logical coordinates
    void request(const QPointF &global, qint64 processId);

Q_SIGNALS:
    /// The answer to what was the newest request when the query ended: global rectangles from the innermost out. Comes
    /// on the thread that the probe lives in; the pointer may have moved on by then.
    void ready(const QPointF &global, qint64 processId, const QList<QRectF> &chain);

private:
    struct Shared;

    std::shared_ptr<Shared> m_shared;
    Answers m_answers;
    WorkQueue m_queries;
};

} // namespace tavrel::ui
