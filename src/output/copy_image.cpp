#include "output/copy_image.h"

#include "base/atomic_file.h"
#include "output/image_file.h"
#include "output/image_output.h"
#include "output/save_service.h"
#include "settings/settings_config.h"

#include <QDir>
#include <QStandardPaths>

#include <utility>

namespace tavrel {
namespace {

constexpr qint64 kOldFileSeconds = 86401;

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
    const quint64 number = m_writer.announce();
    m_preparing.run([=, this, receiver = QPointer<QObject>(receiver ? receiver : this), done = std::move(done),
                     answer = m_answers.handle()] {
        const PreparedCopy copy = prepareCopy(task);
        answer.post([=, this] {
            const ClipboardWriter::Done told = receiver ? done : ClipboardWriter::Done();
            if (m_writer.generation() != number) {
                if (told)
                    told(false);
            } else if (copy.path.isEmpty()) {
                m_writer.setImage(copy.image, receiver, told);
            } else {
                m_writer.setFiles({QUrl::fromLocalFile(copy.path)},
                                  form == CopyForm::ImageAndFile ? copy.image : QImage(), receiver, told, copy.png);
            }
        });
    });
}

} // namespace tavrel
