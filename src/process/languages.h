#pragma once

#include "process/check_language.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QTranslator>

namespace tavrel {

struct LanguageEntry
{
    QString code;
    QString displayName;  ///< in the language itself
    QString appCatalogue; ///< base name of the embedded catalogue; empty for the source language
    QString qtCatalogue;  ///< file name of Qt's own translation; empty when Qt needs none
    QString localeName;
};

/// All languages, in the order in which they are offered after "system". `check`, the one for looking at windows with
/// long texts, is not among them and is no setting: it can only be asked for by name, as in `tavrel --lang check`.
[[nodiscard]] const QList<LanguageEntry> &languages();

/// The code in force for a setting: a code of the table stands, anything else follows `uiLanguages` (locale names,
/// most wanted first); none of them known gives `en`.
[[nodiscard]] QString resolveLanguage(const QString &setting, const QStringList &uiLanguages);

/// Installs the translations of one language at a time. GUI thread only.
class LanguageApplier final
{
public:
    /// systemLanguages  what the setting "system" follows; empty asks the system
    explicit LanguageApplier(QStringList systemLanguages = {});
    ~LanguageApplier();
    LanguageApplier(const LanguageApplier &) = delete;
    LanguageApplier &operator=(const LanguageApplier &) = delete;

    /// Applies a setting and returns the code in force. The code already in force touches nothing.
    QString apply(const QString &setting);
    [[nodiscard]] QString applied() const { return m_applied; }

private:
    void uninstall();

    QStringList m_systemLanguages;
    /// Asked when a catalogue has no entry, so that the source language never shows to a reader of another one.
    QTranslator m_english;
    QTranslator m_app;
    QTranslator m_qt;
    CheckTranslator m_check;
    QString m_applied;
};

/// Applies system, zh and en in turn and prints what comes out; returns the exit code.
int runLanguageProbe(LanguageApplier &applier);

} // namespace tavrel
