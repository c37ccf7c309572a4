#include "diagnostics/window_chrome_probe.h"

#include "ui/theme_source.h"
#include "ui/window_border.h"
#include "ui/window_buttons.h"
#include "ui/window_chrome.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include <cstdio>
#include <functional>

namespace tavrel {
namespace {

constexpr int kPatienceMs = 2000;
constexpr int kTitleBar = 52;

/// Runs the event loop until `done`; false when patience ends.
bool waitFor(const std::function<bool()> &done)
{
    QElapsedTimer timer;
    timer.start();
    QTimer pulse; // an event loop without events would wait for ever
    pulse.start(20);
    while (!done() && timer.elapsed() < kPatienceMs)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, kPatienceMs);
    return done();
}

QString text(const QRect &rect)
{
    return QStringLiteral("%1,%2 %3×%4").arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
}

void print(const char *state, const QWidget &window, const ui::WindowChrome &chrome)
{
    const QMargins margins = window.windowHandle()->frameMargins();
    const QRect buttons(chrome.buttons()->mapTo(&window, QPoint(0, 0)), chrome.buttons()->size());
    std::printf("%s：几何 %s，外框 %s，边距 %d,%d,%d,%d，描边 %s，按钮 %s\n", state,
                qPrintable(text(window.geometry())), qPrintable(text(window.frameGeometry())), margins.left(),
                margins.top(), margins.right(), margins.bottom(), chrome.border()->isVisible() ? "显示" : "隐藏",
                qPrintable(text(buttons)));
}

} // namespace

int runWindowChromeProbe(const QStringList &values)
{
    if (!values.isEmpty()) {
        std::fprintf(stderr, "用法: tavrel --window-chrome-probe\n");
        return 2;
    }
    QWidget window;
    window.setObjectName(QStringLiteral("studioWindow"));
    window.setWindowTitle(QStringLiteral("Tavrel"));
    window.setMinimumSize(320, 240);
    window.resize(640, 420);
    const ui::ThemeSource themes;
    const ui::WindowChrome &chrome = *ui::WindowChrome::install(&window, themes, kTitleBar);
    window.show();
    bool all = waitFor([&] { return window.windowHandle()->isExposed(); });
    print("普通", window, chrome);
    const QSize normal = window.size();
    window.showMaximized();
    all = waitFor([&] { return window.isMaximized() && window.size() != normal; }) && all;
    print("最大化", window, chrome);
    window.showNormal();
    all = waitFor([&] { return !window.isMaximized() && window.size() == normal; }) && all;
    print("还原", window, chrome);
    if (!all)
        std::fprintf(stderr, "窗口系统没有在 %d 毫秒内完成全部步骤\n", kPatienceMs);
    return all ? 0 : 1;
}

} // namespace tavrel
