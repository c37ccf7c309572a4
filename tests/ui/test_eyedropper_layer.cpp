#include "support/test_main.h"

#include "ui/eyedropper_layer.h"
#include "ui/eyedropper_sample.h"

#include <QApplication>
#include <QPushButton>
#include <QShortcut>
#include <QSignalSpy>
#include <QWheelEvent>
#include <QWindow>

using namespace tavrel::ui;

namespace {

/// A window with a picture, that counts what comes through to it.
class Host final : public QWidget
{
public:
    explicit Host(double ratio) : picture(QSize(400, 300) * ratio, QImage::Format_RGB32)
    {
        resize(400, 300);
        setMouseTracking(true);
        picture.setDevicePixelRatio(ratio);
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x)
                picture.setPixel(x, y, qRgb(x & 0xff, y & 0xff, x >> 8 | (y >> 8) << 4));
        }
    }

    [[nodiscard]] EyedropperLayer *pick()
    {
        return new EyedropperLayer(this, [this](const QPointF &point) {
            ++samples;
            return eyedropperSample(picture, point);
        });
    }

    QImage picture;
    int samples = 0;
    int events = 0;

protected:
    bool event(QEvent *event) override
    {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::Wheel:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            ++events;
            break;
        default:
            break;
        }
        return QWidget::event(event);
    }
};

/// The way of a real pointer, once the window is there.
void moveTo(const QWidget &layer, const QPoint &point)
{
    QVERIFY(QTest::qWaitForWindowExposed(layer.window()));
    QTest::mouseMove(layer.window()->windowHandle(), point);
}

/// As the window system says it, also between whole units.
void sendAt(const QWidget &layer, QEvent::Type type, const QPointF &point)
{
    QWindow *window = layer.window()->windowHandle();
    const auto button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, point, point, window->mapToGlobal(point), button, button, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &event);
}

} // namespace

class TestEyedropperLayer : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void picksThePixelUnderThePointer();
    void everyPixelIsFoundAgain();
    void cancels();
    void nothingComesThrough();
    void coversTheHostAndGivesTheKeyboardBack();
    void mayBeDeletedByWhoeverListens();
};

void TestEyedropperLayer::picksThePixelUnderThePointer()
{
    const std::pair<double, QPoint> rows[]{{1.0, {120, 80}},
                                           {1.5, {181, 121}},
                                           {1.5, {182, 122}},  // between two units
                                           {1.25, {11, 302}},  // nearer to the next unit
                                           {2.0, {799, 599}}}; // the last
    for (const auto &[ratio, pixel] : rows) {
        Host host(ratio);
        host.show();
        QPointer<EyedropperLayer> layer = host.pick();
        QSignalSpy picked(layer, &EyedropperLayer::picked);
        QSignalSpy cancelled(layer, &EyedropperLayer::cancelled);
        moveTo(*layer, QPoint(50, 50));
        const QColor expected = host.picture.pixelColor(pixel);
        sendAt(*layer, QEvent::MouseMove, QPointF(pixel) / ratio);
        QCOMPARE(layer->currentColor(), expected);
        moveTo(*layer, QPoint(50, 50));
        sendAt(*layer, QEvent::MouseButtonPress, QPointF(pixel) / ratio);
        QCOMPARE(picked.count(), 1);
        QCOMPARE(picked.first().value(0).value<QColor>(), expected);
        QVERIFY(layer->isHidden());
        QTest::mousePress(layer, Qt::LeftButton, {}, {}); // once
        QTest::keyClick(layer, Qt::Key_Escape);
        QCOMPARE(picked.count() + cancelled.count(), 1);
        QTRY_VERIFY(!layer);
    }
}

void TestEyedropperLayer::everyPixelIsFoundAgain()
{
    for (const double ratio : {1.1, 1.15, 1.25, 1.3, 1.4, 1.75, 1.8}) {
        const Host host(ratio);
        for (int x = 0; x < host.picture.width(); ++x) {
            const QImage sample = eyedropperSample(host.picture, QPointF(x, 3) / ratio);
            QCOMPARE(sample.pixelColor(kEyedropperSide / 2, kEyedropperSide / 2), host.picture.pixelColor(x, 3));
        }
    }
}

void TestEyedropperLayer::cancels()
{
    for (const bool byKey : {true, false}) {
        Host host(1);
        host.show();
        QPointer<EyedropperLayer> layer = host.pick();
        QSignalSpy picked(layer, &EyedropperLayer::picked);
        QSignalSpy cancelled(layer, &EyedropperLayer::cancelled);
        if (byKey)
            QTest::keyClick(layer, Qt::Key_Escape);
        else
            QTest::mousePress(layer, Qt::RightButton, {}, QPoint(20, 20));
        QCOMPARE(cancelled.count(), 1);
        QCOMPARE(picked.count(), 0);
        QTRY_VERIFY(!layer);
    }
}

void TestEyedropperLayer::nothingComesThrough()
{
    Host host(1);
    host.show();
    host.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&host));
    auto *button = new QPushButton(&host);
    button->show();
    int shortcuts = 0;
    auto *shortcut = new QShortcut(Qt::Key_A, &host);
    connect(shortcut, &QShortcut::activated, &host, [&] { ++shortcuts; });
    EyedropperLayer *layer = host.pick();
    QVERIFY(layer->hasFocus());
    for (const Qt::Key key : {Qt::Key_A, Qt::Key_Return, Qt::Key_Space, Qt::Key_Tab, Qt::Key_Delete})
        QTest::keyClick(layer, key);
    QVERIFY(layer->hasFocus()); // Tab leads nowhere
    QCOMPARE(shortcuts, 0);
    moveTo(*layer, QPoint(30, 30));
    QWheelEvent wheel(QPointF(30, 30), QPointF(30, 30), {}, QPoint(0, 120), Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(layer, &wheel);
    QCOMPARE(host.events, 0);
}

void TestEyedropperLayer::coversTheHostAndGivesTheKeyboardBack()
{
    Host host(1);
    auto *button = new QPushButton(&host);
    host.show();
    host.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&host));
    button->setFocus();
    auto *layer = host.pick();
    QCOMPARE(layer->geometry(), host.rect());
    QCOMPARE(layer->cursor().shape(), Qt::CrossCursor);
    QVERIFY(layer->hasFocus());
    host.resize(500, 350);
    QTRY_COMPARE(layer->geometry(), host.rect());
    QTest::keyClick(layer, Qt::Key_Escape);
    QVERIFY(button->hasFocus());

    QPointer<EyedropperLayer> second = host.pick();
    delete button;
    QTest::keyClick(second, Qt::Key_Escape);
    QTRY_VERIFY(!second);
}

void TestEyedropperLayer::mayBeDeletedByWhoeverListens()
{
    auto host = std::make_unique<Host>(1);
    host->show();
    QPointer<EyedropperLayer> layer = host->pick();
    connect(layer, &EyedropperLayer::picked, this, [&] { host.release()->deleteLater(); });
    QTest::mousePress(layer, Qt::LeftButton, {}, QPoint(20, 20));
    QTRY_VERIFY(!layer);
    QVERIFY(!host);
}

TAVREL_TEST_MAIN(QApplication, TestEyedropperLayer)
#include "test_eyedropper_layer.moc"
