#pragma once

#include <QMetaType>
#include <QRect>

namespace tavrel::record {

enum class RecordKind { Video = 0, Gif = 1 };

/// Quick burns the effects into the picture; Edit keeps the picture clean and writes side data for the editor.
enum class RecordMode { Quick = 0, Edit = 1 };

/// What the record panel shows and what is remembered between sessions.
struct RecordPrefs
{
    bool mic = false;
    bool systemAudio = false;
    bool camera = false;
    bool mouse = false; ///< click effects
    bool keys = false;  ///< key display

    friend constexpr bool operator==(const RecordPrefs &, const RecordPrefs &) noexcept = default;
};

struct RecordRequest
{
    quint32 displayIndex = 0; ///< 1-based position in the screen list; 0 is the primary screen
    QRect region;             ///< global logical coordinates; empty means the whole display
    RecordKind kind = RecordKind::Video;
    RecordMode mode = RecordMode::Quick;
    RecordPrefs prefs;
};

} // namespace tavrel::record

Q_DECLARE_METATYPE(tavrel::record::RecordPrefs)
Q_DECLARE_METATYPE(tavrel::record::RecordRequest)
