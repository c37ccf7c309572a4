#pragma once

#include "platform/auto_start.h"
#include "platform/camera_recorder.h"
#include "platform/desktop.h"
#include "platform/element_detector.h"
#include "platform/frame_source.h"
#include "platform/global_hotkey.h"
#include "platform/input_monitor.h"
#include "platform/permissions.h"
#include "platform/screen_capturer.h"
#include "platform/screen_recorder.h"
#include "platform/secure_store.h"
#include "platform/updater.h"
#include "platform/video_file.h"
#include "platform/window_controller.h"

#include <functional>
#include <memory>

namespace tavrel::platform {

/// One polite "not here" for each contract: the answers that the contracts give for a system without the service.
/// Everything that can report an error says "当前系统不支持此功能".
struct Unsupported
{
    [[nodiscard]] static std::unique_ptr<IScreenCapturer> screenCapturer();
    [[nodiscard]] static std::unique_ptr<IGlobalHotkey> globalHotkey();
    [[nodiscard]] static std::shared_ptr<IWindowController> windowController();
    [[nodiscard]] static std::shared_ptr<IElementDetector> elementDetector();
    [[nodiscard]] static std::shared_ptr<IPermissions> permissions();
    [[nodiscard]] static std::shared_ptr<IAutoStart> autoStart();
    [[nodiscard]] static std::unique_ptr<ISecureStore> secureStore();
    [[nodiscard]] static std::unique_ptr<IUpdater> updater();
    [[nodiscard]] static std::unique_ptr<IInputMonitor> inputMonitor();
    [[nodiscard]] static std::unique_ptr<IFrameSource> frameSource();
    [[nodiscard]] static std::unique_ptr<IScreenRecorder> screenRecorder();
    [[nodiscard]] static std::unique_ptr<ICameraRecorder> cameraRecorder();
    [[nodiscard]] static std::unique_ptr<IVideoReader> videoReader();
    [[nodiscard]] static std::unique_ptr<IVideoWriter> videoWriter();
    [[nodiscard]] static std::unique_ptr<IAudioPlayer> audioPlayer();
    [[nodiscard]] static std::unique_ptr<IDesktop> desktop();
};

} // namespace tavrel::platform
