#include "platform/synthetic/synthetic_capturer.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QScreen>

#include <algorithm>

namespace tavrel::platform {

namespace {

constexpr int kPages = 3;
constexpr int kScrollStep = 137; // logical pixels
constexpr int kGridStep = 100;
constexpr int kCoordinateStep = 200;
constexpr int kRowStep = 24;
constexpr int kWordStep = 22;

/// Rows of blocks that look like text from afar. Each row has a pattern of its own, or stitching could not tell
/// them apart.
void drawRows(QPainter &painter, const QSize &page)
{
    painter.setPen(Qt::NoPen);
    quint32 seed = 0x9e3779b9U;
    for (int y = 0; y < page.height() - 16; y += kRowStep) {
        seed = seed * 1664525U + 1013904223U;
        const quint32 row = seed >> 16;
        for (int x = 0; x < page.width() - 40; x += kWordStep) {
            const auto column = static_cast<quint32>(x);
            const auto width = static_cast<int>((row + column * 7U) % 13U + 9U);
            const auto grey = static_cast<int>((row + column * 13U) % 96U + 32U);
            painter.fillRect(QRect(x + 16, y + 5, width, 14), QColor(grey, grey, grey));
        }
    }
}

} // namespace

QImage drawSyntheticPage(const QSize &screen, double ratio, int pages, const QString &label)
{
    const QSize page(screen.width(), screen.height() * pages);
    QImage image(static_cast<int>(page.width() * ratio), static_cast<int>(page.height() * ratio),
                 QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    QLinearGradient gradient(QPointF(0, 0), QPointF(page.width(), page.height()));
    gradient.setColorAt(0.0, QColor(207, 227, 255));
    gradient.setColorAt(1.0, QColor(255, 224, 200));
    image.fill(QColor(255, 224, 200)); // also below a last row that the size's fraction leaves half covered
    QPainter painter(&image);
    painter.fillRect(QRect(QPoint(0, 0), page), gradient);

    painter.setPen(QColor(0, 0, 0, 60));
    for (int x = 0; x < page.width(); x += kGridStep)
        painter.drawLine(x, 0, x, page.height());
    for (int y = 0; y < page.height(); y += kGridStep)
        painter.drawLine(0, y, page.width(), y);

    QFont font = painter.font();
    font.setPixelSize(14);
    painter.setFont(font);
    painter.setPen(Qt::black);
    for (int y = 0; y < page.height(); y += kCoordinateStep) {
        for (int x = 0; x < page.width(); x += kCoordinateStep)
            painter.drawText(x + 4, y + 16, QStringLiteral("%1,%2").arg(x).arg(y));
    }

    drawRows(painter, page);

    font.setPixelSize(28);
    painter.setFont(font);
    painter.setPen(Qt::black);
    for (int p = 0; p < pages; ++p) {
        painter.drawText(QRect(QPoint(0, p * screen.height()), screen), Qt::AlignCenter,
                         QStringLiteral("%1 · 第 %2 屏").arg(label).arg(p + 1));
    }
    return image;
}

int SyntheticCapturer::captureAccess() const
{
    return Granted;
}

void SyntheticCapturer::requestCaptureAccess() {}

QImage SyntheticCapturer::pictureOf(const CapturedDisplay &display, bool first)
{
    const QSize size = display.geometry.size();
    const double ratio = display.devicePixelRatio;
    const QSize pixels(static_cast<int>(size.width() * ratio), static_cast<int>(size.height() * ratio));
    if (!first) {
        // Drawn once; anew only for a display that the page does not fit.
        if (m_secondaryPage.size() != pixels)
            m_secondaryPage = drawSyntheticPage(size, ratio, 1, QStringLiteral("合成抓屏（副屏）"));
        QImage image = m_secondaryPage.copy();
        image.setDevicePixelRatio(ratio);
        return image;
    }
    if (m_page.isNull() || m_pageSize != size || m_page.devicePixelRatio() != ratio) {
        m_page = drawSyntheticPage(size, ratio, kPages,
                                   QStringLiteral("合成抓屏 · %1 · %2×%3 @%4x")
                                       .arg(display.name)
                                       .arg(size.width())
                                       .arg(size.height())
                                       .arg(ratio, 0, 'g'));
        m_pageSize = size;
        m_scrollOffset = 0;
    }
    if (m_scrolling) {
        const int maxOffset = static_cast<int>(m_page.height() / ratio) - size.height();
        m_scrollOffset = std::min(m_scrollOffset + kScrollStep, std::max(maxOffset, 0));
    }
    QImage image = m_page.copy(QRect(QPoint(0, static_cast<int>(m_scrollOffset * ratio)), pixels));
    image.setDevicePixelRatio(ratio);
    return image;
}

void SyntheticCapturer::capture(const CaptureOptions &options, QObject *context, Done done)
{
    QElapsedTimer started;
    started.start();
    m_lastOptions = options;
    CaptureResult result;
    for (const QScreen *screen : QGuiApplication::screens()) {
        CapturedDisplay display;
        display.id = static_cast<quint32>(result.displays.size()) + 1;
        display.name = screen->name();
        display.geometry = screen->geometry();
        display.devicePixelRatio = screen->devicePixelRatio();
        display.primary = screen == QGuiApplication::primaryScreen();
        display.image = pictureOf(display, result.displays.isEmpty());
        result.displays.append(display);
    }
    result.elapsedMs = started.elapsed();
    answerLater(context, done, result);
}

} // namespace tavrel::platform
