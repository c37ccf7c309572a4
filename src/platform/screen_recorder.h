#pragma once

#include <QList>
#include <QMetaType>
#include <QObject>
#include <QPair>
#include <QPointer>
#include <QRect>
#include <QSize>
#include <QString>
#include <QWindow>

#include <functional>

namespace tavrel::platform {

struct RecordOptions
{
    quint32 displayIndex = 0; ///< 1-based position in the screen list; 0 or out of range is the primary screen
    QRect region;             ///< display-local logical coordinates; empty means the whole display
    bool burnEffects = false; ///< draw the pointer into the frames
    bool systemAudio = false;
    bool mic = false;
    int frameRate = 30; ///< frames per second
    QString outputPath; ///< the MP4 to write
    QList<QPointer<QWindow>> excludedWindows;
};

struct RecordResult
{
    bool ok = false;
    QString error;
    QString path;
    QSize pixelSize;
    double durationSec = 0; ///< time of the last frame plus one frame
    double firstFrameHostMs = 0;
    bool micRecorded = false;
    bool systemAudioRecorded = false;
    double devicePixelRatio = 1.0;
    QList<QPair<double, double>> pausedSpans; ///< half-open intervals of the host clock
};

/// Records one display or a part of it with sound. GUI thread only.
class IScreenRecorder : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual bool start(const RecordOptions &options, QString *error) = 0;
    virtual void stop() = 0; ///< `finished` follows
    [[nodiscard]] virtual bool isRecording() const = 0;
    virtual void pause() = 0;
    virtual void resume() = 0;
    [[nodiscard]] virtual bool isPaused() const = 0;
    virtual void setMicMuted(bool muted) = 0;
    [[nodiscard]] virtual bool microphoneAvailable() const = 0;
    virtual void checkMicrophone(std::function<void(bool)> answer) = 0;

Q_SIGNALS:
    void started();
    void finished(const tavrel::platform::RecordResult &result);
    void micLevel(double level); ///< 0 to 1
};

} // namespace tavrel::platform

Q_DECLARE_METATYPE(tavrel::platform::RecordResult)
