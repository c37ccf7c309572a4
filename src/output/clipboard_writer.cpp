#include "output/clipboard_writer.h"

#include "output/picture_mime_data.h"

#include <utility>

namespace tavrel {
namespace {

QSize imageSize(const QMimeData &data)
{
    return data.hasImage() ? qvariant_cast<QImage>(data.imageData()).size() : QSize();
}

void setFileUrls(QMimeData &data, const QList<QUrl> &urls)
{
    data.setUrls(urls);
    // File managers of the GNOME family paste files only from a format of their own.
    QByteArray list = QByteArrayLiteral("copy");
    for (const QUrl &url : urls)
        list += '\n' + url.toEncoded();
    data.setData(QStringLiteral("x-special/gnome-copied-files"), list);
}

} // namespace

ClipboardWriter::ClipboardWriter(IClipboard &clipboard, QObject *parent) : QObject(parent), m_clipboard(clipboard)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(kRoundMs);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &ClipboardWriter::runRound);
}

ClipboardWriter::~ClipboardWriter() = default;

void ClipboardWriter::setText(const QString &text, QObject *context, Done done)
{
    begin({.make =
               [text] {
                   auto data = std::make_unique<QMimeData>();
                   data->setText(text);
                   return data;
               },
           .matches = [text](const QMimeData &data) { return data.text() == text; },
           .context = context,
           .done = std::move(done)});
}

void ClipboardWriter::setImage(const QImage &image, QObject *context, Done done)
{
    if (image.isNull()) {
        answer(context, done, false);
        return;
    }
    const auto png = std::make_shared<const PngEncoding>(image, m_encoding);
    begin({.make = [image, png] { return std::make_unique<PictureMimeData>(image, png); },
           .matches = [size = image.size()](const QMimeData &data) { return imageSize(data) == size; },
           .context = context,
           .done = std::move(done)});
}

void ClipboardWriter::setFiles(const QList<QUrl> &urls, const QImage &image, QObject *context, Done done,
                               const QByteArray &png)
{
    std::shared_ptr<const PngEncoding> encoded;
    if (!image.isNull())
        encoded = png.isEmpty() ? std::make_shared<const PngEncoding>(image, m_encoding)
                                : std::make_shared<const PngEncoding>(png);
    begin({.make =
               [urls, image, encoded] {
                   std::unique_ptr<QMimeData> data;
                   if (image.isNull())
                       data = std::make_unique<QMimeData>();
                   else
                       data = std::make_unique<PictureMimeData>(image, encoded);
                   setFileUrls(*data, urls);
                   return data;
               },
           .matches = [urls, withImage = !image.isNull()](
                          const QMimeData &data) { return data.urls() == urls && (!withImage || data.hasImage()); },
           .context = context,
           .done = std::move(done)});
}

void ClipboardWriter::begin(Write write)
{
    announce();
    if (m_write)
        finish(false);
    if (!write.context)
        write.context = this;
    m_write = std::move(write);
    runRound();
}

void ClipboardWriter::runRound()
{
    // Setting the clipboard tells the whole program, and somebody may answer with a write of his own.
    const quint64 generation = m_generation;
    const auto matches = m_write->matches;
    m_clipboard.set(m_write->make());
    if (generation != m_generation)
        return;
    const QMimeData *present = m_clipboard.readBack();
    if (present && matches(*present))
        finish(true);
    else if (--m_write->roundsLeft == 0)
        finish(false);
    else
        m_timer.start();
}

void ClipboardWriter::finish(bool written)
{
    m_timer.stop();
    const Write write = *std::exchange(m_write, std::nullopt);
    if (write.context)
        answer(write.context, write.done, written);
}

void ClipboardWriter::answer(QObject *context, const Done &done, bool written)
{
    if (done)
        QMetaObject::invokeMethod(
            context ? context : this, [done, written] { done(written); }, Qt::QueuedConnection);
}

} // namespace tavrel
