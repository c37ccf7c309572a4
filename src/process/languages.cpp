#include "process/languages.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QLocale>

#include <algorithm>
#include <cstdio>
#include <initializer_list>
#include <optional>

namespace tavrel {
namespace {

constexpr QLatin1String checkCode("check");

const LanguageEntry *entryOf(const QString &code)
{
    static const LanguageEntry check{checkCode, {}, {}, {}, QStringLiteral("en_US")};
    if (code == checkCode)
        return &check;
    const auto &table = languages();
    const auto found = std::find_if(table.begin(), table.end(), [&code](const auto &e) { return e.code == code; });
    return found == table.end() ? nullptr : &*found;
}

QString codeOfLocale(const QString &localeName)
{
    const QString name = QString(localeName).replace(u'_', u'-').toLower();
    const QString primary = name.section(u'-', 0, 0);
    if (primary == u"zh") {
        if (name.contains(u"hans"))
            return QStringLiteral("zh");
        const bool traditional =
            name.contains(u"hant") || name.contains(u"-tw") || name.contains(u"-hk") || name.contains(u"-mo");
        return traditional ? QStringLiteral("zh-Hant") : QStringLiteral("zh");
    }
    if (primary == u"pt")
        return QStringLiteral("pt-BR");
    return entryOf(primary) ? primary : QString();
}

QString catalogueFile(const QString &name)
{
    return QStringLiteral(":/i18n/%1.qm").arg(name);
}

QString qtCatalogueFile(const QString &name)
{
    const QString beside = QCoreApplication::applicationDirPath();
    for (const QString &folder :
         {beside + QStringLiteral("/../Resources/translations"), beside + QStringLiteral("/translations"),
          QLibraryInfo::path(QLibraryInfo::TranslationsPath)}) {
        const QString file = folder + u'/' + name;
        if (QFileInfo::exists(file))
            return file;
    }
    return {};
}

void install(QTranslator &translator, const QString &file)
{
    if (!file.isEmpty() && translator.load(file))
        QCoreApplication::installTranslator(&translator);
}

} // namespace

const QList<LanguageEntry> &languages()
{
    static const QList<LanguageEntry> table = [] {
        const auto entry = [](const char *code, const char *name, const char *app, const char *qt, const char *locale) {
            return LanguageEntry{QString::fromUtf8(code), QString::fromUtf8(name), QString::fromUtf8(app),
                                 QString::fromUtf8(qt), QString::fromUtf8(locale)};
        };
        return QList<LanguageEntry>{
            entry("zh", "简体中文", "", "qtbase_zh_CN.qm", "zh_CN"),
            entry("zh-Hant", "繁體中文", "tavrel_zh_Hant", "qtbase_zh_TW.qm", "zh_TW"),
            entry("en", "English", "tavrel_en", "", "en_US"),
            entry("ja", "日本語", "tavrel_ja", "qtbase_ja.qm", "ja_JP"),
            entry("ko", "한국어", "tavrel_ko", "qtbase_ko.qm", "ko_KR"),
            entry("de", "Deutsch", "tavrel_de", "qtbase_de.qm", "de_DE"),
            entry("fr", "Français", "tavrel_fr", "qtbase_fr.qm", "fr_FR"),
            entry("es", "Español", "tavrel_es", "qtbase_es.qm", "es_ES"),
            entry("pt-BR", "Português (Brasil)", "tavrel_pt_BR", "qtbase_pt_BR.qm", "pt_BR"),
            entry("ru", "Русский", "tavrel_ru", "qtbase_ru.qm", "ru_RU"),
            entry("it", "Italiano", "tavrel_it", "qtbase_it.qm", "it_IT"),
        };
    }();
    return table;
}

QString resolveLanguage(const QString &setting, const QStringList &uiLanguages)
{
    if (entryOf(setting))
        return setting;
    for (const QString &wanted : uiLanguages) {
        const QString code = codeOfLocale(wanted);
        if (!code.isEmpty())
            return code;
    }
    return QStringLiteral("en");
}

LanguageApplier::LanguageApplier(QStringList systemLanguages) : m_systemLanguages(std::move(systemLanguages)) {}

LanguageApplier::~LanguageApplier()
{
    uninstall();
}

void LanguageApplier::uninstall()
{
    for (QTranslator *translator : std::initializer_list<QTranslator *>{&m_english, &m_app, &m_qt, &m_check})
        QCoreApplication::removeTranslator(translator);
}

QString LanguageApplier::apply(const QString &setting)
{
    const QString code =
        resolveLanguage(setting, m_systemLanguages.isEmpty() ? QLocale::system().uiLanguages() : m_systemLanguages);
    if (code == m_applied)
        return code;
    uninstall();

    const LanguageEntry &entry = *entryOf(code);
    // The translator installed last is asked first.
    if (code == checkCode) {
        if (m_check.loadEnglish(catalogueFile(QStringLiteral("tavrel_en"))))
            QCoreApplication::installTranslator(&m_check);
    } else if (code != u"zh" && code != u"zh-Hant" && code != u"en")
        install(m_english, catalogueFile(QStringLiteral("tavrel_en")));
    if (!entry.appCatalogue.isEmpty())
        install(m_app, catalogueFile(entry.appCatalogue));
    if (!entry.qtCatalogue.isEmpty())
        install(m_qt, qtCatalogueFile(entry.qtCatalogue));
    QLocale::setDefault(QLocale(entry.localeName));
    m_applied = code;
    return code;
}

int runLanguageProbe(LanguageApplier &applier)
{
    // In a variable, because this text belongs to Qt's catalogues and not to ours.
    const char *const qtContext = "QPlatformTheme";
    for (const char *setting : {"system", "zh", "en"}) {
        const QString code = applier.apply(QString::fromLatin1(setting));
        const QString app = QCoreApplication::translate("AppController", "设置…");
        const QString qt = QCoreApplication::translate(qtContext, "Cancel");
        std::printf("setting=%s -> %s | app: %s | qt: %s | %s\n", setting, qPrintable(code), app.toUtf8().constData(),
                    qt.toUtf8().constData(), qPrintable(QLocale().name()));
    }
    return 0;
}

} // namespace tavrel
