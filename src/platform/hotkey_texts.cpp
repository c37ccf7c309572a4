#include "platform/hotkey_texts.h"

#include <QCoreApplication>

namespace tavrel::platform::hotkey_texts {

QString invalidCombo()
{
    return QCoreApplication::translate("QObject", "按键组合无效");
}

QString unsupportedKey()
{
    return QCoreApplication::translate("QObject", "不支持的按键");
}

QString takenElsewhere()
{
    return QCoreApplication::translate("QObject", "该组合键已被其他程序占用");
}

QString listenerFailed(int code)
{
    return QCoreApplication::translate("QObject", "无法安装键盘钩子（错误码 %1）").arg(code);
}

} // namespace tavrel::platform::hotkey_texts
