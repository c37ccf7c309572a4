#include "ui/color_library.h"

#include "settings/settings_config.h"

#include <QRegularExpression>

#include <utility>

namespace tavrel::ui {
namespace {

QStringList normalized(const QStringList &colors)
{
    QStringList result;
    for (const QString &color : colors) {
        const QString known = ColorLibrary::normalize(color);
        if (!known.isEmpty() && !result.contains(known) && result.size() < ColorLibrary::kMaxColors)
            result.append(known);
    }
    return result;
}

} // namespace

ColorLibrary::ColorLibrary(QObject *parent) : QObject(parent), m_colors(defaults()) {}

ColorLibrary &ColorLibrary::instance()
{
    static ColorLibrary library;
    return library;
}

void ColorLibrary::setColors(const QStringList &colors)
{
    QStringList next = normalized(colors);
    if (next == m_colors)
        return;
    m_colors = std::move(next);
    Q_EMIT changed();
}

bool ColorLibrary::add(const QString &color)
{
    const QString known = normalize(color);
    if (known.isEmpty() || isFull() || m_colors.contains(known))
        return false;
    m_colors.append(known);
    Q_EMIT changed();
    return true;
}

void ColorLibrary::move(qsizetype from, qsizetype to)
{
    if (from < 0 || from >= m_colors.size() || to < 0 || to > m_colors.size())
        return;
    if (to > from)
        --to;
    if (to == from)
        return;
    m_colors.move(from, to);
    Q_EMIT changed();
}

void ColorLibrary::remove(const QString &color)
{
    if (m_colors.removeOne(normalize(color)))
        Q_EMIT changed();
}

void ColorLibrary::reset()
{
    setColors(defaults());
}

QStringList ColorLibrary::defaults()
{
    return normalized(defaultPaletteColors());
}

QString ColorLibrary::normalize(const QString &text)
{
    static const QRegularExpression pattern(QRegularExpression::anchoredPattern(QStringLiteral("#?([0-9A-Fa-f]{6})")));
    const QRegularExpressionMatch match = pattern.match(text.trimmed());
    return match.hasMatch() ? u'#' + match.captured(1).toUpper() : QString();
}

} // namespace tavrel::ui
