#include "app/busy_note.h"

#include "platform/window_controller.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

#include <utility>

namespace tavrel {
namespace {

constexpr double kFromTop = 0.12; ///< of the display's height, as messages on the overlay

} // namespace

BusyNote::BusyNote(Ways ways) : m_ways(std::move(ways)) {}

BusyNote::~BusyNote() = default;

void BusyNote::show(const QString &title)
{
    if (m_card)
        return;
    m_card = std::make_unique<ui::BusyCard>();
    m_card->setTheme(m_ways.theme());
    m_card->setMixed(m_ways.windows->isCompositing());
    m_card->setTitle(title);
    m_card->winId();
    QWindow *handle = m_card->windowHandle();
    m_ways.windows->setWindowRole(handle, platform::WindowRole::Panel);
    m_ways.windows->setExcludedFromCapture(handle, true);
    const QScreen *screen = QGuiApplication::screenAt(m_ways.cursorPosition());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    const QRect display = screen ? screen->geometry() : QRect();
    m_card->move(display.center().x() - m_card->width() / 2, display.top() + qRound(display.height() * kFromTop));
    m_card->show();
    m_ways.windows->setWindowRole(handle, platform::WindowRole::Panel);
}

void BusyNote::hide()
{
    m_card.reset();
}

} // namespace tavrel
