#include "settings/key_combo.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QKeyEvent>

using namespace tavrel;

class KeyComboTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAndWritesTheStoredText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("written");
        QTest::newRow("order and case") << QStringLiteral(" Meta +ALT+ 65") << QStringLiteral("alt+meta+65");
        QTest::newRow("empty parts") << QStringLiteral("ctrl++49") << QStringLiteral("ctrl+49");
        QTest::newRow("full-width letter") << QStringLiteral("ctrl+65313") << QStringLiteral("ctrl+65");
        QTest::newRow("invalid: empty") << QString() << QString();
        QTest::newRow("invalid: no number") << QStringLiteral("ctrl+abc") << QString();
        QTest::newRow("invalid: unknown modifier") << QStringLiteral("hyper+49") << QString();
        QTest::newRow("invalid: zero") << QStringLiteral("ctrl+0") << QString();
        QTest::newRow("invalid: too large") << QStringLiteral("ctrl+99999999999") << QString();
    }

    void readsAndWritesTheStoredText()
    {
        QFETCH(QString, text);
        QFETCH(QString, written);
        QCOMPARE(KeyCombo::fromJsonText(text).toJsonText(), written);
    }

    void aPressUnderAnInputMethodEqualsTheOneWithoutIt_data()
    {
        QTest::addColumn<int>("typed");
        QTest::addColumn<bool>("shift");
        QTest::addColumn<int>("key");
        QTest::newRow("ideographic comma") << 0x3001 << false << int('\\');
        QTest::newRow("ideographic comma, shift") << 0x3001 << true << int(',');
        QTest::newRow("bracket") << 0x3010 << false << int('[');
        QTest::newRow("full-width digit") << 0xff11 << false << int('1');
        QTest::newRow("no plain form") << 0x4e2d << false << 0x4e2d;
    }

    void aPressUnderAnInputMethodEqualsTheOneWithoutIt()
    {
        QFETCH(int, typed);
        QFETCH(bool, shift);
        QFETCH(int, key);
        const QKeyEvent event(QEvent::KeyPress, typed,
                              Qt::ControlModifier | (shift ? Qt::ShiftModifier : Qt::NoModifier));
        const KeyCombo combo = KeyCombo::fromEvent(event);
        QCOMPARE(combo.key, key);
        QVERIFY(combo.ctrl && combo.shift == shift);
    }

    void aModifierAloneIsNoCombo()
    {
        for (const int key : {Qt::Key_Shift, Qt::Key_Control, Qt::Key_Meta, Qt::Key_Alt, Qt::Key_CapsLock,
                              Qt::Key_AltGr, Qt::Key_Super_L, Qt::Key_Super_R, Qt::Key_NumLock, Qt::Key_ScrollLock})
            QVERIFY(!KeyCombo::fromEvent(QKeyEvent(QEvent::KeyPress, key, Qt::NoModifier)).isValid());
    }

    void globalHotkeysNeedAModifierUnlessTheyAreFunctionKeys()
    {
        QVERIFY(!isGlobalHotkeyCombo({.key = 49}));
        QVERIFY(isGlobalHotkeyCombo({.key = 49, .shift = true}));
        QVERIFY(isGlobalHotkeyCombo({.key = Qt::Key_F1}));
        QVERIFY(isGlobalHotkeyCombo({.key = Qt::Key_F35}));
        QVERIFY(!isGlobalHotkeyCombo({.ctrl = true}));
    }
};

TAVREL_TEST_MAIN(QGuiApplication, KeyComboTest)
#include "test_key_combo.moc"
