#include "process/file_open_filter.h"

#include <QFileOpenEvent>
#include <QTimer>

namespace tavrel {

bool FileOpenFilter::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::FileOpen)
        return QObject::eventFilter(watched, event);
    const QString path = static_cast<QFileOpenEvent *>(event)->file();
    if (path.isEmpty())
        return QObject::eventFilter(watched, event);
    QTimer::singleShot(0, this, [this, path] { Q_EMIT fileOpened(path); });
    return true;
}

} // namespace tavrel
