#include "diagnostics/capture_probe.h"

#include "platform/services.h"
#include "platform/unsupported/unsupported_services.h"

#include <QCoreApplication>
#include <QDir>
#include <QImage>

#include <algorithm>
#include <cstdio>
#include <optional>

namespace tavrel {
namespace {

using platform::CapturedDisplay;
using platform::CaptureResult;

struct Request
{
    QString folder;
    bool askForAccess = false;
    QString compareWith;
};

std::optional<Request> parse(QStringList values)
{
    Request request;
    request.askForAccess = values.removeAll(QStringLiteral("--request-permission")) > 0;
    if (const auto at = values.indexOf(QStringLiteral("--compare")); at >= 0) {
        if (at + 1 >= values.size())
            return {};
        request.compareWith = values.takeAt(at + 1);
        values.removeAt(at);
    }
    if (values.size() != 1 || values.first().startsWith(u'-'))
        return {};
    request.folder = values.first();
    return request;
}

CaptureResult grab(platform::IScreenCapturer &capturer)
{
    std::optional<CaptureResult> result;
    QObject context;
    capturer.capture({.includeCursor = false, .excludeOwnWindows = true, .excludeWindows = {}}, &context,
                     [&result](const CaptureResult &captured) { result = captured; });
    while (!result)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return *result;
}

/// Points that differ; all of them when the sizes do.
qint64 differingPoints(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return qint64(a.width()) * a.height();
    const QImage left = a.convertToFormat(QImage::Format_RGB32);
    const QImage right = b.convertToFormat(QImage::Format_RGB32);
    qint64 count = 0;
    for (int y = 0; y < left.height(); ++y) {
        const auto *l = reinterpret_cast<const QRgb *>(left.constScanLine(y));
        const auto *r = reinterpret_cast<const QRgb *>(right.constScanLine(y));
        for (int x = 0; x < left.width(); ++x)
            count += l[x] != r[x];
    }
    return count;
}

} // namespace

int runCaptureProbe(const QStringList &values)
{
    const auto request = parse(values);
    if (!request) {
        std::fprintf(stderr, "用法: tavrel --capture-probe <outDir> [--request-permission] [--compare <png>]\n");
        return 2;
    }
    const platform::Services services =
        platform::withSystemServices({.globalHotkey = platform::Unsupported::globalHotkey()}); // nothing to listen to
    platform::IScreenCapturer &capturer = *services.screenCapturer;
    if (request->askForAccess)
        capturer.requestCaptureAccess();
    std::printf("抓屏权限：%s\n", capturer.captureAccess() == platform::IScreenCapturer::Granted ? "已授予" : "未授予");
    const CaptureResult result = grab(capturer);
    std::printf("抓屏 %lld ms，%lld 个显示器\n", static_cast<long long>(result.elapsedMs),
                static_cast<long long>(result.displays.size()));
    if (!result.isGood()) {
        std::fprintf(stderr, "抓屏失败：%s\n", qPrintable(result.error));
        return 1;
    }
    if (!QDir().mkpath(request->folder)) {
        std::fprintf(stderr, "无法写入 %s\n", qPrintable(request->folder));
        return 1;
    }
    for (const CapturedDisplay &display : result.displays) {
        const QString path = QDir(request->folder).filePath(QStringLiteral("display-%1.png").arg(display.id));
        const QRect &rect = display.geometry;
        std::printf("%s %d,%d %d×%d @%g%s %s\n", qPrintable(display.name), rect.x(), rect.y(), rect.width(),
                    rect.height(), display.devicePixelRatio, display.primary ? "（主）" : "", qPrintable(path));
        if (!display.image.save(path)) {
            std::fprintf(stderr, "无法写入 %s\n", qPrintable(path));
            return 1;
        }
    }
    if (request->compareWith.isEmpty())
        return 0;
    const QImage truth(request->compareWith);
    if (truth.isNull()) {
        std::fprintf(stderr, "无法读取 %s\n", qPrintable(request->compareWith));
        return 1;
    }
    const auto primary = std::find_if(result.displays.cbegin(), result.displays.cend(),
                                      [](const CapturedDisplay &display) { return display.primary; });
    const qint64 differing =
        differingPoints(truth, primary == result.displays.cend() ? result.displays.first().image : primary->image);
    std::printf("与 %s 不同的点：%lld\n", qPrintable(request->compareWith), static_cast<long long>(differing));
    return differing == 0 ? 0 : 1;
}

} // namespace tavrel
