#pragma once

#include "ui/theme.h"

#include <QAbstractButton>

namespace tavrel::ui {

/// Asks for a colour from the picture.
class EyedropperButton final : public QAbstractButton
{
    Q_OBJECT

public:
    explicit EyedropperButton(QWidget *parent);

    void applyTheme(const Theme &theme);

    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    void eyedropperRequested();

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void describe();

    Theme m_theme;
    bool m_showsFocus = false;
};

} // namespace tavrel::ui
