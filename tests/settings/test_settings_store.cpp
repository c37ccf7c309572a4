#include "settings/settings_store.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>

using namespace tavrel;

namespace {

/// JSON with ' in place of ", which reads better in C++.
QJsonObject parse(QByteArray json)
{
    json.replace('\'', '"');
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        qFatal("not a JSON object: %s", json.constData());
    return document.object();
}

QJsonObject written(const SettingsConfig &config)
{
    return QJsonDocument::fromJson(settingsToJson(config)).object();
}

} // namespace

class SettingsStoreTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsOneFieldByItsRule_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, const char *stored, const char *expected) {
            QTest::newRow(name) << QByteArray(stored) << QByteArray(expected);
        };
        row("unknown theme", "'theme':'blue'", "'theme':'system'");
        row("theme of another type", "'theme':7", "'theme':'system'");
        row("known language", "'language':'pt-BR'", "'language':'pt-BR'");
        row("unknown language", "'language':'tlh'", "'language':'system'");
        row("retention outside the set", "'historyRetentionDays':45", "'historyRetentionDays':90");
        row("retention kept for ever", "'historyRetentionDays':0", "'historyRetentionDays':0");
        row("megabytes outside the set", "'historyMaxMegabytes':4096", "'historyMaxMegabytes':0");
        row("opacity too low", "'pinInitialOpacity':0.01", "'pinInitialOpacity':0.05");
        row("opacity too high", "'pinInitialOpacity':1e300", "'pinInitialOpacity':1");
        row("counter negative", "'filenameCounter':-3", "'filenameCounter':0");
        row("counter beyond int", "'filenameCounter':1e12", "'filenameCounter':0");
        row("blank template", "'filenameFormat':'  '", "'filenameFormat':'Tavrel_{{yyyyMMdd}}_{{HHmmss}}'");
        row("bool as text", "'showMagnifier':'no'", "'showMagnifier':true");
        row("hotkey without modifier", "'captureHotkey':{'enabled':false,'combo':'49'}",
            "'captureHotkey':{'enabled':false,'combo':'ctrl+49'}");
        row("hotkey with a broken combo", "'captureHotkey':{'combo':'ctrl+abc'}",
            "'captureHotkey':{'enabled':true,'combo':'ctrl+49'}");
        row("function key alone", "'editHotkey':{'enabled':true,'combo':'16777268'}",
            "'editHotkey':{'enabled':true,'combo':'16777268'}");
        row("step trigger needs no modifier", "'stepKeyTrigger':{'enabled':true,'combo':'70'}",
            "'stepKeyTrigger':{'enabled':true,'combo':'70'}");
        row("binding of another type", "'captureHotkey':[1,2]", "'captureHotkey':{'enabled':true,'combo':'ctrl+49'}");
        row("palette cleaned", "'paletteColors':['#ff0000','#FF0000','red',5]", "'paletteColors':['#FF0000']");
        row("palette emptied", "'paletteColors':[]", "'paletteColors':[]");
    }

    void readsOneFieldByItsRule()
    {
        QFETCH(QByteArray, stored);
        QFETCH(QByteArray, expected);
        const SettingsConfig config = settingsFromJson(parse("{'configSchemaVersion':9," + stored + "}"));
        const QJsonObject wanted = parse("{" + expected + "}");
        QCOMPARE(written(config).value(wanted.keys().first()), wanted.begin().value());
    }

    void olderColoursFollowTheDefaultPalette()
    {
        const auto config = settingsFromJson(parse("{'configSchemaVersion':9,'customColors':['#123456','#F93442']}"));
        QCOMPARE(config.paletteColors, defaultPaletteColors() << QStringLiteral("#123456"));
        QVERIFY(!written(config).contains(QStringLiteral("customColors")));
    }

    void thePaletteHoldsThirtyColours()
    {
        QJsonArray colors;
        for (int i = 0; i < 31; ++i)
            colors.append(QStringLiteral("#0000%1").arg(i + 16, 2, 16, QLatin1Char('0')));
        const SettingsConfig config =
            settingsFromJson({{QStringLiteral("configSchemaVersion"), 9}, {QStringLiteral("paletteColors"), colors}});
        QCOMPARE(config.paletteColors.size(), 30);
    }

    void everyFieldSurvivesWritingAndReading()
    {
        const SettingsConfig defaults;
        const QJsonObject plain = written(defaults);
        QCOMPARE(settingsFromJson(plain), defaults);
        // Flip every boolean at once: a field that one direction forgets comes back as its default.
        QJsonObject flipped = plain;
        for (auto it = flipped.begin(); it != flipped.end(); ++it) {
            if (it.value().isBool())
                it.value() = !it.value().toBool();
        }
        QCOMPARE(written(settingsFromJson(flipped)), flipped);
        QCOMPARE(plain.size(), 53);
    }

    void migratesFromOlderSchemas_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, const char *stored, const char *expected) {
            QTest::newRow(name) << QByteArray(stored) << QByteArray(expected);
        };
        row("2: Chinese follows the system", "'configSchemaVersion':2,'language':'zh'", "'language':'system'");
        row("3: Chinese stays", "'configSchemaVersion':3,'language':'zh'", "'language':'zh'");
        row("3: history is kept", "'configSchemaVersion':3,'historyRetentionDays':30", "'historyRetentionDays':0");
        row("4: text index on", "'configSchemaVersion':4,'historyOcrIndex':false", "'historyOcrIndex':true");
        row("5: Ctrl+3 of the history", "'configSchemaVersion':5,'historyHotkey':{'enabled':true,'combo':'ctrl+51'}",
            "'historyHotkey':{'enabled':false,'combo':''}");
        row("5: Ctrl+Shift+3 stays", "'configSchemaVersion':5,'historyHotkey':{'enabled':true,'combo':'ctrl+shift+51'}",
            "'historyHotkey':{'enabled':true,'combo':'ctrl+shift+51'}");
        row("5: stop hotkey without a key", "'configSchemaVersion':5,'recordStopHotkey':{'enabled':true,'combo':''}",
            "'recordStopHotkey':{'enabled':false,'combo':''}");
        row("6: Ctrl+Alt+A", "'configSchemaVersion':6,'captureHotkey':{'enabled':true,'combo':'ctrl+alt+65'}",
            "'captureHotkey':{'enabled':true,'combo':'ctrl+49'}");
        row("7: no folder, no fixed folder", "'configSchemaVersion':7,'savePath':' ','saveToSpecifiedPath':true",
            "'saveToSpecifiedPath':false");
        row("8: Ctrl+2 of long capture",
            "'configSchemaVersion':8,'longCaptureHotkey':{'enabled':true,'combo':'ctrl+50'}",
            "'longCaptureHotkey':{'enabled':false,'combo':''}");
        row("8: switched off stays as it is",
            "'configSchemaVersion':8,'longCaptureHotkey':{'enabled':false,'combo':'ctrl+50'}",
            "'longCaptureHotkey':{'enabled':false,'combo':'ctrl+50'}");
        row("8: Ctrl+5 of pinning", "'configSchemaVersion':8,'pinClipboardHotkey':{'enabled':true,'combo':'ctrl+53'}",
            "'pinClipboardHotkey':{'enabled':true,'combo':'ctrl+50'}");
        row("no version is the oldest", "'historyRetentionDays':365", "'historyRetentionDays':0");
    }

    void migratesFromOlderSchemas()
    {
        QFETCH(QByteArray, stored);
        QFETCH(QByteArray, expected);
        const SettingsConfig config = settingsFromJson(parse("{" + stored + "}"));
        QCOMPARE(config.configSchemaVersion, SettingsConfig::kSchemaVersion);
        const QJsonObject wanted = parse("{" + expected + "}");
        QCOMPARE(written(config).value(wanted.keys().first()), wanted.begin().value());
    }

    void aBrokenValueDoesNotStopTheStart_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("kept");
        QTest::newRow("first run") << QString() << false;
        QTest::newRow("empty object") << QStringLiteral("{}") << false;
        QTest::newRow("truncated") << QStringLiteral("{\"configSchemaVersion\":9,\"theme\":\"da") << true;
        QTest::newRow("an array") << QStringLiteral("[1,2]") << true;
        QTest::newRow("no JSON at all") << QStringLiteral("hello") << true;
    }

    void aBrokenValueDoesNotStopTheStart()
    {
        QFETCH(QString, stored);
        QFETCH(bool, kept);
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("s.ini"));
        QSettings(path, QSettings::IniFormat).setValue(QStringLiteral("settings_config"), stored);
        if (kept)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("设置无法读取")));
        const SettingsStore store(path);
        QCOMPARE(store.config(), SettingsConfig());
        const QSettings file(path, QSettings::IniFormat);
        QCOMPARE(file.value(QStringLiteral("settings_config_broken")).toString(), kept ? stored : QString());
        QCOMPARE(file.value(QStringLiteral("settings_config")).toString(),
                 QString::fromUtf8(settingsToJson(SettingsConfig())));
    }

    void changesAreToldOnceAndSurviveARestart()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("s.ini"));
        SettingsConfig wanted;
        {
            SettingsStore store(path);
            QSignalSpy spy(&store, &SettingsStore::changed);
            // A reader that writes the same value back must not loop.
            connect(&store, &SettingsStore::changed, &store, [&store](const SettingsConfig &c) { store.update(c); });
            wanted = store.config();
            wanted.savePath = QStringLiteral("/图片 \"a\\b\"");
            wanted.filenameCounter = 41;
            store.update(wanted);
            store.update(wanted);
            QCOMPARE(spy.count(), 1);
            QCOMPARE(store.effectiveSavePath(), wanted.savePath);
        }
        const SettingsStore again(path);
        QCOMPARE(again.config(), wanted);
    }

    void theUsersOwnSettingsAreTheDefaultPlace()
    {
        {
            SettingsStore store;
            SettingsConfig config = store.config();
            config.theme = QStringLiteral("dark");
            store.update(config);
        }
        const QSettings native(QStringLiteral("corvane"), QStringLiteral("Tavrel"));
        QVERIFY(native.value(QStringLiteral("settings_config")).toString().contains(QStringLiteral("dark")));
    }
};

TAVREL_TEST_MAIN(QGuiApplication, SettingsStoreTest)
#include "test_settings_store.moc"
