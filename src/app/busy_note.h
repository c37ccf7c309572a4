#pragma once

#include "ui/busy_card.h"

#include <QString>

#include <functional>
#include <memory>

namespace tavrel {

namespace platform {
class IWindowController;
}

/// Tells that something the user waits for takes longer, in a card near the top of the display under the pointer. It is
/// in no picture that is taken meanwhile. GUI thread only.
class BusyNote final
{
public:
    struct Ways
    {
        std::shared_ptr<platform::IWindowController> windows;
        std::function<ui::Theme()> theme;
        std::function<QPoint()> cursorPosition; ///< global logical coordinates
    };

    explicit BusyNote(Ways ways);
    ~BusyNote();

    void show(const QString &title);
    void hide();

private:
    Ways m_ways;
    std::unique_ptr<ui::BusyCard> m_card; ///< while it is shown
};

} // namespace tavrel
