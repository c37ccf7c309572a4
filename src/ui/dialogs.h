#pragma once

#include "ui/dialog_card.h"
#include "ui/theme.h"

#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

namespace tavrel::platform {
class IWindowController;
}

/// Everything the program asks or tells in a dialog. All functions return at once and answer through a callback; none
/// runs an event loop of its own. A visible parent gets the card as a sheet, else the card floats. Hotkeys are
/// suspended while any dialog is open. GUI thread only.
namespace tavrel::ui::dialogs {

/// Presents file dialogs in place of QFileDialog, and counts them.
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

    /// Answers with the chosen paths; none when cancelled. Exactly one answer.
    virtual void present(const Request &request, std::function<void(const QStringList &)> answer) = 0;
};

struct Options
{
    QString okText;     ///< empty means the usual label
    QString cancelText; ///< empty means the usual label
    bool destructive = false;
    bool cancelDefault = true;
    std::optional<Theme> theme; ///< empty takes that of setThemeName()
};

/// What the dialogs need of the rest of the program; null takes it away again.
void setWindowController(std::shared_ptr<platform::IWindowController> controller);
void setFileDialogHost(std::shared_ptr<IFileDialogHost> host);
/// Called with true when the first dialog opens and with false when the last one has closed.
void setHotkeySuspender(std::function<void(bool)> suspend);
/// The theme setting (system, light, dark) for dialogs that are given none.
void setThemeName(const QString &name);
/// Cards and file dialogs that are open or waiting for their turn.
[[nodiscard]] int openDialogCount();

void message(QWidget *parent, Icon icon, const QString &title, const QString &text, const Theme &theme,
             std::function<void()> done);
/// The answer is dropped when `context` has gone.
void confirm(QWidget *parent, Icon icon, const QString &title, const QString &text, const Options &options,
             std::function<void(bool)> answer, QObject *context);
/// A cancel answers with nothing.
void askText(QWidget *parent, const QString &title, const QString &text, const QString &initial, const Theme &theme,
             std::function<void(std::optional<QString>)> answer, QObject *context);

/// A cancelled file dialog does not answer.
void openFile(QWidget *parent, const QString &title, const QString &directory, const QString &filter,
              std::function<void(const QString &)> answer);
void chooseFiles(QWidget *parent, const QString &title, const QString &directory, const QString &filter,
                 std::function<void(const QStringList &)> answer);
void pickDirectory(QWidget *parent, const QString &title, const QString &directory,
                   std::function<void(const QString &)> answer);
void saveFile(QWidget *parent, const QString &title, const QString &path, const QString &filter,
              std::function<void(const QString &)> answer);

/// Shows any card; the answer gets the id of the button that ended it. Takes the card.
void showCard(QWidget *parent, DialogCard *card, std::function<void(int)> answer);

} // namespace tavrel::ui::dialogs
