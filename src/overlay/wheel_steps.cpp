#include "overlay/wheel_steps.h"

#include <QWheelEvent>

#include <cstdlib>

namespace tavrel::ui {
namespace {

constexpr int kPixelsPerStep = 30;
constexpr double kZoomPerStep = 0.03;

} // namespace

int wheelValue(const QWheelEvent &event, bool isReversed)
{
    if (event.phase() == Qt::ScrollEnd)
        return 0;
    const bool isPixels = !event.pixelDelta().isNull();
    const QPoint delta = isPixels ? event.pixelDelta() : event.angleDelta();
    if (std::abs(delta.x()) > std::abs(delta.y()))
        return 0;
    const int value = isPixels ? delta.y() * (kWheelStep / kPixelsPerStep) : delta.y();
    return event.inverted() != isReversed ? -value : value;
}

bool isSmoothWheel(const QWheelEvent &event)
{
    return !event.pixelDelta().isNull() || event.phase() != Qt::NoScrollPhase;
}

int gestureValue(double zoom)
{
    return qRound(zoom / kZoomPerStep * kWheelStep);
}

int WheelAccumulator::take(int value)
{
    if ((value > 0 && m_rest < 0) || (value < 0 && m_rest > 0))
        m_rest = 0;
    m_rest += value;
    const int steps = m_rest / kWheelStep;
    m_rest -= steps * kWheelStep;
    return steps;
}

} // namespace tavrel::ui
