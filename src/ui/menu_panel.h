#pragma once

#include "ui/menu_entry.h"
#include "ui/theme.h"

#include <QList>
#include <QPointer>
#include <QTimer>
#include <QWidget>

namespace tavrel::ui {

class MenuRow;

/// A floating menu in the program's own look.
///
/// It is a pop-up: a press outside closes it, the arrow keys walk it, Return chooses and Escape closes. It never waits:
/// what is chosen is told by a signal. It deletes itself once it is closed. GUI thread only.
class MenuPanel final : public QWidget
{
    Q_OBJECT

public:
    MenuPanel(const QList<MenuEntry> &entries, const Theme &theme, QWidget *parent);
    ~MenuPanel() override;

    /// Shows it with its corner at a point of the desktop, moved so that it lies on that point's screen.
    void exec(const QPoint &globalPos);
    [[nodiscard]] const QList<MenuRow *> &rows() const { return m_rows; }
    /// The row that is lit; -1 for none.
    [[nodiscard]] int current() const { return m_current; }
    [[nodiscard]] MenuPanel *submenu() const { return m_submenu; }

Q_SIGNALS:
    /// Told after the menu has gone from the screen; for an entry of a submenu, too.
    void chosen(const QString &id);
    void closed();

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void place(const QRect &wanted, const QRect &beside);
    [[nodiscard]] int rowAt(const QPoint &point) const;
    void setCurrent(int index);
    void step(int direction);
    void openSubmenu(bool byKey);
    void closeSubmenu();
    void choose(int index);
    /// The panel under a point: this one or one above it; null for none.
    [[nodiscard]] MenuPanel *panelAt(const QPoint &globalPos);
    [[nodiscard]] MenuPanel *root();

    Theme m_theme;
    QPointer<MenuPanel> m_above; ///< whose submenu this is
    QPointer<MenuPanel> m_submenu;
    QTimer m_rest; ///< a submenu opens when the pointer rests
    QList<MenuRow *> m_rows;
    QList<int> m_lines; ///< heights at which groups begin
    int m_current = -1;
    int m_pressed = -1;
    bool m_isTranslucent;
};

} // namespace tavrel::ui
