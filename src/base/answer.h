#pragma once

#include <functional>
#include <memory>

namespace tavrel {

/// The way home for what another thread has found out: made by Answers, copied into the work, used on any thread.
class AnswerHandle final
{
public:
    /// Has `answer` called on the thread of the receiver, by its event loop, never within this call; answers of one
    /// thread keep their order. Once the receiver is gone nothing is called, and `answer` is destroyed here. Costs an
    /// allocation and, for the first of several that wait, an event.
    void post(std::function<void()> answer) const;
    /// Nobody would hear an answer any more, so that there is no point in going on. False may be out of date at once.
    [[nodiscard]] bool isVoid() const;

private:
    friend class Answers;
    struct Line;
    explicit AnswerHandle(std::shared_ptr<Line> line);

    std::shared_ptr<Line> m_line;
};

/// The receiver's end: a member of whoever wants answers, declared after all that they use, so that none comes to an
/// object that is half gone. An answer may then capture `this`.
///
/// Lives on the thread on which it was made, which needs an event loop; only handles leave it. When it goes, answers on
/// their way are dropped, whatever other threads do at that moment; an answer may destroy the very receiver. What a
/// dropped answer holds is destroyed on this thread or on that of its sender.
class Answers final
{
public:
    Answers();
    ~Answers();
    Answers(const Answers &) = delete;
    Answers &operator=(const Answers &) = delete;

    [[nodiscard]] AnswerHandle handle() const;
    /// Drops what is on its way and voids all handles given out; those made from now on are good.
    void abandon();
    /// Calls now what has come already, for a moment without an event loop.
    void deliver();

private:
    void open();

    std::shared_ptr<AnswerHandle::Line> m_line;
};

} // namespace tavrel
