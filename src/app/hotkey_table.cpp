#include "app/hotkey_table.h"

#include "platform/global_hotkey.h"

#include <QCoreApplication>
#include <QLoggingCategory>

namespace tavrel {

const QList<HotkeyTable::Row> &HotkeyTable::rows()
{
    static const QList<Row> table{
        {Capture, "capture", QT_TRANSLATE_NOOP("AppController", "截图"), &SettingsConfig::captureHotkey},
        {Long, "long", QT_TRANSLATE_NOOP("AppController", "长截图"), &SettingsConfig::longCaptureHotkey},
        {Record, "record", QT_TRANSLATE_NOOP("AppController", "录屏"), &SettingsConfig::recordHotkey},
        {Steps, "steps", QT_TRANSLATE_NOOP("AppController", "录制指南"), &SettingsConfig::stepRecordHotkey},
        {PinClipboard, "pin", QT_TRANSLATE_NOOP("AppController", "贴图剪贴板"), &SettingsConfig::pinClipboardHotkey},
        {History, "history", QT_TRANSLATE_NOOP("AppController", "截图历史"), &SettingsConfig::historyHotkey},
        {Edit, "edit", QT_TRANSLATE_NOOP("AppController", "图片编辑"), &SettingsConfig::editHotkey},
        {Ocr, "ocr", QT_TRANSLATE_NOOP("AppController", "文字识别"), &SettingsConfig::ocrHotkey},
    };
    return table;
}

QString HotkeyTable::label(const Row &row)
{
    return QCoreApplication::translate("AppController", row.sourceText);
}

void HotkeyTable::setOperation(Id id, const std::function<void()> &operation)
{
    m_operations.insert(id, operation);
}

void HotkeyTable::apply(const SettingsConfig &config)
{
    QList<std::pair<int, HotkeyBinding>> wanted;
    for (const Row &row : rows()) {
        if (m_operations.contains(row.id))
            wanted.append({row.id, config.*row.binding});
    }
    const bool anew = !m_everApplied || wanted != m_applied;
    m_everApplied = true;
    m_applied = wanted;

    if (anew) {
        m_hotkeys.unregisterAll();
        m_errors.clear();
    }
    for (const Row &row : rows()) {
        if (anew || m_errors.contains(QString::fromLatin1(row.name)))
            tryRow(row, config);
    }
}

void HotkeyTable::tryRow(const Row &row, const SettingsConfig &config)
{
    const QString error = registerRow(row, config);
    if (error.isEmpty())
        m_errors.remove(QString::fromLatin1(row.name));
    else
        m_errors.insert(QString::fromLatin1(row.name), error);
}

QString HotkeyTable::registerRow(const Row &row, const SettingsConfig &config)
{
    const HotkeyBinding &binding = config.*row.binding;
    if (!binding.isActive() || !m_operations.contains(row.id))
        return {};
    for (const Row &earlier : rows()) {
        if (earlier.id == row.id)
            break;
        const HotkeyBinding &other = config.*earlier.binding;
        if (other.isActive() && other.combo == binding.combo && m_operations.contains(earlier.id))
            return QCoreApplication::translate("AppController", "与「%1」冲突").arg(label(earlier));
    }
    QString error;
    if (m_hotkeys.registerHotkey(row.id, binding.combo, &error))
        return {};
    qWarning().noquote() << QStringLiteral("注册热键失败：%1 %2 %3")
                                .arg(QString::fromLatin1(row.name), binding.combo.toDisplayText(), error);
    return error;
}

void HotkeyTable::dispatch(int id) const
{
    if (const auto operation = m_operations.value(id))
        operation();
}

QString HotkeyTable::errorLines() const
{
    QStringList lines;
    for (const Row &row : rows()) {
        const QString error = m_errors.value(QString::fromLatin1(row.name));
        if (!error.isEmpty())
            lines.append(QCoreApplication::translate("AppController", "%1：%2").arg(label(row), error));
    }
    return lines.join(u'\n');
}

} // namespace tavrel
