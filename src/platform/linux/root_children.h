#pragma once

#include <QList>
#include <QRect>

namespace tavrel::platform {

class XConnection;

/// A child of the root window that is on the screen: a window manager's frame, or a window without one.
struct RootChild
{
    quint32 window = 0;
    QRect rect;             ///< with its border, pixels of the root
    int border = 0;         ///< width of the X border, normally 0
    quint32 visual = 0;     ///< 0 for an input-only window
    bool shaped = false;    ///< its bounding shape is not its rectangle
    bool bypassing = false; ///< override-redirect: not the window manager's business

    [[nodiscard]] bool isInputOnly() const { return visual == 0; }
};

/// Every viewable child of the root, bottom to top, in two flights. A child that goes away meanwhile is left out.
[[nodiscard]] QList<RootChild> viewableRootChildren(const XConnection &x);

/// For each window the child of the root that it lies in (possibly itself), 0 for a window that is gone. One round
/// trip per level of nesting, however many windows.
[[nodiscard]] QList<quint32> rootChildrenOf(const XConnection &x, const QList<quint32> &windows);

} // namespace tavrel::platform
