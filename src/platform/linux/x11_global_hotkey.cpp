#include "platform/linux/x11_global_hotkey.h"

#include "platform/hotkey_texts.h"
#include "platform/linux/x11_hotkey_listener.h"

#include <QPointer>
#include <QSocketNotifier>

#include <cerrno>

namespace tavrel::platform {
namespace {

constexpr int kMaxSuspects = 3;

bool refuse(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return false;
}

} // namespace

X11GlobalHotkey::X11GlobalHotkey(const QByteArray &display, QObject *parent) : IGlobalHotkey(parent), m_display(display)
{}

X11GlobalHotkey::~X11GlobalHotkey() = default;

bool X11GlobalHotkey::registerHotkey(int id, const KeyCombo &combo, QString *error)
{
    using Answer = X11HotkeyListener::Answer;
    if (!combo.isValid())
        return refuse(error, hotkey_texts::invalidCombo());
    ensureListener();
    switch (m_listener->bind(id, combo)) {
    case Answer::Done:
        m_bound.insert(id);
        return true;
    case Answer::UnsupportedKey:
        return refuse(error, hotkey_texts::unsupportedKey());
    case Answer::Taken:
        return refuse(error, hotkey_texts::takenElsewhere(suspects()));
    case Answer::NoServer:
        break;
    }
    const int code = m_listener->errorCode();
    if (code != 0 && m_bound.isEmpty()) { // the next registration may find a server
        m_notifier.reset();
        m_listener.reset();
    }
    return refuse(error, hotkey_texts::listenerFailed(code != 0 ? code : ETIMEDOUT));
}

QStringList X11GlobalHotkey::suspects() const
{
    QStringList names;
    for (const GrabHolder &holder : m_listener->otherGrabHolders())
        names.append(holder.isWindowManager ? hotkey_texts::windowManager(holder.name) : holder.name);
    names.removeDuplicates();
    return names.mid(0, kMaxSuspects);
}

void X11GlobalHotkey::unregisterHotkey(int id)
{
    if (m_bound.remove(id))
        m_listener->unbind(id);
}

void X11GlobalHotkey::unregisterAll()
{
    if (m_bound.isEmpty())
        return;
    m_bound.clear();
    m_listener->unbindAll();
}

void X11GlobalHotkey::setSuspended(bool suspended)
{
    const bool wasSuspended = m_suspended > 0;
    m_suspended = qMax(0, m_suspended + (suspended ? 1 : -1));
    if (m_listener && wasSuspended != (m_suspended > 0))
        m_listener->setSuspended(m_suspended > 0);
}

void X11GlobalHotkey::ensureListener()
{
    if (m_listener)
        return;
    m_listener = std::make_unique<X11HotkeyListener>(m_display);
    if (m_suspended > 0)
        m_listener->setSuspended(true);
    m_notifier = std::make_unique<QSocketNotifier>(m_listener->firedDescriptor(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &X11GlobalHotkey::deliverFired);
}

void X11GlobalHotkey::deliverFired()
{
    const QPointer<X11GlobalHotkey> alive(this);
    for (const int id : m_listener->takeFired()) {
        // Whoever is told of one press may unbind another, suspend all of them or end the program.
        if (alive && m_suspended == 0 && m_bound.contains(id))
            Q_EMIT activated(id);
        if (!alive)
            return;
    }
}

} // namespace tavrel::platform
