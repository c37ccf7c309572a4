#pragma once

#include <QImage>
#include <QList>
#include <QPair>
#include <QSize>
#include <QString>

#include <functional>
#include <memory>

namespace tavrel::platform {

struct VideoInfo
{
    bool ok = false; ///< the frame size is known
    QString path;
    QSize size; ///< pixels
    double durationSec = 0;
    double frameRate = 0;
    bool hasAudio = false;
    int audioStreamCount = 0;
};

struct VideoWriteOptions
{
    QString path;
    QSize size;                               ///< pixels, both sides positive
    double frameRate = 30.0;                  ///< not above 0 means 30
    qint64 bitrate = 0;                       ///< bits a second; below 1 means automatic
    QString audioSource;                      ///< a single file to take the audio from
    QList<QPair<double, double>> audioRanges; ///< seconds of audioSource, half open
    QList<int> audioStreams;                  ///< streams of the source to mix; empty means all
    QList<QList<int>> audioRangeStreams;      ///< per range, used only when as long as audioRanges
    double audioVolume = 1.0;                 ///< clamped to 0 to 1
    bool liveAudio = false;                   ///< samples come through writeAudio()
};

/// Decodes one video file. Used by one thread at a time.
class IVideoReader
{
public:
    IVideoReader() = default;
    IVideoReader(const IVideoReader &) = delete;
    IVideoReader &operator=(const IVideoReader &) = delete;
    virtual ~IVideoReader() = default;

    [[nodiscard]] virtual VideoInfo info() const = 0;
    /// The last frame at or before `seconds`, scaled down to fit `maxSize` when that is valid. Null with `error` set
    /// when nothing could be decoded.
    [[nodiscard]] virtual QImage frameAt(double seconds, QSize maxSize = {}, QString *error = nullptr) = 0;
    /// Delivers frames at exactly `frameRate`, repeating or skipping source frames; false from `deliver` stops.
    virtual bool readRange(double fromSec, double toSec, double frameRate, QSize maxSize,
                           const std::function<bool(const QImage &, double)> &deliver, QString *error) = 0;
};

/// Writes one MP4. Used by one thread at a time.
class IVideoWriter
{
public:
    IVideoWriter() = default;
    IVideoWriter(const IVideoWriter &) = delete;
    IVideoWriter &operator=(const IVideoWriter &) = delete;
    virtual ~IVideoWriter() = default;

    virtual bool open(const VideoWriteOptions &options, QString *error) = 0;
    virtual bool writeFrame(const QImage &image, double timeSec) = 0;
    /// Signed 16-bit stereo at 48 kHz, `frames` pairs of samples.
    virtual bool writeAudio(const qint16 *interleaved, int frames) = 0;
    virtual bool finish(QString *error) = 0;
    virtual void abort() = 0; ///< closes and removes the partial file
};

/// Plays the sound of a file. GUI thread only; failures are silent.
class IAudioPlayer
{
public:
    IAudioPlayer() = default;
    IAudioPlayer(const IAudioPlayer &) = delete;
    IAudioPlayer &operator=(const IAudioPlayer &) = delete;
    virtual ~IAudioPlayer() = default;

    virtual bool open(const QString &path) = 0; ///< true when the file has audio streams
    [[nodiscard]] virtual bool isOpen() const = 0;
    virtual void setStreams(const QList<int> &streams) = 0;
    virtual void play(double fromSec) = 0;
    virtual void stop() = 0;
    virtual void setVolume(double volume) = 0; ///< clamped to 0 to 1; a change below 0.001 is ignored
};

} // namespace tavrel::platform
