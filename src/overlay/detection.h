#pragma once

#include "overlay/hover_tracker.h"
#include "platform/display_info.h"
#include "platform/element_detector.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <optional>

namespace tavrel::ui {

class ElementProbe;
class OverlayPicture;

/// What lies under the pointer of an overlay: windows of the moment of the grab, elements in them, boxes of the
/// picture. It joins the tracker of the hovered rectangle to those who know. GUI thread only.
class Detection final : public QObject
{
    Q_OBJECT

public:
    /// wantsAnswers  whether an element that is found late is still of use
    Detection(const platform::DisplayInfo &display, std::function<bool()> wantsAnswers, QObject *parent);

    /// windows  the top-level ones, top-most first
    void setWindows(const QList<platform::WindowInfo> &windows);
    [[nodiscard]] const QList<platform::WindowInfo> &windows() const { return m_windows; }
    /// Asked for elements while the picture is a live one; may be null.
    void setProbe(ElementProbe *probe);
    /// isLive  the picture shows the screen of now; one of the past has no elements of now
    void setPicture(const OverlayPicture &picture, bool isLive);
    /// What can be selected, in overlay coordinates.
    void setArea(const QRectF &area);

    /// The window at a point of the overlay.
    [[nodiscard]] std::optional<platform::WindowInfo> windowAt(const QPointF &point) const;
    [[nodiscard]] HoverTracker &tracker() { return m_tracker; }
    [[nodiscard]] const HoverTracker &tracker() const { return m_tracker; }

private:
    void refresh();
    [[nodiscard]] QPointF globalOrigin() const { return m_display.geometry.topLeft() - m_origin; }

    platform::DisplayInfo m_display;
    std::function<bool()> m_wantsAnswers;
    QList<platform::WindowInfo> m_windows;
    QPointer<ElementProbe> m_probe;
    QPointF m_origin; ///< of the picture in the overlay
    QRectF m_area;
    bool m_isLive = true;
    HoverTracker m_tracker{hostClockMs, this};
};

} // namespace tavrel::ui
