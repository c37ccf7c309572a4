#pragma once

#include "capture/history_keeper.h"

#include <QTest>

#include <memory>

namespace tavrel {

/// What every history has to do, whatever it writes to.
class HistoryContract : public QObject
{
    Q_OBJECT

protected:
    virtual std::unique_ptr<IHistoryKeeper> makeHistory() = 0;

    /// A picture of its own width stands for each record.
    static HistoryEntry entry(int width, const QString &source = QStringLiteral("copy"))
    {
        HistoryEntry made;
        made.snapshot.image = QImage(width, 10, QImage::Format_ARGB32_Premultiplied);
        made.snapshot.image.fill(Qt::white);
        made.snapshot.selection = QRectF(1, 2, 3, 4);
        made.snapshot.shapesJson = QStringLiteral("[]");
        made.source = source;
        made.rendered = made.snapshot.image.copy(1, 2, 3, 4);
        return made;
    }

    /// The width of a record's picture; -1 when it is missing.
    static int loadedWidth(IHistoryKeeper &history, const QString &uuid)
    {
        QObject context;
        int width = -2;
        history.load(uuid, &context, [&width](const std::optional<OverlaySnapshot> &snapshot) {
            width = snapshot ? snapshot->image.width() : -1;
        });
        const bool answeredWithin = width != -2;
        (void)QTest::qWaitFor([&width] { return width != -2; });
        return answeredWithin ? -3 : width;
    }

private Q_SLOTS:
    void theNewestComesFirstAndIsThereAtOnce()
    {
        const auto history = makeHistory();
        QVERIFY(history->records().isEmpty());
        const QString first = history->add(entry(11));
        const QString second = history->add(entry(12));
        QVERIFY(!first.isEmpty() && first != second);
        QCOMPARE(history->records(), (QStringList{second, first}));
        QCOMPARE(loadedWidth(*history, second), 12);
        QCOMPARE(loadedWidth(*history, first), 11);
        QVERIFY(history->finish(QDeadlineTimer(5000)));
    }

    void anUpdateKeepsThePlace()
    {
        const auto history = makeHistory();
        const QString first = history->add(entry(11));
        const QString second = history->add(entry(12));
        QCOMPARE(history->update(first, entry(21, QStringLiteral("save"))), first);
        QCOMPARE(history->records(), (QStringList{second, first}));
        QCOMPARE(loadedWidth(*history, first), 21);
        // Nothing is lost with a record that is gone.
        const QString other = history->update(QStringLiteral("nobody"), entry(31));
        QCOMPARE(history->records().first(), other);
        QCOMPARE(loadedWidth(*history, other), 31);
        history->setSavedPath(QStringLiteral("nobody"), QStringLiteral("/a.png"));
        QVERIFY(history->finish(QDeadlineTimer(5000)));
    }

    void anAnswerNeedsSomebodyToHearIt()
    {
        const auto history = makeHistory();
        const QString uuid = history->add(entry(11));
        bool isHeard = false;
        auto context = std::make_unique<QObject>();
        history->load(uuid, context.get(), [&isHeard](const auto &) { isHeard = true; });
        context.reset();
        QCOMPARE(loadedWidth(*history, uuid), 11); // comes after the other one would have
        QVERIFY(!isHeard);
        QCOMPARE(loadedWidth(*history, QStringLiteral("nobody")), -1);
    }
};

} // namespace tavrel
