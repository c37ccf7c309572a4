#include "platform/synthetic/synthetic_global_hotkey.h"

#include "platform/hotkey_texts.h"

namespace tavrel::platform {
namespace {

KeyStroke strokeOf(const KeyCombo &combo)
{
    const unsigned modifiers =
        (combo.ctrl ? 1U : 0U) | (combo.shift ? 2U : 0U) | (combo.alt ? 4U : 0U) | (combo.meta ? 8U : 0U);
    return {.key = static_cast<quint32>(combo.key), .modifiers = modifiers};
}

bool refuse(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return false;
}

} // namespace

bool SyntheticGlobalHotkey::registerHotkey(int id, const KeyCombo &combo, QString *error)
{
    if (!combo.isValid())
        return refuse(error, hotkey_texts::invalidCombo());
    // The keys that stand for what a keyboard may lack.
    if (combo.key >= Qt::Key_Launch0 && combo.key <= Qt::Key_LaunchH)
        return refuse(error, hotkey_texts::unsupportedKey());
    if (m_takenElsewhere.contains(combo))
        return refuse(error, hotkey_texts::takenElsewhere());
    m_bindings[id] = combo;
    rebuildTable();
    return true;
}

void SyntheticGlobalHotkey::unregisterHotkey(int id)
{
    m_bindings.erase(id);
    rebuildTable();
}

void SyntheticGlobalHotkey::unregisterAll()
{
    m_bindings.clear();
    rebuildTable();
}

void SyntheticGlobalHotkey::setSuspended(bool suspended)
{
    m_suspended = qMax(0, m_suspended + (suspended ? 1 : -1));
    rebuildTable();
}

bool SyntheticGlobalHotkey::press(const KeyCombo &combo)
{
    const bool taken = keyDown(combo);
    keyUp(combo);
    return taken;
}

bool SyntheticGlobalHotkey::keyDown(const KeyCombo &combo)
{
    const HotkeyMatcher::Outcome outcome = m_matcher.press(strokeOf(combo), ++m_clock, HotkeyPath::Grab);
    if (outcome.fired)
        Q_EMIT activated(*outcome.fired);
    return outcome.swallowed;
}

bool SyntheticGlobalHotkey::keyUp(const KeyCombo &combo)
{
    return m_matcher.release(strokeOf(combo).key).swallowed;
}

void SyntheticGlobalHotkey::setTakenElsewhere(const KeyCombo &combo, bool taken)
{
    m_takenElsewhere.removeAll(combo);
    if (taken)
        m_takenElsewhere.append(combo);
}

KeyCombo SyntheticGlobalHotkey::combo(int id) const
{
    const auto binding = m_bindings.find(id);
    return binding == m_bindings.end() ? KeyCombo() : binding->second;
}

void SyntheticGlobalHotkey::rebuildTable()
{
    std::vector<HotkeyMatcher::Entry> table;
    if (m_suspended == 0) {
        for (const auto &[id, combo] : m_bindings)
            table.push_back({.id = id, .stroke = strokeOf(combo)});
    }
    m_matcher.setTable(std::move(table));
}

} // namespace tavrel::platform
