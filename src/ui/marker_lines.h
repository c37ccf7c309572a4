#pragma once

#include <QImage>
#include <QList>
#include <QObject>
#include <QRectF>
#include <QString>

#include <functional>
#include <optional>

namespace tavrel::ui {

/// What a search for the lines of text in a picture has found.
struct FoundLines
{
    QList<QRectF> lines; ///< device pixels of the picture; none of them blank
    QString error;       ///< why there is no answer; empty when there is one
};

/// Looks for text off the GUI thread and answers there, unless `context` is gone by then.
using LineSearch = std::function<void(const QImage &picture, QObject *context, std::function<void(FoundLines)> answer)>;

/// The text lines of one area of a picture, which highlighter strokes are pulled onto. They are looked for when they
/// are first needed; while a search runs, or when the area has become another one, there are none.
///
/// The host asks by ensure() whenever tool, option or area may have changed. GUI thread only.
class MarkerLines final : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    void setSearch(LineSearch search) { m_search = std::move(search); }

    /// area     in the host's coordinates; smaller than 10 each way it is not searched
    /// picture  gives what the area shows, without annotations; its size stands for the size of the area
    void ensure(const QRectF &area, const std::function<QImage()> &picture);
    /// The picture is another one: its lines are not known, and an answer for the old one is dropped.
    void forget();
    /// The lines of an area in the host's coordinates, none unless it is the one that was searched.
    [[nodiscard]] QList<QRectF> linesIn(const QRectF &area) const;

Q_SIGNALS:
    void unavailable(); ///< there is nothing to search with
    void searched();    ///< an answer has come, for what may be another area by now

private:
    void take(const QRectF &area, const QSizeF &pictureSize, const FoundLines &found);

    LineSearch m_search;
    QList<QRectF> m_lines;
    QRectF m_area;
    bool m_isBusy = false;
    quint64 m_picture = 0; ///< counts pictures
};

} // namespace tavrel::ui
