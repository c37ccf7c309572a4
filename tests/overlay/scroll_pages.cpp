#include "scroll_pages.h"

#include <QPainter>
#include <QRandomGenerator>

#include <algorithm>
#include <functional>
#include <map>

namespace {

using Random = QRandomGenerator;

/// A word of strokes, some ten pixels high.
void drawWord(QPainter &painter, Random &random, QRect box, const QColor &ink)
{
    for (int x = box.left(); x + 5 < box.right(); x += 7) {
        painter.fillRect(x, box.top() + random.bounded(4), 2, box.height() - random.bounded(5), ink);
        painter.fillRect(x, box.top() + random.bounded(box.height() - 1), random.bounded(3, 6), 2, ink);
    }
}

void drawLine(QPainter &painter, Random &random, int left, int right, int y)
{
    for (int x = left; x < right - 12;) {
        const int width = std::min(random.bounded(14, 60), right - x);
        drawWord(painter, random, QRect(x, y, width, 12), QColor(30, 30, 34));
        x += width + 8;
    }
}

void drawText(QPainter &painter, Random &random, const QSize &size)
{
    for (int y = 10; y + 16 < size.height(); y += random.bounded(6) == 0 ? 44 : 20)
        drawLine(painter, random, 16, random.bounded(size.width() / 2, size.width() - 16), y);
}

void drawSparse(QPainter &painter, Random &random, const QSize &size)
{
    for (int y = 40; y + 16 < size.height(); y += random.bounded(90, 260))
        drawLine(painter, random, 16, random.bounded(120, size.width() / 2), y);
}

void drawChat(QPainter &painter, Random &random, const QSize &size)
{
    for (int y = 12; y < size.height();) {
        const int lines = random.bounded(1, 5);
        const int width = random.bounded(120, size.width() * 2 / 3);
        const int left = random.bounded(2) == 0 ? 48 : size.width() - width - 48;
        painter.fillRect(left, y, width, lines * 20 + 12, QColor(210, 232, 255));
        painter.fillRect(left < 60 ? 8 : size.width() - 40, y, 32, 32,
                         QColor::fromRgb(random.generate() | 0xff000000U));
        for (int line = 0; line < lines; ++line)
            drawLine(painter, random, left + 10, left + width - 10, y + 8 + line * 20);
        y += lines * 20 + 32;
    }
}

/// Rows that differ in their numbers alone, or not at all.
void drawTable(QPainter &painter, Random &random, const QSize &size, bool equal)
{
    for (int y = 0; y < size.height(); y += 28) {
        Random same(7);
        painter.fillRect(0, y, size.width(), 1, QColor(120, 120, 120));
        for (int x = 10; x + 90 < size.width(); x += 110)
            drawWord(painter, equal || x % 3 == 0 ? same : random, QRect(x, y + 8, 80, 12), Qt::black);
    }
}

/// Pictures: soft shapes with grain, a caption under each.
void drawPhotos(QPainter &painter, Random &random, const QSize &size)
{
    for (int y = 10; y < size.height(); y += 300) {
        QImage photo(size.width() - 20, 250, QImage::Format_RGB32);
        QLinearGradient sky(0, 0, photo.width(), photo.height());
        sky.setColorAt(0, QColor::fromRgb(random.generate() | 0xff000000U));
        sky.setColorAt(1, QColor::fromRgb(random.generate() | 0xff000000U));
        QPainter shapes(&photo);
        shapes.fillRect(photo.rect(), sky);
        for (int i = 0; i < 14; ++i) {
            shapes.setBrush(QColor(random.bounded(256), random.bounded(256), random.bounded(256), 160));
            shapes.drawEllipse(QPoint(random.bounded(photo.width()), random.bounded(photo.height())),
                               random.bounded(10, 80), random.bounded(10, 60));
        }
        shapes.end();
        for (int row = 0; row < photo.height(); ++row) {
            auto *pixels = reinterpret_cast<quint32 *>(photo.scanLine(row));
            for (int x = 0; x < photo.width(); ++x)
                pixels[x] ^= random.generate() & 0x0f0f0fU;
        }
        painter.drawImage(10, y, photo);
        drawLine(painter, random, 16, size.width() / 2, y + 262);
    }
}

void drawBar(QPainter &painter, const QRect &rect, quint32 seed)
{
    Random random(seed);
    painter.fillRect(rect, QColor(238, 240, 246));
    drawLine(painter, random, 20, rect.width() / 2, rect.top() + rect.height() / 2 - 6);
    painter.fillRect(rect.left(), rect.bottom(), rect.width(), 1, QColor(150, 150, 160));
    painter.fillRect(rect.left(), rect.top(), rect.width(), 1, QColor(150, 150, 160));
}

void drawPlainBar(QPainter &painter, const QRect &rect)
{
    Random random(93);
    painter.fillRect(rect, QColor(48, 63, 159));
    if (rect.height() >= 40)
        drawLine(painter, random, 20, rect.width() / 2, rect.top() + rect.height() / 2 - 6);
}

} // namespace

QImage ScrollScene::frame(int offset, int moment) const
{
    QImage image = page.copy(0, offset, view.width(), view.height());
    QPainter painter(&image);
    painter.translate(0, -offset);
    Random random(static_cast<quint32>(moment) + 1);
    for (int y = animation.top(); !animation.isEmpty() && y < animation.bottom(); y += 16) {
        for (int x = animation.left(); x < animation.right(); x += 16) {
            painter.fillRect(QRect(x, y, 16, 16) & animation, QColor::fromRgb(random.generate() | 0xff000000U));
        }
    }
    if (moment % 2 == 0 && !caret.isEmpty())
        painter.fillRect(caret, Qt::black);
    painter.resetTransform();
    const QRect top(0, 0, view.width(), header);
    const QRect bottom(0, view.height() - footer, view.width(), footer);
    if (hasPlainBars) {
        drawPlainBar(painter, top);
        drawPlainBar(painter, bottom);
        return image;
    }
    if (header > 0)
        drawBar(painter, top, 91);
    if (footer > 0)
        drawBar(painter, bottom, 92);
    return image;
}

bool ScrollScene::shows(int y, const quint32 *pixels) const
{
    if (y < 0 || y >= page.height())
        return false;
    const auto *truth = reinterpret_cast<const quint32 *>(page.constScanLine(y));
    for (int x = 0; x < page.width(); ++x) {
        if (pixels[x] != truth[x] && !animation.contains(x, y) && !caret.contains(x, y))
            return false;
    }
    return true;
}

QImage drawScrollPage(const QString &kind, const QSize &size, quint32 seed)
{
    QImage page(size, QImage::Format_ARGB32_Premultiplied);
    page.fill(QColor(252, 252, 250));
    QPainter painter(&page);
    Random random(seed);
    if (kind == QLatin1String("text"))
        drawText(painter, random, size);
    else if (kind == QLatin1String("sparse"))
        drawSparse(painter, random, size);
    else if (kind == QLatin1String("chat"))
        drawChat(painter, random, size);
    else if (kind == QLatin1String("table"))
        drawTable(painter, random, size, false);
    else if (kind == QLatin1String("equal-table"))
        drawTable(painter, random, size, true);
    else if (kind == QLatin1String("photos"))
        drawPhotos(painter, random, size);
    return page;
}

std::vector<int> scrollTrace(const QString &kind, int rows, int view, quint32 seed)
{
    const int last = rows - view;
    Random random(seed);
    int calls = 0;
    const std::map<QString, std::function<int()>> steps{
        {QStringLiteral("steady"), [] { return 120; }},
        {QStringLiteral("slow"), [] { return 3; }},
        {QStringLiteral("uneven"), [&] { return random.bounded(20, 401); }},
        {QStringLiteral("pauses"), [&] { return ++calls % 3 == 0 ? 90 : 0; }},
        {QStringLiteral("upward"), [] { return -110; }},
        {QStringLiteral("back-and-forth"), [&] { return ++calls % 9 < 6 ? 100 : -80; }},
        {QStringLiteral("jump"), [&] { return ++calls % 5 == 0 ? view + 250 : 100; }},
    };
    const auto &step = steps.at(kind);
    std::vector<int> offsets;
    int at = kind == QLatin1String("upward") ? last : 0;
    for (int i = 0; i < 20; ++i) {
        offsets.push_back(at);
        at = std::clamp(at + step(), 0, last);
    }
    return offsets;
}
