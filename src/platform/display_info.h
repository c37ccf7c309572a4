#pragma once

#include <QMetaType>
#include <QRect>
#include <QString>

namespace tavrel::platform {

/// One display of the desktop at the moment of a capture.
struct DisplayInfo
{
    quint32 id = 0; ///< 1-based position in QGuiApplication::screens() at capture time
    QString name;   ///< QScreen::name()
    QRect geometry; ///< global logical coordinates
    double devicePixelRatio = 1.0;
    bool primary = false;

    friend bool operator==(const DisplayInfo &, const DisplayInfo &) = default;
};

} // namespace tavrel::platform

Q_DECLARE_METATYPE(tavrel::platform::DisplayInfo)
