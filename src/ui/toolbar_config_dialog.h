#pragma once

#include "ui/theme.h"

#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QWidget>

class QPushButton;

namespace tavrel::ui {

class ToolbarLayoutEditor;

/// The toolbar's editor on a card over the whole overlay. Changes go out at once, so that the toolbar behind shows
/// them. Nothing done with keys or pointer on it reaches the overlay. Its owner hides it after `closeRequested`;
/// the keyboard then goes back to where it was.
class ToolbarConfigDialog final : public QWidget
{
    Q_OBJECT

public:
    /// A child of the overlay, hidden until it is opened; it follows the overlay's size.
    explicit ToolbarConfigDialog(QWidget *overlay);

    /// Shows it in the middle with this layout, which a cancel gives back; takes the keyboard.
    void open(const Theme &theme, const QString &config);
    void setTheme(const Theme &theme);

    [[nodiscard]] ToolbarLayoutEditor *editor() const { return m_editor; }
    [[nodiscard]] QRect cardRect() const { return m_card; }

Q_SIGNALS:
    void configChanged(const QString &json); ///< empty for the default layout
    void closeRequested();

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;

private:
    enum class Press { None, Outside, Header };

    void cancel();
    void retranslate();
    void layOut();
    void moveCard(const QPoint &topLeft);
    [[nodiscard]] QRect header() const;

    Theme m_theme;
    QString m_initial;
    ToolbarLayoutEditor *m_editor;
    QPushButton *m_cancel;
    QPushButton *m_done;
    QRect m_card;
    QPointer<QWidget> m_focusBefore; ///< gets the keyboard back
    bool m_placed = false;           ///< by the user
    Press m_press = Press::None;
    QPoint m_grip; ///< from the card's corner to the pointer
};

} // namespace tavrel::ui
