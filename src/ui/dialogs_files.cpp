#include "ui/dialogs.h"

#include "platform/window_controller.h"
#include "ui/dialog_services.h"
#include "ui/theme_source.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QPalette>
#include <QRegularExpression>
#include <QToolButton>
#include <QWindow>

#include <algorithm>

namespace tavrel::ui::dialogs {
namespace {

/// An owner that stays on top would hide the dialog: it is lowered while the dialog is open.
class LoweredOwner final : public QObject
{
public:
    LoweredOwner(QWidget *owner, QObject *dialog) : QObject(dialog), m_owner(owner) { lower(true); }
    ~LoweredOwner() override { lower(false); }
    LoweredOwner(const LoweredOwner &) = delete;
    LoweredOwner &operator=(const LoweredOwner &) = delete;

private:
    void lower(bool lowered)
    {
        if (m_owner && windowController() && m_owner->windowHandle() &&
            m_owner->windowFlags().testFlag(Qt::WindowStaysOnTopHint))
            windowController()->setOverlayLowered(m_owner->windowHandle(), lowered);
    }

    QPointer<QWidget> m_owner;
};

QStringList suffixesOf(const QString &filter)
{
    static const QRegularExpression pattern(QStringLiteral("\\*\\.([A-Za-z0-9]+)"));
    QStringList result;
    for (auto match = pattern.globalMatch(filter); match.hasNext();)
        result.append(match.next().captured(1).toLower());
    return result;
}

/// Qt's own file dialog takes its colours from the application, which knows nothing of the program's theme.
QPalette paletteOf(const Theme &theme)
{
    QPalette palette;
    palette.setColor(QPalette::Window, theme.studioWindow());
    palette.setColor(QPalette::Base, theme.dark ? theme.studioPanel() : QColor(Qt::white));
    palette.setColor(QPalette::AlternateBase, theme.studioPanel());
    palette.setColor(QPalette::Button, theme.controlSurface());
    palette.setColor(QPalette::Highlight, theme.accent());
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, theme.studioText());
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, theme.studioDisabledText());
    palette.setColor(QPalette::PlaceholderText, theme.studioSecondaryText());
    return palette;
}

/// For each widget by itself: below an owner with a style sheet the dialog's palette does not reach its children, and
/// that sheet is not made for the small buttons of a file dialog.
void applyLook(QFileDialog &dialog, const QPalette &palette)
{
    dialog.setPalette(palette);
    const auto children = dialog.findChildren<QWidget *>();
    for (QWidget *child : children)
        child->setPalette(palette);
    if (!dialog.parentWidget() || dialog.parentWidget()->styleSheet().isEmpty())
        return;
    const auto buttons = dialog.findChildren<QToolButton *>();
    for (QToolButton *button : buttons)
        button->setStyleSheet(QStringLiteral("padding: 2px;"));
}

/// A folder that is gone must not throw the user into whatever folder the program was started in.
QString existingFolder(const QString &path)
{
    return QFileInfo(path).isDir() ? path : QDir::homePath();
}

/// The suffix that a name typed without one gets: the name's own if the filter offers it, else the filter's first.
QString defaultSuffix(const QString &filter, const QString &current)
{
    const QStringList offered = suffixesOf(filter);
    return offered.isEmpty() || offered.contains(current.toLower()) ? current : offered.first();
}

/// Choosing "JPEG" for "shot.png" means "shot.jpg". Other endings are part of the name and stay.
void followFilter(QFileDialog &dialog, const QString &filter)
{
    const QStringList selected = dialog.selectedFiles();
    const QFileInfo file(selected.isEmpty() ? QString() : selected.first());
    const QString suffix = file.suffix();
    const QString wanted = defaultSuffix(filter, suffix);
    dialog.setDefaultSuffix(wanted);
    const QStringList known = suffixesOf(dialog.nameFilters().join(u' '));
    if (!file.isDir() && !file.completeBaseName().isEmpty() && wanted != suffix && known.contains(suffix.toLower()))
        dialog.selectFile(file.completeBaseName() + u'.' + wanted);
}

void configureSaving(QFileDialog &dialog, const IFileDialogHost::Request &request)
{
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    const QFileInfo suggested(request.start);
    const QStringList filters = dialog.nameFilters();
    const auto fitting = std::find_if(filters.begin(), filters.end(), [&](const QString &filter) {
        return suffixesOf(filter).contains(suggested.suffix().toLower());
    });
    if (fitting != filters.end())
        dialog.selectNameFilter(*fitting);
    dialog.setDirectory(existingFolder(suggested.absolutePath()));
    dialog.selectFile(suggested.fileName());
    dialog.setDefaultSuffix(defaultSuffix(dialog.selectedNameFilter(), suggested.suffix()));
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog,
                     [&dialog](const QString &filter) { followFilter(dialog, filter); });
}

void configure(QFileDialog &dialog, const IFileDialogHost::Request &request)
{
    using Mode = IFileDialogHost::Mode;
    if (!request.filter.isEmpty())
        dialog.setNameFilter(request.filter);
    switch (request.mode) {
    case Mode::OpenFile:
        dialog.setFileMode(QFileDialog::ExistingFile);
        break;
    case Mode::OpenFiles:
        dialog.setFileMode(QFileDialog::ExistingFiles);
        break;
    case Mode::Directory:
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly);
        break;
    case Mode::SaveFile:
        configureSaving(dialog, request);
        return;
    }
    if (!request.start.isEmpty())
        dialog.setDirectory(existingFolder(request.start));
}

void presentQtDialog(const IFileDialogHost::Request &request, const std::function<void(const QStringList &)> &answer)
{
    QWidget *owner = ownerWindow(request.parent);
    auto *dialog = new QFileDialog(owner, request.title);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAttribute(Qt::WA_QuitOnClose, false);
    configure(*dialog, request);
    applyLook(*dialog, paletteOf(themes().current()));
    const auto chosen = std::make_shared<QStringList>();
    if (owner) {
        new LoweredOwner(owner, dialog);
        new CloseWatch(
            owner, [dialog] { dialog->reject(); }, dialog);
    }
    // The answer waits for the end of the dialog: what it starts must find the screen clear and the hotkeys free.
    QObject::connect(dialog, &QFileDialog::filesSelected, dialog,
                     [chosen](const QStringList &files) { *chosen = files; });
    QObject::connect(dialog, &QDialog::finished, dialog,
                     [chosen, answer, open = std::make_shared<OpenDialog>()](int) mutable {
                         open.reset();
                         answer(*chosen);
                     });
    dialog->open();
    // A dialog of the desktop's own has no window of ours.
    if (windowController() && dialog->windowHandle() && !dialog->testAttribute(Qt::WA_DontShowOnScreen))
        windowController()->activate(dialog->windowHandle());
}

void present(IFileDialogHost::Mode mode, QWidget *parent, const QString &title, const QString &start,
             const QString &filter, QObject *context, std::function<void(const QStringList &)> answer)
{
    const IFileDialogHost::Request request{mode, parent, title, start, filter};
    const auto chosen = [answer = guarded(context, std::move(answer))](const QStringList &paths) {
        if (!paths.isEmpty() && answer)
            answer(paths);
    };
    if (!fileDialogHost()) {
        presentQtDialog(request, chosen);
        return;
    }
    // Shared by all copies of the answer: the first call counts, and dropping them unused ends the dialog as well.
    const auto open = std::make_shared<std::unique_ptr<OpenDialog>>(std::make_unique<OpenDialog>());
    fileDialogHost()->present(request, [open, chosen](const QStringList &paths) {
        if (!*open)
            return;
        open->reset();
        chosen(paths);
    });
}

std::function<void(const QStringList &)> firstOf(std::function<void(const QString &)> answer)
{
    return [answer = std::move(answer)](const QStringList &paths) {
        if (answer)
            answer(paths.first());
    };
}

} // namespace

void openFile(QWidget *parent, const QString &title, const QString &directory, const QString &filter,
              std::function<void(const QString &)> answer, QObject *context)
{
    present(IFileDialogHost::Mode::OpenFile, parent, title, directory, filter, context, firstOf(std::move(answer)));
}

void chooseFiles(QWidget *parent, const QString &title, const QString &directory, const QString &filter,
                 std::function<void(const QStringList &)> answer, QObject *context)
{
    present(IFileDialogHost::Mode::OpenFiles, parent, title, directory, filter, context, std::move(answer));
}

void pickDirectory(QWidget *parent, const QString &title, const QString &directory,
                   std::function<void(const QString &)> answer, QObject *context)
{
    present(IFileDialogHost::Mode::Directory, parent, title, directory, {}, context, firstOf(std::move(answer)));
}

void saveFile(QWidget *parent, const QString &title, const QString &path, const QString &filter,
              std::function<void(const QString &)> answer, QObject *context)
{
    present(IFileDialogHost::Mode::SaveFile, parent, title, path, filter, context, firstOf(std::move(answer)));
}

} // namespace tavrel::ui::dialogs
