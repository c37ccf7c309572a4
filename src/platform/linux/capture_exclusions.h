#pragma once

#include <QObject>
#include <QSet>
#include <QTimer>
#include <QWindow>

#include <memory>

namespace tavrel::platform {

class XConnection;

/// The windows that no picture may show, shared between the window controller, which fills the set, and whatever
/// takes pictures. GUI thread only.
///
/// To look behind a window, the contents of the windows below it have to exist. Without a compositing manager an X
/// server throws away what is covered, so from the first window in the set on the server is asked to keep every
/// top-level window in a pixmap of its own (redirection, automatic: what is on the screen does not change). Asked
/// before the window that is to be left out appears, everything below it is whole by the time of the first picture.
/// The redirection outlives the last window by a while, since redirecting a desktop full of windows costs the server
/// a copy of each.
class CaptureExclusions final : public QObject
{
    Q_OBJECT

public:
    explicit CaptureExclusions(std::shared_ptr<XConnection> x, QObject *parent = nullptr);
    ~CaptureExclusions() override;

    void add(WId window);
    void remove(WId window);
    [[nodiscard]] const QSet<WId> &windows() const noexcept { return m_windows; }

    /// Has the server keep the windows' contents from now on.
    void keepContents();
    /// False for the short time after a window that was already on the screen made the server keep what it covers:
    /// clients are still repainting that.
    [[nodiscard]] bool contentsComplete() const;

    /// What clients get for repainting, in milliseconds.
    static constexpr int kRepaintMs = 80;

private:
    void redirect();
    void letGo();

    std::shared_ptr<XConnection> m_x;
    QSet<WId> m_windows;
    QTimer m_linger;
    double m_incompleteUntilMs = 0; ///< host clock
    bool m_kept = false;
};

} // namespace tavrel::platform
