#include "app/tray_menu.h"
#include "settings/settings_config.h"
#include "support/test_main.h"

#include <QApplication>
#include <QMenu>
#include <QSignalSpy>

using namespace tavrel;
using namespace std::chrono_literals;

class TrayMenuTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theMenuShowsTheShortcutOfTheMoment()
    {
        SettingsConfig config;
        TrayMenu tray([&config]() -> const SettingsConfig & { return config; },
                      [](const QString &, const QString &) {});
        const QAction *capture = tray.menu()->actions().first();
        QCOMPARE(capture->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_1));
        config.captureHotkey.combo.key = Qt::Key_7;
        Q_EMIT tray.menu()->aboutToShow();
        QCOMPARE(capture->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_7));
        config.captureHotkey.enabled = false;
        Q_EMIT tray.menu()->aboutToShow();
        QVERIFY(capture->shortcut().isEmpty());
    }

    void theEntriesAskForWhatTheySay()
    {
        const SettingsConfig config;
        TrayMenu tray([&config]() -> const SettingsConfig & { return config; },
                      [](const QString &, const QString &) {});
        QSignalSpy captures(&tray, &TrayMenu::captureRequested);
        QSignalSpy quits(&tray, &TrayMenu::quitRequested);
        tray.menu()->actions().first()->trigger();
        QCOMPARE(captures.count(), 1);
        QCOMPARE(quits.count(), 0);
        tray.menu()->actions().last()->trigger();
        QCOMPARE(quits.count(), 1);
    }

    void withoutANotificationAreaWarningsAreShownElsewhere()
    {
        QVERIFY(!QSystemTrayIcon::isSystemTrayAvailable());
        const SettingsConfig config;
        QStringList shown;
        TrayMenu tray([&config]() -> const SettingsConfig & { return config; },
                      [&shown](const QString &title, const QString &text) { shown.append(title + u'|' + text); });
        tray.show(QStringLiteral("saved"), QStringLiteral("path"), IUserNotices::Kind::Information, 1000ms);
        QVERIFY(shown.isEmpty());
        QTest::ignoreMessage(QtWarningMsg, "failed：reason");
        tray.show(QStringLiteral("failed"), QStringLiteral("reason"), IUserNotices::Kind::Warning, 1000ms);
        QCOMPARE(shown, QStringList{QStringLiteral("failed|reason")});
    }
};

TAVREL_TEST_MAIN(QApplication, TrayMenuTest)
#include "test_tray_menu.moc"
