#include "app/app_controller.h"
#include "overlay/capture_overlay.h"
#include "platform/synthetic/synthetic_global_hotkey.h"
#include "platform/unsupported/unsupported_services.h"
#include "settings/settings_store.h"
#include "support/fake_clipboard.h"
#include "support/fake_windows.h"
#include "support/memory_history.h"
#include "support/test_main.h"
#include "ui/color_library.h"
#include "ui/dialog_hosts.h"
#include "ui/dialog_services.h"

#include <QApplication>
#include <QPushButton>
#include <QSystemTrayIcon>

using namespace tavrel;
using namespace std::chrono_literals;
using ui::dialogs::FloatingDialog;

namespace {

constexpr KeyCombo kCtrl1{.key = 49, .ctrl = true};

class FakeCapturer final : public platform::IScreenCapturer
{
public:
    FakeCapturer()
    {
        platform::CapturedDisplay display;
        display.id = 1;
        display.geometry = QRect(0, 0, 400, 300);
        display.devicePixelRatio = 1.0;
        display.image = QImage(400, 300, QImage::Format_ARGB32_Premultiplied);
        display.image.fill(Qt::darkGreen);
        result.displays = {display};
    }
    int captureAccess() const override { return access; }
    void requestCaptureAccess() override {}
    void capture(const platform::CaptureOptions &, QObject *context, Done done) override
    {
        ++grabs;
        answerLater(context, done, result);
    }

    int access = Granted;
    int grabs = 0;
    platform::CaptureResult result;
};

class FakeUpdater final : public platform::IUpdater
{
public:
    bool isAvailable() const override { return false; }
    void checkNow() override {}
    bool automaticChecks() const override { return false; }
    void setAutomaticChecks(bool) override {}
    void setCanShutdown(bool can) override { canShutdown = can; }

    bool canShutdown = true;
};

class FakePermissions final : public platform::IPermissions
{
public:
    bool isRequired(platform::MediaKind) const override { return true; }
    platform::PermissionState state(platform::MediaKind) const override { return platform::PermissionState::Denied; }
    void request(platform::MediaKind, std::function<void(bool)>) override {}
    void openSystemSettings(platform::MediaKind) override { ++opened; }

    int opened = 0;
};

class Notices final : public IUserNotices
{
public:
    void show(const QString &title, const QString &, Kind, std::chrono::milliseconds) override { shown.append(title); }
    QStringList shown;
};

/// A desktop without anybody who shows messages.
class NoNotifier final : public platform::INotifier
{
public:
    void notify(const platform::Notification &, std::function<void(bool)> done) override { done(false); }
};

QList<FloatingDialog *> messages()
{
    QList<FloatingDialog *> found;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *dialog = qobject_cast<FloatingDialog *>(widget); dialog && dialog->isVisible())
            found.append(dialog);
    }
    return found;
}

/// The title of the only message on the screen; says so when there is none or more than one.
QString message()
{
    const auto all = messages();
    return all.size() == 1 ? all.first()->findChild<ui::dialogs::DialogCard *>()->accessibleName()
                           : QStringLiteral("%1 messages").arg(all.size());
}

void press(const QString &button)
{
    for (QPushButton *candidate : messages().first()->findChildren<QPushButton *>()) {
        if (candidate->text() == button)
            candidate->click();
    }
}

void drag(QWidget *widget, const QPoint &from, const QPoint &to)
{
    QTest::mousePress(widget, Qt::LeftButton, {}, from);
    QTest::mouseMove(widget, (from + to) / 2);
    QTest::mouseMove(widget, to);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, to);
}

} // namespace

class AppControllerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_settings = std::make_unique<SettingsStore>(m_folder->filePath(QStringLiteral("s.ini")));
        m_windows = std::make_shared<test::FakeWindows>();
        m_permissions = std::make_shared<FakePermissions>();
        m_notices = std::make_shared<Notices>();
        m_records = std::make_shared<MemoryHistory>();
    }

    void cleanup()
    {
        m_controller.reset();
        QVERIFY(messages().isEmpty());
        QCOMPARE(ui::dialogs::openDialogCount(), 0);
    }

    void theUpdaterWaitsForEveryEndOfASession_data()
    {
        QTest::addColumn<int>("end");
        QTest::newRow("result") << int(Qt::Key_Return);
        QTest::newRow("given up") << int(Qt::Key_Escape);
        QTest::newRow("overlay gone") << 0;
        QTest::newRow("failed grab") << -1;
    }

    void theUpdaterWaitsForEveryEndOfASession()
    {
        QFETCH(int, end);
        start();
        if (end == -1) {
            m_capturer->result.error = QStringLiteral("gone");
            QTest::ignoreMessage(QtWarningMsg, "抓屏失败：gone");
        }
        QVERIFY(m_hotkeys->press(kCtrl1));
        QVERIFY(!m_updater->canShutdown);
        if (end != -1) {
            QTRY_VERIFY(overlay());
            drag(overlay(), {20, 20}, {120, 70});
            QVERIFY(!m_updater->canShutdown);
            if (end == 0)
                delete overlay();
            else
                QTest::keyClick(overlay(), static_cast<Qt::Key>(end));
        }
        QTRY_VERIFY(m_updater->canShutdown);
        QVERIFY(!m_controller->captureFlow().isActive());
    }

    void messagesTakeTurns()
    {
        start();
        m_controller->openRecording(QStringLiteral("/a.tavrel"));
        m_controller->openRecording(QStringLiteral("/b.tavrel"));
        m_controller->showStatus();
        m_controller->openRecording(QStringLiteral("/b.tavrel"));
        QCOMPARE(message(), QStringLiteral("无法打开录像"));
        press(QStringLiteral("好"));
        QCOMPARE(message(), QStringLiteral("无法打开录像"));
        QTest::keyClick(messages().first()->findChild<ui::dialogs::DialogCard *>(), Qt::Key_Escape);
        QCOMPARE(message(), QStringLiteral("Tavrel 正在运行"));
        messages().first()->close(); // by the window manager
        QVERIFY(messages().isEmpty());
        m_controller->showStatus();
        QCOMPARE(message(), QStringLiteral("Tavrel 正在运行"));
    }

    void refusedAccessAsksOnce()
    {
        start();
        m_capturer->access = platform::IScreenCapturer::Denied;
        m_controller->startCapture();
        m_hotkeys->press(kCtrl1);
        QCOMPARE(message(), QStringLiteral("需要屏幕录制权限"));
        press(QStringLiteral("打开系统设置"));
        QVERIFY(messages().isEmpty());
        QCOMPARE(m_permissions->opened, 1);
        m_controller->startCapture();
        press(QStringLiteral("稍后"));
        QCOMPARE(m_permissions->opened, 1);
        QCOMPARE(m_capturer->grabs, 0);
    }

    void withoutANotificationAreaFailuresAreShown()
    {
        QVERIFY(!QSystemTrayIcon::isSystemTrayAvailable());
        m_notices.reset();
        start();
        m_capturer->result = {};
        for (int i = 0; i < 2; ++i) {
            QTest::ignoreMessage(QtWarningMsg, "抓屏失败：抓取屏幕失败");
            QTest::ignoreMessage(QtWarningMsg, "截图失败：抓取屏幕失败");
            m_controller->startCapture();
            QTRY_VERIFY(!m_controller->captureFlow().isActive());
        }
        QCOMPARE(message(), QStringLiteral("截图失败"));
        press(QStringLiteral("好"));

        // Over an overlay no window may come up.
        m_capturer->result = FakeCapturer().result;
        m_controller->startCapture();
        QTRY_VERIFY(overlay());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^截图历史：")));
        m_records->add({}); // its picture is missing
        QTest::keyClick(overlay(), Qt::Key_Comma);
        QCoreApplication::processEvents();
        QVERIFY(messages().isEmpty());
    }

    void aHotkeyThatAnotherProgramHeldIsTriedAgain()
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^注册热键失败：capture ")));
        start([this] { m_hotkeys->setTakenElsewhere(kCtrl1, true); });
        QCOMPARE(m_notices->shown, QStringList{QStringLiteral("Tavrel 快捷键注册失败")});
        QVERIFY(!m_controller->captureHotkeyError().isEmpty());

        change([](SettingsConfig &config) { config.showMagnifier = false; });
        QCOMPARE(m_notices->shown.size(), 1); // told once
        m_hotkeys->setTakenElsewhere(kCtrl1, false);
        change([](SettingsConfig &config) { config.showMagnifier = true; });
        QVERIFY(m_controller->captureHotkeyError().isEmpty());
        QVERIFY(m_hotkeys->press(kCtrl1));
    }

    void thePaletteLivesInTheSettings()
    {
        const QString red = QStringLiteral("#FF0000");
        const QString blue = QStringLiteral("#0000FF");
        ui::ColorLibrary &palette = ui::ColorLibrary::instance();
        change([&](SettingsConfig &config) { config.paletteColors = {red, blue}; });
        start();
        QCOMPARE(palette.colors(), QStringList({red, blue}));

        QVERIFY(palette.add(QStringLiteral("00ff00")));
        palette.move(2, 0);
        const QStringList expected{QStringLiteral("#00FF00"), red, blue};
        QCOMPARE(m_settings->config().paletteColors, expected);
        QCOMPARE(SettingsStore(m_folder->filePath(QStringLiteral("s.ini"))).config().paletteColors, expected);

        change([&](SettingsConfig &config) { config.paletteColors = {blue}; });
        QCOMPARE(palette.colors(), QStringList{blue});
        palette.setColors({});
        QVERIFY(m_settings->config().paletteColors.isEmpty());

        m_controller.reset();
        palette.reset();
        QVERIFY(m_settings->config().paletteColors.isEmpty());
    }

    void theForegroundGoesBackAfterASession_data()
    {
        QTest::addColumn<bool>("wasActive");
        QTest::addColumn<bool>("messageAppears");
        QTest::addColumn<QStringList>("events");
        const auto deactivate = QStringLiteral("deactivate");
        const auto release = QStringLiteral("release");
        QTest::newRow("to the other program") << false << false << QStringList{deactivate, release};
        QTest::newRow("it was ours") << true << false << QStringList{release};
        QTest::newRow("a message came up since") << false << true << QStringList();
    }

    void theForegroundGoesBackAfterASession()
    {
        QFETCH(bool, wasActive);
        QFETCH(bool, messageAppears);
        QFETCH(QStringList, events);
        start();
        m_windows->active = wasActive;
        m_controller->startCapture();
        QTRY_VERIFY(overlay());
        QTest::keyClick(overlay(), Qt::Key_Escape);
        if (messageAppears)
            m_controller->showStatus();
        waitForRelease();
        QCOMPARE(m_windows->events, events);

        // A session that got no picture took the foreground from nobody.
        m_windows->events.clear();
        m_capturer->result.error = QStringLiteral("gone");
        QTest::ignoreMessage(QtWarningMsg, "抓屏失败：gone");
        m_controller->startCapture();
        QTRY_VERIFY(!m_controller->captureFlow().isActive());
        waitForRelease();
        QCOMPARE(m_windows->events, messageAppears ? QStringList() : QStringList{QStringLiteral("release")});
    }

    /// Nobody can be asked where to any more: the picture is in the folder for pictures all the same.
    void aSaveThatWouldAskIsKeptWhenTheProgramEnds()
    {
        change([this](SettingsConfig &config) {
            config.saveToSpecifiedPath = false;
            config.savePath = m_folder->filePath(QStringLiteral("shots"));
            config.filenameFormat = QStringLiteral("kept");
        });
        endWhileSaving();
        QCOMPARE(QImage(QDir(m_settings->effectiveSavePath()).filePath(QStringLiteral("kept.png"))).size(),
                 QSize(100, 50));
    }

    void aSaveThatRunsWhenTheProgramEndsCounts()
    {
        change([this](SettingsConfig &config) {
            config.saveToSpecifiedPath = true;
            config.savePath = m_folder->filePath(QStringLiteral("shots"));
            config.filenameFormat = QStringLiteral("shot_{{index}}");
        });
        endWhileSaving();
        QCOMPARE(m_settings->config().filenameCounter, 1);
        QCOMPARE(m_records->events.last(), QStringLiteral("finish"));
        QCOMPARE(QFileInfo(m_records->savedPaths.value(m_records->order.first())).fileName(),
                 QStringLiteral("shot_1.png"));
        QCOMPARE(QImage(m_folder->filePath(QStringLiteral("shots/shot_1.png"))).size(), QSize(100, 50));
    }

private:
    void start(const std::function<void()> &before = {})
    {
        platform::Services services;
        AppController::Roles roles;
        auto capturer = std::make_unique<FakeCapturer>();
        auto hotkeys = std::make_unique<platform::SyntheticGlobalHotkey>();
        auto updater = std::make_unique<FakeUpdater>();
        m_capturer = capturer.get();
        m_hotkeys = hotkeys.get();
        m_updater = updater.get();
        if (before)
            before();
        services.screenCapturer = std::move(capturer);
        services.globalHotkey = std::move(hotkeys);
        roles.updater = std::move(updater);
        services.windowController = m_windows;
        services.elementDetector = platform::Unsupported::elementDetector();
        services.permissions = m_permissions;
        roles.notices = m_notices;
        services.notifier = std::make_shared<NoNotifier>();
        roles.history = m_records;
        roles.clipboard = std::make_shared<test::FakeClipboard>();
        services.cursorPosition = [] { return QPoint(10, 10); };
        m_controller = std::make_unique<AppController>(*m_settings, std::move(services), std::move(roles));
        m_controller->start();
    }

    template <typename Edit>
    void change(Edit edit)
    {
        SettingsConfig config = m_settings->config();
        edit(config);
        m_settings->update(config);
    }

    /// Captures, asks for a save, and ends the program with no event loop in between.
    void endWhileSaving()
    {
        start();
        m_controller->startCapture();
        QTRY_VERIFY(overlay());
        drag(overlay(), {20, 20}, {120, 70});
        QTest::keyClick(overlay(), Qt::Key_S, Qt::ControlModifier);
        m_controller.reset();
    }

    /// Returns when the release of a session that has just ended is over: its timer is shorter.
    void waitForRelease()
    {
        bool over = false;
        QTimer::singleShot(200ms, this, [&over] { over = true; });
        QTRY_VERIFY(over);
    }

    [[nodiscard]] ui::CaptureOverlay *overlay() const { return m_controller->captureFlow().overlay(); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<SettingsStore> m_settings;
    std::shared_ptr<test::FakeWindows> m_windows;
    std::shared_ptr<FakePermissions> m_permissions;
    std::shared_ptr<Notices> m_notices;
    std::shared_ptr<MemoryHistory> m_records;
    FakeCapturer *m_capturer = nullptr;
    platform::SyntheticGlobalHotkey *m_hotkeys = nullptr;
    FakeUpdater *m_updater = nullptr;
    std::unique_ptr<AppController> m_controller;
};

TAVREL_TEST_MAIN(QApplication, AppControllerTest)
#include "test_app_controller.moc"
