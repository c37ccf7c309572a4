#include "ui/marker_lines.h"

#include <QDebug>

namespace tavrel::ui {
namespace {

constexpr double kSmallestArea = 10;

} // namespace

void MarkerLines::ensure(const QRectF &area, const std::function<QImage()> &picture)
{
    if (area.width() <= kSmallestArea || area.height() <= kSmallestArea || m_area == area || m_isBusy)
        return;
    if (!m_search) {
        Q_EMIT unavailable();
        return;
    }
    const QImage crop = picture();
    if (crop.isNull())
        return;
    m_isBusy = true;
    m_search(crop, this, [this, area, size = QSizeF(crop.size()), picture = m_picture](const FoundLines &found) {
        if (picture == m_picture)
            take(area, size, found);
    });
}

void MarkerLines::forget()
{
    ++m_picture;
    m_isBusy = false;
    m_lines.clear();
    m_area = {};
}

void MarkerLines::take(const QRectF &area, const QSizeF &pictureSize, const FoundLines &found)
{
    m_isBusy = false;
    if (!found.error.isEmpty()) {
        qWarning().noquote() << QStringLiteral("智能整行 OCR 失败：") + found.error;
        return;
    }
    const double scale = pictureSize.width() / area.width();
    m_lines.clear();
    for (const QRectF &line : found.lines)
        m_lines.append(QRectF(line.topLeft() / scale, line.size() / scale).translated(area.topLeft()));
    m_area = area;
    Q_EMIT searched();
}

QList<QRectF> MarkerLines::linesIn(const QRectF &area) const
{
    return area == m_area ? m_lines : QList<QRectF>();
}

} // namespace tavrel::ui
