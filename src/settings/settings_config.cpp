#include "settings/settings_config.h"

#include "base/json_read.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <limits>

namespace tavrel {
namespace {

constexpr int kMaxPaletteColors = 30;

using Key = QString;

QJsonObject bindingToJson(const HotkeyBinding &binding)
{
    return {{QStringLiteral("enabled"), binding.enabled}, {QStringLiteral("combo"), binding.combo.toJsonText()}};
}

enum class ComboRule { Any, Global };

HotkeyBinding bindingFromJson(const QJsonObject &object, HotkeyBinding binding, ComboRule rule)
{
    if (object.isEmpty())
        return binding;
    binding.enabled = readBool(object, QStringLiteral("enabled"), binding.enabled);
    const KeyCombo combo = KeyCombo::fromJsonText(readString(object, QStringLiteral("combo")));
    if (combo.isValid() && (rule == ComboRule::Any || isGlobalHotkeyCombo(combo)))
        binding.combo = combo;
    return binding;
}

QStringList paletteFrom(QStringList colors, const QJsonArray &entries)
{
    static const QRegularExpression pattern(QRegularExpression::anchoredPattern(QStringLiteral("#[0-9A-F]{6}")));
    for (const QJsonValue &entry : entries) {
        const QString color = entry.toString().toUpper();
        if (colors.size() < kMaxPaletteColors && !colors.contains(color) && pattern.match(color).hasMatch())
            colors.append(color);
    }
    return colors;
}

bool isOneOf(const QString &value, std::initializer_list<QStringView> allowed)
{
    return std::find(allowed.begin(), allowed.end(), value) != allowed.end();
}

bool isLanguage(const QString &value)
{
    return isOneOf(value,
                   {u"system", u"zh", u"zh-Hant", u"en", u"ja", u"ko", u"de", u"fr", u"es", u"pt-BR", u"ru", u"it"});
}

/// Visits every setting with its key, once for all directions. Each kind of value has its own read rule.
template <typename Config, typename Visitor>
void visitSettings(Config &c, Visitor &&v)
{
    using S = std::initializer_list<QStringView>;
    using I = std::initializer_list<int>;
    v.boolean("autoStart", c.autoStart);
    v.choice("theme", c.theme, [](const QString &s) { return isOneOf(s, S{u"system", u"light", u"dark"}); });
    v.choice("language", c.language, isLanguage);
    v.boolean("autoDetectWindow", c.autoDetectWindow);
    v.boolean("detectUiElements", c.detectUiElements);
    v.boolean("captureMousePointer", c.captureMousePointer);
    v.boolean("showMagnifier", c.showMagnifier);
    v.boolean("saveHistory", c.saveHistory);
    v.oneOf("historyRetentionDays", c.historyRetentionDays, I{0, 30, 90, 365});
    v.oneOf("historyMaxMegabytes", c.historyMaxMegabytes, I{0, 2048, 5120, 10240, 20480});
    v.boolean("historyOcrIndex", c.historyOcrIndex);
    v.boolean("recordSourceUrl", c.recordSourceUrl);
    v.boolean("showToolbarText", c.showToolbarText);
    v.text("toolbarConfig", c.toolbarConfig);
    v.boolean("toolGuideShown", c.toolGuideShown);
    v.boolean("markerSnapText", c.markerSnapText);
    v.boolean("wheelZoomReversed", c.wheelZoomReversed);
    v.palette("paletteColors", c.paletteColors);
    v.text("welcomeShownVersion", c.welcomeShownVersion);
    v.oneOf("cloudShareExpiryDays", c.cloudShareExpiryDays, I{0, 1, 7, 30});
    v.boolean("cloudUploadPopup", c.cloudUploadPopup);
    v.boolean("showColorPicker", c.showColorPicker);
    v.choice("colorFormat", c.colorFormat, [](const QString &s) { return isOneOf(s, S{u"hex", u"rgb"}); });
    v.boolean("showOperationTips", c.showOperationTips);
    v.clamped("pinInitialOpacity", c.pinInitialOpacity, 0.05, 1.0);
    v.boolean("pinClickThrough", c.pinClickThrough);
    v.boolean("recordSystemAudio", c.recordSystemAudio);
    v.boolean("recordClickEffect", c.recordClickEffect);
    v.boolean("recordKeyOsd", c.recordKeyOsd);
    v.boolean("stepOpenEditor", c.stepOpenEditor);
    v.boolean("stepMarkClicks", c.stepMarkClicks);
    v.binding("stepKeyTrigger", c.stepKeyTrigger, ComboRule::Any);
    v.text("savePath", c.savePath);
    v.choice("filenameFormat", c.filenameFormat, [](const QString &s) { return !s.trimmed().isEmpty(); });
    v.boolean("saveToSpecifiedPath", c.saveToSpecifiedPath);
    v.choice("imageFormat", c.imageFormat, [](const QString &s) { return isOneOf(s, S{u"png", u"jpg"}); });
    v.boolean("scaleRetinaTo1x", c.scaleRetinaTo1x);
    v.boolean("addImageBorder", c.addImageBorder);
    v.boolean("retinaSuffix", c.retinaSuffix);
    v.choice("clipboardFormat", c.clipboardFormat, [](const QString &s) {
        return isOneOf(s, S{u"image", u"imageAndFile", u"file"});
    });
    v.boolean("filenameUseUtc", c.filenameUseUtc);
    v.counter("filenameCounter", c.filenameCounter);
    v.binding("captureHotkey", c.captureHotkey, ComboRule::Global);
    v.binding("pinClipboardHotkey", c.pinClipboardHotkey, ComboRule::Global);
    v.binding("recordStopHotkey", c.recordStopHotkey, ComboRule::Global);
    v.binding("historyHotkey", c.historyHotkey, ComboRule::Global);
    v.binding("stepRecordHotkey", c.stepRecordHotkey, ComboRule::Global);
    v.binding("longCaptureHotkey", c.longCaptureHotkey, ComboRule::Global);
    v.binding("recordHotkey", c.recordHotkey, ComboRule::Global);
    v.binding("editHotkey", c.editHotkey, ComboRule::Global);
    v.binding("ocrHotkey", c.ocrHotkey, ComboRule::Global);
}

template <typename Builtin, typename Visitor>
void visitBuiltinKeys(Builtin &b, Visitor &&v)
{
    v.binding("selectFullScreen", b.selectFullScreen, ComboRule::Any);
    v.binding("copySelection", b.copySelection, ComboRule::Any);
    v.binding("saveScreenshot", b.saveScreenshot, ComboRule::Any);
    v.binding("pin", b.pin, ComboRule::Any);
    v.binding("prevHistory", b.prevHistory, ComboRule::Any);
    v.binding("nextHistory", b.nextHistory, ComboRule::Any);
}

class Reader final
{
public:
    explicit Reader(const QJsonObject &object) : m_object(object) {}

    void boolean(const char *key, bool &value) const { value = readBool(m_object, Key::fromLatin1(key), value); }
    void text(const char *key, QString &value) const { value = readString(m_object, Key::fromLatin1(key), value); }
    template <typename Accept>
    void choice(const char *key, QString &value, Accept accept) const
    {
        const QString read = readString(m_object, Key::fromLatin1(key), value);
        if (accept(read))
            value = read;
    }
    void oneOf(const char *key, int &value, std::initializer_list<int> allowed) const
    {
        const int read = readInt(m_object, Key::fromLatin1(key), value);
        if (std::find(allowed.begin(), allowed.end(), read) != allowed.end())
            value = read;
    }
    void clamped(const char *key, double &value, double low, double high) const
    {
        value = std::clamp(readDouble(m_object, Key::fromLatin1(key), value), low, high);
    }
    void counter(const char *key, int &value) const
    {
        // One below the end, so that there always is a next number.
        value = std::clamp(readInt(m_object, Key::fromLatin1(key), value), 0, std::numeric_limits<int>::max() - 1);
    }
    void binding(const char *key, HotkeyBinding &value, ComboRule rule) const
    {
        value = bindingFromJson(m_object.value(Key::fromLatin1(key)).toObject(), value, rule);
    }
    void palette(const char *key, QStringList &value) const
    {
        const QJsonValue stored = m_object.value(Key::fromLatin1(key));
        // Before the palette could be edited, own colours were kept beside the default ones.
        if (stored.isUndefined())
            value = paletteFrom(defaultPaletteColors(), m_object.value(QStringLiteral("customColors")).toArray());
        else if (stored.isArray())
            value = paletteFrom({}, stored.toArray());
    }

private:
    const QJsonObject &m_object;
};

class Writer final
{
public:
    void boolean(const char *key, bool value) { put(key, value); }
    void text(const char *key, const QString &value) { put(key, value); }
    template <typename Accept>
    void choice(const char *key, const QString &value, Accept)
    {
        put(key, value);
    }
    void oneOf(const char *key, int value, std::initializer_list<int>) { put(key, value); }
    void clamped(const char *key, double value, double, double) { put(key, value); }
    void counter(const char *key, int value) { put(key, value); }
    void binding(const char *key, const HotkeyBinding &value, ComboRule) { put(key, bindingToJson(value)); }
    void palette(const char *key, const QStringList &value) { put(key, QJsonArray::fromStringList(value)); }

    [[nodiscard]] QJsonObject &object() { return m_object; }

private:
    void put(const char *key, const QJsonValue &value) { m_object.insert(Key::fromLatin1(key), value); }

    QJsonObject m_object;
};

struct HotkeyMigration
{
    HotkeyBinding SettingsConfig::*binding;
    int key;
};

bool isExactly(const HotkeyBinding &binding, const KeyCombo &combo)
{
    return binding.combo == combo;
}

/// Global hotkeys were Ctrl+digit first; exactly those give way to the defaults of today.
void toSchema6(SettingsConfig &config)
{
    static constexpr std::array<HotkeyMigration, 4> old{{{&SettingsConfig::captureHotkey, '1'},
                                                         {&SettingsConfig::pinClipboardHotkey, '2'},
                                                         {&SettingsConfig::historyHotkey, '3'},
                                                         {&SettingsConfig::stepRecordHotkey, '4'}}};
    const SettingsConfig defaults;
    for (const auto &[binding, key] : old) {
        if (isExactly(config.*binding, {.key = key, .ctrl = true}))
            config.*binding = defaults.*binding;
    }
    if (isExactly(config.recordStopHotkey, {.key = '5', .ctrl = true}) || !config.recordStopHotkey.combo.isValid())
        config.recordStopHotkey = defaults.recordStopHotkey;
}

/// Then they were Ctrl+Alt+letter.
void toSchema7(SettingsConfig &config)
{
    static constexpr std::array<HotkeyMigration, 7> old{{{&SettingsConfig::captureHotkey, 'A'},
                                                         {&SettingsConfig::longCaptureHotkey, 'L'},
                                                         {&SettingsConfig::recordHotkey, 'R'},
                                                         {&SettingsConfig::stepRecordHotkey, 'S'},
                                                         {&SettingsConfig::pinClipboardHotkey, 'P'},
                                                         {&SettingsConfig::historyHotkey, 'H'},
                                                         {&SettingsConfig::editHotkey, 'E'}}};
    const SettingsConfig defaults;
    for (const auto &[binding, key] : old) {
        if (isExactly(config.*binding, {.key = key, .ctrl = true, .alt = true}))
            config.*binding = defaults.*binding;
    }
}

/// For a time every row had a digit; all but capture and pin are unset today.
void toSchema9(SettingsConfig &config)
{
    static constexpr std::array<HotkeyMigration, 5> old{{{&SettingsConfig::longCaptureHotkey, '2'},
                                                         {&SettingsConfig::recordHotkey, '3'},
                                                         {&SettingsConfig::stepRecordHotkey, '4'},
                                                         {&SettingsConfig::historyHotkey, '6'},
                                                         {&SettingsConfig::editHotkey, '7'}}};
    for (const auto &[binding, key] : old) {
        if ((config.*binding).enabled && isExactly(config.*binding, {.key = key, .ctrl = true}))
            config.*binding = SettingsConfig::kUnsetHotkey;
    }
    if (config.pinClipboardHotkey.enabled && isExactly(config.pinClipboardHotkey, {.key = '5', .ctrl = true}))
        config.pinClipboardHotkey = SettingsConfig().pinClipboardHotkey;
}

void migrate(SettingsConfig &config, int storedVersion)
{
    if (storedVersion < 3 && config.language == u"zh")
        config.language = QStringLiteral("system");
    if (storedVersion < 4)
        config.historyRetentionDays = 0;
    if (storedVersion < 5)
        config.historyOcrIndex = true;
    if (storedVersion < 6)
        toSchema6(config);
    if (storedVersion < 7)
        toSchema7(config);
    if (storedVersion < 8 && config.savePath.trimmed().isEmpty())
        config.saveToSpecifiedPath = false;
    if (storedVersion < 9)
        toSchema9(config);
}

} // namespace

QStringList defaultPaletteColors()
{
    return {QStringLiteral("#F93442"), QStringLiteral("#FF8C00"), QStringLiteral("#FFE103"), QStringLiteral("#40D651"),
            QStringLiteral("#2ECFC1"), QStringLiteral("#007AFF"), QStringLiteral("#8A51FF"), QStringLiteral("#FE2E6B"),
            QStringLiteral("#FFFFFF"), QStringLiteral("#000000")};
}

QByteArray settingsToJson(const SettingsConfig &config)
{
    Writer writer;
    visitSettings(config, writer);
    Writer builtin;
    visitBuiltinKeys(config.builtin, builtin);
    writer.object().insert(QStringLiteral("builtin"), builtin.object());
    writer.object().insert(QStringLiteral("configSchemaVersion"), config.configSchemaVersion);
    return QJsonDocument(writer.object()).toJson(QJsonDocument::Compact);
}

int storedSchemaVersion(const QJsonObject &object)
{
    return readInt(object, QStringLiteral("configSchemaVersion"), 0);
}

SettingsConfig settingsFromJson(const QJsonObject &object)
{
    SettingsConfig config;
    if (object.isEmpty())
        return config;
    visitSettings(config, Reader(object));
    const QJsonObject builtin = object.value(QStringLiteral("builtin")).toObject();
    visitBuiltinKeys(config.builtin, Reader(builtin));
    migrate(config, storedSchemaVersion(object));
    config.configSchemaVersion = SettingsConfig::kSchemaVersion;
    return config;
}

} // namespace tavrel
