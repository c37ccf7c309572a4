#include "ui/theme.h"

#include "ui/system_color_scheme.h"

namespace tavrel::ui {
namespace {

/// A slot of both stock themes. `NoColor` is a slot that is unset on purpose.
struct SlotColors
{
    QRgb light;
    int lightAlpha;
    QRgb dark;
    int darkAlpha;
};
constexpr int NoColor = -1;

constexpr SlotColors slotTable[] = {
    {0xFFFFFF, 245, 0x2A2A2A, 245},         // PanelSurface
    {0x000000, 26, 0xFFFFFF, 36},           // PanelBorder
    {0x2C2C2C, 255, 0xF2F2F2, 255},         // PrimaryText
    {0x707070, 255, 0xA8A8A8, 255},         // SecondaryText
    {0x000000, 20, 0xFFFFFF, 26},           // HoverFill
    {0x007DFF, 38, 0x007DFF, 70},           // SelectedFill
    {0x007DFF, 255, 0x3D9BFF, 255},         // Accent
    {0x000000, 36, 0xFFFFFF, 40},           // StrongBorder
    {0xFFFFFF, 255, 0x2F2F2F, 255},         // CardSurface
    {0xEEEEEE, 255, 0x444444, 255},         // CardBorder
    {0x000000, 26, 0x000000, 128},          // CardShadow
    {0x000000, 20, 0xFFFFFF, 26},           // Separator
    {0x444444, 255, 0xE0E0E0, 255},         // ToolIcon
    {0x333333, 255, 0xFFFFFF, 255},         // ToolIconActive
    {0x666666, 255, 0x999999, 255},         // ToolText
    {0x333333, 255, 0xFFFFFF, 255},         // ToolTextActive
    {0x000000, 31, 0xFFFFFF, 71},           // ToolCheckedFill
    {0x000000, 51, 0xFFFFFF, 102},          // ToolPressedFill
    {0xFFFFFF, 255, 0x1C1D21, 255},         // TitleBarSurface
    {0x0F172A, 20, 0xFFFFFF, 20},           // Hairline
    {0xE6E8EE, 255, 0x141518, 255},         // RailSurface
    {0xF3F4F7, 255, 0x27282D, 255},         // RailSelectedFill
    {0xEEEFF3, 255, 0x0F1013, 255},         // StudioBase
    {0xFFFFFF, 255, 0x1B1C20, 255},         // StudioRaised
    {0x0F172A, 18, 0xFFFFFF, 18},           // PillBorder
    {0xE4E6EC, 255, 0x15161A, 255},         // WorkspaceSurface
    {0x0F172A, 28, 0xFFFFFF, 20},           // WorkspaceBorder
    {0xF3F4F7, 255, 0x26272C, 255},         // ControlSurface
    {0xEAECF1, 255, 0x2F3036, 255},         // ControlHover
    {0x0F172A, 26, 0xFFFFFF, 31},           // ChipFill
    {0x1B1D22, 255, 0xECEDEF, 255},         // StudioText
    {0x6B7280, 255, 0x9AA0AB, 255},         // StudioSecondaryText
    {0x9AA0AB, 255, 0x6B707A, 255},         // StudioDisabledText
    {0xFFFFFF, 255, 0x4A4C55, 255},         // SegmentThumb
    {0x0F172A, 48, 0xFFFFFF, 48},           // StudioStrongBorder
    {0x000000, NoColor, 0x1C1C1E, 255},     // TimelineSurface
    {0x000000, NoColor, 0x262629, 255},     // TimelineTrack
    {0x000000, NoColor, 0x2A2A2D, 255},     // TimelineLane
    {0x000000, 0, 0x000000, 0},             // Transparent
    {0x000000, 20, 0xFFFFFF, 26},           // FormSeparator
    {0x000000, NoColor, 0x000000, NoColor}, // FormSurface
    {0x000000, 15, 0xFFFFFF, 26},           // FormHover
    {0xFFFFFF, 255, 0x000000, 70},          // FieldSurface
    {0x000000, 26, 0xFFFFFF, 28},           // FieldBorder
    {0x000000, 18, 0xFFFFFF, 22},           // FieldFill
};
static_assert(std::size(slotTable) == themeSlotCount);

QColor colorOf(QRgb rgb, int alpha)
{
    return alpha == NoColor ? QColor() : QColor(qRed(rgb), qGreen(rgb), qBlue(rgb), alpha);
}

Theme makeTheme(bool dark)
{
    Theme::Colors colors;
    for (size_t i = 0; i < colors.size(); ++i) {
        const SlotColors &entry = slotTable[i];
        colors[i] = dark ? colorOf(entry.dark, entry.darkAlpha) : colorOf(entry.light, entry.lightAlpha);
    }
    return Theme(dark, colors);
}

} // namespace

const Theme &lightTheme()
{
    static const Theme theme = makeTheme(false);
    return theme;
}

const Theme &darkTheme()
{
    static const Theme theme = makeTheme(true);
    return theme;
}

Theme themeFor(const QString &name)
{
    if (name == u"light")
        return lightTheme();
    if (name == u"dark")
        return darkTheme();
    return systemColorScheme() == ColorScheme::Dark ? darkTheme() : lightTheme();
}

QString css(const QColor &color)
{
    if (color.alpha() == 255)
        return color.name();
    return QStringLiteral("rgba(%1, %2, %3, %4)")
        .arg(color.red())
        .arg(color.green())
        .arg(color.blue())
        .arg(color.alpha());
}

} // namespace tavrel::ui
