// Roles, exact places and the keyboard, on two monitors: LEFT 1000 x 1080 and RIGHT 919 x 901 at (1000, 100).
#include "platform/linux/capture_exclusions.h"
#include "platform/linux/screen_mapping.h"
#include "platform/linux/x11_window_controller.h"
#include "platform/linux/x_connection.h"
#include "platform/window_zoo.h"
#include "platform/x_probe.h"
#include "support/test_main.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <QScreen>
#include <QWidget>

using namespace tavrel;
using namespace tavrel::platform;
using test::kLeft;
using test::kRight;

namespace {

/// A widget that counts the keys and clicks it gets.
class Listening : public QWidget
{
public:
    explicit Listening(Qt::WindowFlags flags = {}) : QWidget(nullptr, flags) { setGeometry(100, 100, 200, 150); }

    int keys = 0;
    int clicks = 0;

protected:
    void keyPressEvent(QKeyEvent *) override { ++keys; }
    void mousePressEvent(QMouseEvent *) override { ++clicks; }
};

/// The way the capture overlay is made and shown.
class Overlay final : public Listening
{
public:
    Overlay() : Listening(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    {
        setAttribute(Qt::WA_TranslucentBackground);
    }

    void showOn(IWindowController &controller, const QRect &display)
    {
        setGeometry(display);
        winId();
        controller.setWindowRole(windowHandle(), WindowRole::Overlay);
        show();
        controller.setWindowRole(windowHandle(), WindowRole::Overlay);
        controller.placeOnDisplay(windowHandle(), display);
        controller.activate(windowHandle());
    }
};

} // namespace

class X11WindowControllerTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        std::shared_ptr<XConnection> x = XConnection::create();
        m_exclusions = std::make_shared<CaptureExclusions>(x);
        m_controller = std::make_unique<X11WindowController>(x, m_exclusions);
        m_probe = std::make_unique<test::XProbe>();
        m_probe->warpPointer({1919, 1079});
        m_zoo = std::make_unique<test::WindowZoo>();
    }

    void cleanup()
    {
        m_controller.reset();
        m_exclusions.reset();
        m_zoo.reset();
        m_probe.reset();
    }

    void overlayCoversItsDisplayExactly_data()
    {
        QTest::addColumn<QString>("display");
        QTest::addColumn<QRect>("monitor");
        QTest::newRow("at the origin") << u"LEFT"_qs << kLeft;
        QTest::newRow("beside it, of odd size") << u"RIGHT"_qs << kRight;
    }

    void overlayCoversItsDisplayExactly()
    {
        QFETCH(QString, display);
        QFETCH(QRect, monitor);
        m_zoo->open("100 100 300 200 type=DOCK"); // a panel, which a window manager keeps on top
        m_zoo->open("300 300 300 200");
        Overlay overlay;
        overlay.showOn(*m_controller, geometryOf(display));
        const xcb_window_t window = idOf(overlay);
        QTRY_VERIFY(m_probe->isViewable(window));
        QTRY_COMPARE(m_probe->geometry(window), monitor);
        QVERIFY(QTest::qWaitForWindowExposed(&overlay));
        // Nothing has moved it meanwhile, and nothing that is seen lies above it.
        QTRY_COMPARE(overlay.geometry(), geometryOf(display));
        QCOMPARE(m_probe->geometry(window), monitor);
        QCOMPARE(m_probe->frameOf(window), window);
        QCOMPARE(m_probe->topMostAt(monitor.center()), window);
        QVERIFY(m_exclusions->windows().contains(overlay.winId()));
    }

    void overlayTakesTheKeyboardAndGivesItBack()
    {
        const xcb_window_t before = openFocused("300 300 300 200");
        QVERIFY(!m_controller->isApplicationActive());

        Overlay overlay;
        overlay.showOn(*m_controller, geometryOf(u"LEFT"_qs));
        QTRY_VERIFY(m_controller->isApplicationActive());
        QTRY_VERIFY(overlay.isActiveWindow());
        m_probe->pressKey('a');
        QTRY_COMPARE(overlay.keys, 1);
        // Asking again does not take the overlay itself for the one to give back to.
        m_controller->activate(overlay.windowHandle());
        m_probe->pressKey('a');
        QTRY_COMPARE(overlay.keys, 2);

        m_controller->deactivateApplication();
        overlay.hide();
        QTRY_VERIFY(isFocused(before));
        QVERIFY(!m_controller->isApplicationActive());
    }

    void overlayThatGoesLeavesNoHole()
    {
        const xcb_window_t before = openFocused("300 300 300 200");
        {
            Overlay overlay;
            overlay.showOn(*m_controller, geometryOf(u"LEFT"_qs));
            QTRY_VERIFY(overlay.isActiveWindow());
        }
        QTRY_VERIFY(m_exclusions->windows().isEmpty());
        QTRY_VERIFY(!m_controller->isApplicationActive());
        if (m_probe->isManaged())
            QTRY_VERIFY(isFocused(before));
    }

    void ordinaryWindowIsActivated()
    {
        Listening own;
        own.show();
        QVERIFY(QTest::qWaitForWindowExposed(&own));
        const xcb_window_t other = openFocused("500 600 300 200");
        QTRY_VERIFY(!own.isActiveWindow());
        m_controller->activate(nullptr); // the first visible window of the application
        QTRY_VERIFY(own.isActiveWindow() && isFocused(idOf(own)));
        QTRY_VERIFY(m_probe->stackPosition(idOf(own)) > m_probe->stackPosition(other));
        m_probe->pressKey('a');
        QTRY_COMPARE(own.keys, 1);
        m_controller->deactivateApplication();
        QTRY_VERIFY(isFocused(other));
    }

    void rolesBecomeStates_data()
    {
        QTest::addColumn<WindowRole>("role");
        QTest::addColumn<bool>("above");
        QTest::newRow("floating") << WindowRole::Floating << true;
        QTest::newRow("normal") << WindowRole::Normal << false;
    }

    void rolesBecomeStates()
    {
        QFETCH(WindowRole, role);
        QFETCH(bool, above);
        Listening own(Qt::FramelessWindowHint);
        own.winId();
        m_controller->setWindowRole(own.windowHandle(), role);
        own.show();
        QVERIFY(QTest::qWaitForWindowExposed(&own));
        if (!m_probe->isManaged())
            return; // nobody to keep states
        const auto has = [&](const char *state) {
            return m_probe->property(idOf(own), "_NET_WM_STATE").contains(m_probe->atom(state));
        };
        const auto as = [&](bool on) {
            return has("_NET_WM_STATE_ABOVE") == on && has("_NET_WM_STATE_SKIP_TASKBAR") == on &&
                   has("_NET_WM_STATE_SKIP_PAGER") == on;
        };
        QTRY_VERIFY(as(above));
        QVERIFY(!m_exclusions->windows().contains(own.winId()));
        // A window manager takes the states away with the window.
        own.hide();
        QTRY_VERIFY(!m_probe->isViewable(idOf(own)) && as(false));
        own.show();
        QVERIFY(QTest::qWaitForWindowExposed(&own));
        QTRY_VERIFY(as(above));
        m_controller->setWindowRole(own.windowHandle(), above ? WindowRole::Normal : WindowRole::Floating);
        QTRY_VERIFY(as(!above));
    }

    void panelDoesNotTakeTheKeyboard()
    {
        const xcb_window_t other = openFocused("500 300 300 200");
        Listening panel(Qt::FramelessWindowHint);
        panel.winId();
        m_controller->setWindowRole(panel.windowHandle(), WindowRole::Panel);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        m_probe->click(m_probe->geometry(idOf(panel)).center());
        QTRY_COMPARE(panel.clicks, 1);
        m_probe->pressKey('a');
        m_probe->click(m_probe->geometry(idOf(panel)).center());
        QTRY_COMPARE(panel.clicks, 2); // by now the key would have come
        QCOMPARE(panel.keys, 0);
        QVERIFY(isFocused(other));
    }

    void clicksGoThrough()
    {
        Listening below(Qt::FramelessWindowHint);
        Listening above(Qt::FramelessWindowHint);
        for (Listening *widget : {&below, &above}) {
            widget->winId();
            m_controller->setWindowRole(widget->windowHandle(), WindowRole::Overlay);
            widget->show();
            QVERIFY(QTest::qWaitForWindowExposed(widget));
        }
        const QPoint center = m_probe->geometry(idOf(above)).center();
        m_controller->setClickThrough(above.windowHandle(), true);
        syncQtConnection();                                    // the probe clicks over a connection of its own
        QTRY_COMPARE(m_probe->topMostAt(center), idOf(above)); // it is still on top
        m_probe->click(center);
        QTRY_COMPARE(below.clicks, 1);
        m_controller->setClickThrough(above.windowHandle(), false);
        syncQtConnection();
        m_probe->click(center);
        QTRY_COMPARE(above.clicks, 1);
        QCOMPARE(below.clicks, 1);
    }

    void loweredOverlayLetsAPromptAbove()
    {
        m_zoo->open("100 100 300 200 type=DOCK");
        m_zoo->open("300 300 300 200");
        Overlay overlay;
        overlay.showOn(*m_controller, geometryOf(u"LEFT"_qs));
        QVERIFY(QTest::qWaitForWindowExposed(&overlay));
        m_controller->setOverlayLowered(overlay.windowHandle(), true);
        const auto prompt = m_zoo->open("350 350 300 200");
        QTRY_COMPARE(m_probe->topMostAt({450, 450}), m_probe->frameOf(prompt));
        QVERIFY(m_probe->isViewable(idOf(overlay)));
        m_controller->setOverlayLowered(overlay.windowHandle(), false);
        QTRY_COMPARE(m_probe->topMostAt({450, 450}), idOf(overlay));
    }

    void windowsThatAreNotThereAreTolerated()
    {
        const auto all = [this](QWindow *window) {
            for (const WindowRole role :
                 {WindowRole::Overlay, WindowRole::Floating, WindowRole::Normal, WindowRole::Panel})
                m_controller->setWindowRole(window, role);
            m_controller->setExcludedFromCapture(window, true);
            m_controller->activate(window);
            m_controller->placeOnDisplay(window, QRect(0, 0, 100, 100));
            m_controller->setClickThrough(window, true);
            m_controller->setOverlayLowered(window, true);
            m_controller->setOverlayLowered(window, false);
            m_controller->setTitleBarHeight(window, 52);
            m_controller->setExcludedFromCapture(window, false);
        };
        all(nullptr);
        QWindow never;
        all(&never);
        QWindow gone;
        gone.create();
        gone.destroy();
        all(&gone);
        // Destroyed behind everybody's back: the server answers with errors.
        QWindow broken;
        broken.create();
        xcb_destroy_window(m_probe->xcb(), static_cast<xcb_window_t>(broken.winId()));
        m_probe->sync();
        QLoggingCategory::setFilterRules(u"qt.qpa.xcb=false"_qs);
        all(&broken);
        syncQtConnection();
        QCoreApplication::processEvents();
        m_controller->deactivateApplication();
        m_controller->setDockPresence(true);
        m_controller->releaseActivation();
        QLoggingCategory::setFilterRules({});
        QVERIFY(m_exclusions->windows().isEmpty());
    }

private:
    [[nodiscard]] bool isFocused(xcb_window_t window) const { return m_probe->focus() == window; }

    /// As a user would. Whether a window manager gives a new window the keyboard is a matter of its taste.
    xcb_window_t openFocused(const QByteArray &how)
    {
        const xcb_window_t window = m_zoo->open(how);
        if (m_probe->isManaged())
            m_probe->click(m_probe->geometry(window).center());
        else
            m_probe->setFocus(window);
        [&] { QTRY_VERIFY(isFocused(window)); }();
        return window;
    }

    [[nodiscard]] static xcb_window_t idOf(const QWidget &widget)
    {
        return static_cast<xcb_window_t>(widget.windowHandle()->winId());
    }

    [[nodiscard]] static QRect geometryOf(const QString &display)
    {
        for (const QScreen *screen : QGuiApplication::screens()) {
            if (screen->name() == display)
                return screen->geometry();
        }
        return {};
    }

    std::shared_ptr<CaptureExclusions> m_exclusions;
    std::unique_ptr<X11WindowController> m_controller;
    std::unique_ptr<test::XProbe> m_probe;
    std::unique_ptr<test::WindowZoo> m_zoo;
};

TAVREL_TWO_MONITORS_MAIN(QApplication, X11WindowControllerTest)
#include "test_x11_window_controller.moc"
