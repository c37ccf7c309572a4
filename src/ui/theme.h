#pragma once

#include <QColor>
#include <QString>

#include <array>

namespace tavrel::ui {

/// Every colour of the program's own look, in a fixed order. Slots 0 to 17 are the floating panels (toolbars, menus),
/// 18 to 34 the studio windows, 35 to 37 the video timeline, 38 to 44 forms and settings.
enum class ThemeSlot : int {
    PanelSurface = 0,         ///< floating panels: toolbar, attribute bar, pop-ups
    PanelBorder = 1,          ///< outline of a floating panel
    PrimaryText = 2,          ///< text on panels, cards and dialogs
    SecondaryText = 3,        ///< quieter text on the same
    HoverFill = 4,            ///< under a hovered control
    SelectedFill = 5,         ///< under a selected entry
    Accent = 6,               ///< default buttons, focus, active marks
    StrongBorder = 7,         ///< outline of boxes that can be changed
    CardSurface = 8,          ///< opaque surface of cards and menus
    CardBorder = 9,           ///< outline of cards and menus
    CardShadow = 10,          ///< shadow around cards and panels
    Separator = 11,           ///< thin lines between groups of buttons
    ToolIcon = 12,            ///< tool glyphs at rest
    ToolIconActive = 13,      ///< tool glyph of the current tool
    ToolText = 14,            ///< text below a tool
    ToolTextActive = 15,      ///< text below the current tool
    ToolCheckedFill = 16,     ///< under the current tool
    ToolPressedFill = 17,     ///< under a tool while it is pressed
    TitleBarSurface = 18,     ///< title bar of a studio window
    Hairline = 19,            ///< 1 px lines between the areas of a studio window
    RailSurface = 20,         ///< strip of section buttons
    RailSelectedFill = 21,    ///< under the chosen section button
    StudioBase = 22,          ///< window in dark, side panel in light
    StudioRaised = 23,        ///< side panel in dark, window in light; also pills
    PillBorder = 24,          ///< outline of a floating pill
    WorkspaceSurface = 25,    ///< area behind the edited picture
    WorkspaceBorder = 26,     ///< outline of that area
    ControlSurface = 27,      ///< cards and buttons of the side panels
    ControlHover = 28,        ///< the same while hovered
    ChipFill = 29,            ///< value chips, slider tracks, dashed borders
    StudioText = 30,          ///< primary text of studio windows
    StudioSecondaryText = 31, ///< secondary text and scroll handles
    StudioDisabledText = 32,  ///< disabled text
    SegmentThumb = 33,        ///< moving thumb of a segmented control
    StudioStrongBorder = 34,  ///< outline of what is selected or being dropped on
    TimelineSurface = 35,     ///< invalid in light: the workspace colours stand in
    TimelineTrack = 36,       ///< invalid in light
    TimelineLane = 37,        ///< invalid in light
    Transparent = 38,         ///< always fully transparent
    FormSeparator = 39,       ///< lines between the rows of a form
    FormSurface = 40,         ///< invalid in both: a form shows the window behind it
    FormHover = 41,           ///< under a hovered row of a form
    FieldSurface = 42,        ///< line edits and text boxes
    FieldBorder = 43,         ///< their outline
    FieldFill = 44,           ///< plain buttons and wells of a form
};

inline constexpr int themeSlotCount = 45;

/// One set of colours. A plain value: copies are cheap and every widget keeps its own.
class Theme final
{
public:
    using Colors = std::array<QColor, themeSlotCount>;

    Theme() = default; ///< light but without colours; `themeFor` gives a real one
    Theme(bool isDark, const Colors &colors) : dark(isDark), m_colors(colors) {}

    bool dark = false;

    [[nodiscard]] QColor color(ThemeSlot slot) const { return m_colors[static_cast<size_t>(slot)]; }
    /// The colour of a slot by number; invalid outside 0 to 44.
    [[nodiscard]] QColor slot(int number) const
    {
        return number >= 0 && number < themeSlotCount ? m_colors[static_cast<size_t>(number)] : QColor();
    }

    [[nodiscard]] QColor panelSurface() const { return color(ThemeSlot::PanelSurface); }
    [[nodiscard]] QColor panelBorder() const { return color(ThemeSlot::PanelBorder); }
    [[nodiscard]] QColor primaryText() const { return color(ThemeSlot::PrimaryText); }
    [[nodiscard]] QColor secondaryText() const { return color(ThemeSlot::SecondaryText); }
    [[nodiscard]] QColor hoverFill() const { return color(ThemeSlot::HoverFill); }
    [[nodiscard]] QColor selectedFill() const { return color(ThemeSlot::SelectedFill); }
    [[nodiscard]] QColor accent() const { return color(ThemeSlot::Accent); }
    [[nodiscard]] QColor strongBorder() const { return color(ThemeSlot::StrongBorder); }
    [[nodiscard]] QColor cardSurface() const { return color(ThemeSlot::CardSurface); }
    [[nodiscard]] QColor cardBorder() const { return color(ThemeSlot::CardBorder); }
    [[nodiscard]] QColor cardShadow() const { return color(ThemeSlot::CardShadow); }
    [[nodiscard]] QColor separator() const { return color(ThemeSlot::Separator); }
    [[nodiscard]] QColor toolIcon() const { return color(ThemeSlot::ToolIcon); }
    [[nodiscard]] QColor toolIconActive() const { return color(ThemeSlot::ToolIconActive); }
    [[nodiscard]] QColor toolText() const { return color(ThemeSlot::ToolText); }
    [[nodiscard]] QColor toolTextActive() const { return color(ThemeSlot::ToolTextActive); }
    [[nodiscard]] QColor toolCheckedFill() const { return color(ThemeSlot::ToolCheckedFill); }
    [[nodiscard]] QColor toolPressedFill() const { return color(ThemeSlot::ToolPressedFill); }
    [[nodiscard]] QColor titleBarSurface() const { return color(ThemeSlot::TitleBarSurface); }
    [[nodiscard]] QColor hairline() const { return color(ThemeSlot::Hairline); }
    [[nodiscard]] QColor railSurface() const { return color(ThemeSlot::RailSurface); }
    [[nodiscard]] QColor railSelectedFill() const { return color(ThemeSlot::RailSelectedFill); }
    [[nodiscard]] QColor studioBase() const { return color(ThemeSlot::StudioBase); }
    [[nodiscard]] QColor studioRaised() const { return color(ThemeSlot::StudioRaised); }
    [[nodiscard]] QColor pillBorder() const { return color(ThemeSlot::PillBorder); }
    [[nodiscard]] QColor workspaceSurface() const { return color(ThemeSlot::WorkspaceSurface); }
    [[nodiscard]] QColor workspaceBorder() const { return color(ThemeSlot::WorkspaceBorder); }
    [[nodiscard]] QColor controlSurface() const { return color(ThemeSlot::ControlSurface); }
    [[nodiscard]] QColor controlHover() const { return color(ThemeSlot::ControlHover); }
    [[nodiscard]] QColor chipFill() const { return color(ThemeSlot::ChipFill); }
    [[nodiscard]] QColor studioText() const { return color(ThemeSlot::StudioText); }
    [[nodiscard]] QColor studioSecondaryText() const { return color(ThemeSlot::StudioSecondaryText); }
    [[nodiscard]] QColor studioDisabledText() const { return color(ThemeSlot::StudioDisabledText); }
    [[nodiscard]] QColor segmentThumb() const { return color(ThemeSlot::SegmentThumb); }
    [[nodiscard]] QColor studioStrongBorder() const { return color(ThemeSlot::StudioStrongBorder); }
    [[nodiscard]] QColor timelineSurface() const { return color(ThemeSlot::TimelineSurface); }
    [[nodiscard]] QColor timelineTrack() const { return color(ThemeSlot::TimelineTrack); }
    [[nodiscard]] QColor timelineLane() const { return color(ThemeSlot::TimelineLane); }
    [[nodiscard]] QColor transparent() const { return color(ThemeSlot::Transparent); }
    [[nodiscard]] QColor formSeparator() const { return color(ThemeSlot::FormSeparator); }
    [[nodiscard]] QColor formSurface() const { return color(ThemeSlot::FormSurface); }
    [[nodiscard]] QColor formHover() const { return color(ThemeSlot::FormHover); }
    [[nodiscard]] QColor fieldSurface() const { return color(ThemeSlot::FieldSurface); }
    [[nodiscard]] QColor fieldBorder() const { return color(ThemeSlot::FieldBorder); }
    [[nodiscard]] QColor fieldFill() const { return color(ThemeSlot::FieldFill); }

    /// Surface of a studio window and of its side panels: the two studio surfaces swap roles between the themes.
    [[nodiscard]] QColor studioWindow() const { return dark ? studioBase() : studioRaised(); }
    [[nodiscard]] QColor studioPanel() const { return dark ? studioRaised() : studioBase(); }

    friend bool operator==(const Theme &, const Theme &) = default;

private:
    Colors m_colors;
};

/// The scan and selection blue and the destructive red, the same in both themes.
inline constexpr QColor selectionBlue{0, 125, 255};
inline constexpr QColor destructiveRed{255, 59, 48};

[[nodiscard]] const Theme &lightTheme();
[[nodiscard]] const Theme &darkTheme();

/// The theme of the setting: "light", "dark", and for any other word what the system prefers now.
[[nodiscard]] Theme themeFor(const QString &name);

/// A colour as a style sheet writes it: "#rrggbb", or "rgba(r, g, b, a)" when it is not opaque.
[[nodiscard]] QString css(const QColor &color);

/// The style sheet that every studio window appends to its own background rule. Looks are chosen by the dynamic
/// property "role" or by object name.
[[nodiscard]] QString studioStyleSheet(const Theme &theme);

} // namespace tavrel::ui
