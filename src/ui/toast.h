#pragma once

#include <QObject>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QTimer>

class QPainter;

namespace tavrel::ui {

/// A message near the top of a host, which goes away by itself after two seconds. The host paints it and repaints its
/// box at changed(). GUI thread only.
class Toast final : public QObject
{
    Q_OBJECT

public:
    explicit Toast(QObject *parent = nullptr);

    /// Takes the place of the message there is.
    void show(const QString &text);
    [[nodiscard]] bool isShown() const { return !m_text.isEmpty(); }
    /// In the middle of a host of this size; null while nothing is shown.
    [[nodiscard]] QRectF box(const QSizeF &host) const;
    void paint(QPainter &painter, const QSizeF &host) const;

Q_SIGNALS:
    void changed();

private:
    QString m_text;
    QTimer m_timer;
};

} // namespace tavrel::ui
