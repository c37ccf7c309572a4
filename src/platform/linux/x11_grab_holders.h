#pragma once

#include <QList>
#include <QString>

namespace tavrel::platform {

class XConnection;

/// Another program that has keys or buttons reserved for itself.
struct GrabHolder
{
    qint64 processId = 0;
    QString name; ///< of the executable
    quint32 grabs = 0;
    bool isWindowManager = false;

    friend bool operator==(const GrabHolder &, const GrabHolder &) = default;
};

/// The programs that hold passive grabs now, this one left out, each process once, those with the most grabs first:
/// one that reserves keys has a grab for every combination of locks, while many have one or two for the mouse. The
/// server does not tell which keys they are. Empty when the server has no X-Resource extension, or the programs run on
/// other machines.
[[nodiscard]] QList<GrabHolder> passiveGrabHolders(const XConnection &x);

} // namespace tavrel::platform
