#include "ui/dialogs.h"

#include "platform/window_controller.h"
#include "ui/dialog_hosts.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QPalette>
#include <QRegularExpression>
#include <QWindow>

namespace tavrel::ui::dialogs {
namespace {

constexpr int kOk = 1;
constexpr int kCancel = 0;

struct Services
{
    std::shared_ptr<platform::IWindowController> windows;
    std::shared_ptr<IFileDialogHost> fileHost;
    std::function<void(bool)> suspend;
    QString theme = QStringLiteral("system");
    int open = 0;
};

Services &services()
{
    static Services instance;
    return instance;
}

/// Counts one open dialog for as long as it lives, so that an owner that dies cannot leave the hotkeys suspended.
class OpenDialog final : public QObject
{
public:
    explicit OpenDialog(QObject *dialog) : QObject(dialog)
    {
        if (services().open++ == 0 && services().suspend)
            services().suspend(true);
    }
    ~OpenDialog() override
    {
        if (--services().open == 0 && services().suspend)
            services().suspend(false);
    }
};

QString label(const char *source)
{
    return QCoreApplication::translate("Dialogs", source);
}

void floatCard(DialogCard *card)
{
    auto *dialog = new FloatingDialog(card, !services().windows || services().windows->isCompositing());
    dialog->winId();
    if (services().windows)
        services().windows->setWindowRole(dialog->windowHandle(), platform::WindowRole::Floating);
    dialog->show();
    card->takeFocus();
    if (services().windows)
        services().windows->activate(dialog->windowHandle());
}

QWidget *usableWindow(QWidget *parent)
{
    QWidget *window = parent ? parent->window() : nullptr;
    return window && window->isVisible() && !window->isMinimized() ? window : nullptr;
}

/// An owner that stays on top would hide the dialog: it is lowered while the dialog is open.
class LoweredOwner final : public QObject
{
public:
    LoweredOwner(QWidget *owner, QObject *dialog) : QObject(dialog), m_owner(owner) { lower(true); }
    ~LoweredOwner() override { lower(false); }

private:
    void lower(bool lowered)
    {
        if (m_owner && services().windows && m_owner->windowHandle() &&
            m_owner->windowFlags().testFlag(Qt::WindowStaysOnTopHint))
            services().windows->setOverlayLowered(m_owner->windowHandle(), lowered);
    }

    QPointer<QWidget> m_owner;
};

QString suffixOfFilter(const QString &filter)
{
    static const QRegularExpression pattern(QStringLiteral("\\*\\.([A-Za-z0-9]+)"));
    return pattern.match(filter).captured(1);
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

/// A folder that is gone must not throw the user into whatever folder the program was started in.
QString existingFolder(const QString &path)
{
    return QFileInfo(path).isDir() ? path : QDir::homePath();
}

void configure(QFileDialog &dialog, const IFileDialogHost::Request &request)
{
    using Mode = IFileDialogHost::Mode;
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
    case Mode::SaveFile: {
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setFileMode(QFileDialog::AnyFile);
        const QFileInfo suggested(request.start);
        dialog.setDirectory(existingFolder(suggested.absolutePath()));
        dialog.selectFile(suggested.fileName());
        dialog.setDefaultSuffix(suggested.suffix().isEmpty() ? suffixOfFilter(request.filter) : suggested.suffix());
        return;
    }
    }
    if (!request.start.isEmpty())
        dialog.setDirectory(existingFolder(request.start));
}

void presentQtDialog(const IFileDialogHost::Request &request, const std::function<void(const QStringList &)> &answer)
{
    QWidget *owner = usableWindow(request.parent);
    auto *dialog = new QFileDialog(owner, request.title);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setPalette(paletteOf(themeFor(services().theme)));
    configure(*dialog, request);
    new OpenDialog(dialog);
    if (owner)
        new LoweredOwner(owner, dialog);
    QObject::connect(dialog, &QFileDialog::filesSelected, dialog,
                     [answer](const QStringList &files) { answer(files); });
    dialog->open();
    if (!owner && services().windows)
        services().windows->activate(dialog->windowHandle());
}

void present(IFileDialogHost::Mode mode, QWidget *parent, const QString &title, const QString &start,
             const QString &filter, const std::function<void(const QStringList &)> &answer)
{
    const IFileDialogHost::Request request{mode, parent, title, start, filter};
    const auto chosen = [answer](const QStringList &paths) {
        if (!paths.isEmpty())
            answer(paths);
    };
    if (!services().fileHost) {
        presentQtDialog(request, chosen);
        return;
    }
    // The host has no object to count by: the guard goes with its one answer.
    auto *guard = new OpenDialog(QCoreApplication::instance());
    services().fileHost->present(request, [guard = QPointer<QObject>(guard), chosen](const QStringList &paths) {
        delete guard;
        chosen(paths);
    });
}

} // namespace

void setWindowController(std::shared_ptr<platform::IWindowController> controller)
{
    services().windows = std::move(controller);
}

void setFileDialogHost(std::shared_ptr<IFileDialogHost> host)
{
    services().fileHost = std::move(host);
}

void setHotkeySuspender(std::function<void(bool)> suspend)
{
    services().suspend = std::move(suspend);
}

void setThemeName(const QString &name)
{
    services().theme = name;
}

int openDialogCount()
{
    return services().open;
}

void showCard(QWidget *parent, DialogCard *card, std::function<void(int)> answer)
{
    new OpenDialog(card);
    QObject::connect(card, &DialogCard::finished, card, [answer = std::move(answer)](int id) {
        if (answer)
            answer(id);
    });
    if (QWidget *window = usableWindow(parent))
        SheetQueue::instance().enqueue(window, card);
    else
        floatCard(card);
}

void message(QWidget *parent, Icon icon, const QString &title, const QString &text, const Theme &theme,
             std::function<void()> done)
{
    auto *card = new DialogCard(theme);
    card->setIcon(icon);
    card->setTitle(title);
    card->setText(text);
    card->setButtons({{label(QT_TRANSLATE_NOOP("Dialogs", "好")), ButtonSpec::Primary, true, kOk}});
    showCard(parent, card, [done = std::move(done)](int) {
        if (done)
            done();
    });
}

void confirm(QWidget *parent, Icon icon, const QString &title, const QString &text, const Options &options,
             std::function<void(bool)> answer, QObject *context)
{
    auto *card = new DialogCard(options.theme ? *options.theme : themeFor(services().theme));
    card->setIcon(icon);
    card->setTitle(title);
    card->setText(text);
    const QString ok = options.okText.isEmpty() ? label(QT_TRANSLATE_NOOP("Dialogs", "确定")) : options.okText;
    const QString cancel =
        options.cancelText.isEmpty() ? label(QT_TRANSLATE_NOOP("Dialogs", "取消")) : options.cancelText;
    card->setButtons(
        {{cancel, ButtonSpec::Cancel, options.cancelDefault, kCancel},
         {ok, options.destructive ? ButtonSpec::Destructive : ButtonSpec::Primary, !options.cancelDefault, kOk}});
    showCard(parent, card, [answer = std::move(answer), guard = QPointer<QObject>(context)](int id) {
        if (guard && answer)
            answer(id == kOk);
    });
}

void askText(QWidget *parent, const QString &title, const QString &text, const QString &initial, const Theme &theme,
             std::function<void(std::optional<QString>)> answer, QObject *context)
{
    auto *card = new DialogCard(theme);
    card->setTitle(title);
    card->setText(text);
    auto *input = new QLineEdit(initial);
    input->setObjectName(QStringLiteral("dlgInput"));
    input->setAccessibleName(title);
    card->setContent(input);
    card->setButtons({{label(QT_TRANSLATE_NOOP("Dialogs", "取消")), ButtonSpec::Cancel, false, kCancel},
                      {label(QT_TRANSLATE_NOOP("Dialogs", "确定")), ButtonSpec::Primary, true, kOk}});
    showCard(parent, card, [answer = std::move(answer), guard = QPointer<QObject>(context), input](int id) {
        if (guard && answer)
            answer(id == kOk ? std::optional(input->text()) : std::nullopt);
    });
}

void openFile(QWidget *parent, const QString &title, const QString &directory, const QString &filter,
              std::function<void(const QString &)> answer)
{
    present(IFileDialogHost::Mode::OpenFile, parent, title, directory, filter,
            [answer = std::move(answer)](const QStringList &paths) { answer(paths.first()); });
}

void chooseFiles(QWidget *parent, const QString &title, const QString &directory, const QString &filter,
                 std::function<void(const QStringList &)> answer)
{
    present(IFileDialogHost::Mode::OpenFiles, parent, title, directory, filter, std::move(answer));
}

void pickDirectory(QWidget *parent, const QString &title, const QString &directory,
                   std::function<void(const QString &)> answer)
{
    present(IFileDialogHost::Mode::Directory, parent, title, directory, {},
            [answer = std::move(answer)](const QStringList &paths) { answer(paths.first()); });
}

void saveFile(QWidget *parent, const QString &title, const QString &path, const QString &filter,
              std::function<void(const QString &)> answer)
{
    present(IFileDialogHost::Mode::SaveFile, parent, title, path, filter,
            [answer = std::move(answer)](const QStringList &paths) { answer(paths.first()); });
}

} // namespace tavrel::ui::dialogs
