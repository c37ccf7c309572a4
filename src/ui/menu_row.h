#pragma once

#include "ui/menu_entry.h"
#include "ui/theme.h"

#include <QWidget>

namespace tavrel::ui {

/// A line of a MenuPanel. The panel tells it where the pointer is; for assistive tools it is a menu item.
class MenuRow final : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kHeight = 30;

    /// Which columns the rows of a panel share.
    struct Columns
    {
        bool glyphs = false;
        bool marks = false; ///< ticks and arrows
    };

    MenuRow(const MenuEntry &entry, const Theme &theme, Columns columns, QWidget *parent);

    [[nodiscard]] const MenuEntry &entry() const { return m_entry; }
    void setLit(bool lit);
    [[nodiscard]] bool isLit() const { return m_isLit; }
    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    void activated(); ///< by an assistive tool

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    MenuEntry m_entry;
    Theme m_theme;
    Columns m_columns;
    bool m_isLit = false;
};

} // namespace tavrel::ui
