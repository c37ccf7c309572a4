#pragma once

#include "output/clipboard.h"
#include "output/clipboard_writer.h"
#include "output/copy_image.h"
#include "output/name_template.h"
#include "output/save_service.h"

#include <QDeadlineTimer>
#include <QImage>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>
#include <memory>

namespace tavrel {

class IUserNotices;
class SettingsStore;

/// What happens to a finished picture: onto the clipboard, or into a file that the settings or the user name.
/// Encoding runs on workers; notes, counters and errors follow on the GUI thread when the file stands. A picture that
/// could not be written is offered for another place, so that it is not lost.
class ResultActions final : public QObject
{
    Q_OBJECT

public:
    using Saved = std::function<void(const QString &path)>;

    /// clipboard  null for that of the system
    ResultActions(SettingsStore &settings, IUserNotices &notices, std::shared_ptr<IClipboard> clipboard,
                  QObject *parent = nullptr);

    void copyImage(const QImage &image, const FilenameContext &context);
    /// Takes the place of a picture that is still being prepared.
    void copyText(const QString &text);
    /// saveAs  always ask for the file, even when a folder is set
    /// anchor  window that the dialogs belong to, may be null
    /// saved   called with the path once the file stands
    void saveImage(const QImage &image, const FilenameContext &context, bool saveAs, QWidget *anchor, Saved saved = {});

    /// The program ends: nobody can be asked any more, so that every picture goes into the folder for pictures.
    void beginEnd() { m_ending = true; }
    /// Waits for the files that are being written and lets everything follow that belongs to them, save dialogs; false
    /// when one was not done in time. For the end of the program.
    [[nodiscard]] bool finish(const QDeadlineTimer &deadline);

    [[nodiscard]] QString lastSavedPath() const { return m_lastSavedPath; }

private:
    /// One picture on its way into a file.
    struct Pending
    {
        QImage image;
        SaveRequest request;
        QPointer<QWidget> anchor;
        Saved saved;
    };

    void askForFile(const Pending &pending, const QString &title);
    /// The request with the first index that neither a file nor one on its way has.
    [[nodiscard]] SaveRequest nextRequest(const FilenameContext &context) const;
    [[nodiscard]] SaveDone follow(const Pending &pending);
    void finishSave(const Pending &pending, const SaveResult &result);
    void countUp(int usedIndex);

    SettingsStore &m_settings;
    IUserNotices &m_notices;
    std::shared_ptr<IClipboard> m_clipboard;
    ClipboardWriter m_writer;
    ImageCopier m_copier;
    QString m_lastSavedPath;
    QList<int> m_indicesUnderWay; ///< of the pictures that are being written
    bool m_ending = false;
};

} // namespace tavrel
