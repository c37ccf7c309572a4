#include "ui/theme_source.h"

#include "ui/system_color_scheme.h"

namespace tavrel::ui {

ThemeSource::ThemeSource(const QString &setting, QObject *parent)
    : QObject(parent),
      m_setting(setting),
      m_current(themeFor(setting))
{
    connect(&SystemColorScheme::shared(), &SystemColorScheme::changed, this, &ThemeSource::update);
}

void ThemeSource::setSetting(const QString &setting)
{
    m_setting = setting;
    update();
}

void ThemeSource::update()
{
    const Theme theme = themeFor(m_setting);
    if (theme == m_current)
        return;
    m_current = theme;
    Q_EMIT changed(m_current);
}

} // namespace tavrel::ui
