#include "annotate/erase_region.h"

#include "annotate/erase_harmonic.h"
#include "annotate/erase_patch_fill.h"

#include <algorithm>

namespace tavrel::erase {
namespace {

constexpr double kTextureNoise = 8.0;
constexpr int kSweeps = 8;
constexpr int kTraceDifference = 10;
constexpr int kLeastPad = 24;
constexpr int kMostPad = 160;
constexpr int kLeastSubjectGrowth = 4;

/// Part of the source around a box.
struct Window
{
    QRect area; ///< in the source
    QRect box;  ///< relative to `area`
    PixelBuffer pixels;

    Window(const QImage &source, const QRect &rect, int pad)
        : area(rect.adjusted(-pad, -pad, pad, pad) & source.rect()),
          box(rect.translated(-area.topLeft())),
          pixels(pixelsOf(source, area))
    {}
};

void takeOver(RegionResult &result, const Window &window, const PixelBuffer &filled, Mask mask)
{
    mask.keepOnly(window.box);
    result.window = window.area;
    result.info.maskPixels = mask.count();
    const QRect used = mask.bounds();
    if (used.isEmpty())
        return;
    result.position = window.area.topLeft() + used.topLeft();
    result.patch = QImage(used.size(), QImage::Format_ARGB32);
    for (int y = 0; y < used.height(); ++y) {
        auto *to = reinterpret_cast<QRgb *>(result.patch.scanLine(y));
        for (int x = 0; x < used.width(); ++x) {
            const Rgb color = filled.at(used.x() + x, used.y() + y);
            to[x] = mask.has(used.x() + x, used.y() + y) ? qRgb(color.r, color.g, color.b) : 0;
        }
    }
}

/// Marks what of the box differs from a smooth surface through its surroundings: faint traces of the object.
void addTraces(Mask &mask, const Window &window, const PixelBuffer &cleaned, int margin, const CancelFlag &cancel)
{
    PixelBuffer surface = cleaned;
    Mask around(mask.width, mask.height);
    around.fill(window.box.adjusted(-margin, -margin, margin, margin));
    harmonicFill(surface, around, kSweeps, cancel);
    const QRect box = window.box & mask.rect();
    for (int y = box.top(); y <= box.bottom(); ++y) {
        for (int x = box.left(); x <= box.right(); ++x) {
            if (distance(window.pixels.at(x, y), surface.at(x, y)) > kTraceDifference)
                mask.bytes[mask.index(x, y)] = 255;
        }
    }
}

void fillTexture(RegionResult &result, const QImage &source, const EraseSpec &spec, const CancelFlag &cancel)
{
    const QRect &rect = spec.first;
    result.info.path = Path::Texture;
    Window window(source, rect, std::clamp(std::max(rect.width(), rect.height()) / 2, kLeastPad, kMostPad));
    Mask mask(window.pixels.width, window.pixels.height);
    if (spec.second == EraseSolver::WholeBox) {
        mask.fill(window.box);
    } else {
        mask = segmentSubject(window.pixels, window.box, &result.info.subject, cancel);
        if (result.info.subject.ok)
            dilate(mask, std::max(2 * result.info.subject.step, kLeastSubjectGrowth));
    }
    mask.keepOnly(window.box);
    patchFill(window.pixels, mask, cancel);
    takeOver(result, window, window.pixels, std::move(mask));
}

} // namespace

void RegionResult::pasteInto(QImage &target, const QRect &clip) const
{
    const QRect part = QRect(position, patch.size()) & clip & target.rect();
    for (int y = part.top(); y <= part.bottom(); ++y) {
        const auto *from = reinterpret_cast<const QRgb *>(patch.constScanLine(y - position.y()));
        auto *to = reinterpret_cast<QRgb *>(target.scanLine(y));
        for (int x = part.left(); x <= part.right(); ++x) {
            if (const QRgb color = from[x - position.x()]; qAlpha(color) != 0)
                to[x] = color;
        }
    }
}

RegionResult eraseRegion(const QImage &source, const EraseSpec &spec, const CancelFlag &cancel)
{
    RegionResult result;
    const auto &[rect, solver] = spec;
    if (rect.isEmpty() || !rect.intersects(source.rect()))
        return result;
    const RegionSizes sizes = regionSizes(rect.size());
    const Window window(source, rect, sizes.windowPad);
    PixelBuffer cleaned;
    Mask mask = buildRegionMask(window.pixels, window.box, &result.info.region, &cleaned, nullptr);
    if (cancel.isSet())
        return result;
    const bool isNoisy = result.info.region.noise >= kTextureNoise;
    const bool isWhole = solver == EraseSolver::WholeBox;
    if (solver == EraseSolver::Texture || (isNoisy && (solver == EraseSolver::Auto || isWhole))) {
        fillTexture(result, source, spec, cancel);
        return result;
    }
    result.info.path = Path::Smooth;
    if (isWhole) {
        mask = Mask(mask.width, mask.height);
        mask.fill(window.box.adjusted(-sizes.margin, -sizes.margin, sizes.margin, sizes.margin));
        result.info.region.fellBack = true;
    } else if (!result.info.region.fellBack && !isNoisy) {
        addTraces(mask, window, cleaned, sizes.margin, cancel);
    }
    harmonicFill(cleaned, mask, kSweeps, cancel);
    takeOver(result, window, cleaned, std::move(mask));
    return result;
}

} // namespace tavrel::erase
