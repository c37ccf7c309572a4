#include "base/color_text.h"

namespace tavrel {

QColor colorFromText(const QString &text)
{
    QStringView digits = text;
    if (digits.startsWith(u'#'))
        digits = digits.mid(1);
    QString doubled;
    if (digits.size() == 3) {
        for (const QChar digit : digits)
            doubled.append(digit).append(digit);
        digits = doubled;
    }
    if (digits.size() != 6 && digits.size() != 8)
        return Qt::black;
    quint32 value = 0;
    for (const QChar digit : digits) {
        const auto code = digit.toLower().unicode();
        if (code >= u'0' && code <= u'9')
            value = value * 16 + (code - u'0');
        else if (code >= u'a' && code <= u'f')
            value = value * 16 + (code - u'a' + 10U);
        else
            return Qt::black;
    }
    return QColor::fromRgba(digits.size() == 6 ? 0xff000000U | value : value);
}

} // namespace tavrel
