#pragma once

#include "ui/theme.h"

#include <QObject>
#include <QString>

namespace tavrel::ui {

/// The theme in force: that of the setting or, where the setting leaves it to the system, what the system prefers. One
/// for all windows of the program; a window takes it when it is made and follows `changed`. GUI thread only.
class ThemeSource final : public QObject
{
    Q_OBJECT

public:
    /// setting  as themeFor() takes it: "light", "dark", and any other word for the system's
    explicit ThemeSource(const QString &setting = {}, QObject *parent = nullptr);

    void setSetting(const QString &setting);
    [[nodiscard]] const Theme &current() const { return m_current; }

Q_SIGNALS:
    void changed(const tavrel::ui::Theme &theme);

private:
    void update();

    QString m_setting;
    Theme m_current;
};

} // namespace tavrel::ui
