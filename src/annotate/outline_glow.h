#pragma once

#include <QByteArray>
#include <QImage>
#include <QPainter>
#include <QRectF>

namespace tavrel {

class BaseShape;
struct ShapeRenderContext;

/// The glow around what a hovered shape paints, as a picture to be drawn into `area`.
struct OutlineGlow
{
    QImage image; ///< null when the shape gets no such glow
    QRectF area;  ///< shape coordinates
};

/// deviceScale  device pixels per unit of the view
/// returns      no picture for spotlights, shapes without bounds, a scale that is not positive, and shapes that would
///              need more than 1,500,000 pixels
[[nodiscard]] OutlineGlow makeOutlineGlow(const BaseShape &shape, const ShapeRenderContext &context,
                                          double deviceScale);

/// Keeps the last glow: the pointer rests on a shape for many paints, and making a glow costs some hundred layers.
class GlowCache final
{
public:
    /// Draws the glow of a shape; false, with nothing painted, when it gets none.
    ///
    /// json  what the shape stores; the glow is made anew when it has changed
    bool paint(QPainter &painter, const BaseShape &shape, const QByteArray &json, const ShapeRenderContext &context);
    void forget(const BaseShape *shape);
    void clear();

private:
    struct Key
    {
        const BaseShape *shape = nullptr;
        QByteArray json;
        double workingScale = 0;
        double handleScale = 0;
        bool operator==(const Key &) const = default;
    };
    Key m_key;
    OutlineGlow m_glow;
};

} // namespace tavrel
