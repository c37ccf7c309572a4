#pragma once

#include "platform/input_injector.h"

#include <QByteArray>

#include <memory>

#include <xcb/xcb.h>

namespace tavrel::platform {

class XConnection;

/// Input through the XTEST extension, on a connection of its own.
class X11InputInjector final : public IInputInjector
{
public:
    /// `display` as in $DISPLAY, empty for $DISPLAY itself. Null when the server cannot be reached or has no XTEST.
    [[nodiscard]] static std::unique_ptr<X11InputInjector> create(const QByteArray &display = {});
    ~X11InputInjector() override;

    bool tap(const KeyCombo &combo) override;
    bool moveBy(int dx, int dy) override;
    bool click(int button) override;
    bool scroll(bool up) override;

private:
    explicit X11InputInjector(std::unique_ptr<XConnection> x);
    void send(quint8 type, quint8 detail, int dx = 0, int dy = 0) const;
    bool clickButton(quint8 button);
    /// A key for each modifier bit; 0 for a bit that no key has.
    [[nodiscard]] xcb_keycode_t modifierKey(unsigned bit) const;

    std::unique_ptr<XConnection> m_x;
};

} // namespace tavrel::platform
