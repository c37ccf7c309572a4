#include "overlay/magnifier.h"

#include "overlay/overlay_picture.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tavrel::ui {
namespace {

constexpr double kSide = 150;
constexpr double kPanelHeight = 64;
constexpr double kDistance = 20;
constexpr int kCells = 15; ///< pixels shown in each direction, the pointer's in the middle
constexpr double kCell = kSide / kCells;
constexpr double kPanelGap = 4;
constexpr double kLeft = 14; ///< what the panel holds lies between these
constexpr double kRight = 136;
constexpr QRectF kSwatch(kLeft, 10, 16, 16);

const QRectF kLensBox(0, 0, kSide, kSide);
const QRectF kCircle = kLensBox.adjusted(3, 3, -3, -3);

/// An empty picture of `size` units that is painted in units.
QImage canvas(const QSizeF &size, double ratio)
{
    QImage image((size * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    return image;
}

QFont panelFont(int pixelSize, bool bold)
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(pixelSize);
    font.setBold(bold);
    return font;
}

/// The bold font of the colour's text. Three components of three digits are too wide in some fonts: they get smaller.
QFont fittingFont(const QString &text, double width)
{
    int pixelSize = 16;
    while (pixelSize > 10 && QFontMetricsF(panelFont(pixelSize, true)).horizontalAdvance(text) > width)
        --pixelSize;
    return panelFont(pixelSize, true);
}

double panelHeight(const MagnifierLook &look)
{
    return kPanelHeight - (look.lens ? kPanelGap : 0);
}

QImage shadowPicture(double ratio)
{
    QImage image = canvas(kLensBox.size(), ratio);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 55));
    painter.drawEllipse(kCircle.translated(0, 2).adjusted(-1, -1, 1, 1));
    return image;
}

QImage discPicture(double ratio)
{
    QImage image = canvas(kLensBox.size(), ratio);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawEllipse(kCircle);
    return image;
}

QImage ringPicture(double ratio)
{
    QImage image = canvas(kLensBox.size(), ratio);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    const QRectF middle(70, 70, kCell, kCell);
    painter.setPen(QPen(QColor(0, 0, 0, 200), 2.0));
    painter.drawRect(middle.adjusted(-1, -1, 1, 1));
    painter.setPen(QPen(Qt::white, 1.2));
    painter.drawRect(middle);
    painter.setPen(QPen(QColor(255, 255, 255, 235), 3.0));
    painter.drawEllipse(kCircle);
    painter.setPen(QPen(QColor(0, 0, 0, 90), 1.0));
    painter.drawEllipse(kCircle.adjusted(-2, -2, 2, 2));
    return image;
}

QImage panelPicture(double height, double ratio)
{
    QImage image = canvas({kSide, height}, ratio);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(28, 28, 30, 230));
    painter.drawRoundedRect(QRectF(0, 0, kSide, height), 14, 14);
    painter.setPen(QPen(QColor(255, 255, 255, 51), 1.0));
    painter.drawLine(QPointF(kLeft, 36), QPointF(kRight, 36));
    const QFont font = panelFont(12, false);
    painter.setFont(font);
    painter.setPen(QColor(204, 204, 204));
    const QString keys = QCoreApplication::translate("CaptureOverlay", "Shift 切换 · C 复制");
    painter.drawText(QPointF(kLeft, 54), QFontMetricsF(font).elidedText(keys, Qt::ElideRight, kRight - kLeft));
    return image;
}

/// A premultiplied pixel under a line of the grid: black at alpha 28.
QRgb underGrid(QRgb pixel)
{
    constexpr int alpha = 28;
    const auto darker = [](int channel) { return (channel * (255 - alpha) + 127) / 255; };
    return qRgba(darker(qRed(pixel)), darker(qGreen(pixel)), darker(qBlue(pixel)), darker(qAlpha(pixel)) + alpha);
}

/// All four channels times alpha / 255.
QRgb faded(QRgb pixel, int alpha)
{
    const auto part = [alpha](int channel) { return (channel * alpha + 127) / 255; };
    return qRgba(part(qRed(pixel)), part(qGreen(pixel)), part(qBlue(pixel)), part(qAlpha(pixel)));
}

/// One premultiplied pixel painted over another.
QRgb over(QRgb top, QRgb bottom)
{
    const int alpha = qAlpha(top);
    return alpha == 255 ? top : top + faded(bottom, 255 - alpha);
}

const QRgb *lineOf(const QImage &image, int y)
{
    return reinterpret_cast<const QRgb *>(image.constScanLine(y));
}

/// Which cell each device pixel of the lens shows, and whether a line of the grid runs there.
struct LensPixel
{
    int cell = 0;
    bool isGrid = false;
};

std::vector<LensPixel> lensPixels(int side)
{
    const double scale = side / kSide;
    std::vector<LensPixel> pixels(static_cast<std::size_t>(side));
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i].cell = std::min(static_cast<int>((static_cast<double>(i) + 0.5) / scale / kCell), kCells - 1);
    const int width = std::max(1, qRound(scale));
    for (int line = 1; line < kCells; ++line) {
        const int start = qRound(line * kCell * scale) - width / 2;
        for (int i = start; i < start + width; ++i)
            pixels[static_cast<std::size_t>(i)].isGrid = true;
    }
    return pixels;
}

} // namespace

QRectF magnifierBox(const QPointF &pointer, const MagnifierLook &look, const QSizeF &overlay)
{
    const double height = (look.lens ? kSide : 0) + (look.colors ? kPanelHeight : 0);
    double left = pointer.x() + kDistance;
    if (left + kSide > overlay.width())
        left = pointer.x() - kSide - kDistance;
    double top = pointer.y() + kDistance;
    if (top + height > overlay.height())
        top = pointer.y() - height - kDistance;
    return {std::max(left, 0.0), std::max(top, 0.0), kSide, height};
}

QString colorText(const QColor &color, const QString &format)
{
    if (format == u"rgb")
        return QStringLiteral("%1, %2, %3").arg(color.red()).arg(color.green()).arg(color.blue());
    return color.name(QColor::HexRgb).toUpper();
}

void MagnifierPainter::prepare(const MagnifierLook &look, double ratio)
{
    if (ratio == m_ratio && look == m_look)
        return;
    m_ratio = ratio;
    m_look = look;
    m_below = shadowPicture(ratio);
    m_disc = discPicture(ratio);
    m_above = ringPicture(ratio);
    m_panel = panelPicture(panelHeight(look), ratio);
}

QImage MagnifierPainter::lensOf(const QImage &cells) const
{
    QImage lens(m_disc.size(), QImage::Format_ARGB32_Premultiplied);
    const std::vector<LensPixel> pixels = lensPixels(lens.width());
    for (int y = 0; y < lens.height(); ++y) {
        const LensPixel &row = pixels[static_cast<std::size_t>(y)];
        const QRgb *from = lineOf(cells, row.cell);
        const QRgb *below = lineOf(m_below, y);
        const QRgb *disc = lineOf(m_disc, y);
        const QRgb *above = lineOf(m_above, y);
        auto *to = reinterpret_cast<QRgb *>(lens.scanLine(y));
        for (std::size_t x = 0; x < pixels.size(); ++x) {
            const QRgb cell = from[pixels[x].cell];
            const QRgb face = row.isGrid || pixels[x].isGrid ? underGrid(cell) : cell;
            // Nearly all pixels are of the cells alone.
            to[x] = qAlpha(disc[x]) == 255 && above[x] == 0 && qAlpha(face) == 255
                        ? face
                        : over(above[x], over(faded(face, qAlpha(disc[x])), below[x]));
        }
    }
    lens.setDevicePixelRatio(m_ratio);
    return lens;
}

void MagnifierPainter::paint(QPainter &painter, const QRectF &box, double ratio, const OverlayPicture &picture,
                             const QPointF &pointer, const MagnifierLook &look)
{
    prepare(look, ratio);
    painter.save();
    painter.setClipRect(box.toAlignedRect(), Qt::IntersectClip);
    painter.translate(std::round(box.left() * ratio) / ratio, std::round(box.top() * ratio) / ratio);
    if (look.lens) {
        // copy() fills what lies outside the picture with transparent pixels.
        const QPoint corner = picture.pixelAt(pointer) - QPoint(kCells / 2, kCells / 2);
        painter.drawImage(QPointF(0, 0), lensOf(picture.image().copy(QRect(corner, QSize(kCells, kCells)))));
        painter.translate(0, kSide + kPanelGap);
    }
    if (look.colors) {
        const QColor color = picture.colorAt(pointer);
        painter.drawImage(QPointF(0, 0), m_panel);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(QColor(255, 255, 255, 140), 1.0));
        painter.setBrush(color);
        painter.drawEllipse(kSwatch);
        const QString text = colorText(color, look.colorFormat);
        const QPointF start(kSwatch.right() + 10, kSwatch.bottom() - 2);
        painter.setFont(fittingFont(text, kRight - start.x()));
        painter.setPen(Qt::white);
        painter.drawText(start, text);
    }
    painter.restore();
}

} // namespace tavrel::ui
