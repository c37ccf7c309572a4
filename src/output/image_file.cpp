#include "output/image_file.h"

#include "output/name_template.h"

#include <QBuffer>
#include <QColorSpace>
#include <QDir>
#include <QFile>
#include <QImageWriter>
#include <QPainter>
#include <QSaveFile>
#include <QUuid>

#include <filesystem>
#include <string>
#include <system_error>

namespace tavrel {
namespace {

/// The same pixels without the texts, the resolution and the device pixel ratio of `image`, which must outlive it.
QImage barePixels(const QImage &image)
{
    QImage bare(image.constBits(), image.width(), image.height(), image.bytesPerLine(), image.format());
    if (image.colorCount() > 0)
        bare.setColorTable(image.colorTable());
    if (image.colorSpace().isValid())
        bare.setColorSpace(image.colorSpace());
    return bare;
}

/// From the UTF-8 bytes, which cannot fail; the conversion from UTF-16 throws.
std::filesystem::path filesystemPath(const QString &path)
{
    const QByteArray bytes = path.toUtf8();
    return std::u8string(bytes.begin(), bytes.end());
}

enum class Naming { Done, Taken, Failed };

/// Gives the finished file `staged` the name `path` unless something has that name.
Naming nameFile(const QString &staged, const QString &path)
{
    if (pathTaken(path))
        return Naming::Taken;
    std::error_code error;
    std::filesystem::create_hard_link(filesystemPath(staged), filesystemPath(path), error);
    if (!error) {
        QFile::remove(staged);
        return Naming::Done;
    }
    if (error == std::errc::file_exists)
        return Naming::Taken;
    // A file system without hard links: an empty file, created exclusively, keeps the name for us meanwhile.
    QFile placeholder(path);
    if (!placeholder.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        return pathTaken(path) ? Naming::Taken : Naming::Failed;
    placeholder.close();
    std::filesystem::rename(filesystemPath(staged), filesystemPath(path), error);
    if (!error)
        return Naming::Done;
    placeholder.remove();
    return Naming::Failed;
}

} // namespace

ImageFileFormat imageFileFormat(const QString &name)
{
    const QString lower = name.toLower();
    return lower == u"jpg" || lower == u"jpeg" ? ImageFileFormat::Jpg : ImageFileFormat::Png;
}

QString imageFileExtension(ImageFileFormat format)
{
    return format == ImageFileFormat::Jpg ? QStringLiteral("jpg") : QStringLiteral("png");
}

QImage flattenedOnWhite(const QImage &image)
{
    QImage flat(image.size(), QImage::Format_RGB32);
    flat.fill(Qt::white);
    QPainter painter(&flat);
    painter.drawImage(0, 0, barePixels(image));
    return flat;
}

bool encodeImage(const QImage &image, QIODevice &device, ImageFileFormat format, int jpegQuality)
{
    QImageWriter writer(&device, format == ImageFileFormat::Jpg ? "JPG" : "PNG");
    if (format == ImageFileFormat::Png)
        return writer.write(barePixels(image));
    writer.setQuality(jpegQuality);
    return writer.write(flattenedOnWhite(image));
}

QByteArray encodedPng(const QImage &image)
{
    QBuffer buffer;
    if (!buffer.open(QIODevice::WriteOnly) || !encodeImage(image, buffer, ImageFileFormat::Png))
        return {};
    return buffer.data();
}

bool replaceFile(const QString &path, const FileContent &content)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && content(file) && file.commit();
}

QString createFile(const QString &directory, const QString &baseName, const QString &extension,
                   const FileContent &content, QString *failedPath)
{
    const QString staged =
        QDir(directory).filePath(QStringLiteral(".%1.part").arg(QUuid::createUuid().toString(QUuid::Id128)));
    Naming naming = replaceFile(staged, content) ? Naming::Taken : Naming::Failed;
    int n = -1;
    while (naming == Naming::Taken)
        naming = nameFile(staged, numberedPath(directory, baseName, extension, ++n));
    if (naming == Naming::Done)
        return numberedPath(directory, baseName, extension, n);

    QFile::remove(staged);
    if (failedPath)
        *failedPath =
            n < 0 ? uniquePath(directory, baseName, extension) : numberedPath(directory, baseName, extension, n);
    return {};
}

} // namespace tavrel
