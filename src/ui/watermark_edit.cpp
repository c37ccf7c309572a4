#include "ui/watermark_edit.h"

#include <QCoreApplication>
#include <QKeyEvent>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr int kLongest = 200;
constexpr QLatin1String kOpen("{{");
constexpr QLatin1String kClose("}}");

} // namespace

std::optional<TextStretch> braceBlockAt(const QString &text, int cursor)
{
    if (cursor <= 0)
        return std::nullopt;
    const auto start = text.lastIndexOf(kOpen, cursor - 1);
    if (start < 0)
        return std::nullopt;
    const auto close = text.indexOf(kClose, start + kOpen.size());
    if (close < 0 || cursor > close + kClose.size())
        return std::nullopt;
    return TextStretch{static_cast<int>(start), static_cast<int>(close + kClose.size() - start)};
}

WatermarkEdit::WatermarkEdit(QWidget *parent) : QLineEdit(parent)
{
    setObjectName(QStringLiteral("watermarkEdit"));
    setMaxLength(kLongest);
    setPlaceholderText(QCoreApplication::translate("tavrel::ui::AttributeBar", "水印文字，点右侧时钟插入时间"));
    setAccessibleName(QCoreApplication::translate("tavrel::ui::AttributeBar", "水印文字"));
}

void WatermarkEdit::insertPattern(const QString &pattern)
{
    const QString block = kOpen + pattern + kClose;
    if (text().size() - selectedText().size() + block.size() <= maxLength()) // half a block would be worse than none
        insert(block);
}

void WatermarkEdit::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Backspace && event->modifiers() == Qt::NoModifier && !hasSelectedText()) {
        if (const auto block = braceBlockAt(text(), cursorPosition())) {
            setSelection(block->start, block->length);
            del(); // an edit that undo takes back in one step
            return;
        }
    }
    QLineEdit::keyPressEvent(event);
}

} // namespace tavrel::ui
