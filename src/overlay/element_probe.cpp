#include "overlay/element_probe.h"

#include "platform/element_detector.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <utility>

namespace tavrel::ui {

/// What the requests and the worker share.
struct ElementProbe::Shared
{
    struct Request
    {
        quint64 number = 0;
        QPointF global;
        qint64 processId = 0;
    };

    explicit Shared(std::shared_ptr<platform::IElementDetector> source) : detector(std::move(source)) {}

    const std::shared_ptr<platform::IElementDetector> detector;
    std::atomic<quint64> newest = 0;
    std::mutex mutex;
    std::optional<Request> waiting; ///< under the mutex

    /// Whether the worker has to be called: not when it is to come for an older request already.
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

    [[nodiscard]] bool isOvertaken(const Request &request) const { return newest != request.number; }

    [[nodiscard]] QList<QRectF> chainOf(const Request &request) const
    {
        return detector->isAvailable() ? detector->elementChain(request.global, request.processId) : QList<QRectF>();
    }
};

ElementProbe::ElementProbe(std::shared_ptr<platform::IElementDetector> detector, QObject *parent)
    : QObject(parent),
      m_shared(std::make_shared<Shared>(std::move(detector)))
{}

ElementProbe::~ElementProbe() = default;

void ElementProbe::request(const QPointF &global, qint64 processId)
{
    const quint64 number = ++m_shared->newest;
    if (m_shared->put({number, global, processId}))
        m_queries.run([this, shared = m_shared, answer = m_answers.handle()] {
            const auto request = shared->take();
            if (!request || shared->isOvertaken(*request))
                return;
            const QList<QRectF> chain = shared->chainOf(*request);
            if (!shared->isOvertaken(*request))
                answer.post([this, request, chain] { Q_EMIT ready(request->global, request->processId, chain); });
        });
}

} // namespace tavrel::ui
