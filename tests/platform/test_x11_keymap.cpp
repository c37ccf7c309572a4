#include "platform/linux/x11_keymap.h"
#include "settings/key_combo.h"

#include "support/test_main.h"

#include <QCoreApplication>

#include <xkbcommon/xkbcommon.h>

using namespace tavrel;
using namespace tavrel::platform;

namespace {

constexpr quint32 kShift = 1;
constexpr quint32 kCapsLock = 2;
constexpr quint32 kCtrl = 4;
constexpr quint32 kAlt = 8;
constexpr quint32 kNumLock = 0x10;
constexpr quint32 kMeta = 0x40;
constexpr quint32 kAltGr = 0x80;

X11Keymap keymapOf(const char *layout, const XModifierRoles &roles = {})
{
    xkb_context *context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    const xkb_rule_names names{.rules = "evdev", .model = "pc105", .layout = layout, .variant = "", .options = ""};
    XkbKeymapPtr keymap(xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
    xkb_context_unref(context);
    if (!keymap)
        qFatal("no keymap for %s", layout);
    return X11Keymap(std::move(keymap), roles);
}

/// "38+4 39+4": key codes with their modifiers in hex, ascending.
QString text(const std::vector<KeyStroke> &strokes)
{
    QStringList parts;
    for (const KeyStroke &stroke : strokes)
        parts.append(QStringLiteral("%1+%2").arg(stroke.key).arg(stroke.modifiers, 0, 16));
    return parts.join(u' ');
}

QString one(int key, quint32 modifiers)
{
    return text({{.key = static_cast<quint32>(key), .modifiers = modifiers}});
}

} // namespace

class X11KeymapTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keysOfCombos_data()
    {
        QTest::addColumn<QByteArray>("layout");
        QTest::addColumn<int>("group");
        QTest::addColumn<KeyCombo>("combo");
        QTest::addColumn<QString>("strokes");
        const auto row = [](const char *name, const char *layout, int group, const KeyCombo &combo,
                            const QString &strokes) {
            QTest::newRow(name) << QByteArray(layout) << group << combo << strokes;
        };
        row("recorded shifted digit", "us", 0, {.key = Qt::Key_Exclam, .ctrl = true, .shift = true},
            one(10, kCtrl | kShift));
        row("shifted symbol brings its shift", "us", 0, {.key = Qt::Key_Exclam, .ctrl = true}, one(10, kCtrl | kShift));
        row("F24 by its place", "us", 0, {.key = Qt::Key_F24}, one(202, 0));
        row("F35 is on no keyboard", "us", 0, {.key = Qt::Key_F35}, QString());
        row("print with alt", "us", 0, {.key = Qt::Key_Print, .alt = true}, text({{107, kAlt}, {218, kAlt}}));
        row("what alt makes of print", "us", 0, {.key = Qt::Key_SysReq, .alt = true}, one(107, kAlt));
        row("enter of the number pad", "us", 0, {.key = Qt::Key_Enter, .ctrl = true}, one(104, kCtrl));
        row("backtab", "us", 0, {.key = Qt::Key_Backtab, .ctrl = true, .shift = true}, one(23, kCtrl | kShift));
        row("no such key", "us", 0, {.key = Qt::Key_Launch5, .ctrl = true}, QString());

        row("German z", "de", 0, {.key = Qt::Key_Z, .ctrl = true}, one(29, kCtrl));
        row("needs AltGr", "de", 0, {.key = Qt::Key_At, .ctrl = true}, one(24, kCtrl | kAltGr));
        row("French digit is the key", "fr", 0, {.key = Qt::Key_1, .ctrl = true}, one(10, kCtrl));

        row("Latin letter of the other layout", "us,ru", 1, {.key = Qt::Key_A, .ctrl = true}, one(38, kCtrl));
        row("Cyrillic letter of the other layout", "us,ru", 0, {.key = 0x424, .ctrl = true}, one(38, kCtrl));
        row("active layout first", "us,de", 1, {.key = Qt::Key_Z, .ctrl = true}, one(29, kCtrl));
        row("other layout before more modifiers", "us,de", 1, {.key = Qt::Key_At, .ctrl = true, .shift = true},
            one(11, kCtrl | kShift));
        row("Latin letter without any Latin layout", "ru", 0, {.key = Qt::Key_A, .ctrl = true}, one(38, kCtrl));
        row("Arabic digits", "ara", 0, {.key = Qt::Key_2, .ctrl = true}, one(11, kCtrl));
    }
    void keysOfCombos()
    {
        QFETCH(QByteArray, layout);
        QFETCH(int, group);
        QFETCH(KeyCombo, combo);
        QFETCH(QString, strokes);
        QCOMPARE(text(keymapOf(layout.constData()).strokes(combo, static_cast<quint32>(group))), strokes);
    }

    void keyOnTwoPlacesIsBoundOnBoth()
    {
        // A pc105 keyboard has the less sign on a key of its own and above the comma.
        const auto strokes = keymapOf("us").strokes({.key = Qt::Key_Less, .ctrl = true, .shift = true}, 0);
        QCOMPARE(text(strokes), one(59, kCtrl | kShift));
        QCOMPARE(text(keymapOf("us").strokes({.key = Qt::Key_Less, .ctrl = true}, 0)), one(94, kCtrl));
    }

    void modifiersFollowTheirRoles()
    {
        const XModifierRoles roles{.alt = 0x20, .meta = 0, .numLock = 0x40, .scrollLock = 0x08};
        const X11Keymap keymap = keymapOf("us", roles);
        QCOMPARE(text(keymap.strokes({.key = Qt::Key_A, .alt = true}, 0)), one(38, 0x20));
        QVERIFY(keymap.strokes({.key = Qt::Key_A, .meta = true}, 0).empty());
        QCOMPARE(keymap.lockModifiers(), kCapsLock | 0x48U);
        QCOMPARE(keymap.lockVariants().size(), 8U);
        QCOMPARE(keymapOf("us").lockVariants(), (std::vector<quint32>{0, kCapsLock, kCapsLock | kNumLock, kNumLock}));
    }
};

TAVREL_TEST_MAIN(QCoreApplication, X11KeymapTest)
#include "test_x11_keymap.moc"
