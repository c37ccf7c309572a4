// scroll_page OUT.png [header] [footer] [video] [plain]: a window at the corner of the display with a page that is much
// higher than it and scrolls by the wheel, 57 pixels a notch; a notch sideways leaps by 800. OUT.png gets the page in
// one piece. A header or a footer stays where it is, a video plays in a part of the page, a plain page is of one
// colour.
#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QTimer>
#include <QWheelEvent>
#include <QWidget>

#include <algorithm>

namespace {

constexpr QSize kWindow(900, 640);
constexpr int kRows = 140;
constexpr int kRowHeight = 42;
constexpr int kNotch = 57;
constexpr int kLeap = 800;
constexpr int kBar = 48;
constexpr QRect kVideo(420, 900, 300, 180); // of the page
constexpr int kVideoMs = 40;

QImage page(bool isPlain)
{
    QImage image(kWindow.width(), kRows * kRowHeight, QImage::Format_RGB32);
    image.fill(QColor(252, 252, 250));
    if (isPlain)
        return image;
    QPainter painter(&image);
    quint32 seed = 12345;
    const auto random = [&seed](int below) {
        seed ^= seed << 13U;
        seed ^= seed >> 17U;
        seed ^= seed << 5U;
        return static_cast<int>(seed % static_cast<quint32>(below));
    };
    for (int row = 0; row < kRows; ++row) {
        const int y = row * kRowHeight;
        if (row % 9 == 4)
            painter.fillRect(0, y, kWindow.width(), kRowHeight, QColor::fromHsv(random(360), 60, 235));
        QString line = QStringLiteral("%1: ").arg(row + 1);
        for (int word = 0; word < 9; ++word)
            line += QString(2 + random(8), QChar(u'a' + random(26))) + u' ';
        painter.setPen(QColor(40, 44, 52));
        painter.drawText(20 + random(30), y + 27, line);
        if (row % 13 == 7)
            painter.fillRect(500 + random(200), y + 6, 40 + random(100), 28, QColor::fromHsv(random(360), 180, 200));
    }
    return image;
}

class Page final : public QWidget
{
public:
    Page(const QImage &image, const QStringList &traits)
        : m_image(image),
          m_hasHeader(traits.contains(QStringLiteral("header"))),
          m_hasFooter(traits.contains(QStringLiteral("footer")))
    {
        setWindowTitle(QStringLiteral("scroll page"));
        setFixedSize(kWindow);
        if (!traits.contains(QStringLiteral("video")))
            return;
        connect(&m_video, &QTimer::timeout, this, [this] {
            ++m_moment;
            update(kVideo.translated(0, -m_top));
        });
        m_video.start(kVideoMs);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.drawImage(0, -m_top, m_image);
        for (int y = 0; m_moment > 0 && y < kVideo.height(); y += 12) {
            for (int x = 0; x < kVideo.width(); x += 12)
                painter.fillRect(
                    kVideo.x() + x, kVideo.y() + y - m_top, 12, 12,
                    QColor::fromHsv((x * 7 + y * 3 + m_moment * 47) % 360, 200, 60 + (x * y + m_moment) % 190));
        }
        if (m_hasHeader)
            paintBar(painter, QRect(0, 0, width(), kBar), QStringLiteral("A header that stays"));
        if (m_hasFooter)
            paintBar(painter, QRect(0, height() - kBar, width(), kBar), QStringLiteral("A footer that stays"));
    }
    void wheelEvent(QWheelEvent *event) override
    {
        const int step = event->angleDelta().y() * kNotch / 120 + event->angleDelta().x() * kLeap / 120;
        m_top = std::clamp(m_top - step, 0, m_image.height() - height());
        update();
    }

private:
    static void paintBar(QPainter &painter, const QRect &bar, const QString &text)
    {
        painter.fillRect(bar, QColor(48, 63, 159));
        painter.setPen(Qt::white);
        painter.drawText(bar.adjusted(24, 0, 0, 0), Qt::AlignVCenter, text);
    }

    QImage m_image;
    QTimer m_video;
    bool m_hasHeader;
    bool m_hasFooter;
    int m_moment = 0;
    int m_top = 0;
};

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const QStringList traits = QApplication::arguments().mid(2);
    const QImage image = page(traits.contains(QStringLiteral("plain")));
    if (argc < 2 || !image.save(QString::fromLocal8Bit(argv[1])))
        return 1;
    Page window(image, traits);
    window.move(40, 40);
    window.show();
    return QApplication::exec();
}
