#include "process/languages.h"
#include "settings/settings_config.h"
#include "support/test_main.h"

#include <QGuiApplication>

using namespace tavrel;

namespace {

QString sample(const char *source)
{
    return QCoreApplication::translate("LanguagesTest", source);
}

} // namespace

/// The catalogues of this test (tests/process/i18n): English has both texts, German only the first.
class LanguagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void resolvesASettingOrTheSystem_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QStringList>("system");
        QTest::addColumn<QString>("code");
        const auto row = [](const char *name, const char *setting, const QStringList &system, const char *code) {
            QTest::newRow(name) << QString::fromLatin1(setting) << system << QString::fromLatin1(code);
        };
        row("an unknown code follows the system", "tlh", {QStringLiteral("de-DE")}, "de");
        row("traditional script", "system", {QStringLiteral("zh-Hant-TW")}, "zh-Hant");
        row("Hong Kong", "system", {QStringLiteral("zh_HK")}, "zh-Hant");
        row("script beats region", "system", {QStringLiteral("zh-Hans-HK")}, "zh");
        row("European Portuguese", "system", {QStringLiteral("pt-PT")}, "pt-BR");
        row("second choice", "system", {QStringLiteral("sv"), QStringLiteral("de")}, "de");
        row("none known", "system", {QStringLiteral("sv")}, "en");
    }

    void resolvesASettingOrTheSystem()
    {
        QFETCH(QString, setting);
        QFETCH(QStringList, system);
        QFETCH(QString, code);
        QCOMPARE(resolveLanguage(setting, system), code);
    }

    void theTableAgreesWithTheMappingTheCataloguesAndTheSettings()
    {
        QStringList codes;
        for (const LanguageEntry &entry : languages()) {
            codes.append(entry.code);
            QCOMPARE(resolveLanguage(QStringLiteral("system"), {entry.localeName}), entry.code);
            QCOMPARE(QLocale(entry.localeName).name(), entry.localeName);
            const QString suffix = QString(entry.code).replace(u'-', u'_');
            QCOMPARE(entry.appCatalogue, entry.code == u"zh" ? QString() : QStringLiteral("tavrel_") + suffix);
            const SettingsConfig stored = settingsFromJson(
                {{QStringLiteral("configSchemaVersion"), 9}, {QStringLiteral("language"), entry.code}});
            QCOMPARE(stored.language, entry.code);
        }
        QCOMPARE(codes.join(u' '), QStringLiteral("zh zh-Hant en ja ko de fr es pt-BR ru it"));
    }

    void aMissingEntryFallsBackToEnglishNotToTheSource()
    {
        LanguageApplier applier({QStringLiteral("de-DE")});
        QCOMPARE(applier.apply(QStringLiteral("system")), QStringLiteral("de"));
        QCOMPARE(sample("保存"), QStringLiteral("Speichern"));
        QCOMPARE(sample("取消"), QStringLiteral("Cancel"));
        // Without a catalogue of its own a language is English throughout.
        QCOMPARE(applier.apply(QStringLiteral("ko")), QStringLiteral("ko"));
        QCOMPARE(sample("保存"), QStringLiteral("Save"));
        for (const char *chinese : {"zh", "zh-Hant"}) {
            applier.apply(QString::fromLatin1(chinese));
            QCOMPARE(sample("保存"), QStringLiteral("保存"));
        }
        applier.apply(QStringLiteral("en"));
        QCOMPARE(sample("保存"), QStringLiteral("Save"));
        QCOMPARE(QLocale().name(), QStringLiteral("en_US"));
    }

    void theCheckLanguageLengthensWordsAndNothingElse_data()
    {
        QTest::addColumn<QString>("english");
        QTest::addColumn<QString>("stretched");
        const auto row = [](const char *english, const char *stretched) {
            QTest::newRow(english) << QString::fromUtf8(english) << QString::fromUtf8(stretched);
        };
        row("Save", "Šávvêê");
        row("Arrow tool", "Árrrôww tôôôll");
        row("%1 of %n, %L2", "%1 ôff %n, %L2");
        row("&Save && e&xit", "&Sávêêê && êê&xîtt");
        row("<b class='x'>Bold</b>&nbsp;a\nb", "<b class='x'>Bôlldd</b>&nbsp;áá\nbb");
        row("Images (*.png *.jpg)", "Îmááğêêšš (*.png *.jpg)");
    }

    void theCheckLanguageLengthensWordsAndNothingElse()
    {
        QFETCH(QString, english);
        QTEST(lengthened(english), "stretched");
    }

    void theCheckLanguageIsSpokenWhenNamedAndNeverOffered()
    {
        LanguageApplier applier;
        QCOMPARE(applier.apply(QStringLiteral("check")), QStringLiteral("check"));
        QCOMPARE(sample("保存"), lengthened(QStringLiteral("Save")));
        QCOMPARE(sample("没有英文"), QStringLiteral("没有英文"));
        const char *const qtContext = "QPlatformTheme";
        QCOMPARE(QCoreApplication::translate(qtContext, "Close"), lengthened(QStringLiteral("Close")));
        applier.apply(QStringLiteral("en"));
        QCOMPARE(sample("保存"), QStringLiteral("Save"));
        const SettingsConfig stored = settingsFromJson(
            {{QStringLiteral("configSchemaVersion"), 9}, {QStringLiteral("language"), QStringLiteral("check")}});
        QCOMPARE(stored.language, SettingsConfig().language);
    }
};

TAVREL_TEST_MAIN(QGuiApplication, LanguagesTest)
#include "test_languages.moc"
