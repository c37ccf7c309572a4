// An update feed, and release notes by themselves, as a server may send them.
#include "platform/update_feed.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace tavrel::platform;
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const UpdateFeed feed = parseUpdateFeed(text);
    if (feed.newest) {
        const UpdateEntry &entry = *feed.newest;
        const bool isSound = feed.isValid && entry.build >= 0 && !entry.version.isEmpty() &&
                             entry.notes.size() <= UpdateEntry::kMaxNotes &&
                             (entry.page.isEmpty() || isAcceptableUpdateUrl(entry.page));
        if (!isSound)
            std::abort();
    }
    const QString notes = plainNotes(QString::fromUtf8(text));
    if (notes != notes.trimmed() || notes.contains(QStringLiteral("\n\n\n")))
        std::abort();
    if (isSignedBy(QByteArray(32, 'k'), text, text))
        std::abort();
    return 0;
}
