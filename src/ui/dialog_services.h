#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>

namespace tavrel::platform {
class IWindowController;
}

namespace tavrel::ui {
class ThemeSource;
}

/// What the dialogs of ui/dialogs.h need of the rest of the program, and what they share. GUI thread only.
namespace tavrel::ui::dialogs {

/// Presents file dialogs in place of QFileDialog.
class IFileDialogHost
{
public:
    enum class Mode { OpenFile, OpenFiles, Directory, SaveFile };
    struct Request
    {
        Mode mode = Mode::OpenFile;
        QPointer<QWidget> parent;
        QString title;
        QString start; ///< directory, or for SaveFile the suggested path
        QString filter;
    };

    IFileDialogHost() = default;
    IFileDialogHost(const IFileDialogHost &) = delete;
    IFileDialogHost &operator=(const IFileDialogHost &) = delete;
    virtual ~IFileDialogHost() = default;

    /// Answers with the chosen paths; none when cancelled. The first answer counts; dropping it is a cancel.
    virtual void present(const Request &request, std::function<void(const QStringList &)> answer) = 0;
};

/// What the dialogs need of the rest of the program; null takes it away again.
void setWindowController(std::shared_ptr<platform::IWindowController> controller);
void setFileDialogHost(std::shared_ptr<IFileDialogHost> host);
/// Called with true when the first dialog opens and with false when the last one has closed, always in pairs.
void setHotkeySuspender(std::function<void(bool)> suspend);
void setThemeSource(const ThemeSource *themes);
/// Cards and file dialogs that are open or waiting for their turn.
[[nodiscard]] int openDialogCount();

/// Counts one dialog for as long as it lives; the first suspends the hotkeys, the last resumes them.
class OpenDialog final
{
public:
    OpenDialog();
    ~OpenDialog();
    OpenDialog(const OpenDialog &) = delete;
    OpenDialog &operator=(const OpenDialog &) = delete;
};

/// Tells once that a window was closed, by the user or by close(). A window that refuses to close or that is only
/// hidden for a while, for a capture for instance, does not count. The telling is queued: the window's own handling
/// of its end comes first.
class CloseWatch final : public QObject
{
public:
    CloseWatch(QWidget *window, std::function<void()> closed, QObject *parent);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    std::function<void()> m_closed;
    bool m_closing = false;
};

[[nodiscard]] platform::IWindowController *windowController();
[[nodiscard]] IFileDialogHost *fileDialogHost();
/// The one that was set, else one that follows the system.
[[nodiscard]] const ThemeSource &themes();

/// The window that a dialog asked for by `parent` belongs to: visible, not minimised, no menu or tool tip. Null when
/// there is none.
[[nodiscard]] QWidget *ownerWindow(QWidget *parent);

/// `answer`, dropped once `context` has gone; a null context guards nothing.
template <typename... Args>
[[nodiscard]] std::function<void(Args...)> guarded(QObject *context, std::function<void(Args...)> answer)
{
    if (!context || !answer)
        return answer;
    return [guard = QPointer<QObject>(context), answer = std::move(answer)](Args... args) {
        if (guard)
            answer(args...);
    };
}

} // namespace tavrel::ui::dialogs
