#pragma once

#include <QImage>
#include <QObject>
#include <QString>

#include <functional>

namespace tavrel::platform {

/// Preview and recording of the camera. GUI thread only.
class ICameraRecorder : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    [[nodiscard]] virtual bool cameraAvailable() const = 0;
    [[nodiscard]] virtual bool hasAccess() const = 0;
    virtual void requestAccess(std::function<void(bool)> answer) = 0;
    virtual bool startPreview(QString *error) = 0;
    virtual void stopPreview() = 0;
    [[nodiscard]] virtual bool isPreviewing() const = 0;
    /// 30 frames per second; an odd width or height is rounded down to even.
    virtual bool startRecording(const QString &path, QString *error) = 0;
    virtual void pauseRecording() = 0;
    virtual void resumeRecording() = 0;
    virtual void stopRecording() = 0; ///< `recordingFinished` follows
    [[nodiscard]] virtual bool isRecording() const = 0;

Q_SIGNALS:
    void previewFrame(const QImage &frame);
    void recordingFinished(bool ok, const QString &path, double firstFrameHostMs, const QString &error);
};

} // namespace tavrel::platform
