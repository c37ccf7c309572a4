#include "foreign_x_client.h"
#include "platform/linux/x11_global_hotkey.h"
#include "platform/synthetic/synthetic_global_hotkey.h"
#include "settings/key_combo.h"

#include "support/test_main.h"

#include <QGuiApplication>
#include <QProcess>

#include <xkbcommon/xkbcommon-keysyms.h>

#include <atomic>

using namespace tavrel;
using namespace tavrel::platform;
using tavrel::test::ForeignXClient;

namespace {

constexpr int kSentinelId = 1000;
constexpr KeyCombo kSentinel{.key = Qt::Key_F9};
constexpr KeyCombo kCtrlA{.key = Qt::Key_A, .ctrl = true};
constexpr KeyCombo kCtrlB{.key = Qt::Key_B, .ctrl = true};
constexpr KeyCombo kCtrlShiftA{.key = Qt::Key_A, .ctrl = true, .shift = true};
constexpr KeyCombo kCtrl1{.key = Qt::Key_1, .ctrl = true};

} // namespace

/// What holds for every implementation. The subclass says where the keys come from.
class GlobalHotkeyContract : public QObject
{
    Q_OBJECT

protected:
    virtual std::unique_ptr<IGlobalHotkey> makeHotkey() = 0;
    virtual void keyDown(const KeyCombo &combo) = 0;
    virtual void keyUp(const KeyCombo &combo) = 0;
    virtual void setTakenElsewhere(const KeyCombo &combo, bool taken) = 0;
    /// After a test, so that one that failed halfway does not take the next ones along.
    virtual void resetKeyboard() {}

    void press(const KeyCombo &combo)
    {
        keyDown(combo);
        keyUp(combo);
    }
    /// Waits until everything pressed so far has had its effect, and compares what has fired.
    void expectFired(QList<int> ids)
    {
        press(kSentinel);
        ids.append(kSentinelId);
        QTRY_COMPARE(m_fired, ids);
        m_fired.clear();
    }
    bool bind(int id, const KeyCombo &combo)
    {
        QString error;
        const bool bound = m_hotkey->registerHotkey(id, combo, &error);
        if (bound != error.isEmpty())
            qWarning("the result and the error text contradict each other");
        return bound;
    }
    void renew()
    {
        m_hotkey.reset();
        m_hotkey = makeHotkey();
        m_fired.clear();
        connect(m_hotkey.get(), &IGlobalHotkey::activated, this, [this](int id) {
            if (QThread::currentThread() != qApp->thread())
                qWarning("fired on another thread");
            m_fired.append(id);
        });
        QVERIFY(bind(kSentinelId, kSentinel));
    }

    std::unique_ptr<IGlobalHotkey> m_hotkey;
    QList<int> m_fired;

private Q_SLOTS:
    void init() { renew(); }
    void cleanup()
    {
        m_hotkey.reset();
        resetKeyboard();
    }

    void refusedCombos_data()
    {
        QTest::addColumn<KeyCombo>("combo");
        QTest::addColumn<bool>("takenElsewhere");
        QTest::addColumn<QString>("error");
        QTest::newRow("invalid") << KeyCombo{} << false << QStringLiteral("按键组合无效");
        QTest::newRow("modifiers alone") << KeyCombo{.ctrl = true} << false << QStringLiteral("按键组合无效");
        QTest::newRow("no such key") << KeyCombo{.key = Qt::Key_Launch5, .ctrl = true} << false
                                     << QStringLiteral("不支持的按键");
        QTest::newRow("another program's") << kCtrlB << true << QStringLiteral("该组合键已被其他程序占用");
    }
    void refusedCombos()
    {
        QFETCH(KeyCombo, combo);
        QFETCH(bool, takenElsewhere);
        QFETCH(QString, error);
        QVERIFY(bind(1, kCtrlA));
        if (takenElsewhere)
            setTakenElsewhere(combo, true);
        QString given;
        QVERIFY(!m_hotkey->registerHotkey(1, combo, &given));
        QVERIFY2(given.startsWith(error), qPrintable(given)); // who may have it can follow
        QVERIFY(!m_hotkey->registerHotkey(2, combo, nullptr));
        // The earlier binding of the id is as it was.
        press(kCtrlA);
        expectFired({1});
        if (takenElsewhere) {
            setTakenElsewhere(combo, false);
            QVERIFY(bind(1, combo));
            press(kCtrlA);
            press(combo);
            expectFired({1});
        }
    }

    void pressFiresOnceUntilReleased()
    {
        QVERIFY(bind(1, kCtrlA));
        QVERIFY(bind(2, kCtrl1));
        press(kCtrlA);
        press(kCtrl1);
        press(kCtrlA);
        expectFired({1, 2, 1});
        for (int i = 0; i < 5; ++i)
            keyDown(kCtrlA);
        keyUp(kCtrlA);
        expectFired({1});
        press(kCtrlA);
        expectFired({1});
    }

    void modifiersCompareExactly()
    {
        QVERIFY(bind(1, kCtrlA));
        press(kCtrlShiftA);
        press({.key = Qt::Key_A, .ctrl = true, .alt = true});
        press({.key = Qt::Key_A, .ctrl = true, .meta = true});
        press({.key = Qt::Key_A});
        expectFired({});
        QVERIFY(bind(2, kCtrlShiftA));
        press(kCtrlShiftA);
        press(kCtrlA);
        expectFired({2, 1});
    }

    void laterComboOfAnIdReplacesTheEarlier()
    {
        QVERIFY(bind(1, kCtrlA));
        QVERIFY(bind(1, kCtrlB));
        press(kCtrlA);
        press(kCtrlB);
        expectFired({1});
        QVERIFY(bind(1, kCtrlB));
        press(kCtrlB);
        expectFired({1});
    }

    void unregisteredIdsAreSilent()
    {
        QVERIFY(bind(1, kCtrlA));
        QVERIFY(bind(2, kCtrlB));
        m_hotkey->unregisterHotkey(1);
        m_hotkey->unregisterHotkey(77);
        press(kCtrlA);
        press(kCtrlB);
        expectFired({2});
        m_hotkey->unregisterAll();
        QVERIFY(bind(kSentinelId, kSentinel));
        press(kCtrlB);
        expectFired({});
    }

    void suspensionNests()
    {
        QVERIFY(bind(1, kCtrlA));
        m_hotkey->setSuspended(true);
        m_hotkey->setSuspended(true);
        press(kCtrlA);
        m_hotkey->setSuspended(false);
        press(kCtrlA);
        QVERIFY(bind(2, kCtrlB)); // bound while suspended
        setTakenElsewhere(kCtrl1, true);
        QVERIFY(!bind(3, kCtrl1)); // and refused
        setTakenElsewhere(kCtrl1, false);
        press(kCtrlB);
        m_hotkey->setSuspended(false);
        press(kCtrlA);
        press(kCtrlB);
        expectFired({1, 2});
        m_hotkey->setSuspended(false); // one too many
        press(kCtrlA);
        expectFired({1});
    }

    void handlerMayChangeBindings()
    {
        QVERIFY(bind(1, kCtrlA));
        QVERIFY(bind(2, kCtrlB));
        connect(m_hotkey.get(), &IGlobalHotkey::activated, this, [this](int id) {
            if (id == 1)
                m_hotkey->unregisterHotkey(2);
        });
        press(kCtrlA);
        press(kCtrlB);
        expectFired({1});
    }

    void handlerMayDestroyTheHotkeys()
    {
        QVERIFY(bind(1, kCtrlA));
        connect(m_hotkey.get(), &IGlobalHotkey::activated, this, [this](int) { m_hotkey.reset(); });
        keyDown(kCtrlA);
        QTRY_VERIFY(!m_hotkey);
        // While the key is held somebody else binds it.
        renew();
        QVERIFY(bind(1, kCtrlA));
        keyUp(kCtrlA);
        press(kCtrlA);
        expectFired({1});
    }

    void twoHundredRegistrations()
    {
        for (int i = 0; i < 200; ++i) {
            QVERIFY(bind(i % 7, i % 2 ? kCtrlA : kCtrlB));
            if (i % 3 == 0)
                m_hotkey->unregisterHotkey(i % 5);
        }
        for (int id = 0; id < 7; ++id)
            m_hotkey->unregisterHotkey(id);
        setTakenElsewhere(kCtrlA, true); // nothing of them is left
        setTakenElsewhere(kCtrlA, false);
        QVERIFY(bind(3, kCtrlA));
        press(kCtrlA);
        press(kCtrlB);
        expectFired({3});
    }
};

class SyntheticGlobalHotkeyTest final : public GlobalHotkeyContract
{
    Q_OBJECT

protected:
    std::unique_ptr<IGlobalHotkey> makeHotkey() override
    {
        auto made = std::make_unique<SyntheticGlobalHotkey>();
        m_synthetic = made.get();
        return made;
    }
    void keyDown(const KeyCombo &combo) override
    {
        // A press after the handler has destroyed the hotkeys reaches nobody.
        if (m_synthetic)
            m_synthetic->keyDown(combo);
    }
    void keyUp(const KeyCombo &combo) override
    {
        if (m_synthetic)
            m_synthetic->keyUp(combo);
    }
    void setTakenElsewhere(const KeyCombo &combo, bool taken) override { m_synthetic->setTakenElsewhere(combo, taken); }

private:
    QPointer<SyntheticGlobalHotkey> m_synthetic;
};

class X11GlobalHotkeyTest final : public GlobalHotkeyContract
{
    Q_OBJECT

    static constexpr quint32 kShift = 1;
    static constexpr quint32 kCapsLock = 2;
    static constexpr quint32 kControl = 4;
    static constexpr quint32 kNumLock = 0x10;
    static constexpr quint32 kMod3 = 0x20;

protected:
    std::unique_ptr<IGlobalHotkey> makeHotkey() override { return std::make_unique<X11GlobalHotkey>(); }
    void keyDown(const KeyCombo &combo) override
    {
        for (const quint32 modifier : modifierSymbols(combo))
            m_client.keyDown(m_client.keyCode(modifier));
        m_client.keyDown(keyCode(combo));
    }
    void keyUp(const KeyCombo &combo) override
    {
        m_client.keyUp(keyCode(combo));
        for (const quint32 modifier : modifierSymbols(combo))
            m_client.keyUp(m_client.keyCode(modifier));
    }
    void setTakenElsewhere(const KeyCombo &combo, bool taken) override
    {
        const quint32 modifiers = (combo.ctrl ? kControl : 0) | (combo.shift ? kShift : 0);
        if (taken)
            QVERIFY(m_client.grabKey(ForeignXClient::GrabKind::Core, keyCode(combo), modifiers));
        else
            m_client.ungrabKey(ForeignXClient::GrabKind::Core, keyCode(combo), modifiers);
    }

    void resetKeyboard() override
    {
        m_client.releaseEverything();
        for (const KeyCombo &combo : {kCtrlA, kCtrlB, kCtrlShiftA, kCtrl1, kSentinel})
            keyUp(combo);
        setLocks(0);
        static_cast<void>(m_client.takeKeysOfWindow());
    }

private:
    static QList<quint32> modifierSymbols(const KeyCombo &combo)
    {
        QList<quint32> symbols;
        if (combo.ctrl)
            symbols.append(XKB_KEY_Control_L);
        if (combo.shift)
            symbols.append(XKB_KEY_Shift_L);
        if (combo.alt)
            symbols.append(XKB_KEY_Alt_L);
        if (combo.meta)
            symbols.append(XKB_KEY_Super_L);
        return symbols;
    }
    xcb_keycode_t keyCode(const KeyCombo &combo) const
    {
        const auto key = static_cast<quint32>(combo.key);
        if (combo.key >= Qt::Key_F1 && combo.key <= Qt::Key_F35)
            return m_client.keyCode(XKB_KEY_F1 + key - Qt::Key_F1);
        return m_client.keyCode(combo.key >= Qt::Key_A && combo.key <= Qt::Key_Z ? key + 32 : key);
    }
    /// Returns when the listener has taken in what the server has told it so far.
    void settle()
    {
        m_hotkey->setSuspended(true);
        m_hotkey->setSuspended(false);
    }
    /// The keys of the focused window, up to a plain key pressed for the purpose.
    void expectKeysOfWindow(QList<int> keys)
    {
        const xcb_keycode_t last = m_client.keyCode(XKB_KEY_x);
        m_client.stroke(last);
        keys.append(last);
        QList<int> seen;
        QTRY_VERIFY((seen += m_client.takeKeysOfWindow()).contains(last));
        const auto isModifier = [this](int key) {
            return key == m_client.keyCode(XKB_KEY_Control_L) || key == m_client.keyCode(XKB_KEY_Shift_L);
        };
        seen.removeIf(isModifier);
        QCOMPARE(seen, keys);
    }
    void setLocks(quint32 wanted)
    {
        m_client.lockModifiers(wanted);
        QCOMPARE(m_client.modifierState(), wanted);
    }
    static void setLayout(const QStringList &arguments)
    {
        QCOMPARE(QProcess::execute(QStringLiteral("setxkbmap"), arguments), 0);
    }

    ForeignXClient m_client;

private Q_SLOTS:
    void lockOnAnotherModifier()
    {
        QVERIFY(bind(1, kCtrlA));
        QVERIFY(m_client.swapModifiers(4, 5)); // Mod2, where NumLock is, and Mod3
        settle();
        m_client.stroke(m_client.keyCode(XKB_KEY_Num_Lock));
        QCOMPARE(m_client.modifierState(), kMod3);
        QVERIFY(m_client.focusOwnWindow());
        press(kCtrlA);
        expectFired({1});
        expectKeysOfWindow({});
        m_client.stroke(m_client.keyCode(XKB_KEY_Num_Lock));
        QVERIFY(m_client.swapModifiers(4, 5));
        settle();
        press(kCtrlA);
        expectFired({1});
    }

    void autoRepeatFiresOnce()
    {
        // The trace shows that the repeats have come.
        static std::atomic_int repeats;
        repeats = 0;
        qputenv("TAVREL_HOTKEY_TRACE", "1");
        renew();
        qunsetenv("TAVREL_HOTKEY_TRACE");
        QVERIFY(bind(1, kCtrlA));
        const QtMessageHandler before =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &message) {
                if (message.contains(u"down=1 fire=0 swallow=1 path=grab"))
                    ++repeats;
            });
        m_client.setAutoRepeat(20, 10);
        keyDown(kCtrlA);
        const bool haveRepeated = QTest::qWaitFor([] { return repeats > 5; });
        keyUp(kCtrlA);
        m_client.setAutoRepeat(500, 30);
        press(kSentinel);
        const bool isOver = QTest::qWaitFor([this] { return m_fired.contains(kSentinelId); });
        qInstallMessageHandler(before);
        QVERIFY(haveRepeated && isOver);
        QCOMPARE(m_fired, (QList<int>{1, kSentinelId}));
    }

    void combinationsOfOtherProgramsAreRefused_data()
    {
        QTest::addColumn<ForeignXClient::GrabKind>("kind");
        QTest::addColumn<quint32>("locks");
        QTest::newRow("core") << ForeignXClient::GrabKind::Core << 0U;
        QTest::newRow("core, with a lock only") << ForeignXClient::GrabKind::Core << kNumLock;
        QTest::newRow("XInput") << ForeignXClient::GrabKind::XInput << 0U;
        QTest::newRow("XInput, with a lock only") << ForeignXClient::GrabKind::XInput << (kNumLock | kCapsLock);
    }
    void combinationsOfOtherProgramsAreRefused()
    {
        QFETCH(ForeignXClient::GrabKind, kind);
        QFETCH(quint32, locks);
        const xcb_keycode_t key = keyCode(kCtrlA);
        QVERIFY(m_client.grabKey(kind, key, kControl | locks));
        QString error;
        QVERIFY(!m_hotkey->registerHotkey(1, kCtrlA, &error));
        QVERIFY2(error.startsWith(QStringLiteral("该组合键已被其他程序占用")), qPrintable(error));
        // Nothing of the attempt is left behind.
        ForeignXClient third;
        for (const auto attempt : {ForeignXClient::GrabKind::Core, ForeignXClient::GrabKind::XInput}) {
            for (const quint32 others : {0U, kCapsLock, kNumLock, kCapsLock | kNumLock}) {
                if (attempt == kind && others == locks)
                    continue;
                QVERIFY(third.grabKey(attempt, key, kControl | others));
                third.ungrabKey(attempt, key, kControl | others);
            }
        }
        m_client.ungrabKey(kind, key, kControl | locks);
        QVERIFY(bind(1, kCtrlA));
        QVERIFY(!third.grabKey(kind, key, kControl | locks)); // now it is ours
        press(kCtrlA);
        expectFired({1});
    }

    void layoutChangeMovesTheKey()
    {
        QVERIFY(bind(1, {.key = Qt::Key_Z, .ctrl = true}));
        const xcb_keycode_t usZ = m_client.keyCode(XKB_KEY_z);
        const xcb_keycode_t control = m_client.keyCode(XKB_KEY_Control_L);
        const auto pressWithControl = [&](xcb_keycode_t key) {
            m_client.keyDown(control);
            m_client.stroke(key);
            m_client.keyUp(control);
        };
        setLayout({QStringLiteral("us,de")});
        settle();
        pressWithControl(usZ);
        expectFired({1});
        m_client.lockGroup(1);
        settle();
        const xcb_keycode_t germanZ = 29; // the US keyboard's Y
        pressWithControl(usZ);
        expectFired({});
        pressWithControl(germanZ);
        expectFired({1});
        m_client.lockGroup(0);
        setLayout({QStringLiteral("us")});
        settle();
        pressWithControl(usZ);
        expectFired({1});
    }

    void combinationLostByAMappingChangeComesBack()
    {
        const xcb_keycode_t a = m_client.keyCode(XKB_KEY_a);
        const xcb_keycode_t b = m_client.keyCode(XKB_KEY_b);
        QVERIFY(bind(1, kCtrlA));
        QVERIFY(m_client.grabKey(ForeignXClient::GrabKind::Core, b, kControl));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("热键 ctrl\\+65（id=1）现在无法占用")));
        m_client.swapKeys(a, b);
        settle();
        press(kCtrlA);
        expectFired({});
        m_client.ungrabKey(ForeignXClient::GrabKind::Core, b, kControl);
        m_client.swapKeys(a, b);
        settle();
        press(kCtrlA);
        expectFired({1});
    }

    void frozenKeyboardFiresWhenItThaws()
    {
        QVERIFY(bind(1, kCtrlA));
        QVERIFY(bind(2, kCtrlShiftA));
        QVERIFY(m_client.takeKeyboardAndPointer(true));
        press(kCtrlA);
        press(kCtrlShiftA);
        press(kCtrlA);
        m_client.releaseEverything();
        expectFired({1, 2, 1});
    }

    void suspendedKeysReachTheFocusedWindow()
    {
        QVERIFY(bind(1, kCtrlA));
        QVERIFY(m_client.focusOwnWindow());
        m_hotkey->setSuspended(true);
        press(kCtrlA);
        expectKeysOfWindow({keyCode(kCtrlA)});
        m_hotkey->setSuspended(false);
        press(kCtrlA);
        expectFired({1});
        expectKeysOfWindow({});
    }

    void serverThatDoesNotAnswer()
    {
        m_client.setServerGrabbed(true);
        QString error;
        QVERIFY(!m_hotkey->registerHotkey(1, kCtrlA, &error));
        QCOMPARE(error, QStringLiteral("无法安装键盘钩子（错误码 110）"));
        m_client.setServerGrabbed(false);
        settle();
        press(kCtrlA); // refused once, it does not come true later
        expectFired({});
        m_client.setServerGrabbed(true);
        QVERIFY(!m_hotkey->registerHotkey(1, kCtrlA, &error));
        m_hotkey.reset(); // ends all the same
        m_client.setServerGrabbed(false);
    }

    void serverThatGoesAway()
    {
        QProcess server;
        server.start(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1"),
                                              QStringLiteral("-nolisten"), QStringLiteral("tcp")});
        QTRY_VERIFY(server.canReadLine());
        X11GlobalHotkey hotkey(":" + server.readLine().trimmed());
        QString error;
        QVERIFY2(hotkey.registerHotkey(1, kCtrlA, &error), qPrintable(error));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("与 X 服务器的连接已断开")));
        server.kill();
        QVERIFY(server.waitForFinished());
        QTRY_VERIFY(!hotkey.registerHotkey(2, kCtrlB, &error));
        QVERIFY(error.startsWith(QStringLiteral("无法安装键盘钩子")));
        hotkey.setSuspended(true);
        hotkey.unregisterAll();
    }
};

int main(int argc, char *argv[])
{
    const tavrel::test::IsolatedHome home;
    QGuiApplication app(argc, argv);
    if (QGuiApplication::platformName() == u"xcb") {
        X11GlobalHotkeyTest test;
        return QTest::qExec(&test, argc, argv);
    }
    SyntheticGlobalHotkeyTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "test_global_hotkey.moc"
