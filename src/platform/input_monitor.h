#pragma once

#include <QList>
#include <QMetaType>
#include <QObject>
#include <QString>

namespace tavrel::platform {

struct InputEventRecord
{
    enum Type { Move = 0, ButtonDown = 1, ButtonUp = 2, KeyDown = 3, KeyUp = 4, Wheel = 5 };
    enum Modifier { Ctrl = 1, Shift = 2, Alt = 4, Meta = 8 };

    int type = Move;
    double hostMs = 0; ///< host clock
    double x = 0;      ///< global logical coordinates; of the cursor for key events
    double y = 0;
    int button = 0;     ///< 1 left, 2 right, 3 middle, 0 none
    int virtualKey = 0; ///< the system's key code, key events only
    QString keyName;    ///< display name of the key
    int qtKey = 0;      ///< Qt key code, on key down only
    int modifiers = 0;  ///< bit field of Modifier, on key down only

    friend bool operator==(const InputEventRecord &, const InputEventRecord &) = default;
};

/// Watches the keyboard and mouse of the whole desktop.
class IInputMonitor : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual bool hasAccess(QString *error) = 0;
    virtual void requestAccess() = 0;
    /// With true only button events reach the monitor (and key downs, if the next is on) and nothing is collected.
    virtual void setClicksOnly(bool clicksOnly) = 0;
    virtual void setKeysWithClicks(bool keys) = 0;
    /// True also when already running. On failure false with "无法安装键鼠监听" in `error`.
    virtual bool start(QString *error) = 0;
    /// Everything collected since start(): all types, moves cut to whole pixels, without auto-repeat.
    virtual QList<InputEventRecord> stop() = 0;
    [[nodiscard]] virtual bool isRunning() const = 0;

Q_SIGNALS:
    /// On the GUI thread, for every event but moves and wheel.
    void eventRecorded(const tavrel::platform::InputEventRecord &event);
};

} // namespace tavrel::platform

Q_DECLARE_METATYPE(tavrel::platform::InputEventRecord)
