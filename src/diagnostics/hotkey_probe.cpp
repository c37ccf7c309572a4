#include "diagnostics/hotkey_probe.h"

#include "platform/services.h"
#include "process/hotkey_table.h"
#include "process/languages.h"
#include "process/single_instance.h"
#include "settings/settings_store.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSet>
#include <QTimer>

#include <cstdio>

namespace tavrel {
namespace {

constexpr int kPatienceMs = 1000;

void print(const QString &line)
{
    std::printf("%s\n", qPrintable(line));
}

QString text(const char *source)
{
    return QCoreApplication::translate("HotkeyProbe", source);
}

/// Every hotkey is asked for, whether this version has its command or not.
Commands allCommands()
{
    Commands commands;
    for (const HotkeyTable::Row &row : HotkeyTable::rows())
        commands.set(row.command, [] {});
    return commands;
}

/// Milliseconds from an injected press to the moment the program heard of it; -1 when it did not.
qint64 press(platform::IInputInjector &injector, platform::IGlobalHotkey &hotkeys, const HotkeyTable::Row &row,
             const KeyCombo &combo)
{
    bool arrived = false;
    QObject context;
    QObject::connect(&hotkeys, &platform::IGlobalHotkey::activated, &context,
                     [&arrived, &row](int id) { arrived = arrived || id == row.id; });
    QElapsedTimer timer;
    timer.start();
    if (!injector.tap(combo))
        return -1;
    QTimer pulse; // an event loop without events would wait for ever
    pulse.start(20);
    while (!arrived && timer.elapsed() < kPatienceMs)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return arrived ? timer.elapsed() : -1;
}

} // namespace

int runHotkeyProbe(const QStringList &values)
{
    if (!values.isEmpty()) {
        std::fprintf(stderr, "用法: tavrel --hotkey-probe\n");
        return 2;
    }
    const SettingsStore store((QString()));
    const SettingsConfig &config = store.config();
    LanguageApplier language;
    language.apply(config.language);

    const platform::Services services = platform::withSystemServices({});
    platform::IGlobalHotkey &hotkeys = *services.globalHotkey;
    const auto injector = platform::makeInputInjector();
    const Commands commands = allCommands();
    HotkeyTable table(hotkeys, commands);
    table.apply(config);
    if (!injector)
        print(text(QT_TRANSLATE_NOOP("HotkeyProbe", "系统不接受模拟按键，无法验证按键是否送达。")));

    bool allWell = true;
    for (const HotkeyTable::Row &row : HotkeyTable::rows()) {
        const HotkeyBinding &binding = config.*row.binding;
        QString outcome;
        if (!binding.isActive()) {
            outcome = text(QT_TRANSLATE_NOOP("HotkeyProbe", "未设置"));
        } else if (const QString error = table.errors().value(QString::fromLatin1(row.name)); !error.isEmpty()) {
            outcome = error;
            allWell = false;
        } else if (injector) {
            const qint64 took = press(*injector, hotkeys, row, binding.combo);
            outcome = took >= 0 ? text(QT_TRANSLATE_NOOP("HotkeyProbe", "已注册，模拟按键 %1 ms 送达")).arg(took)
                                : text(QT_TRANSLATE_NOOP("HotkeyProbe", "已注册，但模拟按键没有送达"));
            allWell = allWell && took >= 0;
        } else {
            outcome = text(QT_TRANSLATE_NOOP("HotkeyProbe", "已注册"));
        }
        const QString combo = binding.isActive() ? binding.combo.toDisplayText() : QStringLiteral("-");
        print(QStringLiteral("%1\t%2\t%3\ttavrel --%4")
                  .arg(HotkeyTable::label(row), combo, outcome, commandWord(row.command)));
    }
    hotkeys.unregisterAll();
    if (!allWell && SingleInstance::isHeldElsewhere())
        print(text(QT_TRANSLATE_NOOP("HotkeyProbe",
                                     "有一个 Tavrel 正在运行，它占着自己的快捷键；先用 tavrel --quit 退出它。")));
    print(text(QT_TRANSLATE_NOOP("HotkeyProbe",
                                 "也可以在桌面自己的快捷键设置里调用每行末尾的命令；Tavrel 在运行时命令会转交给它。")));
    return allWell ? 0 : 1;
}

} // namespace tavrel
