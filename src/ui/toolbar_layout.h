#pragma once

#include "annotate/tool_type.h"

#include <QList>
#include <QStringList>

namespace tavrel::ui {

/// A tool of the toolbar; the ones that are not visible stand behind its arrow.
struct ToolbarItem
{
    ToolType tool = ToolType::None;
    bool visible = true;

    friend bool operator==(const ToolbarItem &, const ToolbarItem &) = default;
};

/// The tools of the toolbar in display order. A whole layout holds each tool of the default one exactly once.
using ToolbarLayout = QList<ToolbarItem>;

[[nodiscard]] const ToolbarLayout &defaultToolbarLayout();

/// The layout of a stored text: a JSON array of objects with `id` and `visible`. Unknown and repeated ids are dropped,
/// missing tools come last. Blank and broken texts give the default.
[[nodiscard]] ToolbarLayout parseToolbarLayout(const QString &text);
/// The text to store: compact JSON, empty for the default layout.
[[nodiscard]] QString toolbarLayoutJson(const ToolbarLayout &layout);
/// The same with the tools that do not belong or come again left out, and the missing ones appended.
[[nodiscard]] ToolbarLayout wholeToolbarLayout(const ToolbarLayout &layout);

/// The layout with this tool behind the arrow; it keeps its place in the order.
[[nodiscard]] ToolbarLayout withToolHidden(ToolbarLayout layout, ToolType tool);
/// The layout with this tool visible before another one, or after the last visible one for `None`. The layout itself
/// when that shows nothing new.
[[nodiscard]] ToolbarLayout withToolShown(const ToolbarLayout &layout, ToolType tool, ToolType before);

/// Whether the toolbar's button does something at once, in place of choosing a tool to draw with.
[[nodiscard]] bool isToolbarAction(ToolType tool);
/// What the button of a tool or action is called; empty for those without a button.
[[nodiscard]] QString toolbarText(ToolType tool);
[[nodiscard]] QStringList hiddenToolTexts(const ToolbarLayout &layout);

} // namespace tavrel::ui
