#pragma once

#include "ui/studio_button.h"

namespace tavrel::ui {

/// A section of a studio window on its rail: a glyph above a small label, checkable.
class RailIconButton final : public StudioButton
{
    Q_OBJECT

public:
    static constexpr int kRailWidth = 56;

    RailIconButton(const QString &glyph, const QString &label, const Theme &theme, QWidget *parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_glyph;
};

} // namespace tavrel::ui
