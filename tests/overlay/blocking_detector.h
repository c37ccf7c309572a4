#pragma once

#include "platform/element_detector.h"

#include <QCoreApplication>
#include <QSemaphore>
#include <QThread>

#include <atomic>

namespace tavrel {

/// Answers with one element, `answer` or a small one at the point; every query waits for its leave.
class BlockingDetector final : public platform::IElementDetector
{
public:
    QList<platform::WindowInfo> topLevelWindows() override { return {}; }
    bool isAvailable() const override { return available; }
    void requestAccess() override {}
    QList<QRectF> elementChain(const QPointF &global, qint64) override
    {
        isOnWorker = QThread::currentThread() != qApp->thread();
        begun.release();
        leave.tryAcquire(1, 10000); // a failed test must not hang
        ++done;
        return answer.isNull() ? QList<QRectF>{{global, QSizeF(10, 10)}} : QList<QRectF>{answer};
    }
    QString sourceUrl(const QPointF &, qint64) override { return {}; }
    platform::ElementInfo elementAt(const QPointF &, qint64) override { return {}; }
    QImage applicationIcon(qint64, int) override { return {}; }

    QRectF answer;
    std::atomic<bool> available = true;
    QSemaphore begun;
    QSemaphore leave;
    std::atomic<int> done = 0;
    bool isOnWorker = false;
};

} // namespace tavrel
