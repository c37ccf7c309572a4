#include "app/hotkey_table.h"
#include "platform/global_hotkey.h"
#include "support/test_main.h"

using namespace tavrel;

namespace {

/// Remembers what was registered; refuses the combinations it is told are taken.
class RecordingHotkey final : public platform::IGlobalHotkey
{
public:
    bool registerHotkey(int id, const KeyCombo &combo, QString *error) override
    {
        ++registrations;
        if (taken.contains(combo)) {
            *error = QStringLiteral("taken");
            return false;
        }
        bound.insert(id, combo);
        return true;
    }
    void unregisterHotkey(int id) override { bound.remove(id); }
    void unregisterAll() override { bound.clear(); }
    void setSuspended(bool) override {}

    QMap<int, KeyCombo> bound;
    QList<KeyCombo> taken;
    int registrations = 0;
};

constexpr KeyCombo kCtrl1{.key = 49, .ctrl = true};
constexpr KeyCombo kCtrl2{.key = 50, .ctrl = true};

} // namespace

class HotkeyTableTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyRowsWithAnOperationTakeTheirKey()
    {
        RecordingHotkey hotkeys;
        HotkeyTable table(hotkeys);
        table.setOperation(HotkeyTable::Capture, [] {});
        table.apply(SettingsConfig());
        QCOMPARE(hotkeys.bound.keys(), QList<int>{HotkeyTable::Capture});
        QVERIFY(table.errors().isEmpty());
    }

    void theEarlierOfTwoEqualCombinationsWins()
    {
        RecordingHotkey hotkeys;
        HotkeyTable table(hotkeys);
        table.setOperation(HotkeyTable::Capture, [] {});
        table.setOperation(HotkeyTable::History, [] {});
        SettingsConfig config;
        config.historyHotkey = {true, kCtrl1};
        table.apply(config);
        QCOMPARE(hotkeys.bound.keys(), QList<int>{HotkeyTable::Capture});
        QCOMPARE(table.errors().keys(), QStringList{QStringLiteral("history")});
        QVERIFY(table.errorLines().contains(QStringLiteral("「截图」")));

        config.captureHotkey.enabled = false;
        table.apply(config);
        QCOMPARE(hotkeys.bound.keys(), QList<int>{HotkeyTable::History});
        QVERIFY(table.errors().isEmpty());
    }

    void aTakenCombinationIsReportedUnderItsRow()
    {
        RecordingHotkey hotkeys;
        hotkeys.taken = {kCtrl1};
        HotkeyTable table(hotkeys);
        table.setOperation(HotkeyTable::Capture, [] {});
        table.setOperation(HotkeyTable::PinClipboard, [] {});
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("注册热键失败：capture .* taken")));
        table.apply(SettingsConfig());
        QCOMPARE(table.errors(), (QMap<QString, QString>{{QStringLiteral("capture"), QStringLiteral("taken")}}));
        QCOMPARE(hotkeys.bound, (QMap<int, KeyCombo>{{HotkeyTable::PinClipboard, kCtrl2}}));
    }

    void aChangeElsewhereInTheSettingsRegistersNothingAnew()
    {
        RecordingHotkey hotkeys;
        HotkeyTable table(hotkeys);
        table.setOperation(HotkeyTable::Capture, [] {});
        SettingsConfig config;
        table.apply(config);
        config.showMagnifier = false;
        config.historyHotkey = {true, kCtrl2};
        table.apply(config);
        QCOMPARE(hotkeys.registrations, 1);
        config.captureHotkey.combo = kCtrl2;
        table.apply(config);
        QCOMPARE(hotkeys.registrations, 2);
    }

    void aFailedRowIsTriedAgainAndTheOthersAreLeftAlone()
    {
        RecordingHotkey hotkeys;
        hotkeys.taken = {kCtrl1};
        HotkeyTable table(hotkeys);
        table.setOperation(HotkeyTable::Capture, [] {});
        table.setOperation(HotkeyTable::PinClipboard, [] {});
        for (int i = 0; i < 2; ++i) {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("注册热键失败：capture .* taken")));
            table.apply(SettingsConfig());
        }
        hotkeys.taken.clear();
        table.apply(SettingsConfig());
        QVERIFY(table.errors().isEmpty());
        QCOMPARE(hotkeys.bound.size(), 2);
        QCOMPARE(hotkeys.registrations, 4); // the capture row three times, the other once
    }

    void aPressRunsItsOperationAndAnUnknownIdNothing()
    {
        RecordingHotkey hotkeys;
        HotkeyTable table(hotkeys);
        int captures = 0;
        table.setOperation(HotkeyTable::Capture, [&captures] { ++captures; });
        table.dispatch(HotkeyTable::Capture);
        table.dispatch(HotkeyTable::Edit);
        table.dispatch(-1);
        QCOMPARE(captures, 1);
    }
};

TAVREL_TEST_MAIN(QGuiApplication, HotkeyTableTest)
#include "test_hotkey_table.moc"
