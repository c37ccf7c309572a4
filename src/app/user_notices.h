#pragma once

#include <QString>

#include <chrono>

namespace tavrel {

/// Notices: what is told of a result and goes away by itself. What waits for an answer is a message (MessageBoard).
class IUserNotices
{
public:
    enum class Kind { Information = 1, Warning = 2 };

    IUserNotices() = default;
    IUserNotices(const IUserNotices &) = delete;
    IUserNotices &operator=(const IUserNotices &) = delete;
    virtual ~IUserNotices() = default;

    virtual void show(const QString &title, const QString &text, Kind kind, std::chrono::milliseconds duration) = 0;
};

/// Passes notices on to whoever shows them; without a receiver they are dropped.
class NoticeRelay final : public IUserNotices
{
public:
    void setReceiver(IUserNotices *receiver) { m_receiver = receiver; }
    void show(const QString &title, const QString &text, Kind kind, std::chrono::milliseconds duration) override
    {
        if (m_receiver)
            m_receiver->show(title, text, kind, duration);
    }

private:
    IUserNotices *m_receiver = nullptr;
};

} // namespace tavrel
