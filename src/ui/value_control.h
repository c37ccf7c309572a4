#pragma once

#include "ui/theme.h"

#include <QWidget>

class QLabel;

namespace tavrel::ui {

class ModernSlider;

/// A label, a slider and the number it stands at. A drag tells its steps as previews and its end as the change.
class ValueControl final : public QWidget
{
    Q_OBJECT

public:
    /// key   object name of the slider
    /// unit  behind the number, such as "%"
    ValueControl(const QString &key, const QString &label, int least, int most, int value, const QString &unit,
                 const Theme &theme, QWidget *parent = nullptr);

    [[nodiscard]] ModernSlider *slider() const { return m_slider; }

Q_SIGNALS:
    void previewed(int value);
    void changed(int value);

private:
    void show(int value);

    ModernSlider *m_slider;
    QLabel *m_number;
    QString m_unit;
    int m_told;
};

} // namespace tavrel::ui
