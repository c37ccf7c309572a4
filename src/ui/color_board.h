#pragma once

#include "ui/color_value.h"
#include "ui/theme.h"

#include <QFrame>
#include <QPointer>
#include <QRect>

#include <optional>

class QLabel;
class QPushButton;

namespace tavrel::ui {

class ColorAlphaBar;
class ColorChipRow;
class ColorHueBar;
class ColorLibrary;
class ColorPreview;
class ColorSvArea;
class EyedropperButton;
class HexEdit;
class WrappedLabel;

/// The floating colour chooser: hue, saturation, value, alpha, hexadecimal digits and the palette. Its host shows it
/// with popupAt() and hides it at `closeRequested`, or makes it part of a dialog and shows it with show(). A host that
/// answers a signal by taking it away uses deleteLater(). GUI thread only.
class ColorBoard final : public QFrame
{
    Q_OBJECT

public:
    static constexpr int kWidth = 268;

    /// window   whole window that it floats over
    /// library  null for that of the process; may go before the board
    explicit ColorBoard(QWidget *window, ColorLibrary *library = nullptr);

    /// Shows a colour without emitting. A text that is no colour is #F93442. An alpha in the text counts; else the
    /// board's stays with `keepAlpha` and becomes 1 without. What is shown already stays as exact as it is; a grey
    /// keeps the hue.
    void setColor(const QString &text, bool keepAlpha);
    /// "#RRGGBB", with "#AARRGGBB" for an alpha below 0.995.
    [[nodiscard]] QString currentHex() const;
    [[nodiscard]] const Hsv &hsv() const { return m_hsv; }
    [[nodiscard]] double alpha() const { return m_alpha; }
    [[nodiscard]] const QColor &baseColor() const { return m_baseColor; } ///< opaque

    /// Shows it beside a rectangle of the window it floats over, in that window's coordinates, and gives it the
    /// keyboard, which goes back when it is hidden; show() does the same once more. It stays beside it while its height
    /// changes. One that is shown already is moved, and the keyboard stays where it is.
    void popupAt(const QRect &anchor);
    /// Centred below the anchor, above it where that overflows, else at the bottom; 8 from every edge.
    [[nodiscard]] static QPoint popupPosition(const QRect &anchor, const QSize &board, const QSize &window);
    void applyTheme(const Theme &theme);

Q_SIGNALS:
    void eyedropperRequested();
    void colorChanged(const QString &hex);   ///< by the user, at every step
    void colorCommitted(const QString &hex); ///< the user has finished a step
    void closeRequested();

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void build();
    void connectControls();
    void describe();
    void takeHsv(const Hsv &hsv);
    void refresh();
    void refreshPalette();
    void commit();
    [[nodiscard]] bool isDragging() const;
    void place();
    void chooseChip(const QString &hex);

    QPointer<ColorLibrary> m_library;
    Theme m_theme;
    Hsv m_hsv;
    double m_alpha = 1;
    QColor m_baseColor;
    bool m_hexChanged = false; ///< by typing, not committed yet
    std::optional<QRect> m_anchor;
    QPointer<QWidget> m_focusBefore;

    ColorSvArea *m_sv;
    EyedropperButton *m_dropper;
    ColorHueBar *m_hueBar;
    ColorAlphaBar *m_alphaBar;
    QLabel *m_alphaText;
    ColorPreview *m_preview;
    QFrame *m_hexBox;
    QLabel *m_hexHash;
    HexEdit *m_hexEdit;
    QLabel *m_heading;
    QPushButton *m_reset;
    ColorChipRow *m_row;
    WrappedLabel *m_hint;
};

} // namespace tavrel::ui
