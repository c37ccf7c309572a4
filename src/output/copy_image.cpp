#include "output/copy_image.h"

#include "base/atomic_file.h"
#include "output/image_file.h"
#include "output/image_output.h"
#include "output/save_service.h"
#include "settings/settings_config.h"

#include <QCoreApplication>
#include <QDir>
#include <QFutureWatcher>
#include <QStandardPaths>
#include <QThreadPool>
#include <QtConcurrentRun>

#include <utility>

namespace tavrel {
namespace {

constexpr qint64 kOldFileSeconds = 86401;

/// One thread: copies keep their order, and do not wait behind a large save. Goes with the application.
QThreadPool *copyPool()
{
    static QThreadPool *const pool = [] {
        auto *created = new QThreadPool(QCoreApplication::instance());
        created->setMaxThreadCount(1);
        return created;
    }();
    return pool;
}

enum class CopyForm { Image, ImageAndFile, File };

CopyForm copyForm(const QString &clipboardFormat)
{
    if (clipboardFormat == u"imageAndFile")
        return CopyForm::ImageAndFile;
    return clipboardFormat == u"file" ? CopyForm::File : CopyForm::Image;
}

struct CopyTask
{
    QImage image;
    ImageOutputOptions output;
    CopyForm form;
    SaveRequest naming;
    QDateTime time;
};

struct PreparedCopy
{
    QImage image;
    QByteArray png; ///< empty unless there is a file
    QString path;   ///< empty: no file was wanted or it could not be written
};

void removeOldFiles(const QDir &folder, const QDateTime &now)
{
    const QFileInfoList files = folder.entryInfoList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QFileInfo &file : files) {
        if (file.lastModified().secsTo(now) >= kOldFileSeconds)
            QFile::remove(file.filePath());
    }
}

PreparedCopy prepareCopy(const CopyTask &task)
{
    PreparedCopy copy{.image = prepareOutput(task.image, task.output), .png = {}, .path = {}};
    if (task.form == CopyForm::Image)
        return copy;
    const QString folder = clipboardFileFolder();
    if (!QDir().mkpath(folder))
        return copy;
    // Whatever the cache's own mode: copied pictures are nobody else's business.
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    removeOldFiles(QDir(folder), task.time);
    copy.png = encodedPng(copy.image);
    if (copy.png.isEmpty())
        return copy;
    const bool suffix = task.naming.retinaSuffix && copy.image.devicePixelRatio() >= 1.5;
    const QString base = fileBaseName(expandName(task.naming.nameTemplate, task.time, task.naming.context),
                                      suffix ? QStringLiteral("@2x") : QString());
    copy.path = createFile(folder, base, QStringLiteral("png"),
                           [&copy](QIODevice &device) { return device.write(copy.png) == copy.png.size(); });
    return copy;
}

} // namespace

QString clipboardFileFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + QStringLiteral("/clipboard");
}

ImageCopier::ImageCopier(ClipboardWriter &writer, QObject *parent) : QObject(parent), m_writer(writer) {}

void ImageCopier::copyImage(const QImage &image, const QDateTime &time, const FilenameContext &context,
                            const SettingsConfig &config, QObject *receiver, ClipboardWriter::Done done)
{
    const CopyForm form = copyForm(config.clipboardFormat);
    const ImageOutputOptions output = imageOutputOptions(config);
    if (image.isNull() || (form == CopyForm::Image && output == ImageOutputOptions{})) {
        m_writer.setImage(image, receiver, std::move(done));
        return;
    }
    const CopyTask task{.image = image,
                        .output = output,
                        .form = form,
                        .naming = saveRequest(config, clipboardFileFolder(), context),
                        .time = time};
    auto *watcher = new QFutureWatcher<PreparedCopy>(this);
    const quint64 number = m_writer.announce();
    if (!receiver)
        receiver = this;
    connect(watcher, &QFutureWatcher<PreparedCopy>::finished, this,
            [this, watcher, number, form, receiver = QPointer(receiver), done = std::move(done)] {
                watcher->deleteLater();
                const PreparedCopy copy = watcher->result();
                const ClipboardWriter::Done answer = receiver ? done : ClipboardWriter::Done();
                if (m_writer.generation() != number) {
                    if (answer)
                        answer(false);
                } else if (copy.path.isEmpty()) {
                    m_writer.setImage(copy.image, receiver, answer);
                } else {
                    m_writer.setFiles({QUrl::fromLocalFile(copy.path)},
                                      form == CopyForm::ImageAndFile ? copy.image : QImage(), receiver, answer,
                                      copy.png);
                }
            });
    watcher->setFuture(QtConcurrent::run(copyPool(), prepareCopy, task));
}

} // namespace tavrel
