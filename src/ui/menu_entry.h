#pragma once

#include <QList>
#include <QString>

namespace tavrel::ui {

/// One line of a menu.
struct MenuEntry
{
    QString id;
    QString label;
    QString shortcut{};       ///< shown on the right, in the words of the system
    QString glyph{};          ///< left of the label: an editor, line or attribute glyph; empty for none
    bool startsGroup = false; ///< a line is drawn above
    bool isCheckable = false;
    bool isChecked = false;
    bool isEnabled = true;
    QList<MenuEntry> submenu{};
};

} // namespace tavrel::ui
