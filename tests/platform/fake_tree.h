#pragma once

#include <QByteArray>
#include <QList>
#include <QRect>
#include <QString>

namespace tavrel::test {

/// An element of a made-up window. The window itself is the first of its list.
struct FakeElement
{
    QRect rect; ///< pixels of the root, all even
    QList<int> children;
    quint32 role = 39; ///< of the AT-SPI protocol; 39 is a panel
    QString name;
    QString help;
    bool visible = true;
    bool showing = true;
};

/// The window all trees have.
inline constexpr QRect kFakeWindow(100, 80, 1200, 900);

/// The same elements for the same arguments in every process. Shapes:
///   grid     40 rows of 49 cells: 2,001 elements
///   levels   5 levels of 400 children, of which the first goes on: 2,001 elements
///   crowd    450 children on one another
///   deep     40 elements in one another
///   random   about 2,000 that overlap, stick out, hide or have no size
///   roles    one of each role side by side, 10 pixels each, with names and help that are too long
///   page     a browser: a page with an address, a frame with another one in it
[[nodiscard]] QList<FakeElement> fakeTree(const QByteArray &shape, quint32 seed);

/// The number of roles that the shape of that name has.
inline constexpr int kFakeRoles = 130;

} // namespace tavrel::test
