#pragma once

#include "ui/theme.h"

#include <QList>
#include <QString>
#include <QWidget>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;

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
class IconBadge final : public QWidget
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
/// ended it. Enter presses the default button, Escape the cancelling or only one; other keys go no further.
class DialogCard final : public QWidget
{
    Q_OBJECT

public:
    static constexpr double kRadius = 14;

    explicit DialogCard(const Theme &theme, QWidget *parent = nullptr);

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

    [[nodiscard]] const Theme &theme() const { return m_theme; }

Q_SIGNALS:
    void finished(int id);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void updateHead();
    [[nodiscard]] const ButtonSpec *defaultButton() const;
    [[nodiscard]] const ButtonSpec *escapeButton() const;

    Theme m_theme;
    QWidget *m_head;
    IconBadge *m_icon;
    QLabel *m_title;
    QLabel *m_text;
    QWidget *m_body;
    QVBoxLayout *m_bodyLayout;
    QHBoxLayout *m_buttonRow;
    QList<ButtonSpec> m_buttons;
    QList<QPushButton *> m_buttonWidgets;
    bool m_finished = false;
};

} // namespace tavrel::ui::dialogs
