#pragma once

class QWheelEvent;

namespace tavrel::ui {

/// Wheel values are whole numbers, so that many small ones add up exactly: 120 to a step, 4 to a pixel.
inline constexpr int kWheelStep = 120;

/// How far a wheel event goes, up for a positive value. A sideways move is 0, as is the end of a gesture.
/// isReversed  the user's choice of direction, on top of the system's
[[nodiscard]] int wheelValue(const QWheelEvent &event, bool isReversed);
/// The same for a turn with Shift, which some systems report as a sideways one: the larger of both directions counts.
[[nodiscard]] int sizeWheelValue(const QWheelEvent &event, bool isReversed);
/// Whether the event comes from a device that reports motion instead of notches.
[[nodiscard]] bool isSmoothWheel(const QWheelEvent &event);
/// The wheel value of one event of a zoom gesture.
[[nodiscard]] int gestureValue(double zoom);

/// Turns wheel values into whole steps and keeps the rest.
class WheelAccumulator final
{
public:
    /// A value of the other direction drops the rest.
    [[nodiscard]] int take(int value);
    void reset() { m_rest = 0; }

private:
    int m_rest = 0;
};

} // namespace tavrel::ui
