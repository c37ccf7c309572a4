#pragma once

#include <QObject>

namespace tavrel::feedback {

/// Takes reports of users to the service. Reached only through this interface, so that tests inject their own.
class IFeedbackService : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
};

} // namespace tavrel::feedback
