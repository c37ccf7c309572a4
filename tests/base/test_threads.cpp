#include "base/answer.h"
#include "base/frame_queue.h"
#include "base/parallel.h"
#include "base/unjoined_thread.h"
#include "base/work_queue.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QRandomGenerator>
#include <QSemaphore>
#include <QThread>

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace tavrel {
namespace {

using Frames = FrameQueue<std::unique_ptr<int>>;

void turnLoop()
{
    QEventLoop().processEvents();
}

/// Runs `body` on a thread that may have receivers, and waits for it: one whose loop nobody else uses.
void onThread(const std::function<void()> &body)
{
    std::thread(body).join();
}

/// Says when it goes.
class Goodbye final
{
public:
    explicit Goodbye(std::function<void()> say) : m_say(std::move(say)) {}
    ~Goodbye() { m_say(); }
    Goodbye(const Goodbye &) = delete;
    Goodbye &operator=(const Goodbye &) = delete;

private:
    std::function<void()> m_say;
};

/// What it hears is written on its thread only, unprotected.
struct Receiver
{
    std::vector<int> heard;
    Answers answers; // last, as everywhere

    [[nodiscard]] AnswerHandle handle() const { return answers.handle(); }
};

class TestThreads final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // --- answers ---

    void answersComeInOrderOnTheReceiversThread()
    {
        onThread([] {
            constexpr int kSenders = 4;
            constexpr int kEach = 2000;
            Receiver receiver;
            const auto home = QThread::currentThread();
            bool isAtHome = true;
            std::vector<std::thread> senders;
            for (int sender = 0; sender < kSenders; ++sender) {
                senders.emplace_back([&, handle = receiver.handle(), sender] {
                    for (int i = 0; i < kEach; ++i) {
                        handle.post([&, value = sender * kEach + i] {
                            isAtHome = isAtHome && QThread::currentThread() == home;
                            receiver.heard.push_back(value);
                        });
                    }
                });
            }
            while (receiver.heard.size() < kSenders * kEach)
                turnLoop();
            for (std::thread &sender : senders)
                sender.join();
            QVERIFY(isAtHome);
            for (int sender = 0; sender < kSenders; ++sender) {
                std::vector<int> own;
                std::copy_if(receiver.heard.begin(), receiver.heard.end(), std::back_inserter(own),
                             [sender](int value) { return value / kEach == sender; });
                QCOMPARE(own.size(), std::size_t(kEach));
                QVERIFY(std::is_sorted(own.begin(), own.end()));
            }
        });
    }

    void aReceiverMayDieWhileAnswersFly()
    {
        onThread([] {
            constexpr int kLives = 150;
            std::atomic<int> held = 0; // what answers hold goes with them, on whatever thread
            for (int life = 0; life < kLives; ++life) {
                auto receiver = std::make_unique<Receiver>();
                std::atomic<int> sent = 0;
                std::vector<std::thread> senders;
                for (int sender = 0; sender < 3; ++sender) {
                    senders.emplace_back([&held, &sent, handle = receiver->handle(), raw = receiver.get()] {
                        for (int i = 0; i < 100 && !handle.isVoid(); ++i) {
                            ++held;
                            const auto holds = std::make_shared<Goodbye>([&held] { --held; });
                            handle.post([raw, holds] { raw->heard.push_back(1); });
                            ++sent;
                        }
                    });
                }
                const int end = QRandomGenerator::global()->bounded(60);
                while (sent < end) {
                    if (life % 2 == 0)
                        turnLoop();
                }
                if (life % 3 == 0)
                    receiver->answers.abandon(); // ends the senders as well
                receiver.reset();
                for (std::thread &sender : senders)
                    sender.join();
                turnLoop();
            }
            QCOMPARE(held.load(), 0);
        });
    }

    void anAnswerMayBeTheEndOfItsReceiver()
    {
        auto receiver = std::make_unique<Receiver>();
        const AnswerHandle handle = receiver->handle();
        int heard = 0;
        handle.post([&] {
            ++heard;
            receiver.reset();
        });
        handle.post([&] { ++heard; });
        turnLoop();
        QCOMPARE(heard, 1);
        QVERIFY(handle.isVoid());
        handle.post([&] { ++heard; });
        turnLoop();
        QCOMPARE(heard, 1);
    }

    void whatADroppedAnswerHoldsMayUseTheHandle()
    {
        Receiver receiver;
        const AnswerHandle handle = receiver.handle();
        const auto holds = [&handle] { return std::make_shared<Goodbye>([handle] { handle.post([] {}); }); };
        handle.post([held = holds()] {});
        receiver.answers.abandon(); // destroys it here
        handle.post([held = holds()] {});
        QVERIFY(handle.isVoid());
    }

    void abandonedAnswersAreNotHeardAndLaterOnesAre()
    {
        Receiver receiver;
        const auto hear = [&receiver](int value) { return [&receiver, value] { receiver.heard.push_back(value); }; };
        const AnswerHandle old = receiver.handle();
        old.post(hear(1));
        receiver.answers.abandon();
        old.post(hear(2));
        receiver.handle().post(hear(3));
        QVERIFY(receiver.heard.empty());
        receiver.answers.deliver(); // without the loop
        QCOMPARE(receiver.heard, std::vector<int>{3});
        turnLoop();
        QCOMPARE(receiver.heard, std::vector<int>{3});
        // One that comes from within an answer waits for the next turn, and so does not hold the loop for ever.
        receiver.handle().post([&, handle = receiver.handle()] { handle.post(hear(4)); });
        receiver.answers.deliver();
        QCOMPARE(receiver.heard.size(), std::size_t(1));
        turnLoop();
        QCOMPARE(receiver.heard, (std::vector<int>{3, 4}));
    }

    // --- work in order ---

    void workIsDoneInOrder()
    {
        std::vector<int> done;
        WorkQueue queue;
        for (int i = 0; i < 1000; ++i)
            queue.run([&done, i] { done.push_back(i); });
        QVERIFY(queue.finish(QDeadlineTimer(QDeadlineTimer::Forever)));
        QCOMPARE(done.size(), std::size_t(1000));
        QVERIFY(std::is_sorted(done.begin(), done.end()));
    }

    void finishTellsWhatIsStillDoneAndGoesOn()
    {
        WorkQueue queue;
        QVERIFY(queue.finish(QDeadlineTimer(0)));
        QSemaphore leave;
        bool isLastDone = false;
        bool isGone = false; // what the work holds goes before it counts as done
        queue.run([&leave] { leave.acquire(); });
        queue.run([&, held = std::make_shared<Goodbye>([&isGone] { isGone = true; })] { isLastDone = true; });
        QVERIFY(!queue.finish(QDeadlineTimer(5)));
        QVERIFY(!isLastDone);
        leave.release();
        QVERIFY(queue.finish(QDeadlineTimer(QDeadlineTimer::Forever)));
        QVERIFY(isLastDone && isGone);
    }

    void aQueueThatGoesDropsWhatHasNotBegun()
    {
        onThread([] {
            for (int round = 0; round < 200; ++round) {
                std::atomic<int> begun = 0;
                std::atomic<int> ended = 0;
                std::atomic<int> held = 20;
                {
                    WorkQueue queue(1 + round % 3);
                    for (int i = 0; i < 20; ++i) {
                        queue.run([&, gone = std::make_shared<Goodbye>([&held] { --held; })] {
                            ++begun;
                            std::this_thread::yield();
                            ++ended;
                        });
                    }
                    const int enough = round % 20;
                    while (begun < enough)
                        std::this_thread::yield();
                }
                QCOMPARE(ended.load(), begun.load());
                QCOMPARE(held.load(), 0);
            }
        });
    }

    void onlyAnIdleThreadTakesWorkAtOnce()
    {
        WorkQueue queue(2);
        QSemaphore begun;
        QSemaphore leave;
        const auto wait = [&] {
            begun.release();
            leave.acquire();
        };
        QVERIFY(queue.tryRun(wait));
        queue.run(wait);
        QVERIFY(!queue.tryRun(wait));
        begun.acquire(2);
        QVERIFY(!queue.tryRun(wait));
        leave.release(2);
        QVERIFY(queue.finish(QDeadlineTimer(QDeadlineTimer::Forever)));
        bool isTaken = false; // as soon as a thread is back
        QTRY_VERIFY(isTaken = isTaken || queue.tryRun([] {}));
    }

    // --- work that is given up ---

    void unjoinedWorkIsWaitedForUntilTheDeadline()
    {
        std::future<int> quick = startUnjoined([] { return 7; });
        QVERIFY(quick.valid());
        QCOMPARE(resultBy(QDeadlineTimer(QDeadlineTimer::Forever), quick), std::optional(7));

        const auto leave = std::make_shared<QSemaphore>();
        const auto gone = std::make_shared<QSemaphore>();
        std::future<int> slow = startUnjoined([leave, bye = std::make_shared<Goodbye>([gone] { gone->release(); })] {
            leave->acquire();
            return 8;
        });
        QVERIFY(!resultBy(QDeadlineTimer(5), slow));
        slow = {}; // nobody waits any more
        leave->release();
        QVERIFY(gone->tryAcquire(1, 10'000));
    }

    // --- frames ---

    void aFullQueueDropsTheFrameThatComes()
    {
        Frames queue(2, Frames::WhenFull::DropNewest);
        for (int i = 0; i < 5; ++i)
            QCOMPARE(queue.push(std::make_unique<int>(i)), i < 2 ? Frames::Pushed::Taken : Frames::Pushed::Dropped);
        QCOMPARE(queue.drops(), std::size_t(3));
        QCOMPARE(**queue.pop(), 0);
        QCOMPARE(queue.push(std::make_unique<int>(5)), Frames::Pushed::Taken);
        queue.close();
        QCOMPARE(queue.push(std::make_unique<int>(6)), Frames::Pushed::Ended);
        QCOMPARE(**queue.pop(), 1);
        QCOMPARE(**queue.pop(), 5);
        QVERIFY(!queue.pop());
        QCOMPARE(queue.drops(), std::size_t(3));
    }

    void everyFramePassesAQueueThatWaits()
    {
        onThread([] {
            constexpr int kFrames = 5000;
            Frames queue(3, Frames::WhenFull::Block);
            std::array<std::vector<int>, 2> taken;
            std::vector<std::thread> takers;
            for (std::vector<int> &own : taken) {
                takers.emplace_back([&queue, &own] {
                    while (auto frame = queue.pop())
                        own.push_back(**frame);
                });
            }
            for (int i = 0; i < kFrames; ++i)
                QCOMPARE(queue.push(std::make_unique<int>(i)), Frames::Pushed::Taken);
            queue.close();
            for (std::thread &taker : takers)
                taker.join();
            QVERIFY(std::is_sorted(taken[0].begin(), taken[0].end()));
            QVERIFY(std::is_sorted(taken[1].begin(), taken[1].end()));
            QCOMPARE(taken[0].size() + taken[1].size(), std::size_t(kFrames));
            QCOMPARE(queue.drops(), std::size_t(0));
        });
    }

    void stopWakesBothSides()
    {
        onThread([] {
            for (int round = 0; round < 300; ++round) {
                Frames full(1, Frames::WhenFull::Block);
                Frames empty(1, Frames::WhenFull::Block);
                QCOMPARE(full.push(std::make_unique<int>(0)), Frames::Pushed::Taken);
                std::atomic<int> refused = 0;
                std::atomic<int> nothing = 0;
                std::vector<std::thread> threads;
                for (int i = 0; i < 2; ++i) {
                    threads.emplace_back([&] { refused += full.push(nullptr) == Frames::Pushed::Ended; });
                    threads.emplace_back([&] { nothing += !empty.pop(); });
                }
                if (round % 2 == 0)
                    std::this_thread::yield();
                full.stop();
                empty.stop();
                for (std::thread &thread : threads)
                    thread.join();
                QCOMPARE(refused.load(), 2);
                QCOMPARE(nothing.load(), 2);
                QVERIFY(!full.pop()); // what was in it is dropped
                QCOMPARE(full.drops(), std::size_t(0));
            }
        });
    }

    // --- loops ---

    void everyCallIsMadeOnceWhereverItRuns()
    {
        onThread([] {
            std::vector<std::thread> callers; // several at once share the helpers
            std::atomic<int> wrong = 0;
            for (int caller = 0; caller < 3; ++caller) {
                callers.emplace_back([&wrong] {
                    for (const int count : {0, 1, 2, 1000}) {
                        std::vector<int> runs(static_cast<std::size_t>(count));
                        inParallel(count, [&runs](int i) {
                            std::array<int, 3> inner{}; // a call may itself be split
                            inParallel(3, [&inner](int j) { ++inner.at(static_cast<std::size_t>(j)); });
                            runs[static_cast<std::size_t>(i)] += inner[0] + inner[1] + inner[2];
                        });
                        wrong += std::any_of(runs.begin(), runs.end(), [](int times) { return times != 3; });
                    }
                });
            }
            for (std::thread &caller : callers)
                caller.join();
            QCOMPARE(wrong.load(), 0);
        });
    }

    void noMoreThreadsThanAskedFor()
    {
        std::atomic<int> now = 0;
        std::atomic<int> most = 0;
        inParallel(
            200,
            [&](int) {
                const int here = ++now;
                for (int seen = most; here > seen && !most.compare_exchange_weak(seen, here);) {
                }
                std::this_thread::yield();
                --now;
            },
            2);
        QVERIFY(most <= 2);
    }
};

} // namespace
} // namespace tavrel

TAVREL_TEST_MAIN(QCoreApplication, tavrel::TestThreads)

#include "test_threads.moc"
