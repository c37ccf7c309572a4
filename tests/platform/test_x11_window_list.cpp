#include "platform/linux/screen_mapping.h"
#include "platform/linux/x11_element_detector.h"
#include "platform/linux/x_connection.h"
#include "platform/window_zoo.h"
#include "platform/x_probe.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QRasterWindow>
#include <QScreen>
#include <QtConcurrentRun>

#include <algorithm>

#include <sys/socket.h>

using namespace tavrel;
using namespace tavrel::platform;

class X11WindowListTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_x = XConnection::create();
        m_detector = std::make_unique<X11ElementDetector>(m_x);
        m_zoo = std::make_unique<test::WindowZoo>();
    }

    void cleanup() { m_zoo.reset(); }

    void whatIsKnownOfAWindow()
    {
        const WId window = open("100 120 300 200 title=Grüße_aus_dem_Zoo old-title=older");
        const WId titled = open("500 120 300 200 old-title=only_old");
        const auto windows = m_detector->topLevelWindows();
        const WindowInfo info = find(windows, window);
        QCOMPARE(info.windowId, window);
        QCOMPARE(info.processId, m_zoo->processId());
        QCOMPARE(info.title, u"Grüße aus dem Zoo"_qs);
        QCOMPARE(info.applicationName, u"window_zoo"_qs);
        QCOMPARE(info.geometry, logical(outer(window)));
        QCOMPARE(find(windows, titled).title, u"only old"_qs);
    }

    void topMostComesFirst()
    {
        const WId lower = open("100 120 300 200");
        const WId middle = open("150 150 300 200");
        const WId upper = open("200 180 300 200");
        QTRY_COMPARE(order(), (QList<WId>{upper, middle, lower}));
        m_probe.raise(m_probe.frameOf(static_cast<xcb_window_t>(lower)));
        if (m_probe.isManaged())
            return; // the order is the window manager's to tell, and its frames are its own
        QCOMPARE(order(), (QList<WId>{lower, upper, middle}));
    }

    void whatIsLeftOut_data()
    {
        QTest::addColumn<QByteArray>("how");
        QTest::addColumn<bool>("listed");
        QTest::newRow("24 wide") << QByteArray("300 300 24 400 shadow=0") << true;
        QTest::newRow("23 wide") << QByteArray("300 300 23 400") << false;
        QTest::newRow("23 high") << QByteArray("300 300 400 23") << false;
        QTest::newRow("not mapped") << QByteArray("300 300 400 300 map=0") << false;
        QTest::newRow("bypassing the window manager") << QByteArray("300 300 400 300 bypass=1") << false;
        QTest::newRow("dialogue") << QByteArray("300 300 400 300 type=DIALOG") << true;
        for (const char *type : {"DOCK", "DESKTOP", "TOOLTIP", "NOTIFICATION", "DND", "MENU", "POPUP_MENU",
                                 "DROPDOWN_MENU", "COMBO", "TOOLBAR"})
            QTest::newRow(type) << QByteArray("300 300 400 300 type=") + type << false;
    }

    void whatIsLeftOut()
    {
        QFETCH(QByteArray, how);
        QFETCH(bool, listed);
        if (m_probe.isManaged() && (how.contains("24 400") || how.contains("23 400") || how.contains("400 23")))
            how += " type=SPLASH"; // without a frame, which would count
        const WId window = open(how);
        QCOMPARE(order().contains(window), listed);
    }

    void minimisedIsLeftOut()
    {
        if (!m_probe.isManaged())
            QSKIP("nobody minimises windows here");
        const WId window = open("300 300 400 300 iconic=1");
        QVERIFY(!order().contains(window));
    }

    void shadowsDoNotCount()
    {
        const WId window = open("300 300 400 300 shadow=20");
        const QRect whole = outer(window);
        QCOMPARE(find(m_detector->topLevelWindows(), window).geometry, logical(whole.adjusted(20, 20, -20, -20)));
    }

    void ownWindowsAreNotThere()
    {
        QRasterWindow own;
        own.setGeometry(100, 100, 300, 200);
        own.show();
        QVERIFY(QTest::qWaitForWindowExposed(&own));
        const WId other = open("100 120 300 200");
        QTRY_COMPARE(order(), QList<WId>{other});
    }

    /// A window may go between any two requests, and the list may be read on a worker meanwhile.
    void windowsThatComeAndGo()
    {
        const WId stays = open("600 120 300 200");
        m_zoo->tell("churn 300");
        auto worker = QtConcurrent::run([this] { return countWhole(60); });
        const int here = countWhole(60);
        QCOMPARE(here, 60);
        QCOMPARE(worker.result(), 60);
        m_zoo->answer();
        QTRY_COMPARE(order(), QList<WId>{stays});
    }

    void iconFitsBest_data()
    {
        QTest::addColumn<QByteArray>("icons"); // red, green, blue
        QTest::addColumn<int>("wanted");
        QTest::addColumn<QColor>("color");
        QTest::newRow("next larger") << QByteArray("16,64,128") << 48 << QColor(Qt::green);
        QTest::newRow("none large enough") << QByteArray("16,32,24") << 100 << QColor(Qt::green);
    }

    void iconFitsBest()
    {
        QFETCH(QByteArray, icons);
        QFETCH(int, wanted);
        QFETCH(QColor, color);
        open("100 120 300 200 icons=" + icons);
        const QImage icon = m_detector->applicationIcon(m_zoo->processId(), wanted);
        QCOMPARE(icon.size(), QSize(wanted, wanted));
        QCOMPARE(icon.pixelColor(wanted / 2, wanted / 2), color);
    }

    void serverThatIsGoneHasNoWindows()
    {
        open("100 120 300 200");
        shutdown(xcb_get_file_descriptor(m_x->xcb()), SHUT_RDWR);
        QVERIFY(m_detector->topLevelWindows().isEmpty());
    }

private:
    WId open(const QByteArray &how)
    {
        const WId window = m_zoo->open(how);
        // The window manager tells of a window a little after it has put it on the screen.
        if (m_probe.isManaged() && !how.contains("bypass") && !how.contains("map=0")) {
            [&] { QTRY_VERIFY(m_probe.property(0, "_NET_CLIENT_LIST_STACKING").contains(quint32(window))); }();
        }
        return window;
    }

    /// With the window manager's frame, as it really is on the screen.
    [[nodiscard]] QRect outer(WId window) const
    {
        return m_probe.geometry(m_probe.frameOf(static_cast<xcb_window_t>(window)));
    }

    [[nodiscard]] QRectF logical(const QRect &native) const
    {
        const double ratio = QGuiApplication::primaryScreen()->devicePixelRatio();
        return {native.x() / ratio, native.y() / ratio, native.width() / ratio, native.height() / ratio};
    }

    [[nodiscard]] QList<WId> order() const
    {
        QList<WId> ids;
        for (const WindowInfo &info : m_detector->topLevelWindows())
            ids.append(info.windowId);
        return ids;
    }

    [[nodiscard]] static WindowInfo find(const QList<WindowInfo> &windows, WId id)
    {
        const auto found =
            std::find_if(windows.begin(), windows.end(), [id](const WindowInfo &info) { return info.windowId == id; });
        return found == windows.end() ? WindowInfo{} : *found;
    }

    /// How many of `times` lists have what belongs there: each window once, each with a size.
    [[nodiscard]] int countWhole(int times) const
    {
        int whole = 0;
        for (int i = 0; i < times; ++i) {
            const auto windows = m_detector->topLevelWindows();
            const bool good = std::all_of(windows.begin(), windows.end(), [](const WindowInfo &info) {
                return info.windowId != 0 && info.geometry.width() > 0 && info.processId > 0;
            });
            whole += good && !windows.isEmpty() ? 1 : 0;
        }
        return whole;
    }

    test::XProbe m_probe;
    std::shared_ptr<XConnection> m_x;
    std::unique_ptr<X11ElementDetector> m_detector;
    std::unique_ptr<test::WindowZoo> m_zoo;
};

TAVREL_TEST_MAIN(QGuiApplication, X11WindowListTest)
#include "test_x11_window_list.moc"
