#include "output/save_service.h"

#include "base/atomic_file.h"
#include "base/work_queue.h"
#include "output/image_file.h"
#include "settings/settings_config.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <utility>

namespace tavrel {
namespace {

/// One thread, so that saves keep their order. Never destroyed: its destructor would wait for a hanging network
/// folder without end, which finishSaves() is there to avoid.
WorkQueue &saveQueue()
{
    static auto *const queue = new WorkQueue;
    return *queue;
}

QString textNoImage()
{
    return QCoreApplication::translate("SaveService", "没有可保存的图片");
}

QString textWriteFailed(const QString &path)
{
    return QCoreApplication::translate("SaveService", "写入文件失败：%1").arg(path);
}

QString failed(const QString &text, QString *error)
{
    if (error)
        *error = text;
    return {};
}

QString baseNameFor(double devicePixelRatio, const SaveRequest &request, const QDateTime &time)
{
    const bool suffix = request.retinaSuffix && devicePixelRatio >= 1.5;
    return fileBaseName(expandName(request.nameTemplate, time, request.context),
                        suffix ? QStringLiteral("@2x") : QString());
}

FileContent pictureContent(const QImage &image, ImageFileFormat format, int jpegQuality)
{
    return [&image, format, jpegQuality](QIODevice &device) { return encodeImage(image, device, format, jpegQuality); };
}

void follow(SaveJob *job, QObject *context, SaveDone done)
{
    QObject::connect(job, &SaveJob::finished, context, [job, done = std::move(done)](const SaveResult &result) {
        job->deleteLater();
        if (done)
            done(result);
    });
}

} // namespace

SaveRequest saveRequest(const SettingsConfig &config, const QString &directory, const FilenameContext &context)
{
    SaveRequest request;
    request.directory = directory;
    request.nameTemplate = config.filenameFormat;
    request.format = config.imageFormat;
    request.context = context;
    request.context.index = std::min(config.filenameCounter, std::numeric_limits<int>::max() - 1) + 1;
    request.context.useUtc = config.filenameUseUtc;
    request.retinaSuffix = config.retinaSuffix;
    return request;
}

bool usesIndex(const QString &nameTemplate)
{
    return nameTemplate.contains(u"{{index}}");
}

QString suggestedFileName(const QImage &image, const SaveRequest &request, const QDateTime &time,
                          const ImageOutputOptions &options)
{
    const double ratio = options.scaleTo1x ? 1.0 : image.devicePixelRatio();
    return baseNameFor(ratio, request, time) + u'.' + imageFileExtension(imageFileFormat(request.format));
}

QString saveImage(const QImage &image, const SaveRequest &request, const QDateTime &time, QString *error)
{
    if (image.isNull())
        return failed(textNoImage(), error);
    if (request.directory.isEmpty())
        return failed(QCoreApplication::translate("SaveService", "未指定保存目录"), error);
    if (!QDir().mkpath(request.directory))
        return failed(QCoreApplication::translate("SaveService", "无法创建目录：%1").arg(request.directory), error);

    const ImageFileFormat format = imageFileFormat(request.format);
    QString failedPath;
    const QString path =
        createFile(QDir(request.directory).absolutePath(), baseNameFor(image.devicePixelRatio(), request, time),
                   imageFileExtension(format), pictureContent(image, format, request.jpegQuality), &failedPath);
    return path.isEmpty() ? failed(textWriteFailed(failedPath), error) : path;
}

QString saveImageTo(const QImage &image, const QString &path, int jpegQuality, QString *error)
{
    if (image.isNull())
        return failed(textNoImage(), error);
    const QFileInfo file(path);
    if (!replaceFile(path, pictureContent(image, imageFileFormat(file.suffix()), jpegQuality)))
        return failed(textWriteFailed(path), error);
    return file.absoluteFilePath();
}

SaveJob::SaveJob(QObject *parent) : QObject(parent) {}

void SaveJob::start(const QImage &image, const SaveRequest &request, const QDateTime &time,
                    const ImageOutputOptions &options)
{
    run([image, request, time, options](QString *error) {
        return saveImage(prepareOutput(image, options), request, time, error);
    });
}

void SaveJob::startTo(const QImage &image, const QString &path, int jpegQuality, const ImageOutputOptions &options)
{
    run([image, path, jpegQuality, options](QString *error) {
        return saveImageTo(prepareOutput(image, options), path, jpegQuality, error);
    });
}

void SaveJob::run(const std::function<QString(QString *error)> &save)
{
    saveQueue().run([this, save, answer = m_answers.handle()] {
        SaveResult result;
        result.path = save(&result.error);
        answer.post([this, result] { Q_EMIT finished(result); });
    });
}

void SaveJob::deliver()
{
    m_answers.deliver();
}

void saveImageAsync(const QImage &image, const SaveRequest &request, const QDateTime &time,
                    const ImageOutputOptions &options, QObject *context, SaveDone done)
{
    auto *job = new SaveJob(context);
    follow(job, context, std::move(done));
    job->start(image, request, time, options);
}

void saveImageToAsync(const QImage &image, const QString &path, int jpegQuality, const ImageOutputOptions &options,
                      QObject *context, SaveDone done)
{
    auto *job = new SaveJob(context);
    follow(job, context, std::move(done));
    job->startTo(image, path, jpegQuality, options);
}

bool finishSaves(QObject *context, const QDeadlineTimer &deadline)
{
    const bool done = saveQueue().finish(deadline);
    const auto jobs = context->findChildren<SaveJob *>(QString(), Qt::FindDirectChildrenOnly);
    for (SaveJob *job : jobs)
        job->deliver();
    return done;
}

} // namespace tavrel
