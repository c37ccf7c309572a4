#pragma once

#include "ui/dialog_card.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>

class QWindow;

namespace tavrel {

namespace platform {
class IWindowController;
}
namespace ui {
class ThemeSource;
}
namespace ui::dialogs {
class FloatingDialog;
}

/// What the program tells while it has no window of its own. One message is on the screen, others wait for it. Unlike
/// the dialogs of ui/dialogs.h it leaves the hotkeys alone: nobody has to answer before the next capture. GUI thread
/// only.
class MessageBoard final : public QObject
{
    Q_OBJECT

public:
    struct Message
    {
        QString topic; ///< a later message of the same topic takes the place of an earlier one
        ui::dialogs::Icon icon = ui::dialogs::Icon::Information;
        QString title;
        QString text;
        QString okText = {};                      ///< empty means the usual label
        QString cancelText = {};                  ///< empty means no second button
        std::function<void(bool ok)> answer = {}; ///< may be empty; not called when the board goes
    };

    struct Services
    {
        std::shared_ptr<platform::IWindowController> windows;
        std::function<void(QWindow *)> activate;
        const ui::ThemeSource &themes;
    };

    explicit MessageBoard(Services services, QObject *parent = nullptr);
    ~MessageBoard() override;

    /// Shows the message. One of the same topic that is there takes the new words; in any case what is on the screen
    /// comes to the front.
    void show(const Message &message);
    [[nodiscard]] bool isOpen() const { return !m_window.isNull(); }

private:
    void present();
    void onFinished(int id);

    Services m_services;
    QList<Message> m_messages; ///< the first one is on the screen
    QPointer<ui::dialogs::FloatingDialog> m_window;
    QPointer<ui::dialogs::DialogCard> m_card;
};

} // namespace tavrel
