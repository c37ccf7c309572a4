#include "overlay/element_probe.h"

#include "platform/element_detector.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <utility>

namespace tavrel::ui {

struct ElementProbe::Shared
{
    struct Request
    {
        quint64 number = 0;
        QPointF global;
        qint64 processId = 0;
    };

    std::atomic<quint64> newest = 0;
    std::mutex mutex;
    std::optional<Request> waiting;  ///< under the mutex
    std::optional<Request> answered; ///< under the mutex
    QList<QRectF> chain;             ///< under the mutex: the answer to it

    /// Whether the worker has to be woken: not when it already is to come for an older request.
    [[nodiscard]] bool put(const Request &request)
    {
        const std::lock_guard lock(mutex);
        return !std::exchange(waiting, request);
    }

    [[nodiscard]] std::optional<Request> take()
    {
        const std::lock_guard lock(mutex);
        return std::exchange(waiting, std::nullopt);
    }
};

class ElementProbe::Worker final : public QObject
{
    Q_OBJECT

public:
    /// `probe` outlives the thread that this runs on.
    Worker(ElementProbe *probe, std::shared_ptr<platform::IElementDetector> detector, std::shared_ptr<Shared> shared)
        : m_probe(probe),
          m_detector(std::move(detector)),
          m_shared(std::move(shared))
    {}

    Q_INVOKABLE void query()
    {
        const auto request = m_shared->take();
        if (!request || isOvertaken(*request))
            return;
        QList<QRectF> chain =
            m_detector->isAvailable() ? m_detector->elementChain(request->global, request->processId) : QList<QRectF>();
        if (isOvertaken(*request))
            return;
        {
            const std::lock_guard lock(m_shared->mutex);
            m_shared->answered = request;
            m_shared->chain = std::move(chain);
        }
        QMetaObject::invokeMethod(m_probe, "deliver", Qt::QueuedConnection);
    }

private:
    [[nodiscard]] bool isOvertaken(const Shared::Request &request) const { return m_shared->newest != request.number; }

    ElementProbe *m_probe;
    std::shared_ptr<platform::IElementDetector> m_detector;
    std::shared_ptr<Shared> m_shared;
};

ElementProbe::ElementProbe(std::shared_ptr<platform::IElementDetector> detector, QObject *parent)
    : QObject(parent),
      m_shared(std::make_shared<Shared>()),
      m_worker(new Worker(this, std::move(detector), m_shared))
{
    m_thread.setObjectName(QStringLiteral("tavrel-element-probe"));
    m_worker->moveToThread(&m_thread);
    m_thread.start();
}

ElementProbe::~ElementProbe()
{
    ++m_shared->newest; // what waits is not begun any more
    m_worker->deleteLater();
    m_thread.quit();
    m_thread.wait();
}

void ElementProbe::request(const QPointF &global, qint64 processId)
{
    const quint64 number = ++m_shared->newest;
    if (m_shared->put({number, global, processId}))
        QMetaObject::invokeMethod(m_worker, "query", Qt::QueuedConnection);
}

void ElementProbe::deliver()
{
    std::optional<Shared::Request> answered;
    QList<QRectF> chain;
    {
        const std::lock_guard lock(m_shared->mutex);
        answered = std::exchange(m_shared->answered, std::nullopt);
        chain = std::exchange(m_shared->chain, {});
    }
    if (answered)
        Q_EMIT ready(answered->global, answered->processId, chain);
}

} // namespace tavrel::ui

#include "element_probe.moc"
