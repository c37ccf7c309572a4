#pragma once

#include "annotate/base_shape.h"
#include "annotate/text_stamp.h"

namespace tavrel {

/// A text over the whole canvas, once or in tilted rows. There is one in a document at most; the pointer never meets
/// it.
class WatermarkShape final : public BaseShape
{
public:
    WatermarkShape();

    void paint(QPainter &painter, const ShapeRenderContext &context) const override;
    [[nodiscard]] bool hitTest(double, double) const override { return false; }
    void updateDrag(double, double, double, double) override {}
    void translate(double, double) override {}
    [[nodiscard]] QRectF paintedBounds() const override { return {}; }
    void scale(double factor) override;
    void toJson(QJsonObject &out) const override;
    void readJson(const QJsonObject &in) override;
    void takeAttributes(const ShapeAttributes &attributes) override;
    void giveAttributes(ShapeAttributes &attributes) const override;
    bool applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes) override;

    /// The text with its {{time tokens}} filled in. What is no token stays; without closing braces nothing is filled
    /// in.
    ///
    /// stamp  milliseconds since the epoch, shown in local time
    [[nodiscard]] static QString expand(const QString &text, qint64 stamp);

    QString text;
    /// tile, br, bl, tr, tl, tc, bc; anything else is centred
    QString mode = QStringLiteral("tile");
    double fontSize = 20.0;
    QString fontFamily;
    qint64 stamp; ///< when the text was last changed, so that rendering anew shows the same time

private:
    mutable TextStamp m_stamp; ///< of the text as last painted
};

} // namespace tavrel
