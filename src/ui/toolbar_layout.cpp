#include "ui/toolbar_layout.h"

#include "base/json_read.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace tavrel::ui {
namespace {

struct ButtonText
{
    ToolType tool;
    const char *text;
};

constexpr ButtonText kTexts[] = {
    {ToolType::Rect, QT_TRANSLATE_NOOP("ToolbarWidget", "形状")},
    {ToolType::Arrow, QT_TRANSLATE_NOOP("ToolbarWidget", "线条")},
    {ToolType::Pen, QT_TRANSLATE_NOOP("ToolbarWidget", "画笔")},
    {ToolType::Marker, QT_TRANSLATE_NOOP("ToolbarWidget", "马克笔")},
    {ToolType::Eraser, QT_TRANSLATE_NOOP("ToolbarWidget", "橡皮")},
    {ToolType::SmartErase, QT_TRANSLATE_NOOP("ToolbarWidget", "智能擦除")},
    {ToolType::Spotlight, QT_TRANSLATE_NOOP("ToolbarWidget", "聚光灯")},
    {ToolType::Magnifier, QT_TRANSLATE_NOOP("ToolbarWidget", "放大镜")},
    {ToolType::Watermark, QT_TRANSLATE_NOOP("ToolbarWidget", "水印")},
    {ToolType::Mosaic, QT_TRANSLATE_NOOP("ToolbarWidget", "马赛克")},
    {ToolType::Text, QT_TRANSLATE_NOOP("ToolbarWidget", "文字")},
    {ToolType::Sequence, QT_TRANSLATE_NOOP("ToolbarWidget", "序号")},
    {ToolType::Ocr, QT_TRANSLATE_NOOP("ToolbarWidget", "OCR")},
    {ToolType::Record, QT_TRANSLATE_NOOP("ToolbarWidget", "录制")},
    {ToolType::LongScreenshot, QT_TRANSLATE_NOOP("ToolbarWidget", "长截图")},
    {ToolType::Undo, QT_TRANSLATE_NOOP("ToolbarWidget", "撤销")},
    {ToolType::Redo, QT_TRANSLATE_NOOP("ToolbarWidget", "重做")},
    {ToolType::Cancel, QT_TRANSLATE_NOOP("ToolbarWidget", "取消")},
    {ToolType::Pin, QT_TRANSLATE_NOOP("ToolbarWidget", "贴图")},
    {ToolType::Cloud, QT_TRANSLATE_NOOP("ToolbarWidget", "上传")},
    {ToolType::Save, QT_TRANSLATE_NOOP("ToolbarWidget", "保存")},
    {ToolType::Copy, QT_TRANSLATE_NOOP("ToolbarWidget", "复制")},
};

ToolbarLayout::const_iterator find(const ToolbarLayout &layout, ToolType tool)
{
    return std::find_if(layout.begin(), layout.end(), [tool](const ToolbarItem &item) { return item.tool == tool; });
}

bool contains(const ToolbarLayout &layout, ToolType tool)
{
    return find(layout, tool) != layout.end();
}

/// What the user sees of a layout: first the visible tools, then the others.
ToolbarLayout asShown(const ToolbarLayout &layout)
{
    ToolbarLayout shown = layout;
    std::stable_partition(shown.begin(), shown.end(), [](const ToolbarItem &item) { return item.visible; });
    return shown;
}

} // namespace

const ToolbarLayout &defaultToolbarLayout()
{
    static const ToolbarLayout layout{
        {ToolType::Rect, true},       {ToolType::Arrow, true},      {ToolType::Pen, true},
        {ToolType::Marker, true},     {ToolType::Eraser, true},     {ToolType::SmartErase, false},
        {ToolType::Spotlight, false}, {ToolType::Magnifier, false}, {ToolType::Watermark, false},
        {ToolType::Mosaic, true},     {ToolType::Text, true},       {ToolType::Sequence, true},
        {ToolType::Ocr, true},        {ToolType::Record, true},     {ToolType::LongScreenshot, true},
    };
    return layout;
}

ToolbarLayout wholeToolbarLayout(const ToolbarLayout &layout)
{
    ToolbarLayout whole;
    for (const ToolbarItem &item : layout) {
        if (contains(defaultToolbarLayout(), item.tool) && !contains(whole, item.tool))
            whole.append(item);
    }
    for (const ToolbarItem &item : defaultToolbarLayout()) {
        if (!contains(whole, item.tool))
            whole.append(item);
    }
    return whole;
}

ToolbarLayout parseToolbarLayout(const QString &text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (!document.isArray())
        return defaultToolbarLayout();
    ToolbarLayout layout;
    const QJsonArray array = document.array();
    for (const QJsonValue &value : array) {
        const QJsonObject object = value.toObject();
        layout.append({toolTypeFromName(readString(object, QStringLiteral("id"))),
                       readBool(object, QStringLiteral("visible"), true)});
    }
    return wholeToolbarLayout(layout);
}

QString toolbarLayoutJson(const ToolbarLayout &layout)
{
    if (layout == defaultToolbarLayout())
        return {};
    QJsonArray array;
    for (const ToolbarItem &item : layout) {
        array.append(
            QJsonObject{{QStringLiteral("id"), toolTypeName(item.tool)}, {QStringLiteral("visible"), item.visible}});
    }
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

ToolbarLayout withToolHidden(ToolbarLayout layout, ToolType tool)
{
    for (ToolbarItem &item : layout) {
        if (item.tool == tool)
            item.visible = false;
    }
    return layout;
}

ToolbarLayout withToolShown(const ToolbarLayout &layout, ToolType tool, ToolType before)
{
    if (tool == before || !contains(layout, tool))
        return layout;
    ToolbarLayout moved = layout;
    moved.removeIf([tool](const ToolbarItem &item) { return item.tool == tool; });
    auto place = find(moved, before);
    if (place == moved.cend()) {
        place =
            std::find_if(moved.crbegin(), moved.crend(), [](const ToolbarItem &item) { return item.visible; }).base();
    }
    moved.insert(place, {tool, true});
    // A tool that was dropped beside itself has only changed its place among the hidden ones, which nobody sees.
    return asShown(moved) == asShown(layout) ? layout : moved;
}

bool isToolbarAction(ToolType tool)
{
    return tool == ToolType::Ocr || tool == ToolType::Record || tool == ToolType::LongScreenshot ||
           (!contains(defaultToolbarLayout(), tool) && !toolbarText(tool).isEmpty());
}

QString toolbarText(ToolType tool)
{
    for (const ButtonText &entry : kTexts) {
        if (entry.tool == tool)
            return QCoreApplication::translate("ToolbarWidget", entry.text);
    }
    return {};
}

QStringList hiddenToolTexts(const ToolbarLayout &layout)
{
    QStringList texts;
    for (const ToolbarItem &item : layout) {
        if (!item.visible)
            texts.append(toolbarText(item.tool));
    }
    return texts;
}

} // namespace tavrel::ui
