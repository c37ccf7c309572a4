#include "ui/value_control.h"

#include "ui/modern_slider.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>

namespace tavrel::ui {
namespace {

constexpr int kGap = 6;
constexpr int kNarrowestSlider = 60;
constexpr int kWidestSlider = 110;
constexpr int kNumberRoom = 4;

} // namespace

ValueControl::ValueControl(const QString &key, const QString &label, int least, int most, int value,
                           const QString &unit, const Theme &theme, QWidget *parent)
    : QWidget(parent),
      m_slider(new ModernSlider(theme, this)),
      m_number(new QLabel(this)),
      m_unit(unit),
      m_told(value)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(kGap);
    row->addWidget(new QLabel(label, this));
    row->addWidget(m_slider, 1);
    row->addWidget(m_number);
    m_slider->setObjectName(key);
    m_slider->setAccessibleName(label);
    m_slider->setRange(least, most);
    m_slider->setValue(value);
    m_slider->setMinimumWidth(kNarrowestSlider);
    m_slider->setMaximumWidth(parent ? QWIDGETSIZE_MAX : kWidestSlider);
    m_number->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_number->setFixedWidth(QFontMetrics(m_number->font()).horizontalAdvance(QString::number(most) + unit) +
                            kNumberRoom);
    show(m_slider->value());

    connect(m_slider, &ModernSlider::valueChanged, this, [this](int now) {
        show(now);
        if (m_slider->isSliderDown()) {
            Q_EMIT previewed(now);
        } else {
            m_told = now;
            Q_EMIT changed(now);
        }
    });
    connect(m_slider, &ModernSlider::sliderReleased, this, [this] {
        if (m_slider->value() == m_told)
            return;
        m_told = m_slider->value();
        Q_EMIT changed(m_told);
    });
}

void ValueControl::show(int value)
{
    m_number->setText(QString::number(value) + m_unit);
}

} // namespace tavrel::ui
