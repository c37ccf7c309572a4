// The monitor on a server cut into two monitors, LEFT 1000 x 1080 and RIGHT 919 x 901 at (1000, 100).
#include "base/host_clock.h"
#include "platform/foreign_x_client.h"
#include "platform/linux/x11_input_monitor.h"
#include "platform/x_probe.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QProcess>
#include <QScreen>
#include <QSignalSpy>

#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

using namespace tavrel;
using namespace tavrel::platform;
using Type = InputEventRecord::Type;
using test::ForeignXClient;
using test::kLeft;
using test::kRight;

namespace {

QString line(const InputEventRecord &event)
{
    switch (event.type) {
    case Type::Move:
        return QStringLiteral("move");
    case Type::ButtonDown:
    case Type::ButtonUp:
        return QStringLiteral("%1 %2")
            .arg(event.type == Type::ButtonDown ? u"press"_qs : u"release"_qs)
            .arg(event.button);
    case Type::KeyDown:
        return QStringLiteral("down %1 %2 %3").arg(event.keyName).arg(event.qtKey).arg(event.modifiers);
    case Type::KeyUp:
        return QStringLiteral("up %1").arg(event.keyName);
    default:
        return QStringLiteral("wheel");
    }
}

QStringList lines(const QList<InputEventRecord> &events)
{
    QStringList text;
    for (const InputEventRecord &event : events)
        text.append(line(event));
    return text;
}

} // namespace

class X11InputMonitorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_monitor = std::make_unique<X11InputMonitor>();
        jump(300, 300);
        m_client.sync();
    }

    void everythingIsKeptInOrderAndTold()
    {
        QSignalSpy told(m_monitor.get(), &IInputMonitor::eventRecorded);
        start();
        const double before = hostClockMs();
        jump(310, 320);
        click(1);
        click(3);
        click(2);
        click(4);
        click(6); // sideways
        const xcb_keycode_t shift = m_client.keyCode(XKB_KEY_Shift_L);
        const xcb_keycode_t b = m_client.keyCode(XKB_KEY_b);
        m_client.keyDown(shift);
        m_client.stroke(b);
        m_client.keyUp(shift);
        m_client.stroke(m_client.keyCode(XKB_KEY_F5));
        m_client.stroke(191); // F13 by its place
        m_client.stroke(m_client.keyCode(XKB_KEY_Return));
        m_client.stroke(m_client.keyCode(XKB_KEY_semicolon));
        m_client.sync();
        const QList<InputEventRecord> events = m_monitor->stop();
        const double after = hostClockMs();
        QCOMPARE(lines(events).join(u", "),
                 u"move, press 1, release 1, press 2, release 2, press 3, release 3, wheel, "
                 u"down Shift %1 0, down B 66 2, up B, up Shift, down F5 %2 0, up F5, "
                 u"down F13 %3 0, up F13, down Enter %4 0, up Enter, down  59 0, up "_qs.arg(Qt::Key_Shift)
                     .arg(Qt::Key_F5)
                     .arg(Qt::Key_F13)
                     .arg(Qt::Key_Return));
        QTRY_COMPARE(told.count(), events.size() - 2); // no move, no wheel
        QCOMPARE(told.first().first().value<InputEventRecord>(), events[1]);
        for (qsizetype i = 0; i < events.size(); ++i) {
            QVERIFY(events[i].hostMs >= before - 20 && events[i].hostMs <= after); // the server counts coarsely
            QVERIFY(i == 0 || events[i].hostMs >= events[i - 1].hostMs);
        }
        QCOMPARE(events[9].virtualKey, int(b));
        QVERIFY(!m_monitor->isRunning());
        QVERIFY(m_monitor->stop().isEmpty());
    }

    void everyPlaceOfABurstIsExact()
    {
        start();
        constexpr int kCount = 4000;
        QList<QPoint> places;
        for (int i = 0; i < kCount; ++i) {
            const QPoint place(20 + (i * 37) % 1800, 130 + (i * 53) % 800);
            places.append(place);
            jump(place.x(), place.y());
            if (i % 8 == 3)
                click(1);
        }
        m_client.sync();
        const QList<InputEventRecord> events = m_monitor->stop();
        qsizetype next = -1;
        int clicks = 0;
        for (const InputEventRecord &event : events) {
            next += event.type == Type::Move;
            clicks += event.type == Type::ButtonDown;
            QVERIFY(next >= 0 && next < places.size());
            const QPointF wanted = logical(places[next]);
            if (event.type == Type::Move)
                QCOMPARE(QPointF(event.x, event.y), QPointF(qRound(wanted.x()), qRound(wanted.y())));
            else
                QCOMPARE(QPointF(event.x, event.y), wanted);
        }
        QCOMPARE(next, kCount - 1);
        QCOMPARE(clicks, kCount / 8);
    }

    void anotherProgramsGrabHidesNothing()
    {
        start();
        QVERIFY(m_client.takeKeyboardAndPointer(false));
        click(1);
        m_client.stroke(m_client.keyCode(XKB_KEY_a));
        m_client.sync();
        m_client.releaseEverything();
        QCOMPARE(lines(m_monitor->stop()),
                 QStringList({u"press 1"_qs, u"release 1"_qs, u"down A 65 0"_qs, u"up A"_qs}));
    }

    void namesFollowTheLayout()
    {
        QCOMPARE(QProcess::execute(u"setxkbmap"_qs, {u"-layout"_qs, u"us,ru"_qs}), 0);
        const xcb_keycode_t a = m_client.keyCode(XKB_KEY_a);
        start();
        m_client.stroke(a);
        m_client.lockGroup(1);
        m_client.stroke(a);
        m_client.lockGroup(0);
        m_client.stroke(a);
        QCOMPARE(QProcess::execute(u"setxkbmap"_qs, {u"-layout"_qs, u"fr"_qs}), 0);
        m_client.stroke(a);
        m_client.sync();
        QStringList downs = lines(m_monitor->stop()).filter(u"down"_qs);
        QCOMPARE(QProcess::execute(u"setxkbmap"_qs, {u"-layout"_qs, u"us"_qs}), 0);
        // Shortcuts are Latin in every script.
        QCOMPARE(downs, QStringList({u"down A 65 0"_qs, u"down Ф 65 0"_qs, u"down A 65 0"_qs, u"down Q 81 0"_qs}));
    }

    void leftHandsHaveTheirButtonsTheOtherWayRound()
    {
        QCOMPARE(QProcess::execute(u"xmodmap"_qs, {u"-e"_qs, u"pointer = 3 2 1"_qs}), 0);
        start();
        click(1);
        m_client.sync();
        QCOMPARE(QProcess::execute(u"xmodmap"_qs, {u"-e"_qs, u"pointer = 1 2 3"_qs}), 0);
        click(1);
        m_client.sync();
        QCOMPARE(lines(m_monitor->stop()),
                 QStringList({u"press 2"_qs, u"release 2"_qs, u"press 1"_qs, u"release 1"_qs}));
    }

    void autoRepeatIsNoPress_data()
    {
        QTest::addColumn<bool>("heldBefore");
        QTest::addColumn<QStringList>("heard");
        QTest::newRow("pressed while listening") << false << QStringList({u"down A 65 0"_qs, u"up A"_qs});
        QTest::newRow("held before") << true << QStringList({u"up A"_qs, u"down A 65 0"_qs, u"up A"_qs});
    }
    void autoRepeatIsNoPress()
    {
        QFETCH(bool, heldBefore);
        m_client.setAutoRepeat(30, 10);
        const xcb_keycode_t a = m_client.keyCode(XKB_KEY_a);
        QVERIFY(m_client.focusOwnWindow());
        static_cast<void>(m_client.takeKeysOfWindow());
        if (heldBefore)
            m_client.keyDown(a);
        start();
        static_cast<void>(m_client.takeKeysOfWindow());
        if (!heldBefore)
            m_client.keyDown(a);
        QList<int> seen;
        QTRY_VERIFY((seen += m_client.takeKeysOfWindow()).size() >= 4);
        m_client.keyDown(a); // some devices repeat by themselves, and only that is a raw event
        m_client.keyUp(a);
        if (heldBefore)
            m_client.stroke(a); // a press like any other again
        QTEST(lines(m_monitor->stop()), "heard");
    }

private:
    void start()
    {
        QVERIFY(m_monitor->start(nullptr));
        QVERIFY(m_monitor->start(nullptr)); // is there
    }
    void fake(quint8 type, quint8 detail, int x = 0, int y = 0) const
    {
        xcb_test_fake_input(m_client.xcb(), type, detail, XCB_CURRENT_TIME, XCB_WINDOW_NONE, static_cast<qint16>(x),
                            static_cast<qint16>(y), 0);
    }
    void jump(int x, int y) const { fake(XCB_MOTION_NOTIFY, 0, x, y); }
    void click(quint8 button) const
    {
        fake(XCB_BUTTON_PRESS, button);
        fake(XCB_BUTTON_RELEASE, button);
    }
    static QPointF logical(const QPoint &native)
    {
        const QPoint origin = kLeft.contains(native) ? kLeft.topLeft() : kRight.topLeft();
        return QPointF(origin) + QPointF(native - origin) / QGuiApplication::primaryScreen()->devicePixelRatio();
    }

    ForeignXClient m_client;
    std::unique_ptr<X11InputMonitor> m_monitor;
};

TAVREL_TWO_MONITORS_MAIN(QGuiApplication, X11InputMonitorTest)
#include "test_x11_input_monitor.moc"
