#pragma once

#include <QObject>

namespace tavrel::account {

/// Signing in, the session and what the account knows of itself. Reached only through this interface, so that tests
/// inject their own.
class IAccountService : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
};

} // namespace tavrel::account
