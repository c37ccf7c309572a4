#include "diagnostics/erase_tools.h"

#include "annotate/erase_region.h"
#include "annotate/shape_document.h"
#include "annotate/smart_erase_engine.h"
#include "annotate/smart_erase_shape.h"
#include "platform/services.h"
#include "platform/unsupported/unsupported_services.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPainter>

#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>

namespace tavrel {
namespace {

int fail(const QString &text)
{
    std::fprintf(stderr, "%s\n", qPrintable(text));
    return 1;
}

std::optional<QRect> boxFromText(const QString &text)
{
    const QStringList parts = text.split(u',');
    if (parts.size() != 4)
        return {};
    QList<int> numbers;
    for (const QString &part : parts) {
        bool isNumber = false;
        numbers.append(part.trimmed().toInt(&isNumber));
        if (!isNumber)
            return {};
    }
    const QRect box(numbers[0], numbers[1], numbers[2], numbers[3]);
    return box.isEmpty() ? std::nullopt : std::optional(box);
}

int eraseAndReport(const QImage &picture, const QRect &box, const QString &prefix)
{
    const QImage source = picture.convertToFormat(QImage::Format_RGB32);
    const int pad = erase::regionSizes(box.size()).windowPad;
    const QRect area = box.adjusted(-pad, -pad, pad, pad) & source.rect();
    if (!box.intersects(source.rect()))
        return fail(QStringLiteral("框在图像之外：图像 %1×%2").arg(source.width()).arg(source.height()));

    QElapsedTimer timer;
    timer.start();
    const erase::PixelBuffer window = erase::pixelsOf(source, area);
    erase::RegionMaskStats region;
    const erase::Mask mask = erase::buildRegionMask(window, box.translated(-area.topLeft()), &region, nullptr, nullptr);
    const qint64 maskMs = timer.restart();
    erase::SubjectStats subject;
    const erase::Mask subjectMask = erase::segmentSubject(window, box.translated(-area.topLeft()), &subject);
    const qint64 subjectMs = timer.restart();
    const erase::RegionResult result = erase::eraseRegion(source, {box, EraseSolver::Auto});
    const qint64 allMs = timer.elapsed();

    std::printf("框 %d,%d %d×%d，窗口 %d,%d %d×%d\n", box.x(), box.y(), box.width(), box.height(), area.x(), area.y(),
                area.width(), area.height());
    std::printf("背景预测：噪声 %.1f，阈值 %d，差异像素 %d，掩膜像素 %d%s，%lld 毫秒\n", region.noise, region.threshold,
                region.subjectPixels, region.maskPixels, region.fellBack ? "（退回整框）" : "",
                static_cast<long long>(maskMs));
    std::printf("主体分割：%s，占比 %.3f，轮数 %d，步长 %d，%lld 毫秒\n", subject.ok ? "成功" : "退回整框",
                subject.fraction, subject.iterations, subject.step, static_cast<long long>(subjectMs));
    std::printf("分支：%s，替换像素 %d，共 %lld 毫秒\n",
                result.info.path == erase::Path::Texture ? "主体分割 + 纹理填充" : "调和填充", result.info.maskPixels,
                static_cast<long long>(allMs));

    QImage erased = source;
    result.pasteInto(erased, erased.rect());
    const QList<QPair<QString, QImage>> files{{QStringLiteral("-before.png"), source.copy(area)},
                                              {QStringLiteral("-after.png"), erased.copy(area)},
                                              {QStringLiteral("-mask.png"), erase::toImage(mask)},
                                              {QStringLiteral("-subject.png"), erase::toImage(subjectMask)}};
    for (const auto &[suffix, image] : files) {
        if (!image.save(prefix + suffix))
            return fail(QStringLiteral("无法写入 %1").arg(prefix + suffix));
        std::printf("%s\n", qPrintable(prefix + suffix));
    }
    return 0;
}

/// Grabs the screens and hands on the first one; runs the event loop until that is done.
int withFreshGrab(const std::function<int(const QImage &)> &work)
{
    const platform::Services services =
        platform::withSystemServices({.globalHotkey = platform::Unsupported::globalHotkey()}); // nothing to listen to
    platform::IScreenCapturer *capturer = services.screenCapturer.get();
    capturer->capture({}, capturer, [&work](const platform::CaptureResult &result) {
        QCoreApplication::exit(result.isGood() ? work(result.displays.first().image)
                                               : fail(QStringLiteral("抓屏失败：%1").arg(result.error)));
    });
    return QCoreApplication::exec();
}

constexpr QSize kPage(420, 300);

struct Badge
{
    QRect box;
    QColor color;
};

const QList<Badge> &badges()
{
    static const QList<Badge> list{{{30, 40, 120, 70}, QColor(226, 60, 70)},
                                   {{250, 30, 140, 90}, QColor(40, 110, 220)},
                                   {{40, 180, 150, 90}, QColor(240, 170, 30)},
                                   {{260, 180, 130, 80}, QColor(90, 60, 200)}};
    return list;
}

/// A shaded half over a woven one, with a badge in each quarter.
QImage page()
{
    QImage image(kPage, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int weave = static_cast<int>(140 + 40 * std::sin(x * 0.7) + 35 * std::sin(y * 0.55));
            const QRgb shaded = qRgb(235 - x / 8, 240 - y / 4, 245);
            image.setPixel(x, y, y < 150 ? shaded : qRgb(weave, weave - 10, weave - 30));
        }
    }
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (const Badge &badge : badges()) {
        const QRect body = badge.box.adjusted(30, 18, -30, -18);
        painter.setBrush(badge.color);
        painter.drawRoundedRect(body, 12, 12);
        painter.fillRect(QRect(body.x() + 12, body.center().y() - 2, body.width() - 24, 4), Qt::white);
    }
    return image;
}

QImage erasedPage()
{
    QImage picture = page();
    SmartEraseEngine engine(picture);
    ShapeDocument document;
    for (const Badge &badge : badges()) {
        auto shape = std::make_shared<SmartEraseShape>();
        shape->setBox(badge.box);
        shape->pending = &badge == &badges().last();
        document.append(shape);
    }
    engine.solve(document.eraseRegions(engine.scale()));
    ShapeRenderContext context;
    context.eraseEngine = &engine;
    QPainter painter(&picture);
    document.paintShapes(painter, context);
    return picture;
}

} // namespace

int runEraseImage(const QStringList &values)
{
    const std::optional<QRect> box = boxFromText(values.value(1));
    if (values.size() < 2 || values.size() > 3 || !box) {
        std::fprintf(stderr, "用法: tavrel --erase-image <image | -> <x,y,w,h> [output prefix]\n");
        return 2;
    }
    const QString prefix = values.value(2, QStringLiteral("/tmp/erase-image"));
    const QString &path = values.first();
    if (path == u"-")
        return withFreshGrab([&](const QImage &image) { return eraseAndReport(image, *box, prefix); });
    const QImage image(path);
    return image.isNull() ? fail(QStringLiteral("无法读取 %1").arg(path)) : eraseAndReport(image, *box, prefix);
}

int renderSmartErasePreview(const QStringList &values)
{
    if (values.size() != 1) {
        std::fprintf(stderr, "用法: tavrel --render-smart-erase-preview <out.png>\n");
        return 2;
    }
    QImage both(2 * kPage.width() + 12, kPage.height(), QImage::Format_RGB32);
    both.fill(Qt::white);
    QPainter painter(&both);
    painter.drawImage(0, 0, page());
    painter.drawImage(kPage.width() + 12, 0, erasedPage());
    painter.end();
    if (!both.save(values.first()))
        return fail(QStringLiteral("无法写入 %1").arg(values.first()));
    std::printf("%s\n", qPrintable(values.first()));
    return 0;
}

} // namespace tavrel
