#include "output/clipboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace tavrel {

void SystemClipboard::set(std::unique_ptr<QMimeData> data)
{
    m_set = data.get();
    QGuiApplication::clipboard()->setMimeData(data.release());
}

const QMimeData *SystemClipboard::readBack() const
{
    // While the clipboard is ours, Qt hands out the very object that was set; after a look at who owns it, it hands
    // out a stand-in for the other program, whose functions would ask that program and wait for it.
    const QMimeData *present = QGuiApplication::clipboard()->mimeData();
    return present == m_set ? present : nullptr;
}

} // namespace tavrel
