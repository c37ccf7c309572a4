#include "process/hotkey_table.h"

#include "platform/global_hotkey.h"

#include <QCoreApplication>
#include <QLoggingCategory>

namespace tavrel {

const QList<HotkeyTable::Row> &HotkeyTable::rows()
{
    static const QList<Row> table{
        {Capture, Command::Capture, "capture", QT_TRANSLATE_NOOP("AppController", "截图"),
         &SettingsConfig::captureHotkey},
        {Long, Command::LongCapture, "long", QT_TRANSLATE_NOOP("AppController", "长截图"),
         &SettingsConfig::longCaptureHotkey},
        {Record, Command::Record, "record", QT_TRANSLATE_NOOP("AppController", "录屏"), &SettingsConfig::recordHotkey},
        {Steps, Command::Guide, "steps", QT_TRANSLATE_NOOP("AppController", "录制指南"),
         &SettingsConfig::stepRecordHotkey},
        {PinClipboard, Command::PinClipboard, "pin", QT_TRANSLATE_NOOP("AppController", "贴图剪贴板"),
         &SettingsConfig::pinClipboardHotkey},
        {History, Command::History, "history", QT_TRANSLATE_NOOP("AppController", "截图历史"),
         &SettingsConfig::historyHotkey},
        {Edit, Command::Edit, "edit", QT_TRANSLATE_NOOP("AppController", "图片编辑"), &SettingsConfig::editHotkey},
        {Ocr, Command::Ocr, "ocr", QT_TRANSLATE_NOOP("AppController", "文字识别"), &SettingsConfig::ocrHotkey},
    };
    return table;
}

QString HotkeyTable::label(const Row &row)
{
    return QCoreApplication::translate("AppController", row.sourceText);
}

void HotkeyTable::apply(const SettingsConfig &config)
{
    QList<std::pair<int, HotkeyBinding>> wanted;
    for (const Row &row : rows()) {
        if (m_commands.has(row.command))
            wanted.append({row.id, config.*row.binding});
    }
    if (m_recording) {
        wanted.append({RecordStop, config.recordStopHotkey});
        wanted.append({Record, config.recordHotkey});
    }
    const bool anew = !m_everApplied || wanted != m_applied;
    m_everApplied = true;
    m_applied = wanted;

    if (anew) {
        m_hotkeys.unregisterAll();
        m_errors.clear();
        m_refused.clear();
    }
    for (const Row &row : rows()) {
        if (anew || m_errors.contains(QString::fromLatin1(row.name)))
            tryRow(row, config);
    }
    if (anew && m_recording)
        registerStop(config);
}

void HotkeyTable::setRecording(bool recording, const SettingsConfig &config)
{
    m_recording = recording;
    registerStop(config);
}

void HotkeyTable::registerStop(const SettingsConfig &config)
{
    m_hotkeys.unregisterHotkey(RecordStop);
    const HotkeyBinding &stop = config.recordStopHotkey;
    // Where both are the same key, the one that begins a recording ends it as well.
    const bool isRecordKey = config.recordHotkey.enabled && config.recordHotkey.combo == stop.combo;
    if (!m_recording || !stop.isActive() || isRecordKey)
        return;
    QString error;
    if (!m_hotkeys.registerHotkey(RecordStop, stop.combo, &error))
        qWarning().noquote() << QStringLiteral("注册停止录屏热键失败：%1 %2").arg(stop.combo.toDisplayText(), error);
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
    const bool wasRefused = m_refused.remove(row.id);
    if (!binding.isActive() || !m_commands.has(row.command))
        return {};
    for (const Row &earlier : rows()) {
        if (earlier.id == row.id)
            break;
        const HotkeyBinding &other = config.*earlier.binding;
        if (other.isActive() && other.combo == binding.combo && m_commands.has(earlier.command))
            return QCoreApplication::translate("AppController", "与「%1」冲突").arg(label(earlier));
    }
    QString error;
    if (m_hotkeys.registerHotkey(row.id, binding.combo, &error))
        return {};
    m_refused.insert(row.id);
    if (!wasRefused)
        qWarning().noquote() << QStringLiteral("注册热键失败：%1 %2 %3")
                                    .arg(QString::fromLatin1(row.name), binding.combo.toDisplayText(), error);
    return error;
}

void HotkeyTable::dispatch(int id) const
{
    if (id == RecordStop && m_recording)
        m_commands.run(Command::StopRecording);
    for (const Row &row : rows()) {
        if (row.id == id)
            m_commands.run(row.command);
    }
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
