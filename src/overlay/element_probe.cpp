#include "overlay/element_probe.h"

#include "platform/element_detector.h"

#include <QMutex>

#include <atomic>
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
    QMutex mutex;
    std::optional<Request> waiting; ///< under the mutex

    /// Whether the worker has to be woken: not when it already is to come for an older request.
    [[nodiscard]] bool put(const Request &request)
    {
        const QMutexLocker lock(&mutex);
        return !std::exchange(waiting, request);
    }

    [[nodiscard]] std::optional<Request> take()
    {
        const QMutexLocker lock(&mutex);
        return std::exchange(waiting, std::nullopt);
    }
};

class ElementProbe::Worker final : public QObject
{
public:
    Worker(std::shared_ptr<platform::IElementDetector> detector, std::shared_ptr<Shared> shared)
        : m_detector(std::move(detector)),
          m_shared(std::move(shared))
    {}

    /// `probe` outlives the thread that this runs on.
    void query(ElementProbe *probe)
    {
        const auto request = m_shared->take();
        if (!request || isOvertaken(*request))
            return;
        const QList<QRectF> chain =
            m_detector->isAvailable() ? m_detector->elementChain(request->global, request->processId) : QList<QRectF>();
        if (isOvertaken(*request))
            return;
        QMetaObject::invokeMethod(
            probe,
            [probe, request = *request, chain] { Q_EMIT probe->ready(request.global, request.processId, chain); },
            Qt::QueuedConnection);
    }

private:
    [[nodiscard]] bool isOvertaken(const Shared::Request &request) const { return m_shared->newest != request.number; }

    std::shared_ptr<platform::IElementDetector> m_detector;
    std::shared_ptr<Shared> m_shared;
};

ElementProbe::ElementProbe(std::shared_ptr<platform::IElementDetector> detector, QObject *parent)
    : QObject(parent),
      m_shared(std::make_shared<Shared>()),
      m_worker(new Worker(std::move(detector), m_shared))
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
    if (m_shared->put({number, global, processId})) {
        QMetaObject::invokeMethod(
            m_worker, [worker = m_worker, probe = this] { worker->query(probe); }, Qt::QueuedConnection);
    }
}

} // namespace tavrel::ui
