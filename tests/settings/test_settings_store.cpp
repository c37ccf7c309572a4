#include "settings/settings_store.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTemporaryFile>

#include <cmath>

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

/// Another valid value for a key.
QJsonValue changedValue(const QString &key, const QJsonValue &value)
{
    const QHash<QString, QJsonValue> choices{{QStringLiteral("theme"), QStringLiteral("dark")},
                                             {QStringLiteral("language"), QStringLiteral("zh-Hant")},
                                             {QStringLiteral("historyRetentionDays"), 365},
                                             {QStringLiteral("historyMaxMegabytes"), 20480},
                                             {QStringLiteral("cloudShareExpiryDays"), 0},
                                             {QStringLiteral("colorFormat"), QStringLiteral("rgb")},
                                             {QStringLiteral("imageFormat"), QStringLiteral("jpg")},
                                             {QStringLiteral("clipboardFormat"), QStringLiteral("imageAndFile")},
                                             {QStringLiteral("pinInitialOpacity"), 0.35}};
    if (choices.contains(key))
        return choices.value(key);
    switch (value.type()) {
    case QJsonValue::Bool:
        return !value.toBool();
    case QJsonValue::Double:
        return value.toInt() + 1;
    case QJsonValue::String:
        return QString(value.toString() + QStringLiteral(" \"{}\n图"));
    case QJsonValue::Array:
        return QJsonArray{QStringLiteral("#ABCDEF")};
    default:
        return QJsonObject{{QStringLiteral("enabled"), !value[u"enabled"].toBool()},
                           {QStringLiteral("combo"), QStringLiteral("shift+alt+90")}};
    }
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
        row("unknown language", "'language':'tlh'", "'language':'system'");
        row("retention outside the set", "'historyRetentionDays':45", "'historyRetentionDays':90");
        row("retention kept for ever", "'historyRetentionDays':0", "'historyRetentionDays':0");
        row("opacity too low", "'pinInitialOpacity':0.01", "'pinInitialOpacity':0.05");
        row("counter at the end of int", "'filenameCounter':2147483647", "'filenameCounter':2147483646");
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
        row("colour with a line end", "'paletteColors':['#FF0000\\n']", "'paletteColors':[]");
        // Together with the older key, which counts only without the newer one.
        row("palette of another type", "'paletteColors':'#FF0000','customColors':['#123456']",
            "'paletteColors':['#F93442','#FF8C00','#FFE103','#40D651','#2ECFC1','#007AFF','#8A51FF','#FE2E6B',"
            "'#FFFFFF','#000000']");
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

    void everyFieldSurvivesWritingAndReading()
    {
        const SettingsConfig defaults;
        const QJsonObject plain = written(defaults);
        QCOMPARE(settingsFromJson(plain), defaults);
        QCOMPARE(plain.size(), 53);
        // One key at a time away from its default: a key that shares a field with another, or that one direction
        // forgets, does not come back alone.
        for (const QString &key : plain.keys()) {
            if (key == u"configSchemaVersion" || key == u"builtin")
                continue;
            QJsonObject changed = plain;
            changed[key] = changedValue(key, plain.value(key));
            QVERIFY2(changed.value(key) != plain.value(key), qPrintable(key));
            QCOMPARE(written(settingsFromJson(changed)), changed);
        }
        const QJsonObject builtin = plain.value(QStringLiteral("builtin")).toObject();
        QCOMPARE(builtin.size(), 6);
        for (const QString &key : builtin.keys()) {
            QJsonObject changedKeys = builtin;
            changedKeys[key] = changedValue(key, builtin.value(key));
            QJsonObject changed = plain;
            changed[QStringLiteral("builtin")] = changedKeys;
            QCOMPARE(written(settingsFromJson(changed)), changed);
        }
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
        row("5: Ctrl+5 of stopping", "'configSchemaVersion':5,'recordStopHotkey':{'enabled':true,'combo':'ctrl+53'}",
            "'recordStopHotkey':{'enabled':false,'combo':''}");
        row("5: capture switched off comes back", "'configSchemaVersion':5,'captureHotkey':{'enabled':false}",
            "'captureHotkey':{'enabled':true,'combo':'ctrl+49'}");
        row("6: the same is left alone", "'configSchemaVersion':6,'captureHotkey':{'enabled':false}",
            "'captureHotkey':{'enabled':false,'combo':'ctrl+49'}");
        row("5: stop hotkey without a key", "'configSchemaVersion':5,'recordStopHotkey':{'enabled':true,'combo':''}",
            "'recordStopHotkey':{'enabled':false,'combo':''}");
        row("6: Ctrl+Alt+A", "'configSchemaVersion':6,'captureHotkey':{'enabled':true,'combo':'ctrl+alt+65'}",
            "'captureHotkey':{'enabled':true,'combo':'ctrl+49'}");
        row("7: no folder, no fixed folder", "'configSchemaVersion':7,'savePath':' ','saveToSpecifiedPath':true",
            "'saveToSpecifiedPath':false");
        row("6: Ctrl+Shift+Alt+A stays",
            "'configSchemaVersion':6,'captureHotkey':{'enabled':true,'combo':'ctrl+shift+alt+65'}",
            "'captureHotkey':{'enabled':true,'combo':'ctrl+shift+alt+65'}");
        row("7: Ctrl+Alt+A was chosen",
            "'configSchemaVersion':7,'captureHotkey':{'enabled':true,'combo':'ctrl+alt+65'}",
            "'captureHotkey':{'enabled':true,'combo':'ctrl+alt+65'}");
        row("7: a folder keeps the fixed folder", "'configSchemaVersion':7,'savePath':'/p','saveToSpecifiedPath':true",
            "'saveToSpecifiedPath':true");
        row("9: nothing moves", "'configSchemaVersion':9,'longCaptureHotkey':{'enabled':true,'combo':'ctrl+50'}",
            "'longCaptureHotkey':{'enabled':true,'combo':'ctrl+50'}");
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
        QTest::newRow("an array") << QStringLiteral("[1,2]") << true;
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

    void aListInTheFileIsKeptAsUnreadable()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("s.ini"));
        // What QSettings makes of a document that somebody wrote into the file without quotes.
        const QStringList torn{QStringLiteral("{theme:dark"), QStringLiteral("autoStart:true}")};
        QSettings(path, QSettings::IniFormat).setValue(QStringLiteral("settings_config"), torn);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("设置无法读取")));
        const SettingsStore store(path);
        QCOMPARE(store.config(), SettingsConfig());
        const QSettings file(path, QSettings::IniFormat);
        QCOMPARE(file.value(QStringLiteral("settings_config_broken")).toStringList(), torn);
    }

    void aFileThatCannotBeWrittenIsNotNoticed()
    {
        // A file stands where the folder should be: that fails for every user, also for one who ignores permissions.
        QTemporaryFile inTheWay;
        QVERIFY(inTheWay.open());
        SettingsStore store(inTheWay.fileName() + QStringLiteral("/s.ini"));
        QSignalSpy spy(&store, &SettingsStore::changed);
        SettingsConfig config = store.config();
        config.showMagnifier = false;
        store.update(config);
        QCOMPARE(spy.count(), 1);
        QVERIFY(!store.config().showMagnifier);
    }
};

TAVREL_TEST_MAIN(QGuiApplication, SettingsStoreTest)
#include "test_settings_store.moc"
