#pragma once

#include "ui/theme.h"

#include <QAbstractButton>

namespace tavrel::ui {

/// One of the three buttons of a title bar. The window system's own keys do the same, so Tab passes it by.
class WindowControlButton final : public QAbstractButton
{
    Q_OBJECT

public:
    static constexpr int kWidth = 46;
    static constexpr int kHeight = 32;

    enum class Kind { Minimize, Maximize, Close };

    WindowControlButton(Kind kind, const Theme &theme, QWidget *parent);

    void setTheme(const Theme &theme);
    /// Shows two windows in place of one: the window is maximised and a press restores it.
    void setRestores(bool restores);
    [[nodiscard]] bool restores() const { return m_restores; }
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void describe();
    void paintSign(QPainter &painter) const;

    Kind m_kind;
    Theme m_theme;
    bool m_restores = false;
};

} // namespace tavrel::ui
