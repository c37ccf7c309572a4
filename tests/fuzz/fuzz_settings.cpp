// A settings document that somebody has edited, or that was cut short.
#include "settings/settings_config.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace tavrel;
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const SettingsConfig config = settingsFromJson(QJsonDocument::fromJson(text).object());
    // What was read is valid: written and read again it stays as it is.
    if (settingsFromJson(QJsonDocument::fromJson(settingsToJson(config)).object()) != config)
        std::abort();
    return 0;
}
