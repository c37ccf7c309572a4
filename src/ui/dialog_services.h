#pragma once

#include "ui/dialogs.h"

#include <QObject>

class QWidget;

/// What the functions of `ui/dialogs.h` share. Not for their callers.
namespace tavrel::ui::dialogs {

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
/// The theme of dialogs that are given none.
[[nodiscard]] Theme defaultTheme();

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
