#pragma once

#include "settings/key_combo.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace tavrel {

/// The keys of the capture overlay itself; none of them needs a modifier.
struct BuiltinKeys
{
    HotkeyBinding selectFullScreen{true, {.key = 65, .ctrl = true}};
    HotkeyBinding copySelection{true, {.key = 67, .ctrl = true}};
    HotkeyBinding saveScreenshot{true, {.key = 83, .ctrl = true}};
    HotkeyBinding pin{true, {.key = 80, .ctrl = true}};
    HotkeyBinding prevHistory{true, {.key = 44}};
    HotkeyBinding nextHistory{true, {.key = 46}};

    friend bool operator==(const BuiltinKeys &, const BuiltinKeys &) = default;
};

[[nodiscard]] QStringList defaultPaletteColors();

/// All settings of the user as one plain value. Field names are the keys of the stored document.
struct SettingsConfig
{
    static constexpr int kSchemaVersion = 9;
    static constexpr HotkeyBinding kUnsetHotkey{false, {}};

    int configSchemaVersion = kSchemaVersion;
    bool autoStart = false;
    QString theme = QStringLiteral("system");    ///< system, light, dark
    QString language = QStringLiteral("system"); ///< system or a code of the language table
    bool autoDetectWindow = true;
    bool detectUiElements = true;
    bool captureMousePointer = false;
    bool showMagnifier = true;
    bool saveHistory = true;
    int historyRetentionDays = 90; ///< 0 keeps for ever; 0, 30, 90 or 365
    int historyMaxMegabytes = 0;   ///< 0 is unlimited; 0, 2048, 5120, 10240 or 20480
    bool historyOcrIndex = true;
    bool recordSourceUrl = true;
    bool showToolbarText = true;
    QString toolbarConfig; ///< JSON text of the toolbar layout
    bool toolGuideShown = false;
    bool markerSnapText = false;
    bool wheelZoomReversed = false;
    QStringList paletteColors = defaultPaletteColors(); ///< at most 30, each "#RRGGBB" in upper case
    QString welcomeShownVersion;
    int cloudShareExpiryDays = 7; ///< 0, 1, 7 or 30
    bool cloudUploadPopup = true;
    bool showColorPicker = true;
    QString colorFormat = QStringLiteral("hex"); ///< hex or rgb
    bool showOperationTips = true;
    double pinInitialOpacity = 1.0; ///< 0.05 to 1.0
    bool pinClickThrough = false;
    bool recordSystemAudio = true;
    bool recordClickEffect = true;
    bool recordKeyOsd = true;
    bool stepOpenEditor = true;
    bool stepMarkClicks = true;
    HotkeyBinding stepKeyTrigger = kUnsetHotkey; ///< needs no modifier
    QString savePath;
    QString filenameFormat = QStringLiteral("Tavrel_{{yyyyMMdd}}_{{HHmmss}}");
    bool saveToSpecifiedPath = false;
    QString imageFormat = QStringLiteral("png"); ///< png or jpg
    bool scaleRetinaTo1x = false;
    bool addImageBorder = false;
    bool retinaSuffix = false;
    QString clipboardFormat = QStringLiteral("image"); ///< image, imageAndFile or file
    bool filenameUseUtc = false;
    int filenameCounter = 0; ///< not negative
    HotkeyBinding captureHotkey{true, {.key = 49, .ctrl = true}};
    HotkeyBinding pinClipboardHotkey{true, {.key = 50, .ctrl = true}};
    HotkeyBinding recordStopHotkey = kUnsetHotkey;
    HotkeyBinding historyHotkey = kUnsetHotkey;
    HotkeyBinding stepRecordHotkey = kUnsetHotkey;
    HotkeyBinding longCaptureHotkey = kUnsetHotkey;
    HotkeyBinding recordHotkey = kUnsetHotkey;
    HotkeyBinding editHotkey = kUnsetHotkey;
    HotkeyBinding ocrHotkey = kUnsetHotkey;
    BuiltinKeys builtin;

    friend bool operator==(const SettingsConfig &, const SettingsConfig &) = default;
};

/// All keys, compact.
[[nodiscard]] QByteArray settingsToJson(const SettingsConfig &config);
/// Applies the read rules and the migrations: the result is always a valid value at the current schema.
/// An empty object gives the defaults; a non-empty one without a version is schema 0.
[[nodiscard]] SettingsConfig settingsFromJson(const QJsonObject &object);

/// The version a stored document was written at; 0 when it does not say.
[[nodiscard]] int storedSchemaVersion(const QJsonObject &object);

} // namespace tavrel
