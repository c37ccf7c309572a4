#include "annotate/number_text.h"

#include <array>
#include <utility>

namespace tavrel {
namespace {

QString letters(int number)
{
    QString text;
    for (int rest = number; rest > 0; rest = (rest - 1) / 26)
        text.prepend(QChar(u'A' + (rest - 1) % 26));
    return text;
}

QString chinese(int number)
{
    static const QString digits = QStringLiteral("零一二三四五六七八九十");
    if (number < 0 || number >= 100)
        return QString::number(number);
    if (number <= 10)
        return digits.at(number);
    QString text;
    if (number >= 20)
        text += digits.at(number / 10);
    text += digits.at(10);
    if (number % 10 != 0)
        text += digits.at(number % 10);
    return text;
}

QString roman(int number)
{
    static constexpr std::array<std::pair<int, const char *>, 13> table{{{1000, "M"},
                                                                         {900, "CM"},
                                                                         {500, "D"},
                                                                         {400, "CD"},
                                                                         {100, "C"},
                                                                         {90, "XC"},
                                                                         {50, "L"},
                                                                         {40, "XL"},
                                                                         {10, "X"},
                                                                         {9, "IX"},
                                                                         {5, "V"},
                                                                         {4, "IV"},
                                                                         {1, "I"}}};
    QString text;
    for (const auto &[value, word] : table) {
        for (; number >= value; number -= value)
            text += QLatin1String(word);
    }
    return text;
}

} // namespace

QString numberText(int number, NumberType type)
{
    switch (type) {
    case NumberType::UpperLetter:
        return letters(number);
    case NumberType::LowerLetter:
        return letters(number).toLower();
    case NumberType::Chinese:
        return chinese(number);
    case NumberType::RomanUpper:
        return roman(number);
    case NumberType::RomanLower:
        return roman(number).toLower();
    case NumberType::Arabic:
        break;
    }
    return QString::number(number);
}

} // namespace tavrel
