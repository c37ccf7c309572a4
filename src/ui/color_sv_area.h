#pragma once

#include "ui/color_slider.h"
#include "ui/color_value.h"

#include <QImage>

namespace tavrel::ui {

/// The square of saturation (to the right) and value (upwards) of one hue.
class ColorSvArea final : public ColorSlider
{
    Q_OBJECT

public:
    explicit ColorSvArea(QWidget *parent);

    void setHsv(const Hsv &hsv);
    [[nodiscard]] const Hsv &hsv() const { return m_hsv; }
    /// Pictures of the gradient made so far: one as long as neither hue, size nor screen change.
    [[nodiscard]] int gradientsMade() const { return m_gradientsMade; }

    /// The saturation; the words say the value, too.
    [[nodiscard]] double fraction() const override { return m_hsv.saturation; }
    [[nodiscard]] QString valueText() const override;

protected:
    void moveTo(const QPointF &point) override;
    void stepBy(const QPointF &fractions) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void take(const Hsv &hsv);
    [[nodiscard]] QPointF handle() const;
    void updateHandle();
    void makeGradient();

    Hsv m_hsv;
    QImage m_gradient;
    double m_gradientHue = -1;
    int m_gradientsMade = 0;
};

} // namespace tavrel::ui
