#include "ui/dialogs.h"

#include "platform/window_controller.h"
#include "ui/color_board.h"
#include "ui/color_value.h"
#include "ui/dialog_hosts.h"
#include "ui/dialog_services.h"
#include "ui/eyedropper_button.h"
#include "ui/theme_source.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QWindow>

namespace tavrel::ui::dialogs {
namespace {

constexpr int kOk = 1;
constexpr int kCancel = 0;
constexpr QSize kLeastSheet(200, 80);
constexpr int kAboveCard = 20;

QString label(const char *source)
{
    return QCoreApplication::translate("Dialogs", source);
}

void floatCard(DialogCard *card)
{
    auto *dialog = new FloatingDialog(card, !windowController() || windowController()->isCompositing());
    dialog->winId();
    if (windowController())
        windowController()->setWindowRole(dialog->windowHandle(), platform::WindowRole::Floating);
    dialog->show();
    card->takeFocus();
    if (windowController())
        windowController()->activate(dialog->windowHandle());
    else
        dialog->activateWindow();
}

/// The window that holds a sheet for `parent`, null when the card has to float: on a window that is smaller than the
/// card its buttons would be out of reach.
QWidget *sheetWindow(QWidget *parent, const DialogCard &card)
{
    QWidget *window = ownerWindow(parent);
    card.ensurePolished();
    const QSize least = kLeastSheet.expandedTo(card.sizeHint() + QSize(0, kAboveCard));
    const bool holds = window && !qobject_cast<FloatingDialog *>(window) && window->width() >= least.width() &&
                       window->height() >= least.height();
    return holds ? window : nullptr;
}

} // namespace

void showCard(QWidget *parent, DialogCard *card, std::function<void(int)> answer)
{
    if (QWidget *window = sheetWindow(parent, *card))
        SheetQueue::instance().enqueue(window, card);
    else
        floatCard(card);
    // Connected after the host, which has taken the card off the screen when the answer runs. The answer may delete
    // the card.
    QObject::connect(card, &DialogCard::finished, card,
                     [answer = std::move(answer), open = std::make_shared<OpenDialog>()](int id) mutable {
                         open.reset();
                         if (const auto call = std::exchange(answer, nullptr))
                             call(id);
                     });
}

void message(QWidget *parent, Icon icon, const QString &title, const QString &text, std::function<void()> done,
             QObject *context)
{
    auto *card = new DialogCard(themes());
    card->setIcon(icon);
    card->setTitle(title);
    card->setText(text);
    card->setButtons({{label(QT_TRANSLATE_NOOP("Dialogs", "好")), ButtonSpec::Primary, true, kOk}});
    showCard(parent, card, [done = guarded(context, std::move(done))](int) {
        if (done)
            done();
    });
}

void confirm(QWidget *parent, Icon icon, const QString &title, const QString &text, const Options &options,
             std::function<void(bool)> answer, QObject *context)
{
    auto *card = new DialogCard(themes());
    card->setIcon(icon);
    card->setTitle(title);
    card->setText(text);
    const QString ok = options.okText.isEmpty() ? label(QT_TRANSLATE_NOOP("Dialogs", "确定")) : options.okText;
    const QString cancel =
        options.cancelText.isEmpty() ? label(QT_TRANSLATE_NOOP("Dialogs", "取消")) : options.cancelText;
    card->setButtons(
        {{cancel, ButtonSpec::Cancel, options.cancelDefault, kCancel},
         {ok, options.destructive ? ButtonSpec::Destructive : ButtonSpec::Primary, !options.cancelDefault, kOk}});
    showCard(parent, card, [answer = guarded(context, std::move(answer))](int id) {
        if (answer)
            answer(id == kOk);
    });
}

void askText(QWidget *parent, const QString &title, const QString &text, const QString &initial,
             std::function<void(std::optional<QString>)> answer, QObject *context)
{
    auto *card = new DialogCard(themes());
    card->setTitle(title);
    card->setText(text);
    auto *input = new QLineEdit(initial);
    input->setObjectName(QStringLiteral("dlgInput"));
    input->setAccessibleName(title.isEmpty() ? text : title);
    card->setContent(input);
    card->setButtons({{label(QT_TRANSLATE_NOOP("Dialogs", "取消")), ButtonSpec::Cancel, false, kCancel},
                      {label(QT_TRANSLATE_NOOP("Dialogs", "确定")), ButtonSpec::Primary, true, kOk}});
    showCard(parent, card, [answer = guarded(context, std::move(answer)), input](int id) {
        if (answer)
            answer(id == kOk ? std::optional(input->text()) : std::nullopt);
    });
}

void pickColor(QWidget *parent, const QColor &initial, std::function<void(const QColor &)> answer, QObject *context)
{
    auto *card = new DialogCard(themes());
    card->setTitle(label(QT_TRANSLATE_NOOP("Dialogs", "选择颜色")));
    auto *middle = new QWidget;
    auto *line = new QHBoxLayout(middle);
    line->setContentsMargins(0, 0, 0, 0);
    auto *board = new ColorBoard(middle);
    board->show(); // with the rest, once the card is shown
    line->addWidget(board, 0, Qt::AlignHCenter);
    board->applyTheme(themes().current());
    QObject::connect(&themes(), &ThemeSource::changed, board, &ColorBoard::applyTheme);
    board->setColor(hexOf(initial, initial.alphaF()), false);
    if (auto *dropper = board->findChild<EyedropperButton *>())
        dropper->hide(); // no picture lies below a dialog
    card->setContent(middle);
    QObject::connect(board, &ColorBoard::closeRequested, card, &DialogCard::dismiss);
    card->setButtons({{label(QT_TRANSLATE_NOOP("Dialogs", "取消")), ButtonSpec::Cancel, false, kCancel},
                      {label(QT_TRANSLATE_NOOP("Dialogs", "使用")), ButtonSpec::Primary, true, kOk}});
    showCard(parent, card, [answer = guarded(context, std::move(answer)), board](int id) {
        if (!answer || id != kOk)
            return;
        QColor color = board->baseColor();
        color.setAlphaF(static_cast<float>(board->alpha()));
        answer(color);
    });
}

} // namespace tavrel::ui::dialogs
