#include "settings/key_combo.h"

#include <QKeyEvent>
#include <QStringList>

#include <array>
#include <utility>

namespace tavrel {
namespace {

/// Punctuation of a Chinese input method and the key that makes it; shift does not matter for these.
constexpr std::array<std::pair<int, int>, 10> kFullWidthKeys{{{8216, 39},
                                                              {8217, 39},
                                                              {8220, 34},
                                                              {8221, 34},
                                                              {12288, 32},
                                                              {12290, 46},
                                                              {12298, 60},
                                                              {12299, 62},
                                                              {12304, 91},
                                                              {12305, 93}}};
constexpr int kIdeographicComma = 12289;

bool isModifierKey(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
    case Qt::Key_AltGr:
    case Qt::Key_unknown:
        return true;
    default:
        return false;
    }
}

template <typename Visit>
void forEachModifier(const KeyCombo &combo, const std::array<const char *, 4> &names, Visit visit)
{
    const std::array set{combo.ctrl, combo.shift, combo.alt, combo.meta};
    for (std::size_t i = 0; i < set.size(); ++i) {
        if (set[i])
            visit(QString::fromLatin1(names[i]));
    }
}

} // namespace

int normalizeKey(int key, bool shift)
{
    if (key < 128 || key >= 0x10000)
        return key;
    if (key == kIdeographicComma)
        return shift ? 44 : 92;
    for (const auto &[fullWidth, plain] : kFullWidthKeys) {
        if (fullWidth == key)
            return plain;
    }
    const QString folded = QString(QChar(key)).normalized(QString::NormalizationForm_KC);
    return folded.size() == 1 && folded.front().unicode() < 128 ? folded.front().unicode() : key;
}

bool isGlobalHotkeyCombo(const KeyCombo &combo)
{
    return combo.isValid() && (combo.hasModifier() || (combo.key >= Qt::Key_F1 && combo.key <= Qt::Key_F35));
}

KeyCombo KeyCombo::fromEvent(const QKeyEvent &event)
{
    if (isModifierKey(event.key()) || event.key() == 0)
        return {};
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    KeyCombo combo;
    combo.ctrl = modifiers.testFlag(Qt::ControlModifier);
    combo.shift = modifiers.testFlag(Qt::ShiftModifier);
    combo.alt = modifiers.testFlag(Qt::AltModifier);
    combo.meta = modifiers.testFlag(Qt::MetaModifier);
    combo.key = normalizeKey(event.key(), combo.shift);
    return combo;
}

KeyCombo KeyCombo::fromJsonText(const QString &text)
{
    const QStringList parts = text.split(u'+', Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return {};
    KeyCombo combo;
    for (const QString &part : parts.first(parts.size() - 1)) {
        const QString name = part.trimmed().toLower();
        if (name == u"ctrl")
            combo.ctrl = true;
        else if (name == u"shift")
            combo.shift = true;
        else if (name == u"alt")
            combo.alt = true;
        else if (name == u"meta")
            combo.meta = true;
        else
            return {};
    }
    bool isNumber = false;
    const int key = parts.last().trimmed().toInt(&isNumber);
    if (!isNumber || key < 1)
        return {};
    combo.key = normalizeKey(key, false);
    return combo;
}

QString KeyCombo::toJsonText() const
{
    if (!isValid())
        return {};
    QStringList parts;
    forEachModifier(*this, {"ctrl", "shift", "alt", "meta"}, [&parts](const QString &name) { parts.append(name); });
    parts.append(QString::number(key));
    return parts.join(u'+');
}

QString KeyCombo::toDisplayText() const
{
    if (!isValid())
        return {};
    QStringList parts;
    forEachModifier(*this, {"Ctrl", "Shift", "Alt", "Win"}, [&parts](const QString &name) { parts.append(name); });
    parts.append(QKeySequence(key).toString(QKeySequence::NativeText));
    return parts.join(u'+');
}

QKeySequence KeyCombo::toKeySequence() const
{
    if (!isValid())
        return {};
    int code = key;
    if (ctrl)
        code |= static_cast<int>(Qt::ControlModifier);
    if (shift)
        code |= static_cast<int>(Qt::ShiftModifier);
    if (alt)
        code |= static_cast<int>(Qt::AltModifier);
    if (meta)
        code |= static_cast<int>(Qt::MetaModifier);
    return QKeySequence(code);
}

} // namespace tavrel
