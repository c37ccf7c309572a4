#include "platform/hotkey_matcher.h"

#include "support/test_main.h"

#include <QCoreApplication>

using namespace tavrel::platform;

namespace {

constexpr quint32 kCtrl = 1;
constexpr quint32 kShift = 2;
constexpr quint32 kKeyA = 38;
constexpr quint32 kKeyB = 56;
constexpr auto kListener = HotkeyPath::Listener;
constexpr auto kGrab = HotkeyPath::Grab;

HotkeyMatcher matcherOfCtrlA()
{
    HotkeyMatcher matcher;
    matcher.setTable({{.id = 7, .stroke = {kKeyA, kCtrl}}});
    return matcher;
}

} // namespace

class HotkeyMatcherTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void heldKeyFiresOnceAndItsReleaseIsSwallowed()
    {
        HotkeyMatcher matcher = matcherOfCtrlA();
        QCOMPARE(matcher.press({kKeyA, kCtrl}, 100, kListener).fired, 7);
        for (quint32 time = 600; time < 1000; time += 40) {
            const auto repeat = matcher.press({kKeyA, kCtrl}, time, kListener);
            QVERIFY(repeat.swallowed && !repeat.fired);
        }
        // Ctrl goes up before the key: the rest of the press still belongs to the hotkey.
        QVERIFY(matcher.press({kKeyA, 0}, 1000, kListener).swallowed);
        QVERIFY(matcher.release(kKeyA).swallowed);
        QVERIFY(!matcher.release(kKeyA).swallowed);
        QCOMPARE(matcher.press({kKeyA, kCtrl}, 1100, kListener).fired, 7);
    }

    void pressReportedByBothPathsFiresOnce_data()
    {
        QTest::addColumn<QString>("events"); // L or G is a press, l or g a release; a digit sets the time
        QTest::addColumn<int>("fires");
        QTest::newRow("interleaved") << QStringLiteral("1LG2lg") << 1;
        QTest::newRow("grab first") << QStringLiteral("1GL2gl") << 1;
        QTest::newRow("listener alone") << QStringLiteral("1L2l3L4l") << 2;
        QTest::newRow("grab alone") << QStringLiteral("1G2g3G4g") << 2;
        QTest::newRow("grab replayed after the release") << QStringLiteral("1L2l1G2g") << 1;
        QTest::newRow("two presses replayed later") << QStringLiteral("1L2l3L4l1G2g3G4g") << 2;
        QTest::newRow("replay while the next press is held") << QStringLiteral("1L2l3L1G2g3G4lg") << 2;
        QTest::newRow("two presses in one millisecond") << QStringLiteral("1LlLl") << 2;
        QTest::newRow("the same on both paths") << QStringLiteral("1LGlgLGlg") << 2;
        QTest::newRow("auto-repeat of the grab while held") << QStringLiteral("1LG2G3G4lg5LG6lg") << 2;
    }
    void pressReportedByBothPathsFiresOnce()
    {
        QFETCH(QString, events);
        QFETCH(int, fires);
        HotkeyMatcher matcher = matcherOfCtrlA();
        quint32 time = 0;
        int fired = 0;
        for (const QChar event : events) {
            const auto path = event.toLower() == u'l' ? kListener : kGrab;
            if (event.isDigit())
                time = static_cast<quint32>(event.digitValue());
            else if (event.isUpper())
                fired += matcher.press({kKeyA, kCtrl}, time, path).fired ? 1 : 0;
            else
                matcher.release(kKeyA);
        }
        QCOMPARE(fired, fires);
        QVERIFY(!matcher.hasPressed());
    }

    void seventeenthPressedKeyForgetsTheOldest()
    {
        HotkeyMatcher matcher;
        std::vector<HotkeyMatcher::Entry> table;
        for (quint32 key = 0; key <= HotkeyMatcher::kMaxPressed; ++key)
            table.push_back({.id = static_cast<int>(key) + 1, .stroke = {key, kCtrl}});
        matcher.setTable(table);
        for (quint32 key = 0; key <= HotkeyMatcher::kMaxPressed; ++key)
            QCOMPARE(matcher.press({key, kCtrl}, key, kListener).fired, static_cast<int>(key) + 1);
        QVERIFY(!matcher.release(0).swallowed);
        for (quint32 key = 1; key <= HotkeyMatcher::kMaxPressed; ++key)
            QVERIFY(matcher.release(key).swallowed);
        QVERIFY(!matcher.hasPressed());
    }

    void newTableDoesNotFireHeldKeys()
    {
        HotkeyMatcher matcher = matcherOfCtrlA();
        matcher.press({kKeyA, kCtrl}, 100, kListener);
        matcher.setTable({{.id = 3, .stroke = {kKeyA, kCtrl}}});
        QVERIFY(!matcher.press({kKeyA, kCtrl}, 140, kListener).fired);
        matcher.release(kKeyA);
        QCOMPARE(matcher.press({kKeyA, kCtrl}, 200, kListener).fired, 3);
    }

    void lostReleaseIsRepaired()
    {
        HotkeyMatcher matcher;
        matcher.setTable({{.id = 1, .stroke = {kKeyA, kCtrl}}, {.id = 2, .stroke = {kKeyB, kCtrl}}});
        matcher.press({kKeyA, kCtrl}, 100, kListener);
        matcher.press({kKeyB, kCtrl}, 110, kListener);
        matcher.keepPressed([](quint32 key) { return key == kKeyB; });
        QCOMPARE(matcher.press({kKeyA, kCtrl}, 200, kListener).fired, 1);
        QVERIFY(!matcher.press({kKeyB, kCtrl}, 210, kListener).fired);
    }
};

TAVREL_TEST_MAIN(QCoreApplication, HotkeyMatcherTest)
#include "test_hotkey_matcher.moc"
