#include "app/flattener.h"

#include <algorithm>
#include <utility>

namespace tavrel {
namespace {

constexpr int kPatienceMs = 500;
constexpr int kThreads = 2;
constexpr qint64 kSliceMs = 20;

} // namespace

Flattener::Flattener(QObject *parent)
    : QObject(parent),
      m_queue(kThreads),
      m_cancel(std::make_shared<erase::CancelFlag>())
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(kPatienceMs);
    connect(&m_patience, &QTimer::timeout, this, [this] { setLasting(true); });
}

Flattener::~Flattener()
{
    m_cancel->cancel();
}

void Flattener::flatten(const FlattenRequest &request, Done done)
{
    if (++m_running == 1) {
        m_patience.start();
        Q_EMIT busyChanged(true);
    }
    m_queue.run([this, request, cancel = m_cancel, done = std::move(done), home = m_answers.handle()] {
        const QImage picture = tavrel::flatten(request, *cancel);
        home.post([this, picture, done] {
            end();
            done(picture);
        });
    });
}

void Flattener::end()
{
    if (--m_running > 0)
        return;
    m_patience.stop();
    setLasting(false);
    Q_EMIT busyChanged(false);
}

void Flattener::setLasting(bool lasting)
{
    if (std::exchange(m_isLasting, lasting) != lasting)
        Q_EMIT lastingChanged(lasting);
}

bool Flattener::finish(const QDeadlineTimer &deadline)
{
    // What is done goes on at once: a file that is to follow needs its share of the time.
    while (isBusy() && !deadline.hasExpired()) {
        (void)m_queue.finish(QDeadlineTimer(std::min<qint64>(kSliceMs, deadline.remainingTime())));
        m_answers.deliver();
    }
    return !isBusy();
}

} // namespace tavrel
