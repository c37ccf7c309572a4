#include "ui/theme.h"

#include <cmath>

namespace tavrel::ui {
namespace {

QColor withAlpha(QColor color, double alpha)
{
    color.setAlpha(static_cast<int>(std::lround(255 * alpha)));
    return color;
}

QColor thinned(const QColor &color, double factor)
{
    QColor result = color;
    result.setAlpha(static_cast<int>(std::lround(color.alpha() * factor)));
    return result;
}

} // namespace

QString studioStyleSheet(const Theme &theme)
{
    const QString text = css(theme.studioText());
    const QString quiet = css(theme.studioSecondaryText());
    const QString disabled = css(theme.studioDisabledText());
    const QString control = css(theme.controlSurface());
    const QString hover = css(theme.controlHover());

    const QString labels =
        QStringLiteral("QLabel { color: %1; background: transparent; }"
                       "QLabel[role=\"title\"] { color: %1; font-size: 15px; font-weight: 600; }"
                       "QLabel[role=\"windowTitle\"] { color: %1; font-size: 13px; font-weight: 600; }"
                       "QLabel[role=\"body\"] { color: %1; font-size: 12.5px; }"
                       "QLabel[role=\"section\"] { color: %2; font-size: 11px; font-weight: 600; }"
                       "QLabel[role=\"hint\"] { color: %2; font-size: 11.5px; }"
                       "QLabel[role=\"value\"] { color: %2; font-size: 11.5px; background: %3; "
                       "border-radius: 6px; padding: 1px 7px; }"
                       "QLabel[role=\"pill\"] { color: %2; font-size: 11.5px; background: %4; "
                       "border: 1px solid %5; border-radius: 11px; padding: 4px 10px; }")
            .arg(text, quiet, css(thinned(theme.chipFill(), 0.7)), css(theme.studioRaised()), css(theme.pillBorder()));
    const QString frames =
        QStringLiteral("QFrame#groupCard { background: %1; border-radius: 12px; }"
                       "QFrame[role=\"hairline\"] { background: %2; border: none; }"
                       "QScrollArea, QScrollArea > QWidget, QScrollArea > QWidget > QWidget, QWidget#panelContent "
                       "{ background: transparent; border: none; }")
            .arg(control, css(theme.hairline()));
    const QString scrollBars =
        QStringLiteral("QScrollBar:vertical { background: transparent; width: 10px; margin: 4px 1px 4px 0px; }"
                       "QScrollBar::handle:vertical { background: %1; border-radius: 3px; min-height: 36px; "
                       "margin: 0px 2px; }"
                       "QScrollBar:horizontal { background: transparent; height: 10px; margin: 0px 4px 1px 4px; }"
                       "QScrollBar::handle:horizontal { background: %1; border-radius: 3px; min-width: 36px; "
                       "margin: 2px 0px; }"
                       "QScrollBar::handle:vertical:hover, QScrollBar::handle:horizontal:hover { background: %2; }"
                       "QScrollBar::add-line, QScrollBar::sub-line { width: 0px; height: 0px; background: none; }"
                       "QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }")
            .arg(css(withAlpha(theme.studioSecondaryText(), 0.35)), css(withAlpha(theme.studioSecondaryText(), 0.6)));
    const QString buttons =
        QStringLiteral("QCheckBox { color: %1; font-size: 12px; spacing: 8px; }"
                       "QRadioButton { color: %1; font-size: 12px; }"
                       "QPushButton { color: %1; background: %2; border: none; border-radius: 10px; "
                       "padding: 7px 14px; font-size: 12px; }"
                       "QPushButton:hover { background: %3; }"
                       "QPushButton:disabled { color: %4; }"
                       "QToolButton { color: %1; border: none; border-radius: 8px; padding: 4px 8px; "
                       "font-size: 12px; }"
                       "QToolButton:hover { background: %3; }"
                       "QToolButton:disabled { color: %4; }")
            .arg(text, control, hover, disabled);
    return labels + frames + scrollBars + buttons;
}

} // namespace tavrel::ui
