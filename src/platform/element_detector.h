#pragma once

#include <QImage>
#include <QList>
#include <QRectF>
#include <QString>
#include <QWindow>

namespace tavrel::platform {

/// One window of the top-level list.
struct WindowInfo
{
    WId windowId = 0;
    qint64 processId = 0;    ///< 0 when unknown
    QRectF geometry;         ///< with its visible frame, global logical coordinates
    QString applicationName; ///< empty when unknown
    QString title;           ///< at most 256 characters

    friend bool operator==(const WindowInfo &, const WindowInfo &) = default;
};

/// What is known of a user interface element.
struct ElementInfo
{
    QString role;
    QString name;     ///< at most 80 characters
    QString helpText; ///< at most 120 characters
};

/// Reads other applications' windows and elements.
///
/// The window lists may be read on the GUI thread and on workers alike. elementChain(), elementAt(), sourceUrl() and
/// applicationIcon() are slow: worker threads only. They end within 250 ms, with what they have by then.
class IElementDetector
{
public:
    IElementDetector() = default;
    IElementDetector(const IElementDetector &) = delete;
    IElementDetector &operator=(const IElementDetector &) = delete;
    virtual ~IElementDetector() = default;

    /// Visible windows of other processes, at least 24 device pixels wide and high, top-most first.
    [[nodiscard]] virtual QList<WindowInfo> topLevelWindows() = 0;
    /// The windows that a picture may have to leave out; the same list unless the system knows more.
    [[nodiscard]] virtual QList<WindowInfo> captureCandidates() { return topLevelWindows(); }
    /// Whether element queries work at all; they are skipped when false. Window lists do not depend on it.
    [[nodiscard]] virtual bool isAvailable() const = 0;
    /// Asks the system for the access that element queries need.
    virtual void requestAccess() = 0;
    /// Rectangles of the elements under a global logical point, from the innermost out. Empty for a process id below 1.
    [[nodiscard]] virtual QList<QRectF> elementChain(const QPointF &global, qint64 processId) = 0;
    /// The address that a browser window shows at the point, else empty.
    [[nodiscard]] virtual QString sourceUrl(const QPointF &global, qint64 processId) = 0;
    [[nodiscard]] virtual ElementInfo elementAt(const QPointF &global, qint64 processId) = 0;
    /// The icon of the process's windows, square, `sizePx` device pixels; null when it has none.
    [[nodiscard]] virtual QImage applicationIcon(qint64 processId, int sizePx) = 0;
};

} // namespace tavrel::platform

Q_DECLARE_METATYPE(tavrel::platform::WindowInfo)
