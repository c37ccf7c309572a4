#pragma once

#include "annotate/tool_type.h"
#include "ui/studio_button.h"

namespace tavrel::ui {

/// A tool in a grid of tools: its icon above its name, checkable. Carries the tool in the property "tavrelTool", too.
class ToolTile final : public StudioButton
{
    Q_OBJECT

public:
    static constexpr int kSide = 62;

    ToolTile(ToolType tool, const QString &name, const Theme &theme, QWidget *parent = nullptr);

    [[nodiscard]] ToolType tool() const { return m_tool; }
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    ToolType m_tool;
};

} // namespace tavrel::ui
