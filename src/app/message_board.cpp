#include "app/message_board.h"

#include "platform/window_controller.h"
#include "ui/dialog_hosts.h"

#include <QCoreApplication>
#include <QWindow>

#include <algorithm>

namespace tavrel {
namespace {

using namespace ui::dialogs;

constexpr int kOk = 1;
constexpr int kCancel = 0;

QList<ButtonSpec> buttonsOf(const MessageBoard::Message &message)
{
    const QString ok = message.okText.isEmpty() ? QCoreApplication::translate("Dialogs", "好") : message.okText;
    QList<ButtonSpec> buttons{{ok, ButtonSpec::Primary, true, kOk}};
    if (!message.cancelText.isEmpty())
        buttons.prepend({message.cancelText, ButtonSpec::Cancel, false, kCancel});
    return buttons;
}

} // namespace

MessageBoard::MessageBoard(Services services, QObject *parent) : QObject(parent), m_services(std::move(services)) {}

MessageBoard::~MessageBoard()
{
    if (m_card)
        m_card->disconnect(this);
    delete m_window;
}

void MessageBoard::show(const Message &message)
{
    const auto same = std::find_if(m_messages.begin(), m_messages.end(),
                                   [&message](const Message &other) { return other.topic == message.topic; });
    if (same == m_messages.end()) {
        m_messages.append(message);
        if (m_messages.size() == 1) {
            present();
            return;
        }
    } else {
        *same = message;
        if (same == m_messages.begin()) {
            m_card->setIcon(message.icon);
            m_card->setTitle(message.title);
            m_card->setText(message.text);
            m_card->setButtons(buttonsOf(message)); // they mean what the new words say
        }
    }
    m_window->raise();
    m_services.activate(m_window->windowHandle());
}

void MessageBoard::present()
{
    const Message &message = m_messages.first();
    m_card = new DialogCard(m_services.themes);
    m_card->setIcon(message.icon);
    m_card->setTitle(message.title);
    m_card->setText(message.text);
    m_card->setButtons(buttonsOf(message));
    m_window = new FloatingDialog(m_card, m_services.windows->isCompositing());
    // Behind the window's own connection: it has left the screen when the next message comes.
    connect(m_card, &DialogCard::finished, this, &MessageBoard::onFinished);
    m_window->winId();
    m_services.windows->setWindowRole(m_window->windowHandle(), platform::WindowRole::Floating);
    m_window->show();
    m_card->takeFocus();
    m_services.activate(m_window->windowHandle());
}

void MessageBoard::onFinished(int id)
{
    m_card = nullptr;
    m_window = nullptr; // deletes itself
    const Message message = m_messages.takeFirst();
    if (!m_messages.isEmpty())
        present();
    if (message.answer)
        message.answer(id == kOk);
}

} // namespace tavrel
