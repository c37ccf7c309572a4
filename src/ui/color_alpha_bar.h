#pragma once

#include "ui/color_bar.h"

namespace tavrel::ui {

/// Chooses how much of a colour covers what is below.
class ColorAlphaBar final : public ColorBar
{
    Q_OBJECT

public:
    static constexpr double kLeastAlpha = 0.05; ///< nothing drawn may be out of sight

    explicit ColorAlphaBar(QWidget *parent);

    void setColor(const QColor &color); ///< its own alpha does not count
    void setAlpha(double alpha);        ///< brought into 0.05 to 1
    [[nodiscard]] double alpha() const { return m_alpha; }

    [[nodiscard]] double fraction() const override { return m_alpha; }
    [[nodiscard]] QString valueText() const override; ///< in percent

protected:
    void setValue(double value) override { setAlpha(value); }
    void paintTrack(QPainter &painter, const QRectF &track) const override;
    [[nodiscard]] QColor handleColor() const override { return m_color; }

private:
    QColor m_color = Qt::black;
    double m_alpha = 1;
};

} // namespace tavrel::ui
