#pragma once

#include "ui/studio_button.h"

namespace tavrel::ui {

/// A small choice in a row of choices, checkable. In an exclusive group the arrow keys walk.
class Chip final : public StudioButton
{
    Q_OBJECT

public:
    Chip(const QString &label, const Theme &theme, QWidget *parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace tavrel::ui
