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
    void init()
    {
        m_hotkeys = std::make_unique<RecordingHotkey>();
        m_commands = std::make_unique<Commands>();
        m_table = std::make_unique<HotkeyTable>(*m_hotkeys, *m_commands);
    }

    void onlyRowsWithAnOperationTakeTheirKey()
    {
        m_commands->set(Command::Capture, [] {});
        m_table->apply(SettingsConfig());
        QCOMPARE(m_hotkeys->bound.keys(), QList<int>{HotkeyTable::Capture});
        QVERIFY(m_table->errors().isEmpty());
    }

    void theEarlierOfTwoEqualCombinationsWins()
    {
        m_commands->set(Command::Capture, [] {});
        m_commands->set(Command::History, [] {});
        SettingsConfig config;
        config.historyHotkey = {true, kCtrl1};
        m_table->apply(config);
        QCOMPARE(m_hotkeys->bound.keys(), QList<int>{HotkeyTable::Capture});
        QCOMPARE(m_table->errors().keys(), QStringList{QStringLiteral("history")});
        QVERIFY(m_table->errorLines().contains(QStringLiteral("「截图」")));

        config.captureHotkey.enabled = false;
        m_table->apply(config);
        QCOMPARE(m_hotkeys->bound.keys(), QList<int>{HotkeyTable::History});
        QVERIFY(m_table->errors().isEmpty());
    }

    void aChangeElsewhereInTheSettingsRegistersNothingAnew()
    {
        m_commands->set(Command::Capture, [] {});
        SettingsConfig config;
        m_table->apply(config);
        config.showMagnifier = false;
        config.historyHotkey = {true, kCtrl2};
        m_table->apply(config);
        QCOMPARE(m_hotkeys->registrations, 1);
        config.captureHotkey.combo = kCtrl2;
        m_table->apply(config);
        QCOMPARE(m_hotkeys->registrations, 2);
    }

    void aFailedRowIsTriedAgainAndTheOthersAreLeftAlone()
    {
        m_hotkeys->taken = {kCtrl1};
        m_commands->set(Command::Capture, [] {});
        m_commands->set(Command::PinClipboard, [] {});
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("注册热键失败：capture .* taken")));
        m_table->apply(SettingsConfig());
        QCOMPARE(m_table->errors(), (QMap<QString, QString>{{QStringLiteral("capture"), QStringLiteral("taken")}}));
        QCOMPARE(m_hotkeys->bound, (QMap<int, KeyCombo>{{HotkeyTable::PinClipboard, kCtrl2}}));
        m_table->apply(SettingsConfig());
        QVERIFY(m_table->mayRecover());
        m_hotkeys->taken.clear();
        m_table->apply(SettingsConfig());
        QVERIFY(m_table->errors().isEmpty());
        QVERIFY(!m_table->mayRecover());
        QCOMPARE(m_hotkeys->bound.size(), 2);
        QCOMPARE(m_hotkeys->registrations, 4); // the capture row three times, the other once
    }

    void theStopKeyIsThereWhileARecordingRuns()
    {
        int stops = 0;
        int records = 0;
        m_commands->set(Command::StopRecording, [&stops] { ++stops; });
        m_commands->set(Command::Record, [&records] { ++records; });
        SettingsConfig config;
        config.recordHotkey = {true, kCtrl1};
        config.recordStopHotkey = {true, kCtrl2};
        config.captureHotkey.enabled = false;
        m_table->apply(config);
        m_table->dispatch(HotkeyTable::RecordStop);
        QCOMPARE(stops, 0);
        m_table->setRecording(true, config);
        QCOMPARE(m_hotkeys->bound,
                 (QMap<int, KeyCombo>{{HotkeyTable::Record, kCtrl1}, {HotkeyTable::RecordStop, kCtrl2}}));
        m_table->dispatch(HotkeyTable::RecordStop);
        QCOMPARE(stops, 1);

        config.recordStopHotkey.combo = kCtrl1; // one key begins and ends it
        m_table->apply(config);
        QCOMPARE(m_hotkeys->bound.keys(), QList<int>{HotkeyTable::Record});
        config.recordHotkey.enabled = false;
        m_table->apply(config);
        QCOMPARE(m_hotkeys->bound, (QMap<int, KeyCombo>{{HotkeyTable::RecordStop, kCtrl1}}));
        m_table->setRecording(false, config);
        QVERIFY(m_hotkeys->bound.isEmpty());
        QCOMPARE(records, 0);
    }

private:
    std::unique_ptr<RecordingHotkey> m_hotkeys;
    std::unique_ptr<Commands> m_commands;
    std::unique_ptr<HotkeyTable> m_table;
};

TAVREL_TEST_MAIN(QGuiApplication, HotkeyTableTest)
#include "test_hotkey_table.moc"
