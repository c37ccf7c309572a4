#include "app/desktop_notices.h"

#include <QLoggingCategory>
#include <QPointer>

namespace tavrel {

void DesktopNotices::show(const QString &title, const QString &text, Kind kind, std::chrono::milliseconds duration)
{
    const auto line = QStringLiteral("%1：%2").arg(title, text);
    if (kind == Kind::Warning)
        qWarning().noquote() << line;
    else
        qInfo().noquote() << line;
    if (!m_ways.notifier) {
        showOurselves(title, text, kind, duration);
        return;
    }
    m_ways.notifier->notify({title, text, kind == Kind::Warning, duration},
                            [self = QPointer(this), title, text, kind, duration](bool shown) {
                                if (self && !shown)
                                    self->showOurselves(title, text, kind, duration);
                            });
}

void DesktopNotices::showOurselves(const QString &title, const QString &text, Kind kind,
                                   std::chrono::milliseconds duration)
{
    const bool shown = m_ways.showBesideIcon && m_ways.showBesideIcon(title, text, kind, duration);
    if (!shown && kind == Kind::Warning && m_ways.showMessage)
        m_ways.showMessage(title, text);
}

} // namespace tavrel
