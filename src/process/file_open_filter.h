#pragma once

#include <QObject>
#include <QString>

namespace tavrel {

/// Hears the system's request to open a file with the running program. Install it on the application object.
class FileOpenFilter final : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

Q_SIGNALS:
    /// On the next turn of the event loop after the request.
    void fileOpened(const QString &path);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
};

} // namespace tavrel
