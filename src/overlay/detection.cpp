#include "overlay/detection.h"

#include "overlay/element_probe.h"
#include "overlay/overlay_picture.h"

#include <utility>

namespace tavrel::ui {

Detection::Detection(const platform::DisplayInfo &display, std::function<bool()> wantsAnswers, QObject *parent)
    : QObject(parent),
      m_display(display),
      m_wantsAnswers(std::move(wantsAnswers))
{}

void Detection::setWindows(const QList<platform::WindowInfo> &windows)
{
    m_windows = windows;
    refresh();
}

void Detection::setProbe(ElementProbe *probe)
{
    if (m_probe)
        disconnect(m_probe, nullptr, this, nullptr);
    m_probe = probe;
    if (!probe) {
        m_tracker.setElementSource({});
        return;
    }
    connect(probe, &ElementProbe::ready, this,
            [this](const QPointF &global, qint64 processId, const QList<QRectF> &chain) {
                if (m_wantsAnswers())
                    m_tracker.takeElements(global, processId, chain);
            });
    m_tracker.setElementSource([this](const QPointF &global, qint64 processId) {
        if (m_probe && m_isLive)
            m_probe->request(global, processId);
    });
}

void Detection::setPicture(const OverlayPicture &picture, bool isLive)
{
    m_isLive = isLive;
    m_origin = picture.origin();
    m_tracker.setPicture(picture.image(), m_origin);
    refresh();
}

void Detection::setArea(const QRectF &area)
{
    m_area = area;
    refresh();
}

void Detection::refresh()
{
    m_tracker.setSurroundings(m_windows, globalOrigin(), m_area);
}

std::optional<platform::WindowInfo> Detection::windowAt(const QPointF &point) const
{
    const platform::WindowInfo *window = ui::windowAt(m_windows, point + globalOrigin());
    return window ? std::optional(*window) : std::nullopt;
}

} // namespace tavrel::ui
