#include "process/commands.h"

#include <QCoreApplication>

#include <array>

namespace tavrel {
namespace {

constexpr std::array kWords{
    CommandWord{Command::Capture, "capture", QT_TRANSLATE_NOOP("main", "启动后立即发起一次截图。")},
    CommandWord{Command::LongCapture, "long", QT_TRANSLATE_NOOP("main", "启动后立即发起一次长截图。")},
    CommandWord{Command::Ocr, "ocr", QT_TRANSLATE_NOOP("main", "截图并识别文字。")},
    CommandWord{Command::Record, "record", QT_TRANSLATE_NOOP("main", "开始或停止录屏。")},
    CommandWord{Command::Guide, "steps", QT_TRANSLATE_NOOP("main", "开始或结束录制指南。")},
    CommandWord{Command::PinClipboard, "pin", QT_TRANSLATE_NOOP("main", "把剪贴板内容贴到屏幕上。")},
    CommandWord{Command::History, "history", QT_TRANSLATE_NOOP("main", "启动后直接打开截图历史页。")},
    CommandWord{Command::Edit, "edit", QT_TRANSLATE_NOOP("main", "打开图片编辑。")},
    CommandWord{Command::Settings, "settings", QT_TRANSLATE_NOOP("main", "启动后直接打开设置窗口。")},
    CommandWord{Command::Quit, "quit", QT_TRANSLATE_NOOP("main", "退出正在运行的 Tavrel。")},
};

} // namespace

std::span<const CommandWord> commandWords()
{
    return kWords;
}

QString commandWord(Command command)
{
    for (const CommandWord &known : kWords) {
        if (known.command == command)
            return QString::fromLatin1(known.word);
    }
    return {};
}

std::optional<Command> commandOfWord(const QString &word)
{
    for (const CommandWord &known : kWords) {
        if (word == QLatin1String(known.word))
            return known.command;
    }
    return {};
}

} // namespace tavrel
