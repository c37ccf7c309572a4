#include "overlay/long_preview_place.h"

#include <algorithm>
#include <cmath>

namespace tavrel::ui {
namespace {

constexpr double kWidest = 264;
constexpr double kNarrowest = 120;
constexpr double kLeastSpace = 132; ///< beside the selection
constexpr double kGap = 8;
constexpr double kLowest = 24;

QRectF onDevicePixels(const QRectF &rect, double ratio)
{
    const auto snapped = [ratio](double edge) { return std::round(edge * ratio) / ratio; };
    const double left = snapped(rect.left());
    const double top = snapped(rect.top());
    return {left, top, std::max(snapped(rect.right()) - left, 1 / ratio),
            std::max(snapped(rect.bottom()) - top, 1 / ratio)};
}

} // namespace

LongPreviewPlace placeLongPreview(const QRectF &selection, const QSizeF &page, const QSizeF &overlay, double ratio)
{
    const QSizeF shown = page.isEmpty() ? selection.size() : page;
    const double wanted = std::max(kNarrowest, std::min(kWidest, selection.width()));
    const double rightSpace = overlay.width() - (selection.right() + kGap);
    const double leftSpace = selection.left() - kGap;
    double width = 0;
    double x = 0;
    if (rightSpace >= kLeastSpace) {
        width = std::min({kWidest, rightSpace, wanted});
        x = selection.right() + kGap;
    } else if (leftSpace >= kLeastSpace) {
        width = std::min({kWidest, leftSpace, wanted});
        x = selection.left() - kGap - width;
    } else {
        width = std::min({kWidest, wanted, std::max(kNarrowest, selection.width() / 2)});
        x = selection.right() - kGap - width;
    }
    width = std::clamp(width, 1.0, std::max(1.0, overlay.width()));
    x = std::clamp(x, 0.0, std::max(0.0, overlay.width() - width));

    const double bottom = std::min(selection.bottom(), overlay.height());
    const double limit = std::max(1.0, bottom);
    const double height = std::min(limit, std::max(kLowest, width * shown.height() / std::max(1.0, shown.width())));
    const double scale = std::min(limit / std::max(1.0, shown.height()), width / std::max(1.0, shown.width()));
    const QSizeF drawn = shown * scale;
    return {QRectF(x, bottom - height, width, height),
            onDevicePixels({x + (width - drawn.width()) / 2, bottom - drawn.height(), drawn.width(), drawn.height()},
                           ratio)};
}

} // namespace tavrel::ui
