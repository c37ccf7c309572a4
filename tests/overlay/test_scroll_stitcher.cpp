#include "overlay/scroll_page.h"
#include "overlay/scroll_preview.h"
#include "overlay/scroll_stitcher.h"
#include "scroll_pages.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QRandomGenerator>

#include <array>
#include <cmath>

using namespace tavrel::ui;

namespace {

constexpr QSize kView(420, 440);
constexpr int kPageRows = 3000;

/// What a run over a scene came to. Rows are those of the page.
struct Tally
{
    int top = 0; ///< first and end row of the stitched page
    int end = 0;
    int wrong = 0; ///< rows that are neither the page's nor marked as holes
    int holes = 0;
    int refused = 0;
    int misplaced = 0; ///< frames that were accepted somewhere else
    int cut = 0;
};

Tally run(ScrollStitcher &stitcher, const ScrollScene &scene, const std::vector<int> &offsets)
{
    Tally tally;
    const int start = offsets.front();
    const QImage first = scene.frame(start, 0);
    if (!stitcher.begin(first, QRectF(first.rect())))
        return tally;
    for (std::size_t i = 1; i < offsets.size(); ++i) {
        const StitchDecision decision = stitcher.addFrame(scene.frame(offsets[i], static_cast<int>(i)));
        const bool isAccepted = decision.outcome == StitchOutcome::Accepted;
        tally.refused += isAccepted ? 0 : 1;
        tally.misplaced += isAccepted && decision.offset != offsets[i] - start ? 1 : 0;
        tally.cut += decision.rowsCut;
    }
    const ScrollPage &page = *stitcher.page();
    tally.top = page.top() + start;
    tally.end = page.end() + start;
    const QImage result = stitcher.result();
    for (int y = page.top(); y < page.end(); ++y) {
        if (page.row(y) == nullptr) {
            ++tally.holes;
            continue;
        }
        const auto *pixels = reinterpret_cast<const quint32 *>(result.constScanLine(y - page.top()));
        // A header is seen once, where the first frame had it; a footer, when the page never grew past it.
        const bool bar = (page.top() == 0 && y >= 0 && y < scene.header) ||
                         (page.end() == kView.height() && y >= kView.height() - scene.footer);
        const bool kept = bar && std::equal(pixels, pixels + kView.width(),
                                            reinterpret_cast<const quint32 *>(first.constScanLine(bar ? y : 0)));
        tally.wrong += kept || scene.shows(y + start, pixels) ? 0 : 1;
    }
    return tally;
}

} // namespace

class ScrollStitcherTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void corpus_data();
    void corpus();
    void refusesWhatCannotScroll_data();
    void refusesWhatCannotScroll();
    void framesThatChangeNothing();
    void scrollingBackCutsTheTail_data();
    void scrollingBackCutsTheTail();
    void jumpIsForgivenOnce();
    void rowsBetweenPixelRows_data();
    void rowsBetweenPixelRows();
    void stopsAtItsLimit();
    void previewFollowsThePage();
};

void ScrollStitcherTest::corpus_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("trace");
    QTest::addColumn<QString>("trait");
    QTest::addColumn<bool>("complete"); ///< every row that was ever in view is there

    const QStringList traces{QStringLiteral("steady"), QStringLiteral("slow"),   QStringLiteral("uneven"),
                             QStringLiteral("pauses"), QStringLiteral("upward"), QStringLiteral("back-and-forth"),
                             QStringLiteral("jump")};
    const QStringList pages{QStringLiteral("text"),  QStringLiteral("chat"),        QStringLiteral("sparse"),
                            QStringLiteral("table"), QStringLiteral("equal-table"), QStringLiteral("photos"),
                            QStringLiteral("plain")};
    const QStringList traits{QString(),
                             QStringLiteral("header"),
                             QStringLiteral("footer"),
                             QStringLiteral("plain-bars"),
                             QStringLiteral("edges"),
                             QStringLiteral("caret"),
                             QStringLiteral("animation")};
    const QStringList sure{QStringLiteral("text"), QStringLiteral("chat"), QStringLiteral("photos")};
    const QStringList gentle{QStringLiteral("steady"), QStringLiteral("slow"), QStringLiteral("pauses"),
                             QStringLiteral("upward")};
    for (const QString &page : pages) {
        for (const QString &trace : traces) {
            for (const QString &trait : traits) {
                if (!sure.contains(page) && (trait == QLatin1String("caret") || trait == QLatin1String("header")))
                    continue;
                const bool complete = sure.contains(page) && gentle.contains(trace);
                const QString name = page + QLatin1Char(' ') + trace + QLatin1Char(' ') + trait;
                QTest::newRow(qPrintable(name)) << page << trace << trait << complete;
            }
        }
    }
}

void ScrollStitcherTest::corpus()
{
    QFETCH(QString, page);
    QFETCH(QString, trace);
    QFETCH(QString, trait);
    QFETCH(bool, complete);

    ScrollScene scene;
    scene.view = kView;
    scene.page = drawScrollPage(page, {kView.width(), kPageRows}, 5);
    if (trait == QLatin1String("header"))
        scene.header = 60;
    else if (trait == QLatin1String("footer"))
        scene.footer = 52;
    else if (trait == QLatin1String("plain-bars"))
        scene.header = scene.footer = 48;
    else if (trait == QLatin1String("edges"))
        scene.header = scene.footer = 3;
    else if (trait == QLatin1String("caret"))
        scene.caret = QRect(200, trace == QLatin1String("upward") ? 2700 : 300, 2, 18);
    else if (trait == QLatin1String("animation"))
        scene.animation = QRect(230, trace == QLatin1String("upward") ? 2500 : 300, 170, 140);

    scene.hasPlainBars = trait == QLatin1String("plain-bars") || trait == QLatin1String("edges");
    std::vector<int> offsets = scrollTrace(trace, kPageRows, kView.height(), 3);
    offsets.insert(offsets.end(), 10, offsets.back()); // stays there for a moment, as hands do
    ScrollStitcher stitcher;
    const Tally tally = run(stitcher, scene, offsets);
    const auto [low, high] = std::minmax_element(offsets.begin(), offsets.end());
    const int seen = *high + kView.height() - *low;
    qInfo("%s: wrong rows %d of %d, holes %d, seen %d, frames refused %d of %zu, cut %d", QTest::currentDataTag(),
          tally.wrong, tally.end - tally.top, tally.holes, seen, tally.refused, offsets.size(), tally.cut);
    QCOMPARE(tally.wrong, 0);
    // Nothing tells where a page is that looks the same everywhere.
    if (page != QLatin1String("plain") && page != QLatin1String("equal-table"))
        QCOMPARE(tally.misplaced, 0);
    QVERIFY(tally.top >= *low && tally.end <= *high + kView.height());
    QCOMPARE(stitcher.filledRows(), tally.holes);
    QCOMPARE(stitcher.frameCount(), static_cast<int>(offsets.size()));
    if (complete) {
        QVERIFY(tally.holes <= scene.animation.height());
        const int hidden = trace == QLatin1String("upward") ? scene.header : scene.footer;
        QVERIFY2(tally.end - tally.top >= seen - hidden, "rows are missing");
    }
    if (page == QLatin1String("plain") && trait.isEmpty())
        QCOMPARE(tally.end - tally.top, kView.height());
}

void ScrollStitcherTest::refusesWhatCannotScroll_data()
{
    QTest::addColumn<QRectF>("selection");
    QTest::addColumn<double>("ratio");
    QTest::addColumn<bool>("begins");
    QTest::newRow("empty") << QRectF() << 1.0 << false;
    QTest::newRow("seven wide") << QRectF(0, 0, 7, 400) << 1.0 << false;
    QTest::newRow("eight wide") << QRectF(0, 0, 8, 400) << 1.0 << true;
    QTest::newRow("191 rows") << QRectF(0, 0, 400, 191) << 1.0 << false;
    QTest::newRow("192 rows") << QRectF(0, 0, 400, 192) << 1.0 << true;
    QTest::newRow("96 units at ratio 2") << QRectF(0, 0, 200, 96) << 2.0 << true;
    QTest::newRow("cut by the picture") << QRectF(0, 300, 400, 400) << 1.0 << false;
}

void ScrollStitcherTest::refusesWhatCannotScroll()
{
    QFETCH(QRectF, selection);
    QFETCH(double, ratio);
    QFETCH(bool, begins);
    QImage image = drawScrollPage(QStringLiteral("text"), kView, 5);
    image.setDevicePixelRatio(ratio);
    ScrollStitcher stitcher;
    QCOMPARE(stitcher.begin(image, selection), begins);
    QCOMPARE(stitcher.isActive(), begins);
    QCOMPARE(stitcher.result().isNull(), !begins);
    QCOMPARE(stitcher.addFrame(image).outcome == StitchOutcome::Ignored, !begins);
    if (begins)
        QCOMPARE(stitcher.result().devicePixelRatio(), ratio);
}

void ScrollStitcherTest::framesThatChangeNothing()
{
    const ScrollScene scene{.page = drawScrollPage(QStringLiteral("text"), {kView.width(), 1200}, 5), .view = kView};
    ScrollStitcher stitcher;
    const QImage first = scene.frame(100, 0);
    QVERIFY(stitcher.begin(first, QRectF(10, 20, 400, 400)));
    QCOMPARE(stitcher.addFrame(QImage()).outcome, StitchOutcome::Ignored);
    QCOMPARE(stitcher.addFrame(first.copy(0, 0, 420, 439)).outcome, StitchOutcome::Ignored);
    QCOMPARE(stitcher.frameCount(), 1);
    for (int i = 0; i < 3; ++i) {
        const StitchDecision same = stitcher.addFrame(first);
        QCOMPARE(same.outcome, StitchOutcome::Accepted);
        QCOMPARE(same.offset, 0);
        QCOMPARE(same.rowsAdded, 0);
    }
    // A picture of another format, with bytes to spare at the end of its rows, is the same frame.
    QCOMPARE(stitcher.addFrame(scene.frame(160, 0).convertToFormat(QImage::Format_RGB888)).rowsAdded, 60);
    QCOMPARE(stitcher.result(), scene.page.copy(10, 120, 400, 460));
    const QImage taken = stitcher.takeResult();
    QCOMPARE(taken, scene.page.copy(10, 120, 400, 460));
    QVERIFY(!stitcher.isActive());
    QCOMPARE(stitcher.frameCount(), 5);
}

void ScrollStitcherTest::scrollingBackCutsTheTail_data()
{
    QTest::addColumn<std::vector<int>>("offsets");
    QTest::addColumn<int>("end");
    const int view = kView.height();
    // Rows at the end that look as before are only the page's once it rests.
    const auto rests = [](const std::vector<int> &before, int at, const std::vector<int> &after) {
        std::vector<int> offsets = before;
        offsets.insert(offsets.end(), 10, at);
        offsets.insert(offsets.end(), after.begin(), after.end());
        return offsets;
    };
    QTest::newRow("one frame is no sign") << rests({0, 100, 200}, 300, {200}) << 300 + view;
    QTest::newRow("two are") << std::vector{0, 100, 200, 300, 200, 200} << 200 + view;
    QTest::newRow("forth again in between") << rests({0, 100, 200}, 300, {200, 300, 200}) << 300 + view;
    QTest::newRow("then anew") << std::vector{0, 100, 200, 300, 200, 200, 350} << 350 + view;
    QTest::newRow("jitter") << rests({0, 100}, 200, {197, 198, 197}) << 200 + view;
    QTest::newRow("rests beside its place") << rests({0, 100, 200}, 197, {}) << 200 + view - 11; // of no line
    QTest::newRow("above the start") << std::vector{300, 200, 100, 0, 0} << 300 + view;
}

void ScrollStitcherTest::scrollingBackCutsTheTail()
{
    QFETCH(std::vector<int>, offsets);
    QFETCH(int, end);
    const ScrollScene scene{.page = drawScrollPage(QStringLiteral("text"), {kView.width(), 1200}, 5), .view = kView};
    ScrollStitcher stitcher;
    const Tally tally = run(stitcher, scene, offsets);
    QCOMPARE(tally.end, end);
    QCOMPARE(tally.top, *std::min_element(offsets.begin(), offsets.end()));
    QCOMPARE(tally.wrong, 0);
    QCOMPARE(tally.holes, 0);
}

void ScrollStitcherTest::jumpIsForgivenOnce()
{
    const QImage page = drawScrollPage(QStringLiteral("text"), {kView.width(), 1200}, 5);
    const QRect caret(200, 200, 2, 150);
    struct Case
    {
        QRect caret;
        std::vector<int> offsets;
        StitchOutcome outcome;
    };
    // After a step of 20 rows, 96 more or less are believed; any number is where hardly a row says otherwise.
    const QList<Case> cases{{caret, {20, 136}, StitchOutcome::Accepted},
                            {caret, {20, 137}, StitchOutcome::Jumped},
                            {caret, {20, 137, 137}, StitchOutcome::Accepted},
                            {{}, {20, 137, 437}, StitchOutcome::Accepted},
                            {{}, {20, 437}, StitchOutcome::NoMatch}};
    for (const auto &[blinking, offsets, outcome] : cases) {
        const ScrollScene scene{.page = page, .view = kView, .caret = blinking};
        ScrollStitcher stitcher;
        QVERIFY(stitcher.begin(scene.frame(0, 0), QRectF(QPoint(), kView)));
        StitchDecision last;
        for (const int offset : offsets)
            last = stitcher.addFrame(scene.frame(offset, 1));
        QCOMPARE(last.outcome, outcome);
        const bool isAccepted = outcome == StitchOutcome::Accepted;
        QCOMPARE(stitcher.height(), kView.height() + (isAccepted ? offsets.back() : 20));
        if (outcome != StitchOutcome::NoMatch)
            QCOMPARE(last.offset, offsets.back());
    }
}

void ScrollStitcherTest::rowsBetweenPixelRows_data()
{
    QTest::addColumn<double>("shift");
    QTest::newRow("none") << 0.0;
    QTest::newRow("quarter") << 0.25;
    QTest::newRow("half") << 0.5;
    QTest::newRow("back by a quarter") << -0.25;
}

void ScrollStitcherTest::rowsBetweenPixelRows()
{
    QFETCH(double, shift);
    // A page four times as fine as the screen; frames after the first show it `shift` rows lower.
    constexpr int kFine = 4;
    QRandomGenerator random(8);
    constexpr std::size_t kKnot = 24;
    std::vector<std::array<int, 400>> fine(400 * kFine);
    for (std::size_t y = 0; y < fine.size(); y += kKnot) {
        for (int &value : fine[y])
            value = random.bounded(256);
    }
    for (std::size_t y = 0; y + kKnot < fine.size(); ++y) {
        const std::size_t knot = y / kKnot * kKnot;
        const auto t = static_cast<int>(y - knot);
        for (std::size_t x = 0; x < 400 && t != 0; ++x)
            fine[y][x] =
                (fine[knot][x] * (static_cast<int>(kKnot) - t) + fine[knot + kKnot][x] * t) / static_cast<int>(kKnot);
    }
    const auto frame = [&](double offset) {
        QImage image(400, 300, QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < image.height(); ++y) {
            const auto first = static_cast<std::size_t>(std::lround((y + offset) * kFine));
            for (int x = 0; x < image.width(); ++x) {
                int sum = 0;
                for (std::size_t i = 0; i < kFine; ++i)
                    sum += fine[first + i][static_cast<std::size_t>(x)];
                image.setPixel(x, y, qRgb(sum / kFine, sum / kFine, sum / kFine));
            }
        }
        return image;
    };
    ScrollStitcher stitcher;
    QVERIFY(stitcher.begin(frame(0), QRectF(0, 0, 400, 300)));
    const QImage second = frame(40 - shift);
    const StitchDecision decision = stitcher.addFrame(second);
    QCOMPARE(decision.outcome, StitchOutcome::Accepted);
    QCOMPARE(decision.offset, 40);
    // The estimate is careful rather than exact; it may not go the wrong way or too far.
    const double estimate = shift < 0 ? -decision.subPixel : decision.subPixel;
    QVERIFY2(estimate >= 0 && estimate <= std::abs(shift) + 0.15, qPrintable(QString::number(decision.subPixel)));
    QVERIFY(shift == 0 || estimate > 0);
    // The new rows lie nearer to the page for it.
    const QImage result = stitcher.result();
    const QImage truth = frame(40);
    QCOMPARE(result.height(), 340);
    qint64 error = 0;
    qint64 copied = 0;
    for (int y = 262; y < 298; ++y) {
        for (int x = 0; x < 400; ++x) {
            error += std::abs(qRed(result.pixel(x, y + 40)) - qRed(truth.pixel(x, y)));
            copied += std::abs(qRed(second.pixel(x, y)) - qRed(truth.pixel(x, y)));
        }
    }
    QVERIFY2(shift == 0 ? error == 0 : error < copied, qPrintable(QStringLiteral("%1 of %2").arg(error).arg(copied)));
}

void ScrollStitcherTest::stopsAtItsLimit()
{
    const int view = 6000;
    const QImage page = drawScrollPage(QStringLiteral("text"), {200, ScrollStitcher::kMaxRows + 3 * view}, 5);
    ScrollStitcher stitcher;
    QVERIFY(stitcher.begin(page.copy(0, 0, 200, view), QRectF(0, 0, 200, view)));
    for (int at = 5000; !stitcher.isFull() && at + view <= page.height(); at += 5000)
        stitcher.addFrame(page.copy(0, at, 200, view));
    QVERIFY(stitcher.isFull());
    QVERIFY(stitcher.height() <= ScrollStitcher::kMaxRows);
    QVERIFY(stitcher.height() > ScrollStitcher::kMaxRows - 5000);
    QCOMPARE(stitcher.result(), page.copy(0, 0, 200, stitcher.height()));
}

void ScrollStitcherTest::previewFollowsThePage()
{
    const ScrollScene scene{.page = drawScrollPage(QStringLiteral("photos"), {kView.width(), kPageRows}, 5),
                            .view = kView};
    ScrollStitcher stitcher;
    QVERIFY(stitcher.begin(scene.frame(600, 0), QRectF(QPoint(), kView)));
    ScrollPreview stepwise(QSize(160, 200));
    stepwise.update(*stitcher.page());
    for (const int at : {500, 400, 300, 200, 100, 0, 120, 240, 360, 480, 600, 720, 840, 960, 1080, 1200, 1100, 1100}) {
        stitcher.addFrame(scene.frame(at, 0));
        stepwise.update(*stitcher.page());
    }
    const QImage small = stepwise.image();
    const int cell = stepwise.cell();
    QVERIFY(small.height() <= 401);
    QCOMPARE(small.height(), (1100 + kView.height() + cell - 1) / cell);
    // Held against the finished page: means of squares, as far as halving keeps them.
    const QImage result = stitcher.result();
    for (int y = 1; y + 1 < small.height(); ++y) {
        for (int x = 0; x + 1 < small.width(); ++x) {
            int sum = 0;
            // Cells begin at multiples of their size from the first frame's top, 600 rows below the page's.
            const int first = y * cell - ((cell - 600 % cell) % cell);
            for (int i = 0; i < cell * cell; ++i)
                sum += qGreen(result.pixel(x * cell + i % cell, first + i / cell));
            QVERIFY(std::abs(qGreen(small.pixel(x, y)) - sum / (cell * cell)) <= 3);
        }
    }
}

TAVREL_TEST_MAIN(QGuiApplication, ScrollStitcherTest)
#include "test_scroll_stitcher.moc"
