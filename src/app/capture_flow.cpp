#include "app/capture_flow.h"

#include "annotate/tool_memory.h"
#include "app/user_notices.h"
#include "capture/history_keeper.h"
#include "overlay/capture_overlay.h"
#include "overlay/element_probe.h"
#include "platform/window_controller.h"
#include "settings/settings_store.h"

#include <QApplication>
#include <QCoreApplication>
#include <QEvent>
#include <QLoggingCategory>
#include <QTimer>
#include <QWindow>

#include <algorithm>

namespace tavrel {
namespace {

using namespace std::chrono_literals;

/// Reports the end of the first paint of a widget, once.
class FirstPaint final : public QObject
{
public:
    FirstPaint(QWidget *widget, std::function<void()> done) : QObject(widget), m_done(std::move(done))
    {
        widget->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            // The paint itself comes after the filters; the next turn of the loop finds it done and flushed.
            QTimer::singleShot(0, this, [this] {
                m_done();
                deleteLater();
            });
        }
        return false;
    }

private:
    std::function<void()> m_done;
};

/// Where the picture was taken.
FilenameContext contextOf(const CaptureOutcome &outcome)
{
    FilenameContext context;
    if (outcome.window) {
        context.window = outcome.window->title.isEmpty() ? outcome.window->applicationName : outcome.window->title;
        context.app = outcome.window->applicationName;
    }
    return context;
}

/// The word of an action in the history; empty for one that leaves no record.
QString sourceWord(CaptureOutcome::Action action)
{
    switch (action) {
    case CaptureOutcome::Action::Copy:
        return QStringLiteral("copy");
    case CaptureOutcome::Action::Save:
        return QStringLiteral("save");
    case CaptureOutcome::Action::Pin:
        return QStringLiteral("pin");
    default:
        return {};
    }
}

QWidget *applicationModalWidget()
{
    QWidget *modal = QApplication::activeModalWidget();
    return modal && modal->windowModality() == Qt::ApplicationModal ? modal : nullptr;
}

} // namespace

void warnAboutModalWidget()
{
    if (const QWidget *modal = applicationModalWidget()) {
        qWarning().noquote() << QStringLiteral("出现了应用级模态框（应改用 ui::dialogs）：") +
                                    QString::fromLatin1(modal->metaObject()->className());
    }
}

CaptureFlow::CaptureFlow(Services services, QObject *parent)
    : QObject(parent),
      m_services(std::move(services)),
      m_walk(m_services.history),
      m_pump(m_services.capturer, m_services.windows, m_services.detector),
      m_toolMemory(std::make_shared<ToolMemory>())
{
    connect(&m_flattener, &Flattener::busyChanged, this, &CaptureFlow::finishingChanged);
    connect(&m_flattener, &Flattener::lastingChanged, this, &CaptureFlow::lastingChanged);
    connect(&m_walk, &HistoryWalk::imageMissing, this, [this] {
        m_services.notices.show(QCoreApplication::translate("AppController", "截图历史"),
                                QCoreApplication::translate("AppController", "该历史记录的图像文件缺失"),
                                IUserNotices::Kind::Warning, 3000ms);
    });
}

CaptureFlow::~CaptureFlow()
{
    const auto overlays = std::exchange(m_overlays, {});
    for (const auto &overlay : overlays)
        delete overlay;
}

ui::CaptureOverlay *CaptureFlow::overlay() const
{
    return m_overlays.isEmpty() ? nullptr : m_overlays.first().data();
}

void CaptureFlow::startCapture()
{
    if (isActive())
        return;
    warnAboutModalWidget();
    if (m_services.capturer.captureAccess() != platform::IScreenCapturer::Granted) {
        m_services.capturer.requestCaptureAccess();
        m_longPending = false;
        Q_EMIT accessRefused();
        return;
    }
    m_timer.start();
    m_grab = std::make_unique<QObject>();
    m_wasApplicationActive = true;
    Q_EMIT sessionStarted();

    platform::CaptureOptions options;
    options.includeCursor = m_services.settings.config().captureMousePointer;
    options.excludeOwnWindows = false;
    // Before the grab, so that the list describes the same moment as the picture.
    m_windows = m_services.detector ? m_services.detector->topLevelWindows() : QList<platform::WindowInfo>();
    m_services.capturer.capture(options, m_grab.get(),
                                [this](const platform::CaptureResult &result) { onCaptured(result); });
}

void CaptureFlow::startLongCapture()
{
    if (m_overlays.isEmpty()) {
        m_longPending = true;
        startCapture();
        return;
    }
    for (const auto &overlay : std::as_const(m_overlays)) {
        if (overlay)
            overlay->armStart(ui::CaptureOverlay::AutoStart::LongCapture);
    }
}

void CaptureFlow::onCaptured(const platform::CaptureResult &result)
{
    m_grab.reset();
    warnAboutModalWidget();
    if (!result.isGood()) {
        m_longPending = false;
        const QString reason =
            result.error.isEmpty() ? QCoreApplication::translate("AppController", "抓取屏幕失败") : result.error;
        qWarning().noquote() << QStringLiteral("抓屏失败：") + reason;
        m_services.notices.show(QCoreApplication::translate("AppController", "截图失败"), reason,
                                IUserNotices::Kind::Warning, 4000ms);
        Q_EMIT idleReached();
        return;
    }

    const QPoint cursor = m_services.cursorPosition();
    const auto under = std::find_if(result.displays.begin(), result.displays.end(),
                                    [cursor](const auto &display) { return display.geometry.contains(cursor); });
    openOverlay(under == result.displays.end() ? result.displays.first() : *under);
    qInfo().noquote() << QStringLiteral("截图就绪：%1 个显示器，抓屏 %2 ms，覆盖层显示共 %3 ms")
                             .arg(result.displays.size())
                             .arg(result.elapsedMs)
                             .arg(m_timer.elapsed());
}

void CaptureFlow::openOverlay(const platform::CapturedDisplay &display)
{
    auto *overlay = new ui::CaptureOverlay(display, m_services.settings.config(), m_services.themes);
    overlay->setToolMemory(m_toolMemory);
    overlay->setWindowController(m_services.windows);
    overlay->setDetection(m_windows, m_services.settings.config().detectUiElements ? m_services.probe : nullptr);
    m_overlays.append(overlay);
    connect(overlay, &QObject::destroyed, this, &CaptureFlow::onOverlayGone);
    connectResults(overlay);
    connectSettings(overlay);
    connectLong(overlay);
    logFirstPaint(overlay);

    overlay->winId();
    QWindow *handle = overlay->windowHandle();
    m_services.windows->setWindowRole(handle, platform::WindowRole::Overlay);
    if (const QWidget *modal = applicationModalWidget(); modal && modal->windowHandle())
        handle->setTransientParent(modal->windowHandle());
    overlay->show();
    m_services.windows->setWindowRole(handle, platform::WindowRole::Overlay);
    m_services.windows->placeOnDisplay(handle, display.geometry);
    m_wasApplicationActive = m_services.windows->isApplicationActive();
    m_services.windows->activate(handle);
    if (std::exchange(m_longPending, false))
        overlay->armStart(ui::CaptureOverlay::AutoStart::LongCapture);
    overlay->raise();
    overlay->activateWindow();
    overlay->setFocus();
}

void CaptureFlow::connectResults(ui::CaptureOverlay *overlay)
{
    connect(overlay, &ui::CaptureOverlay::selectionStarted, this, [this, overlay] {
        for (const auto &other : std::as_const(m_overlays)) {
            if (other && other != overlay)
                other->clearSelection();
        }
    });
    // The receivers' keys are what can be asked for: nothing is offered that leads nowhere.
    const auto taken = m_receivers.keys();
    overlay->setOffered(QSet<CaptureOutcome::Action>(taken.begin(), taken.end()));
    connect(overlay, &ui::CaptureOverlay::finished, this, &CaptureFlow::finish);
    connect(overlay, &ui::CaptureOverlay::historyNavigate, this, [this, overlay](int delta) {
        m_walk.step(overlay, delta, [overlay] {
            overlay->settle();
            return overlay->snapshot();
        });
    });
    connect(&m_walk, &HistoryWalk::arrived, overlay, &ui::CaptureOverlay::loadSnapshot);
}

void CaptureFlow::setReceiver(CaptureOutcome::Action action, Receiver receiver)
{
    m_receivers.insert(action, std::move(receiver));
}

void CaptureFlow::finish(const CaptureOutcome &outcome)
{
    const quint64 number = ++m_outcomes;
    // Begun before the session ends, so that the program is at no moment without anything to do.
    if (!outcome.picture.picture.isNull()) {
        const QString walked = m_walk.recordOf(outcome.snapshot);
        m_flattener.flatten(outcome.picture, [this, outcome, walked, number](const QImage &picture) {
            hand(outcome, walked, number, picture);
        });
    }
    closeSession();
    if (outcome.action == CaptureOutcome::Action::CopyColor) {
        m_clipboardOwner = number;
        Q_EMIT textReady(outcome.text);
    }
}

void CaptureFlow::hand(const CaptureOutcome &outcome, const QString &walked, quint64 number, const QImage &picture)
{
    if (picture.isNull()) {
        qWarning().noquote() << QStringLiteral("图片无法生成");
        m_services.notices.show(QCoreApplication::translate("AppController", "截图失败"),
                                QCoreApplication::translate("AppController", "图片无法生成，可能是内存不足"),
                                IUserNotices::Kind::Warning, 4000ms);
        return;
    }
    const Finished finished{picture, contextOf(outcome), outcome.rectangle, remember(outcome, walked, picture)};
    if (outcome.action == CaptureOutcome::Action::Copy) {
        // What was copied after this has the clipboard by now, and it is what the user expects there.
        if (number < m_clipboardOwner)
            return;
        m_clipboardOwner = number;
    } else if (isActive()) {
        // It may open a window, which would take the keyboard from the overlay that stands by now.
        m_held.append([this, action = outcome.action, finished] { pass(action, finished); });
        return;
    }
    pass(outcome.action, finished);
}

void CaptureFlow::pass(CaptureOutcome::Action action, const Finished &finished)
{
    if (const Receiver receiver = m_receivers.value(action))
        receiver(finished);
}

void CaptureFlow::passHeld()
{
    for (const auto &held : std::exchange(m_held, {}))
        held();
}

bool CaptureFlow::finishPictures(const QDeadlineTimer &deadline)
{
    passHeld();
    return m_flattener.finish(deadline);
}

void CaptureFlow::connectLong(ui::CaptureOverlay *overlay)
{
    connect(overlay, &ui::CaptureOverlay::longCaptureStarted, this,
            [this, overlay] { m_pump.start(overlay, m_wasApplicationActive); });
    connect(overlay, &ui::CaptureOverlay::longCaptureFinished, this, [this, overlay] {
        m_pump.stop();
        QWindow *handle = overlay->windowHandle();
        if (!handle || !overlay->isVisible())
            return;
        m_services.windows->setWindowRole(handle, platform::WindowRole::Overlay);
        m_services.windows->activate(handle);
    });
}

void CaptureFlow::connectSettings(ui::CaptureOverlay *overlay)
{
    const auto change = [this](auto &&edit) {
        SettingsConfig config = m_services.settings.config();
        edit(config);
        m_services.settings.update(config);
    };
    connect(overlay, &ui::CaptureOverlay::toolbarConfigChanged, this, [change](const QString &json) {
        change([&json](SettingsConfig &config) { config.toolbarConfig = json; });
    });
    connect(overlay, &ui::CaptureOverlay::toolGuideDismissed, this,
            [change] { change([](SettingsConfig &config) { config.toolGuideShown = true; }); });
    connect(overlay, &ui::CaptureOverlay::markerSnapChanged, this,
            [change](bool on) { change([on](SettingsConfig &config) { config.markerSnapText = on; }); });
}

void CaptureFlow::logFirstPaint(ui::CaptureOverlay *overlay)
{
    new FirstPaint(overlay, [this] {
        qInfo().noquote() << QStringLiteral("覆盖层首次绘制完成：请求后 %1 ms").arg(m_timer.elapsed());
    });
}

QString CaptureFlow::remember(const CaptureOutcome &outcome, const QString &walked, const QImage &picture)
{
    const QString source = sourceWord(outcome.action);
    if (source.isEmpty() || !m_services.settings.config().saveHistory || outcome.snapshot.image.isNull() ||
        outcome.snapshot.selection.isEmpty())
        return {};
    const HistoryEntry entry{outcome.snapshot, source, picture, contextOf(outcome)};
    return walked.isEmpty() ? m_services.history.add(entry) : m_services.history.update(walked, entry);
}

void CaptureFlow::applySettings()
{
    for (const auto &overlay : std::as_const(m_overlays)) {
        if (overlay)
            overlay->setConfig(m_services.settings.config());
    }
}

void CaptureFlow::onOverlayGone(const QObject *gone)
{
    // A widget tells of its end before guarded pointers to it are cleared.
    for (auto &overlay : m_overlays) {
        if (overlay.data() == gone)
            overlay.clear();
    }
    // Overlays that a session took down itself are no longer in the list.
    if (!m_overlays.isEmpty() &&
        std::all_of(m_overlays.cbegin(), m_overlays.cend(), [](const auto &overlay) { return overlay.isNull(); }))
        closeSession();
}

void CaptureFlow::closeSession()
{
    const bool wasActive = isActive();
    m_grab.reset();
    m_longPending = false;
    m_pump.stop();
    m_walk.reset();
    m_windows.clear();
    if (!m_overlays.isEmpty()) {
        const auto overlays = std::exchange(m_overlays, {});
        for (const auto &overlay : overlays) {
            if (overlay) {
                overlay->hide();
                overlay->deleteLater();
            }
        }
        qInfo().noquote() << QStringLiteral("截图会话结束");
        Q_EMIT sessionClosed();
    }
    if (wasActive) {
        Q_EMIT idleReached();
        passHeld();
    }
}

} // namespace tavrel
