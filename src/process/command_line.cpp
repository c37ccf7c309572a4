#include "process/command_line.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>

namespace tavrel {
namespace {

QString text(const char *source)
{
    return QCoreApplication::translate("main", source);
}

} // namespace

HandOver StartRequest::handOver() const
{
    return {.files = files, .commands = commands, .cwd = QDir::currentPath()};
}

StartRequest readCommandLine(const QStringList &arguments)
{
    const QCommandLineOption lang(
        QStringLiteral("lang"),
        text(QT_TRANSLATE_NOOP("main",
                               "用指定语言（system / zh / en）跑这次会话，**不写回设置**（自检、界面目视检查用）。")),
        QStringLiteral("code"));
    const QCommandLineOption fakeCapture(
        QStringLiteral("fake-capture"),
        text(QT_TRANSLATE_NOOP("main", "用合成图代替系统抓屏（无需屏幕录制权限，排查界面问题用）。")));
    const QCommandLineOption quitAfter(QStringLiteral("quit-after-ms"),
                                       text(QT_TRANSLATE_NOOP("main", "启动后 N 毫秒自动退出（冒烟测试用）。")),
                                       QStringLiteral("ms"));
    const QCommandLineOption languageProbe(
        QStringLiteral("language-probe"),
        text(QT_TRANSLATE_NOOP("main", "依次应用 system / zh / en，打印 app 与 Qt 自带翻译的结果后退出（诊断用）。")));

    QCommandLineParser parser;
    parser.setApplicationDescription(text(QT_TRANSLATE_NOOP("main", "Tavrel 截图 / 标注 / 贴图工具")));
    parser.addHelpOption();
    parser.addVersionOption();
    for (const CommandWord &command : commandWords())
        parser.addOption({QString::fromLatin1(command.word), text(command.help)});
    parser.addOptions({lang, fakeCapture, quitAfter, languageProbe});
    parser.addPositionalArgument(QStringLiteral("file"), text(QT_TRANSLATE_NOOP("main", "要打开的 .tavrel 录制文件。")),
                                 QStringLiteral("[file]"));
    parser.process(arguments);

    StartRequest request;
    request.fakeCapture = parser.isSet(fakeCapture);
    request.languageProbe = parser.isSet(languageProbe);
    request.lang = parser.value(lang);
    request.files = parser.positionalArguments();
    bool isNumber = false;
    const int quitAfterMs = parser.value(quitAfter).toInt(&isNumber);
    if (isNumber && quitAfterMs >= 0)
        request.quitAfterMs = quitAfterMs;

    request.enforceSingleInstance = !qEnvironmentVariableIsSet("TAVREL_ALLOW_MULTI");
    for (const QString &name : parser.optionNames()) {
        const auto command = commandOfWord(name);
        if (command && !request.commands.contains(*command))
            request.commands.append(*command);
        request.enforceSingleInstance = request.enforceSingleInstance && (command || lang.names().contains(name));
    }
    return request;
}

} // namespace tavrel
