#pragma once

#include "ui/studio_button.h"

namespace tavrel::ui {

/// A button with a glyph, a label and, where it opens something, a small arrow.
class ActionButton final : public StudioButton
{
    Q_OBJECT

public:
    enum class Look {
        Plain = 0,   ///< no face until the pointer is on it
        Tinted = 1,  ///< in the colour of what is selected
        Filled = 2,  ///< the face of controls
        Primary = 3, ///< the one thing to do
    };

    /// glyph  of the editor or line set; empty for none. An empty label makes a square button: give it a tool tip and
    ///        an accessible name.
    ActionButton(const QString &glyph, const QString &label, Look look, const Theme &theme, QWidget *parent = nullptr);

    void setGlyph(const QString &glyph);
    [[nodiscard]] const QString &glyph() const { return m_glyph; }
    void setHasMenu(bool hasMenu); ///< shows the arrow
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] QColor fill() const;
    [[nodiscard]] QColor ink() const;
    [[nodiscard]] int labelWidth() const;

    QString m_glyph;
    Look m_look;
    bool m_hasMenu = false;
};

} // namespace tavrel::ui
