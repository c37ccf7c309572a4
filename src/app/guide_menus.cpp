#include "app/guide_menus.h"

#include <QCoreApplication>
#include <QDir>
#include <QPixmap>
#include <QPointer>

namespace tavrel {
namespace {

constexpr int kIconSize = 32;

QString text(const char *source)
{
    return QCoreApplication::translate("AppController", source);
}

/// A name as a menu shows it: an ampersand is no mnemonic.
QString asLabel(QString name)
{
    return name.replace(u'&', QStringLiteral("&&"));
}

} // namespace

void markAsUnavailable(QAction *action)
{
    action->setEnabled(false);
    action->setToolTip(text(QT_TRANSLATE_NOOP("AppController", "此版本还没有这项功能。")));
}

GuideMenus::GuideMenus(Services services, QMenu *parent)
    : QObject(parent),
      m_services(std::move(services)),
      m_scope(new QMenu(parent)),
      m_recent(new QMenu(parent))
{
    for (QMenu *menu : {m_scope, m_recent}) {
        menu->setToolTipsVisible(true);
        connect(menu, &QMenu::aboutToShow, this, &GuideMenus::rebuild);
    }
    rebuildRecent(); // a menu without entries would not open
    rebuildScope();
}

void GuideMenus::rebuild()
{
    rebuildScope();
    rebuildRecent();
}

QList<GuideChoice> GuideMenus::applications(const QList<platform::WindowInfo> &windows)
{
    QList<GuideChoice> apps;
    for (const platform::WindowInfo &window : windows) {
        const bool isKnown = std::any_of(apps.cbegin(), apps.cend(), [&window](const GuideChoice &app) {
            return app.processId == window.processId;
        });
        if (window.processId <= 0 || window.applicationName.trimmed().isEmpty() || isKnown)
            continue;
        apps.append({GuideChoice::Scope::App, window.processId, window.applicationName});
        if (apps.size() == kMaxApps)
            break;
    }
    return apps;
}

void GuideMenus::rebuildScope()
{
    m_scope->clear();
    const auto addStart = [this](const QString &label, const GuideChoice &choice) {
        QAction *action = m_scope->addAction(label);
        if (m_services.start)
            connect(action, &QAction::triggered, this, [this, choice] { m_services.start(choice); });
        else
            markAsUnavailable(action);
        return action;
    };
    addStart(text(QT_TRANSLATE_NOOP("AppController", "整个屏幕")), {});
    QAction *region = m_scope->addAction(text(QT_TRANSLATE_NOOP("AppController", "选择区域…")));
    if (m_services.pickRegion)
        connect(region, &QAction::triggered, this, [this] { m_services.pickRegion(); });
    else
        markAsUnavailable(region);

    const QList<GuideChoice> apps =
        applications(m_services.windows ? m_services.windows() : QList<platform::WindowInfo>());
    if (apps.isEmpty())
        return;
    m_scope->addSeparator();
    m_scope->addAction(text(QT_TRANSLATE_NOOP("AppController", "只记录某个应用：")))->setEnabled(false);
    QList<QAction *> actions;
    for (const GuideChoice &app : apps)
        actions.append(addStart(asLabel(app.appName), app));
    fetchIcons(actions, apps);
}

void GuideMenus::fetchIcons(const QList<QAction *> &actions, const QList<GuideChoice> &apps)
{
    if (!m_services.applicationIcon)
        return;
    const qreal ratio = m_scope->devicePixelRatioF();
    QList<QPointer<QAction>> targets;
    for (QAction *action : actions)
        targets.append(action);
    m_answers.abandon(); // those for the entries that were there before
    m_fetching.run([iconOf = m_services.applicationIcon, apps, size = qRound(kIconSize * ratio), targets, ratio,
                    answer = m_answers.handle()] {
        QList<QImage> icons;
        for (const GuideChoice &app : apps) {
            if (answer.isVoid())
                return;
            icons.append(iconOf(app.processId, size));
        }
        answer.post([icons, targets, ratio] {
            for (qsizetype i = 0; i < targets.size(); ++i) {
                if (!targets[i] || icons[i].isNull())
                    continue;
                QPixmap pixmap = QPixmap::fromImage(icons[i]);
                pixmap.setDevicePixelRatio(ratio);
                targets[i]->setIcon(pixmap);
            }
        });
    });
}

void GuideMenus::rebuildRecent()
{
    m_recent->clear();
    const QList<RecentGuide> guides = m_services.guides ? m_services.guides() : QList<RecentGuide>();
    for (const RecentGuide &guide : guides.first(std::min<qsizetype>(guides.size(), kMaxGuides))) {
        const QString title = guide.title.isEmpty() ? QDir(guide.folder).dirName() : guide.title;
        QAction *action = m_recent->addAction(
            asLabel(text(QT_TRANSLATE_NOOP("AppController", "%1（%2 步）")).arg(title, QString::number(guide.steps))));
        if (m_services.open)
            connect(action, &QAction::triggered, this, [this, folder = guide.folder] { m_services.open(folder); });
        else
            markAsUnavailable(action);
    }
    if (m_recent->isEmpty())
        m_recent->addAction(text(QT_TRANSLATE_NOOP("AppController", "还没有操作指南")))->setEnabled(false);
}

} // namespace tavrel
