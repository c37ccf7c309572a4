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

QString takenElsewhere(const QStringList &suspects)
{
    if (suspects.isEmpty())
        return QCoreApplication::translate("QObject", "该组合键已被其他程序占用");
    return QCoreApplication::translate("QObject", "该组合键已被其他程序占用（可能是 %1）")
        .arg(suspects.join(QCoreApplication::translate("QObject", "、")));
}

QString windowManager(const QString &name)
{
    return QCoreApplication::translate("QObject", "窗口管理器 %1").arg(name);
}

QString listenerFailed(int code)
{
    return QCoreApplication::translate("QObject", "无法安装键盘钩子（错误码 %1）").arg(code);
}

} // namespace tavrel::platform::hotkey_texts
