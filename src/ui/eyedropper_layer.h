#pragma once

#include <QColor>
#include <QImage>
#include <QPointF>
#include <QPointer>
#include <QWidget>

#include <functional>

namespace tavrel::ui {

/// Lies over a host until a colour of its picture is picked: a loupe with the pixels under the pointer follows it.
///
/// It says `picked` or `cancelled` once, and takes itself off the screen before. It knows its host alone: with two
/// screens each host has a layer of its own, and whoever asked for them deletes the other one.
class EyedropperLayer final : public QWidget
{
    Q_OBJECT

public:
    /// The pixels around a point of the host in its logical coordinates, 11 x 11 pixels of the picture (see
    /// `eyedropperSample`). Any other size means that there is nothing to pick. Asked at every move: it must not grab.
    using Source = std::function<QImage(const QPointF &point)>;

    static constexpr int kCell = 9;
    static constexpr int kDiameter = 11 * kCell;
    static constexpr int kLabelHeight = 28;

    /// Covers the host, shows itself and takes the keyboard.
    EyedropperLayer(QWidget *host, Source source);

    [[nodiscard]] bool isValid() const { return m_valid; }
    [[nodiscard]] const QColor &currentColor() const { return m_color; }

    struct Places
    {
        QRectF loupe;
        QRectF label;
    };
    /// Where loupe and label go for a point: right of and below it, on the other side where they would leave the layer.
    [[nodiscard]] static Places placesFor(const QPointF &point, const QSizeF &layer);

Q_SIGNALS:
    void picked(const QColor &color);
    void cancelled();

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    [[nodiscard]] QPointF pointOf(const QMouseEvent &event) const;
    void lookAt(const QPointF &point);
    void hideLoupe();
    void updateLoupe();
    [[nodiscard]] bool leave();

    Source m_source;
    QPointer<QWidget> m_focusBefore;
    QPointF m_point;
    QImage m_sample;
    QColor m_color;
    bool m_valid = false;
    bool m_done = false;
};

} // namespace tavrel::ui
