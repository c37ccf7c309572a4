#pragma once

#include "annotate/tool_type.h"
#include "settings/settings_config.h"

#include <QList>
#include <QRectF>
#include <QSizeF>
#include <QString>

class QPainter;

namespace tavrel::ui {

/// One line of the hint card; a row without texts is a gap.
struct HintRow
{
    QString key;
    QString description;

    [[nodiscard]] bool isGap() const { return key.isEmpty() && description.isEmpty(); }
};

/// What can be done now: the rows of the tool, then those that always hold.
[[nodiscard]] QList<HintRow> hintRows(ToolType tool, bool markerRectMode, const BuiltinKeys &keys);

/// The card as it will be painted: rows with their places.
class HintCard final
{
public:
    HintCard() = default;
    explicit HintCard(const QList<HintRow> &rows);

    [[nodiscard]] bool isEmpty() const { return m_rows.isEmpty(); }
    [[nodiscard]] QSizeF size() const { return m_size; }
    /// The card's place in an overlay of `height`; `bottomInset` is what a task bar takes from the display.
    [[nodiscard]] QRectF place(double height, double bottomInset) const;
    void paint(QPainter &painter, const QPointF &topLeft) const;

private:
    struct Row
    {
        HintRow text;
        QRectF chip; ///< from the card's corner
        QRectF description;
    };

    QList<Row> m_rows;
    QSizeF m_size;
};

} // namespace tavrel::ui
