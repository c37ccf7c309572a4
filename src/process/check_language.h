#pragma once

#include <QString>
#include <QTranslator>

namespace tavrel {

/// The text as a wordy language might put it: each word four tenths longer, its letters with accents. What is no word
/// stays as it is: places (%1, %n), mnemonics with the letter they name, tags, entities, file patterns, line breaks.
[[nodiscard]] QString lengthened(const QString &english);

/// Speaks lengthened English, so that a look at a window shows where a translation would not fit.
class CheckTranslator final : public QTranslator
{
public:
    /// Reads the English catalogue; false when it cannot be read.
    bool loadEnglish(const QString &catalogue) { return m_english.load(catalogue); }

    [[nodiscard]] bool isEmpty() const override { return m_english.isEmpty(); }
    /// Nothing for a source text that has no English entry: it stands out as it is. Texts of Qt are English already.
    [[nodiscard]] QString translate(const char *context, const char *sourceText, const char *disambiguation,
                                    int n) const override;

private:
    QTranslator m_english;
};

} // namespace tavrel
