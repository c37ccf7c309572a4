#pragma once

#include <QObject>
#include <QVariant>

#include <optional>

class QThread;

namespace tavrel::ui {

enum class ColorScheme { Light, Dark };

/// What the system prefers, kept up to date.
///
/// The desktop's settings portal is asked for `org.freedesktop.appearance` / `color-scheme` and listened to. Until it
/// has answered (at most 1500 ms), and on desktops where it has no preference, the lightness of the application's
/// palette decides. All D-Bus work happens on a thread of its own, so a hung bus is never felt; `changed` is emitted
/// on the thread of the object, which is the GUI thread.
class SystemColorScheme final : public QObject
{
    Q_OBJECT
public:
    explicit SystemColorScheme(QObject *parent = nullptr);
    ~SystemColorScheme() override;

    [[nodiscard]] ColorScheme scheme() const { return m_scheme; }

    /// The one that theme and tray share. Made on first use, gone with the application object.
    static SystemColorScheme &shared();

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void changed(tavrel::ui::ColorScheme scheme);

private:
    void setPortalScheme(std::optional<ColorScheme> scheme);
    void update();

    std::optional<ColorScheme> m_portal;
    ColorScheme m_scheme = ColorScheme::Light;
    QThread *m_portalThread = nullptr;
};

/// `SystemColorScheme::shared().scheme()`. GUI thread only; never waits.
[[nodiscard]] ColorScheme systemColorScheme();

/// The portal's answer, however many variants it is wrapped in: 1 dark, 2 light; nothing for "no preference" (0) and
/// for anything unexpected.
[[nodiscard]] std::optional<ColorScheme> colorSchemeFromPortal(const QVariant &answer);

} // namespace tavrel::ui
