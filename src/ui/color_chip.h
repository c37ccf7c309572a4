#pragma once

#include "ui/theme.h"

#include <QAbstractButton>
#include <QString>

namespace tavrel::ui {

/// A round swatch, or the round "+" that adds one. Space, Enter and a click choose it. To assistive tools a swatch is
/// one of a group of radio buttons.
class ColorChip final : public QAbstractButton
{
    Q_OBJECT

public:
    /// hex   "#RRGGBB" or "#AARRGGBB"; empty for the chip that adds
    /// size  up to 24 for one that is translucent
    ColorChip(const QString &hex, int size, QWidget *parent);

    [[nodiscard]] const QString &hex() const { return m_hex; }
    [[nodiscard]] bool isAddChip() const { return m_hex.isEmpty(); }
    /// The one that is in use has a ring.
    void setSelected(bool selected);
    [[nodiscard]] bool isSelected() const { return m_selected; }
    /// Stands for the place of a chip that is being dragged.
    void setFaded(bool faded);
    [[nodiscard]] bool showsFocus() const { return m_showsFocus; }
    void applyTheme(const Theme &theme);

    [[nodiscard]] QSize sizeHint() const override { return size(); }

Q_SIGNALS:
    void removeRequested(); ///< Delete or Backspace on a swatch

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void paintAdd(QPainter &painter) const;

    Theme m_theme;
    QString m_hex;
    bool m_selected = false;
    bool m_faded = false;
    bool m_showsFocus = false;
};

} // namespace tavrel::ui
