#pragma once

#include "ui/theme.h"

#include <QLabel>
#include <QList>
#include <QString>
#include <QWidget>

class QHBoxLayout;
class QPushButton;
class QScrollArea;
class QVBoxLayout;

namespace tavrel::ui {
class ThemeSource;
class WrappedLabel;
} // namespace tavrel::ui

namespace tavrel::ui::dialogs {

struct ButtonSpec
{
    enum Role { Primary = 1, Cancel = 2, Destructive = 3 };

    QString text;
    Role role = Primary;
    bool isDefault = false;
    int id = 0;
};

enum class Icon { None = 0, Information = 1, Warning = 2, Question = 3, Error = 4 };

/// A disc in the colour of its kind with a letter.
class IconBadge final : public QLabel
{
    Q_OBJECT

public:
    explicit IconBadge(QWidget *parent = nullptr);
    void setIcon(Icon icon);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Icon m_icon = Icon::None;
};

/// The body of every dialog: icon, title, text, content, buttons. A host shows it; the card only says which button
/// ended it. Enter presses the button that has the keyboard, else the default one; Escape the cancelling or only one;
/// the page keys scroll a long text. Tab stays inside. No key goes further, neither as a shortcut of the window.
class DialogCard final : public QWidget
{
    Q_OBJECT

public:
    static constexpr double kRadius = 14;
    static constexpr int kDismissed = -1; ///< the id when no button stands for the way the dialog ended

    explicit DialogCard(const ThemeSource &themes, QWidget *parent = nullptr);

    void setIcon(Icon icon);
    void setTitle(const QString &title);
    void setText(const QString &text);
    /// Takes the widget into the space between text and buttons.
    void setContent(QWidget *content);
    void setButtons(const QList<ButtonSpec> &buttons);
    /// Puts the keyboard where it belongs: into the content's first field, else on the default button.
    void takeFocus();
    /// Ends the dialog as if the button with this id had been pressed; only the first call counts.
    void finish(int id);
    /// Ends the dialog without a button: as Escape would, with `kDismissed` where Escape does nothing.
    void dismiss();

    [[nodiscard]] const Theme &theme() const { return m_theme; }

Q_SIGNALS:
    void finished(int id);

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void showEvent(QShowEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void setTheme(const Theme &theme);
    void updateHead();
    void fitText();
    [[nodiscard]] QList<QWidget *> focusStops() const;
    [[nodiscard]] const ButtonSpec *defaultButton() const;
    [[nodiscard]] const ButtonSpec *escapeButton() const;

    Theme m_theme;
    QWidget *m_head;
    IconBadge *m_icon;
    WrappedLabel *m_title;
    WrappedLabel *m_text;
    QScrollArea *m_textArea;
    QWidget *m_body;
    QVBoxLayout *m_bodyLayout;
    QHBoxLayout *m_buttonRow;
    QList<ButtonSpec> m_buttons;
    QList<QPushButton *> m_buttonWidgets;
    bool m_pressed = false; ///< a press has come to one of the buttons
    bool m_finished = false;
};

} // namespace tavrel::ui::dialogs
