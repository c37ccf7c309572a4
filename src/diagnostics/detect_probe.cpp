#include "diagnostics/detect_probe.h"

#include "base/answer.h"
#include "base/work_queue.h"
#include "overlay/edge_region_finder.h"
#include "overlay/hover_candidates.h"
#include "platform/services.h"
#include "platform/unsupported/unsupported_services.h"

#include <QCoreApplication>
#include <QPainter>

#include <algorithm>
#include <cstdio>

namespace tavrel {
namespace {

using platform::CapturedDisplay;
using platform::WindowInfo;

struct Scene
{
    CapturedDisplay display;
    QList<WindowInfo> windows;
    QPointF pointer; ///< global
};

/// Slow: asks the application under the pointer.
ui::HoverSources sourcesOf(const Scene &scene, platform::IElementDetector &detector)
{
    const QPointF origin = scene.display.geometry.topLeft();
    ui::HoverSources sources;
    sources.screen = QRectF({0, 0}, QSizeF(scene.display.geometry.size()));
    sources.image = ui::EdgeRegionFinder(scene.display.image).candidatesAt(scene.pointer - origin);
    if (const WindowInfo *window = ui::windowAt(scene.windows, scene.pointer)) {
        sources.window = window->geometry.translated(-origin);
        if (detector.isAvailable())
            sources.elements = detector.elementChain(scene.pointer, window->processId);
        for (QRectF &element : sources.elements)
            element.translate(-origin);
    }
    return sources;
}

QImage drawn(const Scene &scene, const ui::HoverSources &sources, const QList<QRectF> &candidates)
{
    QImage image = scene.display.image;
    QPainter painter(&image);
    const auto outline = [&painter](const QRectF &rect, const QColor &color, double width) {
        painter.setPen(QPen(color, width));
        painter.drawRect(rect.adjusted(width / 2, width / 2, -width / 2, -width / 2));
    };
    for (const WindowInfo &window : scene.windows)
        outline(window.geometry.translated(-scene.display.geometry.topLeft()), QColor(0, 110, 255), 1);
    for (const QRectF &box : sources.image)
        outline(box, QColor(0, 170, 60), 2);
    for (const QRectF &element : sources.elements)
        outline(element, QColor(255, 140, 0), 2);
    if (!candidates.isEmpty())
        outline(candidates.first(), QColor(230, 0, 40), 3);
    const QPointF pointer = scene.pointer - scene.display.geometry.topLeft();
    painter.setPen(QPen(QColor(230, 0, 40), 1));
    painter.drawLine(pointer - QPointF(8, 0), pointer + QPointF(8, 0));
    painter.drawLine(pointer - QPointF(0, 8), pointer + QPointF(0, 8));
    return image;
}

int report(const Scene &scene, const ui::HoverSources &sources, const QString &path)
{
    const QList<QRectF> candidates = ui::mergedCandidates(sources);
    std::printf("指针 %g,%g：图像 %lld，元素 %lld，窗口 %d\n", scene.pointer.x(), scene.pointer.y(),
                static_cast<long long>(sources.image.size()), static_cast<long long>(sources.elements.size()),
                sources.window.has_value());
    for (const QRectF &rect : candidates)
        std::printf("%g,%g %g×%g\n", rect.x(), rect.y(), rect.width(), rect.height());
    if (!drawn(scene, sources, candidates).save(path)) {
        std::fprintf(stderr, "无法写入 %s\n", qPrintable(path));
        return 1;
    }
    std::printf("%s\n", qPrintable(path));
    return 0;
}

} // namespace

int runDetectProbe(const QString &path)
{
    const platform::Services services =
        platform::withSystemServices({.globalHotkey = platform::Unsupported::globalHotkey()}); // nothing to listen to
    Scene scene;
    scene.pointer = services.cursorPosition();
    scene.windows = services.elementDetector->topLevelWindows();

    QObject context;
    const Answers answers;
    WorkQueue looking;
    services.screenCapturer->capture({}, &context, [&](const platform::CaptureResult &result) {
        if (!result.isGood()) {
            std::fprintf(stderr, "抓屏失败：%s\n", qPrintable(result.error));
            QCoreApplication::exit(1);
            return;
        }
        const auto under =
            std::find_if(result.displays.begin(), result.displays.end(), [&scene](const CapturedDisplay &display) {
                return display.geometry.contains(scene.pointer.toPoint());
            });
        scene.display = under == result.displays.end() ? result.displays.first() : *under;
        looking.run([scene, path, detector = services.elementDetector, answer = answers.handle()] {
            const ui::HoverSources sources = sourcesOf(scene, *detector);
            answer.post([scene, sources, path] { QCoreApplication::exit(report(scene, sources, path)); });
        });
    });
    return QCoreApplication::exec();
}

} // namespace tavrel
