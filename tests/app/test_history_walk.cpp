#include "app/history_keeper.h"
#include "app/history_walk.h"
#include "support/test_main.h"

using namespace tavrel;

namespace {

/// Records with the widths 100, 101, ... in place of pictures; one of them can be missing.
class Shelf final : public IHistoryKeeper
{
public:
    explicit Shelf(int count, int missing = -1) : m_count(count), m_missing(missing) {}

    QString add(const OverlaySnapshot &, const QString &, const QImage &, const FilenameContext &) override
    {
        return {};
    }
    void setSavedPath(const QString &, const QString &) override {}
    int count() const override { return m_count; }
    std::optional<OverlaySnapshot> load(int index) const override
    {
        if (index == m_missing)
            return {};
        OverlaySnapshot snapshot;
        snapshot.image = QImage(100 + index, 10, QImage::Format_ARGB32_Premultiplied);
        return snapshot;
    }
    bool flush(int) override { return true; }

private:
    int m_count;
    int m_missing;
};

OverlaySnapshot liveSnapshot()
{
    OverlaySnapshot snapshot;
    snapshot.image = QImage(7, 7, QImage::Format_ARGB32_Premultiplied);
    return snapshot;
}

} // namespace

class HistoryWalkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void walksToOlderAndBackToTheLiveCapture()
    {
        const Shelf shelf(3);
        HistoryWalk walk(shelf);
        const QObject overlay;
        const auto width = [&](int delta) { return walk.step(&overlay, delta, liveSnapshot).snapshot.image.width(); };

        QCOMPARE(walk.step(&overlay, 1, liveSnapshot).outcome, HistoryWalk::Step::Outcome::Stay);
        QCOMPARE(width(-1), 100);
        QCOMPARE(width(-1), 101);
        QCOMPARE(width(-1), 102);
        QCOMPARE(walk.step(&overlay, -1, liveSnapshot).outcome, HistoryWalk::Step::Outcome::Stay);
        QCOMPARE(width(1), 101);
        QCOMPARE(width(1), 100);
        QCOMPARE(width(1), 7);
        QCOMPARE(walk.index(), -1);
    }

    void theLiveCaptureIsReadOnlyOnce()
    {
        const Shelf shelf(1);
        HistoryWalk walk(shelf);
        const QObject overlay;
        int reads = 0;
        const auto live = [&reads] {
            ++reads;
            return liveSnapshot();
        };
        for (int i = 0; i < 3; ++i) {
            (void)walk.step(&overlay, -1, live);
            (void)walk.step(&overlay, 1, live);
        }
        QCOMPARE(reads, 1);
    }

    void aMissingImageKeepsThePlace()
    {
        const Shelf shelf(3, 1);
        HistoryWalk walk(shelf);
        const QObject overlay;
        (void)walk.step(&overlay, -1, liveSnapshot);
        QCOMPARE(walk.step(&overlay, -1, liveSnapshot).outcome, HistoryWalk::Step::Outcome::ImageMissing);
        QCOMPARE(walk.index(), 0);
    }

    void anotherOverlayCannotTakeTheWalkOver()
    {
        const Shelf shelf(3);
        HistoryWalk walk(shelf);
        const QObject first;
        const QObject second;
        (void)walk.step(&first, -1, liveSnapshot);
        QCOMPARE(walk.step(&second, -1, liveSnapshot).outcome, HistoryWalk::Step::Outcome::Stay);
        walk.reset();
        QCOMPARE(walk.step(&second, -1, liveSnapshot).outcome, HistoryWalk::Step::Outcome::Show);
    }
};

TAVREL_TEST_MAIN(QGuiApplication, HistoryWalkTest)
#include "test_history_walk.moc"
