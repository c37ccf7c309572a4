#pragma once

#include <QObject>

namespace tavrel::cloud {

/// Uploads, links and the list of uploaded items. Reached only through this interface, so that tests inject their own.
class ICloudService : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
};

} // namespace tavrel::cloud
