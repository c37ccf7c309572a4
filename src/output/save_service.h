#pragma once

#include "base/answer.h"
#include "output/image_output.h"
#include "output/name_template.h"

#include <QDeadlineTimer>
#include <QObject>

#include <functional>

namespace tavrel {

struct SettingsConfig;

/// Where and how one picture is saved.
struct SaveRequest
{
    QString directory;
    QString nameTemplate = defaultNameTemplate();
    QString format = QStringLiteral("png"); ///< png, jpg or jpeg in any case; anything else is png
    int jpegQuality = 92;
    FilenameContext context;
    bool retinaSuffix = false; ///< "@2x" for pictures of a device pixel ratio of 1.5 or more

    friend bool operator==(const SaveRequest &, const SaveRequest &) = default;
};

/// The request that the settings describe. index becomes `filenameCounter` + 1, also when the counter is at its end;
/// after a successful save the caller increases the counter when usesIndex() says so.
[[nodiscard]] SaveRequest saveRequest(const SettingsConfig &config, const QString &directory,
                                      const FilenameContext &context);
[[nodiscard]] bool usesIndex(const QString &nameTemplate);

/// "base.extension" as saveImage() would call the file in an empty folder, for a save dialog. The suffix follows from
/// the device pixel ratio that prepareOutput() leaves.
[[nodiscard]] QString suggestedFileName(const QImage &image, const SaveRequest &request, const QDateTime &time,
                                        const ImageOutputOptions &options = {});

/// Saves under a free name, see createFile(). Returns the absolute path, or an empty string with a translated `error`
/// and nothing left behind. `image` is what prepareOutput() gave. Encodes: not for the GUI thread, see SaveJob.
[[nodiscard]] QString saveImage(const QImage &image, const SaveRequest &request, const QDateTime &time,
                                QString *error = nullptr);

/// Saves to a path that the user has chosen, replacing what is there. The suffix decides the format, as in
/// SaveRequest. Result and errors as saveImage().
[[nodiscard]] QString saveImageTo(const QImage &image, const QString &path, int jpegQuality = 92,
                                  QString *error = nullptr);

struct SaveResult
{
    QString path;  ///< absolute; empty on failure
    QString error; ///< translated sentence for the user, on failure
};

/// One save off the GUI thread. Saves of the process run one after the other in the order of their start, so two of
/// the same second get their names in that order. finished() comes on the thread that the job lives on.
/// Destroying the job only takes back the answer: the file is still written.
class SaveJob final : public QObject
{
    Q_OBJECT

public:
    explicit SaveJob(QObject *parent = nullptr);

    /// prepareOutput() and then saveImage(). A job is started once.
    void start(const QImage &image, const SaveRequest &request, const QDateTime &time,
               const ImageOutputOptions &options);
    /// prepareOutput() and then saveImageTo().
    void startTo(const QImage &image, const QString &path, int jpegQuality, const ImageOutputOptions &options);
    /// Emits finished() now when the file stands and the event loop has not told yet.
    void deliver();

Q_SIGNALS:
    void finished(const tavrel::SaveResult &result);

private:
    void run(const std::function<QString(QString *error)> &save);

    Answers m_answers;
};

using SaveDone = std::function<void(const SaveResult &result)>;

/// A SaveJob that belongs to `context`, calls `done` on its thread and goes. `done` is not called once `context` is
/// destroyed.
void saveImageAsync(const QImage &image, const SaveRequest &request, const QDateTime &time,
                    const ImageOutputOptions &options, QObject *context, SaveDone done);
void saveImageToAsync(const QImage &image, const QString &path, int jpegQuality, const ImageOutputOptions &options,
                      QObject *context, SaveDone done);

/// Waits until `deadline` for all saves that were started and delivers the answers that belong to `context`, without
/// the event loop; false when one is still being written. For the end of the process, where a waiting GUI thread harms
/// nobody.
[[nodiscard]] bool finishSaves(QObject *context, const QDeadlineTimer &deadline);

} // namespace tavrel
