#pragma once

#include "base/answer.h"
#include "base/work_queue.h"
#include "output/clipboard_writer.h"
#include "output/name_template.h"

namespace tavrel {

struct SettingsConfig;

/// The folder for the files of copied pictures, below the user's cache. Not created by this call.
[[nodiscard]] QString clipboardFileFolder();

/// Copies pictures in the form that the settings ask for: the picture alone, a file, or both. What takes time
/// (scaling, border, encoding, writing the file) runs on a worker, one copy after the other; the clipboard is written
/// when that is done, at once when there is nothing to do. A copy that another write to the same clipboard writer has
/// overtaken meanwhile leaves the clipboard alone. Destruction waits for the copy that is being prepared and drops
/// those behind it. GUI thread only.
class ImageCopier final : public QObject
{
    Q_OBJECT

public:
    /// writer  used, must outlive the copier
    explicit ImageCopier(ClipboardWriter &writer, QObject *parent = nullptr);

    /// config   values at the time of the call: clipboardFormat, filenameFormat, filenameCounter, filenameUseUtc,
    ///          retinaSuffix and the output options
    /// time     now: for the file name, and files of earlier copies older than a day from then are deleted
    /// context  title and application for the name; index and useUtc come from `config`
    /// done     true when the clipboard holds the copy; never called after `receiver` is destroyed. A file that cannot
    ///          be written is replaced by the picture alone. A null image does nothing and is told false.
    void copyImage(const QImage &image, const QDateTime &time, const FilenameContext &context,
                   const SettingsConfig &config, QObject *receiver = nullptr, ClipboardWriter::Done done = {});

private:
    ClipboardWriter &m_writer;
    Answers m_answers;
    WorkQueue m_preparing; ///< copies keep their order, and do not wait behind a large save
};

} // namespace tavrel
