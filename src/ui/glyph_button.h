#pragma once

#include "ui/theme.h"

#include <QToolButton>

namespace tavrel::ui {

/// A square button with a glyph of the attribute set, painted by code. Tab reaches it; a click leaves the focus where
/// it is.
class GlyphButton final : public QToolButton
{
    Q_OBJECT

public:
    /// tip  also the accessible name
    GlyphButton(const QString &glyph, const QString &tip, const Theme &theme, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_glyph;
    Theme m_theme;
};

} // namespace tavrel::ui
