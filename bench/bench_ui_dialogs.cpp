// From the call to the first pixels of a dialog in the backing store, over a window of 1920 x 1080. Budget: 50 ms.
#include "ui/dialog_hosts.h"
#include "ui/dialogs.h"
#include "ui/theme_source.h"
#include "ui/window_chrome.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPainter>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <functional>

using namespace tavrel::ui;

namespace {

/// A window with something to repaint below the sheet.
class Host final : public QWidget
{
public:
    Host()
    {
        static const ThemeSource themes(QStringLiteral("light"));
        WindowChrome::install(this, themes, 52);
        resize(1920, 1080);
        show();
        QCoreApplication::processEvents();
    }

protected:
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), QColor(90, 120, 160)); }
};

/// Sees a card being painted; what comes after that in the same turn of the event loop counts, too.
class PaintWatch final : public QObject
{
public:
    bool painted = false;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        painted = painted || (event->type() == QEvent::Paint && qobject_cast<dialogs::DialogCard *>(watched));
        return false;
    }
};

dialogs::DialogCard *shownCard()
{
    for (QWidget *top : QApplication::topLevelWidgets()) {
        for (auto *card : top->findChildren<dialogs::DialogCard *>()) {
            if (card->isVisible())
                return card;
        }
    }
    return nullptr;
}

void measure(benchmark::State &state, const std::function<void()> &open)
{
    double worst = 0;
    for (auto _ : state) {
        PaintWatch watch;
        qApp->installEventFilter(&watch);
        QElapsedTimer timer;
        timer.start();
        open();
        while (!watch.painted)
            QCoreApplication::processEvents();
        const double seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
        state.SetIterationTime(seconds);
        worst = std::max(worst, seconds);
        qApp->removeEventFilter(&watch);
        if (dialogs::DialogCard *card = shownCard())
            card->dismiss();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }
    state.counters["worst_ms"] = worst * 1e3;
}

void sheet(benchmark::State &state)
{
    Host host;
    measure(state, [&] {
        dialogs::confirm(&host, dialogs::Icon::Question, QStringLiteral("Delete this capture?"),
                         QStringLiteral("It leaves the history for good."), {}, {}, nullptr);
    });
}

void longText(benchmark::State &state)
{
    Host host;
    const QString text = QStringLiteral("The file could not be written, because the folder is gone. ").repeated(170);
    measure(state, [&] { dialogs::message(&host, dialogs::Icon::Error, QStringLiteral("Saving failed"), text, {}); });
}

void question(benchmark::State &state)
{
    Host host;
    measure(state, [&] { dialogs::askText(&host, QStringLiteral("Rename"), {}, QStringLiteral("capture"), {}); });
}

void color(benchmark::State &state)
{
    Host host;
    measure(state, [&] { dialogs::pickColor(&host, Qt::red, {}); });
}

void floating(benchmark::State &state)
{
    measure(state, [&] {
        dialogs::message(nullptr, dialogs::Icon::Information, QStringLiteral("Done"), QStringLiteral("Saved."), {});
    });
}

} // namespace

BENCHMARK(sheet)->Name("confirm_over_1920x1080")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(longText)->Name("message_of_10000_letters")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(question)->Name("ask_text_over_1920x1080")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(color)->Name("pick_color_over_1920x1080")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(floating)->Name("floating_message")->UseManualTime()->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
