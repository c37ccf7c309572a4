#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QPainter>
#include <QRandomGenerator>
#include <QRect>
#include <QString>

#include <algorithm>
#include <cmath>
#include <functional>

namespace tavrel::test {

/// Draws a kind of background that screens show.
struct Background
{
    QString name;
    std::function<void(QImage &, double scale)> draw; ///< scale 1 for a picture of 480 x 360
};

inline void eachPixel(QImage &image, const std::function<QRgb(int, int)> &color)
{
    for (int y = 0; y < image.height(); ++y) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            row[x] = color(x, y);
    }
}

/// Value noise: smooth between random values on a grid.
inline double softNoise(double x, double y, quint32 seed)
{
    const auto value = [seed](int gx, int gy) {
        quint32 h = static_cast<quint32>(gx) * 374761393U + static_cast<quint32>(gy) * 668265263U + seed * 2246822519U;
        h = (h ^ (h >> 13)) * 1274126177U;
        return static_cast<double>((h ^ (h >> 16)) & 0xffffU) / 65535.0;
    };
    const int gx = static_cast<int>(std::floor(x));
    const int gy = static_cast<int>(std::floor(y));
    const auto smooth = [](double t) { return t * t * (3 - 2 * t); };
    const double fx = smooth(x - gx);
    const double fy = smooth(y - gy);
    const double top = value(gx, gy) * (1 - fx) + value(gx + 1, gy) * fx;
    const double bottom = value(gx, gy + 1) * (1 - fx) + value(gx + 1, gy + 1) * fx;
    return top * (1 - fy) + bottom * fy;
}

inline QList<Background> backgrounds()
{
    QList<Background> list;
    list.append({QStringLiteral("flat"), [](QImage &image, double) { image.fill(QColor(240, 243, 248)); }});
    list.append({QStringLiteral("gradient"), [](QImage &image, double) {
                     eachPixel(image, [&](int x, int y) {
                         const double t = 0.6 * x / image.width() + 0.4 * y / image.height();
                         return qRgb(static_cast<int>(40 + 150 * t), static_cast<int>(90 + 90 * t),
                                     static_cast<int>(200 - 60 * t));
                     });
                 }});
    list.append({QStringLiteral("panels"), [](QImage &image, double) {
                     QPainter painter(&image);
                     painter.fillRect(image.rect(), QColor(250, 250, 250));
                     painter.fillRect(0, 0, image.width() / 2, image.height(), QColor(235, 238, 242));
                     painter.fillRect(image.width() / 2 - 1, 0, 2, image.height(), QColor(205, 210, 216));
                 }});
    list.append({QStringLiteral("grain"), [](QImage &image, double) {
                     QRandomGenerator random(3);
                     eachPixel(image, [&](int, int) {
                         const int v = 120 + random.bounded(60);
                         return qRgb(v, v - 10, v - 30);
                     });
                 }});
    list.append({QStringLiteral("weave"), [](QImage &image, double) {
                     eachPixel(image, [&](int x, int y) {
                         const int v = static_cast<int>(128 + 50 * std::sin(x * 0.7) + 40 * std::sin(y * 0.55));
                         return qRgb(v, v, std::min(255, v + 20));
                     });
                 }});
    list.append({QStringLiteral("tiles"), [](QImage &image, double) {
                     eachPixel(image, [&](int x, int y) {
                         return (x / 8 + y / 8) % 2 ? qRgb(204, 204, 204) : qRgb(255, 255, 255);
                     });
                 }});
    list.append({QStringLiteral("photo"), [](QImage &image, double) {
                     eachPixel(image, [&](int x, int y) {
                         const double n = 0.5 * softNoise(x / 60.0, y / 60.0, 1) +
                                          0.3 * softNoise(x / 14.0, y / 14.0, 2) + 0.2 * softNoise(x / 3.0, y / 3.0, 3);
                         return qRgb(static_cast<int>(30 + 110 * n), static_cast<int>(60 + 150 * n),
                                     static_cast<int>(30 + 70 * n));
                     });
                 }});
    return list;
}

inline Background background(const QString &name)
{
    const QList<Background> all = backgrounds();
    return *std::find_if(all.begin(), all.end(), [&](const Background &one) { return one.name == name; });
}

/// What the user wants to be rid of: a badge that fills the middle of the box.
inline void drawObject(QImage &image, const QRect &box)
{
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const int dx = box.width() * 30 / 100;
    const int dy = box.height() * 30 / 100;
    const QRect body = box.adjusted(dx, dy, -dx, -dy);
    painter.setPen(QPen(QColor(120, 0, 20), std::max(2, body.height() / 20)));
    painter.setBrush(QColor(230, 40, 60));
    painter.drawEllipse(body);
    painter.setPen(QPen(Qt::white, std::max(2, body.height() / 10)));
    painter.drawLine(body.center() - QPoint(body.width() / 5, 0), body.center() + QPoint(body.width() / 5, 0));
}

struct Scene
{
    QImage truth;
    QImage image; ///< the truth with an object in the box
    QRect box;
};

inline Scene sceneOf(const Background &background, const QSize &size, const QRect &box)
{
    Scene scene;
    scene.truth = QImage(size, QImage::Format_RGB32);
    background.draw(scene.truth, size.width() / 480.0);
    scene.image = scene.truth;
    scene.box = box;
    drawObject(scene.image, box);
    return scene;
}

/// Mean difference of a channel between two pictures inside a box.
inline double meanError(const QImage &a, const QImage &b, const QRect &box)
{
    double sum = 0;
    for (int y = box.top(); y <= box.bottom(); ++y) {
        for (int x = box.left(); x <= box.right(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
        }
    }
    return sum / (3.0 * box.width() * box.height());
}

} // namespace tavrel::test
