#include "app/desktop_notices.h"
#include "app/tray_menu.h"
#include "settings/settings_config.h"
#include "support/test_main.h"

#include <QApplication>
#include <QMenu>

using namespace tavrel;
using namespace std::chrono_literals;

namespace {

platform::WindowInfo window(qint64 process, const QString &application)
{
    return {.windowId = 1, .processId = process, .geometry = {}, .applicationName = application, .title = {}};
}

QStringList texts(const QMenu *menu)
{
    QStringList texts;
    for (const QAction *action : menu->actions())
        texts.append(action->isSeparator() ? QStringLiteral("|") : action->text());
    return texts;
}

/// Shows messages, or has nobody who would.
class FakeNotifier final : public platform::INotifier
{
public:
    explicit FakeNotifier(bool works) : m_works(works) {}
    void notify(const platform::Notification &, std::function<void(bool)> done) override { done(m_works); }

private:
    bool m_works;
};

} // namespace

class TrayMenuTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_config = {};
        m_state = {};
        m_commands = std::make_unique<Commands>();
    }

    void theMenuShowsTheStateOfTheMoment()
    {
        const auto tray = makeTray();
        const QAction *capture = tray->action(Command::Capture);
        QCOMPARE(capture->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_1));
        QVERIFY(!tray->action(Command::Updates)->isVisible());

        m_config.captureHotkey.combo.key = Qt::Key_7;
        m_config.recordHotkey.enabled = false;
        m_state = {.isRecording = true, .isRecordingGuide = true, .guideSteps = 4, .hasUpdates = true};
        Q_EMIT tray->menu()->aboutToShow();
        QCOMPARE(capture->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_7));
        QVERIFY(tray->action(Command::Record)->shortcut().isEmpty());
        QCOMPARE(tray->action(Command::Record)->text(), QStringLiteral("停止录屏"));
        QCOMPARE(tray->action(Command::Guide)->text(), QStringLiteral("停止录制指南（4 步）"));
        QVERIFY(tray->action(Command::Updates)->isVisible());
        QVERIFY(!submenu(*tray, QStringLiteral("指南录制范围"))->menuAction()->isVisible());
    }

    void entriesDoWhatTheirCommandDoesOrSayThatTheyCannot()
    {
        int captures = 0;
        int quits = 0;
        m_commands->set(Command::Capture, [&captures] { ++captures; });
        m_commands->set(Command::Quit, [&quits] { ++quits; });
        const auto tray = makeTray();
        QCOMPARE(texts(tray->menu()).count(QStringLiteral("|")), 4);
        for (QAction *action : tray->menu()->actions()) {
            const bool isUsable = action->isSeparator() || action->menu() || action->isEnabled();
            QVERIFY2(isUsable || !action->toolTip().isEmpty(), qPrintable(action->text()));
            if (!action->menu())
                action->trigger();
        }
        QCOMPARE(captures, 1);
        QCOMPARE(quits, 1);
        QVERIFY(!tray->action(Command::Settings)->isEnabled());
        m_commands->set(Command::Settings, [] {});
        tray->refresh();
        QVERIFY(tray->action(Command::Settings)->isEnabled());
    }

    void applicationsAreOfferedOnceEachAndAtMostTwelve()
    {
        QList<platform::WindowInfo> windows{window(0, QStringLiteral("no process")), window(7, QStringLiteral(" ")),
                                            window(7, QStringLiteral("A & B")), window(7, QStringLiteral("again"))};
        for (int process = 10; process < 30; ++process)
            windows.append(window(process, QStringLiteral("app %1").arg(process)));
        QList<GuideChoice> started;
        int regions = 0;
        GuideMenus::Services services{.windows = [&windows] { return windows; },
                                      .applicationIcon =
                                          [](qint64, int size) {
                                              QImage icon(size, size, QImage::Format_ARGB32);
                                              icon.fill(Qt::red);
                                              return icon;
                                          },
                                      .start = [&started](const GuideChoice &choice) { started.append(choice); },
                                      .pickRegion = [&regions] { ++regions; }};
        const auto tray = makeTray(services);
        QMenu *scope = submenu(*tray, QStringLiteral("指南录制范围"));
        Q_EMIT scope->aboutToShow();
        QCOMPARE(scope->actions().size(), 4 + GuideMenus::kMaxApps);
        QCOMPARE(texts(scope).mid(0, 5),
                 QStringList({QStringLiteral("整个屏幕"), QStringLiteral("选择区域…"), QStringLiteral("|"),
                              QStringLiteral("只记录某个应用："), QStringLiteral("A && B")}));
        QVERIFY(!scope->actions().at(3)->isEnabled());
        QTRY_VERIFY(!scope->actions().at(4)->icon().isNull());
        for (const int index : {0, 1, 3, 4})
            scope->actions().at(index)->trigger();
        QCOMPARE(regions, 1);
        QCOMPARE(started, QList<GuideChoice>({{}, {GuideChoice::Scope::App, 7, QStringLiteral("A & B")}}));

        windows.clear();
        Q_EMIT scope->aboutToShow();
        QCOMPARE(texts(scope).size(), 2);
    }

    void theMenuMayGoWhileIconsAreFetched()
    {
        GuideMenus::Services services{.windows = [] { return QList{window(7, QStringLiteral("a"))}; },
                                      .applicationIcon = [](qint64, int) { return QImage(); }};
        const auto tray = makeTray(services);
        QMenu *scope = submenu(*tray, QStringLiteral("指南录制范围"));
        Q_EMIT scope->aboutToShow();
        Q_EMIT scope->aboutToShow(); // the entries of the first are gone
        QCoreApplication::processEvents();
    }

    void messagesTakeTheFirstWayThatThereIs_data()
    {
        QTest::addColumn<bool>("service");
        QTest::addColumn<bool>("area");
        QTest::addColumn<bool>("warning");
        QTest::addColumn<QString>("shown");
        QTest::newRow("message service") << true << true << true << QString();
        QTest::newRow("notification area") << false << true << true << QStringLiteral("beside the icon");
        QTest::newRow("neither") << false << false << true << QStringLiteral("card");
        QTest::newRow("neither, no warning") << false << false << false << QString();
    }

    void messagesTakeTheFirstWayThatThereIs()
    {
        QFETCH(bool, service);
        QFETCH(bool, area);
        QFETCH(bool, warning);
        QString shown;
        DesktopNotices notices(
            {.notifier = std::make_shared<FakeNotifier>(service),
             .showBesideIcon =
                 [&shown, area](const QString &, const QString &, auto, auto) {
                     shown = area ? QStringLiteral("beside the icon") : QString();
                     return area;
                 },
             .showMessage = [&shown](const QString &, const QString &) { shown = QStringLiteral("card"); }});
        QTest::ignoreMessage(warning ? QtWarningMsg : QtInfoMsg, "title：text");
        notices.show(QStringLiteral("title"), QStringLiteral("text"),
                     warning ? IUserNotices::Kind::Warning : IUserNotices::Kind::Information, 1000ms);
        QTEST(shown, "shown");
    }

private:
    std::unique_ptr<TrayMenu> makeTray(const GuideMenus::Services &guides = {})
    {
        return std::make_unique<TrayMenu>(
            TrayMenu::Services{.settings = [this]() -> const SettingsConfig & { return m_config; },
                               .commands = *m_commands,
                               .state = [this] { return m_state; },
                               .guides = guides});
    }

    static QMenu *submenu(const TrayMenu &tray, const QString &title)
    {
        for (const QAction *action : tray.menu()->actions()) {
            if (action->menu() && action->text() == title)
                return action->menu();
        }
        return nullptr;
    }

    SettingsConfig m_config;
    TrayState m_state;
    std::unique_ptr<Commands> m_commands;
};

TAVREL_TEST_MAIN(QApplication, TrayMenuTest)
#include "test_tray_menu.moc"
