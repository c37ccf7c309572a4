#pragma once

#include "ui/theme.h"

#include <QWidget>

namespace tavrel::ui {

/// Shows a colour as it would cover something.
class ColorPreview final : public QWidget
{
    Q_OBJECT

public:
    explicit ColorPreview(QWidget *parent);

    void setColor(const QColor &color); ///< with its alpha
    void applyTheme(const Theme &theme);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Theme m_theme;
    QColor m_color = Qt::black;
};

} // namespace tavrel::ui
