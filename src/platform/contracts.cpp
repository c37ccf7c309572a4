// The contracts that are QObjects have their meta objects compiled here, once for all implementations.
#include "platform/camera_recorder.h"
#include "platform/frame_source.h"
#include "platform/global_hotkey.h"
#include "platform/input_monitor.h"
#include "platform/screen_recorder.h"
#include "platform/updater.h"
