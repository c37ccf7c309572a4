#pragma once

#include "ui/color_bar.h"

namespace tavrel::ui {

/// Chooses the hue.
class ColorHueBar final : public ColorBar
{
    Q_OBJECT

public:
    explicit ColorHueBar(QWidget *parent);

    void setHue(double hue); ///< 0 to 1
    [[nodiscard]] double hue() const { return m_hue; }

    [[nodiscard]] double fraction() const override { return m_hue; }
    [[nodiscard]] QString valueText() const override; ///< in degrees

protected:
    void setValue(double value) override { setHue(value); }
    void paintTrack(QPainter &painter, const QRectF &track) const override;
    [[nodiscard]] QColor handleColor() const override;

private:
    double m_hue = 0;
};

} // namespace tavrel::ui
