#pragma once

#include "ui/theme.h"

#include <QWidget>

namespace tavrel::ui {

/// A rounded, outlined card of a studio window that holds whatever is laid out on it.
class StudioCard final : public QWidget
{
    Q_OBJECT

public:
    explicit StudioCard(const Theme &theme, QWidget *parent = nullptr);

    void setTheme(const Theme &theme);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Theme m_theme;
};

} // namespace tavrel::ui
