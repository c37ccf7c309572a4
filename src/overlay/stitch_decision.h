#pragma once

namespace tavrel::ui {

/// Rows of the scrolling region, in device pixels; a lower one can never be placed.
inline constexpr int kLeastStitchRows = 192;

/// What became of a frame.
enum class StitchOutcome {
    Ignored,  ///< not active, a null image or an image of another size
    NoMatch,  ///< shows nothing that could be placed on the page
    Jumped,   ///< placed, but too far from where the last step leads to be believed
    Accepted, ///< placed; it may still have brought no new rows
    Full,     ///< placed, but the page would grow beyond its limit
};

struct StitchDecision
{
    StitchOutcome outcome = StitchOutcome::Ignored;
    int offset = 0;        ///< rows from the first frame's top to this one's; meaningful for Jumped, Accepted and Full
    int rowsAdded = 0;     ///< device rows
    int rowsCut = 0;       ///< device rows that scrolling back took off the end
    float subPixel = 0.0F; ///< rows by which the new rows were resampled
};

} // namespace tavrel::ui
