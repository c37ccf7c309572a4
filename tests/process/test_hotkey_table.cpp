#include "platform/global_hotkey.h"
#include "process/hotkey_table.h"
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
        Commands commands;
        HotkeyTable table(hotkeys, commands);
        commands.set(Command::Capture, [] {});
        table.apply(SettingsConfig());
        QCOMPARE(hotkeys.bound.keys(), QList<int>{HotkeyTable::Capture});
        QVERIFY(table.errors().isEmpty());
    }

    void theEarlierOfTwoEqualCombinationsWins()
    {
        RecordingHotkey hotkeys;
        Commands commands;
        HotkeyTable table(hotkeys, commands);
        commands.set(Command::Capture, [] {});
        commands.set(Command::History, [] {});
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
        Commands commands;
        HotkeyTable table(hotkeys, commands);
        commands.set(Command::Capture, [] {});
        commands.set(Command::PinClipboard, [] {});
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("注册热键失败：capture .* taken")));
        table.apply(SettingsConfig());
        QCOMPARE(table.errors(), (QMap<QString, QString>{{QStringLiteral("capture"), QStringLiteral("taken")}}));
        QCOMPARE(hotkeys.bound, (QMap<int, KeyCombo>{{HotkeyTable::PinClipboard, kCtrl2}}));
    }

    void aChangeElsewhereInTheSettingsRegistersNothingAnew()
    {
        RecordingHotkey hotkeys;
        Commands commands;
        HotkeyTable table(hotkeys, commands);
        commands.set(Command::Capture, [] {});
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
        Commands commands;
        HotkeyTable table(hotkeys, commands);
        commands.set(Command::Capture, [] {});
        commands.set(Command::PinClipboard, [] {});
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("注册热键失败：capture .* taken")));
        table.apply(SettingsConfig());
        table.apply(SettingsConfig());
        QVERIFY(table.mayRecover());
        hotkeys.taken.clear();
        table.apply(SettingsConfig());
        QVERIFY(table.errors().isEmpty());
        QVERIFY(!table.mayRecover());
        QCOMPARE(hotkeys.bound.size(), 2);
        QCOMPARE(hotkeys.registrations, 4); // the capture row three times, the other once
    }

    void theStopKeyIsThereWhileARecordingRuns()
    {
        RecordingHotkey hotkeys;
        Commands commands;
        HotkeyTable table(hotkeys, commands);
        int stops = 0;
        int records = 0;
        commands.set(Command::StopRecording, [&stops] { ++stops; });
        commands.set(Command::Record, [&records] { ++records; });
        SettingsConfig config;
        config.recordHotkey = {true, kCtrl1};
        config.recordStopHotkey = {true, kCtrl2};
        config.captureHotkey.enabled = false;
        table.apply(config);
        table.dispatch(HotkeyTable::RecordStop);
        QCOMPARE(stops, 0);
        table.setRecording(true, config);
        QCOMPARE(hotkeys.bound,
                 (QMap<int, KeyCombo>{{HotkeyTable::Record, kCtrl1}, {HotkeyTable::RecordStop, kCtrl2}}));
        table.dispatch(HotkeyTable::RecordStop);
        QCOMPARE(stops, 1);

        config.recordStopHotkey.combo = kCtrl1; // one key begins and ends it
        table.apply(config);
        QCOMPARE(hotkeys.bound.keys(), QList<int>{HotkeyTable::Record});
        config.recordHotkey.enabled = false;
        table.apply(config);
        QCOMPARE(hotkeys.bound, (QMap<int, KeyCombo>{{HotkeyTable::RecordStop, kCtrl1}}));
        table.setRecording(false, config);
        QVERIFY(hotkeys.bound.isEmpty());
        QCOMPARE(records, 0);
    }

    void aPressRunsItsOperationAndAnUnknownIdNothing()
    {
        RecordingHotkey hotkeys;
        Commands commands;
        HotkeyTable table(hotkeys, commands);
        int captures = 0;
        commands.set(Command::Capture, [&captures] { ++captures; });
        table.dispatch(HotkeyTable::Capture);
        table.dispatch(HotkeyTable::Edit);
        table.dispatch(-1);
        QCOMPARE(captures, 1);
    }
};

TAVREL_TEST_MAIN(QGuiApplication, HotkeyTableTest)
#include "test_hotkey_table.moc"
