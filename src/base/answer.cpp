#include "base/answer.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QThread>

#include <deque>
#include <mutex>
#include <utility>

namespace tavrel {

/// What both ends share. The answers lie here and not in the events, which only wake the receiver's thread.
struct AnswerHandle::Line
{
    class Receiver final : public QObject
    {
    public:
        explicit Receiver(const std::shared_ptr<Line> &line) : m_line(line) {}

        void customEvent(QEvent *) override
        {
            if (const auto line = m_line.lock())
                line->callAnswers(); // which may be the end of this object
        }

    private:
        std::weak_ptr<Line> m_line; ///< which owns this object
    };

    std::mutex mutex;
    std::unique_ptr<QObject> receiver;         ///< under the mutex; null once the receiver is gone
    std::deque<std::function<void()>> answers; ///< under the mutex

    /// Under the mutex.
    void wake() { QCoreApplication::postEvent(receiver.get(), new QEvent(QEvent::User)); }

    /// On the receiver's thread: calls those that are there, not those that come meanwhile.
    void callAnswers()
    {
        std::unique_lock lock(mutex);
        for (std::size_t left = answers.size(); left > 0 && !answers.empty(); --left) {
            std::function<void()> answer = std::move(answers.front());
            answers.pop_front();
            lock.unlock();
            std::exchange(answer, {})();
            lock.lock();
        }
        if (!answers.empty())
            wake();
    }

    /// On the receiver's thread.
    void close()
    {
        // Destroyed without the lock: what they hold may come back here.
        std::unique_ptr<QObject> gone;
        std::deque<std::function<void()>> dropped;
        const std::lock_guard lock(mutex);
        gone = std::move(receiver);
        dropped = std::exchange(answers, {});
    }
};

AnswerHandle::AnswerHandle(std::shared_ptr<Line> line) : m_line(std::move(line)) {}

void AnswerHandle::post(std::function<void()> answer) const
{
    const std::lock_guard lock(m_line->mutex);
    if (!m_line->receiver)
        return;
    m_line->answers.push_back(std::move(answer));
    if (m_line->answers.size() == 1)
        m_line->wake();
}

bool AnswerHandle::isVoid() const
{
    const std::lock_guard lock(m_line->mutex);
    return !m_line->receiver;
}

Answers::Answers()
{
    open();
}

Answers::~Answers()
{
    m_line->close();
}

void Answers::open()
{
    m_line = std::make_shared<AnswerHandle::Line>();
    m_line->receiver = std::make_unique<AnswerHandle::Line::Receiver>(m_line);
}

AnswerHandle Answers::handle() const
{
    return AnswerHandle(m_line);
}

void Answers::abandon()
{
    m_line->close();
    open();
}

void Answers::deliver()
{
    const auto line = m_line; // an answer may be the end of this object
    line->callAnswers();
}

} // namespace tavrel
