#pragma once

#include "base/answer.h"
#include "base/work_queue.h"
#include "platform/element_detector.h"

#include <QList>
#include <QMenu>
#include <QObject>
#include <QString>

#include <functional>

namespace tavrel {

/// What a new guide records.
struct GuideChoice
{
    enum class Scope { Screen, App };

    Scope scope = Scope::Screen;
    qint64 processId = 0; ///< of the application, scope App
    QString appName;      ///< its display name, scope App

    friend bool operator==(const GuideChoice &, const GuideChoice &) = default;
};

/// A guide that was recorded before.
struct RecentGuide
{
    QString folder;
    QString title; ///< empty: the name of the folder stands in
    int steps = 0;
};

/// The two submenus of the tray about guides: what to record, and those there are. Both are built anew whenever one
/// of them opens, since windows and guides come and go. GUI thread only.
class GuideMenus final : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMaxApps = 12;
    static constexpr int kMaxGuides = 10;

    /// Where the entries come from and what they do. An entry whose action is empty stands disabled; an empty source
    /// is one that knows nothing.
    struct Services
    {
        std::function<QList<platform::WindowInfo>()> windows = {}; ///< top-most first
        /// Icon of a process, square, in device pixels; called on a worker.
        std::function<QImage(qint64 processId, int sizePx)> applicationIcon = {};
        std::function<QList<RecentGuide>()> guides = {}; ///< the newest first
        std::function<void(const GuideChoice &)> start = {};
        std::function<void()> pickRegion = {};
        std::function<void(const QString &folder)> open = {};
    };

    GuideMenus(Services services, QMenu *parent);

    [[nodiscard]] QMenu *scopeMenu() const { return m_scope; }
    [[nodiscard]] QMenu *recentMenu() const { return m_recent; }

    /// The entries for applications: each process once, under its first window with a name.
    [[nodiscard]] static QList<GuideChoice> applications(const QList<platform::WindowInfo> &windows);

private:
    void rebuild();
    void rebuildScope();
    void rebuildRecent();
    void fetchIcons(const QList<QAction *> &actions, const QList<GuideChoice> &apps);

    Services m_services;
    QMenu *m_scope;
    QMenu *m_recent;
    WorkQueue m_fetching; ///< icons; ended by the end of the answers
    Answers m_answers;
};

/// Makes an entry that this version cannot carry out stand disabled and say so.
void markAsUnavailable(QAction *action);

} // namespace tavrel
