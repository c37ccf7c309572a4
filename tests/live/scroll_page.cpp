// scroll_page OUT.png [HEADER]: a window at the corner of the display with a page that is much higher than it and
// scrolls by the wheel, 57 pixels a notch. OUT.png gets the page in one piece. With HEADER a bar stays on top of it.
#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>
#include <QWidget>

#include <algorithm>

namespace {

constexpr QSize kWindow(900, 640);
constexpr int kRows = 140;
constexpr int kRowHeight = 42;
constexpr int kNotch = 57;
constexpr int kHeader = 48;

QImage page()
{
    QImage image(kWindow.width(), kRows * kRowHeight, QImage::Format_RGB32);
    image.fill(QColor(252, 252, 250));
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
    Page(const QImage &image, bool hasHeader) : m_image(image), m_hasHeader(hasHeader)
    {
        setWindowTitle(QStringLiteral("scroll page"));
        setFixedSize(kWindow);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.drawImage(0, -m_top, m_image);
        if (m_hasHeader) {
            painter.fillRect(0, 0, width(), kHeader, QColor(48, 63, 159));
            painter.setPen(Qt::white);
            painter.drawText(24, 30, QStringLiteral("A header that stays"));
        }
    }
    void wheelEvent(QWheelEvent *event) override
    {
        const int step = event->angleDelta().y() * kNotch / 120;
        m_top = std::clamp(m_top - step, 0, m_image.height() - height());
        update();
    }

private:
    QImage m_image;
    bool m_hasHeader;
    int m_top = 0;
};

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const QImage image = page();
    if (argc < 2 || !image.save(QString::fromLocal8Bit(argv[1])))
        return 1;
    Page window(image, argc > 2);
    window.move(40, 40);
    window.show();
    return QApplication::exec();
}
