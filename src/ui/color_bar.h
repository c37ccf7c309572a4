#pragma once

#include "ui/color_slider.h"

class QPainter;

namespace tavrel::ui {

/// A slim horizontal slider with a round handle on a track that shows what each place means.
class ColorBar : public ColorSlider
{
    Q_OBJECT

public:
    explicit ColorBar(QWidget *parent);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    virtual void setValue(double value) = 0; ///< 0 to 1
    virtual void paintTrack(QPainter &painter, const QRectF &track) const = 0;
    [[nodiscard]] virtual QColor handleColor() const = 0;

    void moveTo(const QPointF &point) final;
    void stepBy(const QPointF &fractions) final;
    void paintEvent(QPaintEvent *event) final;
};

} // namespace tavrel::ui
