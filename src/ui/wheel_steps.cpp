#include "ui/wheel_steps.h"

#include <QWheelEvent>

#include <cstdlib>

namespace tavrel::ui {
namespace {

constexpr int kPixelsPerStep = 30;
constexpr double kZoomPerStep = 0.03;

QPoint deltaOf(const QWheelEvent &event)
{
    return event.pixelDelta().isNull() ? event.angleDelta() : event.pixelDelta() * (kWheelStep / kPixelsPerStep);
}

} // namespace

int wheelValue(const QWheelEvent &event, bool isReversed)
{
    const QPoint delta = deltaOf(event);
    if (event.phase() == Qt::ScrollEnd || std::abs(delta.x()) > std::abs(delta.y()))
        return 0;
    return event.inverted() != isReversed ? -delta.y() : delta.y();
}

int sizeWheelValue(const QWheelEvent &event, bool isReversed)
{
    const QPoint delta = deltaOf(event);
    const int value = std::abs(delta.x()) > std::abs(delta.y()) ? delta.x() : delta.y();
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
