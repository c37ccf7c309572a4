#include "platform/unsupported/unsupported_services.h"

#include "settings/key_combo.h"

#include <QCoreApplication>

namespace tavrel::platform {
namespace {

bool refuse(QString *error)
{
    if (error)
        *error = QCoreApplication::translate("QObject", "当前系统不支持此功能");
    return false;
}

class NoScreenCapturer final : public IScreenCapturer
{
public:
    int captureAccess() const override { return Denied; }
    void requestCaptureAccess() override {}
    void capture(const CaptureOptions &, QObject *context, Done done) override
    {
        CaptureResult result;
        refuse(&result.error);
        answerLater(context, done, result);
    }
};

class NoGlobalHotkey final : public IGlobalHotkey
{
public:
    bool registerHotkey(int, const KeyCombo &combo, QString *error) override
    {
        if (combo.isValid())
            return refuse(error);
        if (error)
            *error = QCoreApplication::translate("QObject", "按键组合无效");
        return false;
    }
    void unregisterHotkey(int) override {}
    void unregisterAll() override {}
    void setSuspended(bool) override {}
};

class NoWindowController final : public IWindowController
{
public:
    void setWindowRole(QWindow *, WindowRole) override {}
    void setExcludedFromCapture(QWindow *, bool) override {}
    void activate(QWindow *) override {}
    bool isApplicationActive() const override { return true; }
    void deactivateApplication() override {}
    void setDockPresence(bool) override {}
    void placeOnDisplay(QWindow *, const QRect &) override {}
    void releaseActivation() override {}
    void setClickThrough(QWindow *window, bool through) override
    {
        if (window)
            window->setFlag(Qt::WindowTransparentForInput, through);
    }
    void setOverlayLowered(QWindow *, bool) override {}
    bool isCompositing() const override { return true; }
    void setTitleBarHeight(QWindow *, int) override {}
};

class NoElementDetector final : public IElementDetector
{
public:
    QList<WindowInfo> topLevelWindows() override { return {}; }
    bool isAvailable() const override { return false; }
    void requestAccess() override {}
    QList<QRectF> elementChain(const QPointF &, qint64) override { return {}; }
    QString sourceUrl(const QPointF &, qint64) override { return {}; }
    ElementInfo elementAt(const QPointF &, qint64) override { return {}; }
    QImage applicationIcon(qint64, int) override { return {}; }
};

class NoPermissions final : public IPermissions
{
public:
    bool isRequired(MediaKind) const override { return false; }
    PermissionState state(MediaKind) const override { return PermissionState::Granted; }
    void request(MediaKind, std::function<void(bool)> answer) override
    {
        if (answer)
            answer(false);
    }
    void openSystemSettings(MediaKind) override {}
};

class NoAutoStart final : public IAutoStart
{
public:
    bool isEnabled() const override { return false; }
    bool setEnabled(bool, QString *error) override { return refuse(error); }
};

class NoSecureStore final : public ISecureStore
{
public:
    bool save(const QString &, const QByteArray &) override { return false; }
    bool load(const QString &, QByteArray *) override { return false; }
    bool remove(const QString &) override { return false; }
};

class NoUpdater final : public IUpdater
{
public:
    bool isAvailable() const override { return false; }
    void checkNow() override {}
    bool automaticChecks() const override { return false; }
    void setAutomaticChecks(bool) override {}
    void setCanShutdown(bool) override {}
};

class NoInputMonitor final : public IInputMonitor
{
public:
    bool hasAccess(QString *error) override { return refuse(error); }
    void requestAccess() override {}
    void setClicksOnly(bool) override {}
    void setKeysWithClicks(bool) override {}
    bool start(QString *error) override
    {
        if (error)
            *error = QCoreApplication::translate("QObject", "无法安装键鼠监听");
        return false;
    }
    QList<InputEventRecord> stop() override { return {}; }
    bool isRunning() const override { return false; }
};

class NoFrameSource final : public IFrameSource
{
public:
    void setExcludedWindows(const QList<QPointer<QWindow>> &) override {}
    bool start(int, QString *error) override { return refuse(error); }
    void stop() override {}
    bool isRunning() const override { return false; }
};

class NoScreenRecorder final : public IScreenRecorder
{
public:
    bool start(const RecordOptions &, QString *error) override { return refuse(error); }
    void stop() override {}
    bool isRecording() const override { return false; }
    void pause() override {}
    void resume() override {}
    bool isPaused() const override { return false; }
    void setMicMuted(bool) override {}
    bool microphoneAvailable() const override { return false; }
    void checkMicrophone(std::function<void(bool)> answer) override
    {
        if (answer)
            answer(false);
    }
};

class NoCameraRecorder final : public ICameraRecorder
{
public:
    bool cameraAvailable() const override { return false; }
    bool hasAccess() const override { return false; }
    void requestAccess(std::function<void(bool)> answer) override
    {
        if (answer)
            answer(false);
    }
    bool startPreview(QString *error) override { return refuse(error); }
    void stopPreview() override {}
    bool isPreviewing() const override { return false; }
    bool startRecording(const QString &, QString *error) override { return refuse(error); }
    void pauseRecording() override {}
    void resumeRecording() override {}
    void stopRecording() override {}
    bool isRecording() const override { return false; }
};

class NoVideoReader final : public IVideoReader
{
public:
    VideoInfo info() const override { return {}; }
    QImage frameAt(double, QSize, QString *error) override
    {
        refuse(error);
        return {};
    }
    bool readRange(double, double, double, QSize, const std::function<bool(const QImage &, double)> &,
                   QString *error) override
    {
        return refuse(error);
    }
};

class NoVideoWriter final : public IVideoWriter
{
public:
    bool open(const VideoWriteOptions &, QString *error) override { return refuse(error); }
    bool writeFrame(const QImage &, double) override { return false; }
    bool writeAudio(const qint16 *, int) override { return false; }
    bool finish(QString *error) override { return refuse(error); }
    void abort() override {}
};

class NoAudioPlayer final : public IAudioPlayer
{
public:
    bool open(const QString &) override { return false; }
    bool isOpen() const override { return false; }
    void setStreams(const QList<int> &) override {}
    void play(double) override {}
    void stop() override {}
    void setVolume(double) override {}
};

class NoDesktop final : public IDesktop
{
public:
    QImage wallpaper(int) override { return {}; }
};

} // namespace

std::unique_ptr<IScreenCapturer> Unsupported::screenCapturer()
{
    return std::make_unique<NoScreenCapturer>();
}
std::unique_ptr<IGlobalHotkey> Unsupported::globalHotkey()
{
    return std::make_unique<NoGlobalHotkey>();
}
std::shared_ptr<IWindowController> Unsupported::windowController()
{
    return std::make_shared<NoWindowController>();
}
std::shared_ptr<IElementDetector> Unsupported::elementDetector()
{
    return std::make_shared<NoElementDetector>();
}
std::shared_ptr<IPermissions> Unsupported::permissions()
{
    return std::make_shared<NoPermissions>();
}
std::shared_ptr<IAutoStart> Unsupported::autoStart()
{
    return std::make_shared<NoAutoStart>();
}
std::unique_ptr<ISecureStore> Unsupported::secureStore()
{
    return std::make_unique<NoSecureStore>();
}
std::unique_ptr<IUpdater> Unsupported::updater()
{
    return std::make_unique<NoUpdater>();
}
std::unique_ptr<IInputMonitor> Unsupported::inputMonitor()
{
    return std::make_unique<NoInputMonitor>();
}
std::unique_ptr<IFrameSource> Unsupported::frameSource()
{
    return std::make_unique<NoFrameSource>();
}
std::unique_ptr<IScreenRecorder> Unsupported::screenRecorder()
{
    return std::make_unique<NoScreenRecorder>();
}
std::unique_ptr<ICameraRecorder> Unsupported::cameraRecorder()
{
    return std::make_unique<NoCameraRecorder>();
}
std::unique_ptr<IVideoReader> Unsupported::videoReader()
{
    return std::make_unique<NoVideoReader>();
}
std::unique_ptr<IVideoWriter> Unsupported::videoWriter()
{
    return std::make_unique<NoVideoWriter>();
}
std::unique_ptr<IAudioPlayer> Unsupported::audioPlayer()
{
    return std::make_unique<NoAudioPlayer>();
}
std::unique_ptr<IDesktop> Unsupported::desktop()
{
    return std::make_unique<NoDesktop>();
}

} // namespace tavrel::platform
