#pragma once

#include "annotate/tool_type.h"
#include "ui/theme.h"

#include <QToolButton>

namespace tavrel::ui {

/// A button of the overlay's toolbars: a glyph, with its text below when labels are shown. It carries its tool in the
/// property `tavrelTool` and the width for its text in `tavrelTextWidth`. It takes no focus.
class ToolbarButton final : public QToolButton
{
    Q_OBJECT

public:
    static constexpr int kPlainSide = 30;      ///< width and height without labels
    static constexpr int kLabelledHeight = 44; ///< height with labels

    ToolbarButton(ToolType tool, QWidget *parent);

    void setTheme(const Theme &theme);
    /// Its text; with labels hidden it is the tool tip. The accessible name in any case.
    void setLabel(const QString &text);
    void setShowLabel(bool show);
    /// As narrow as it can be read, for a row that has little room.
    void setTight(bool tight);
    /// A glyph by name in place of the tool's; such a button shows no text and is as narrow as its glyph.
    void setGlyph(const QString &name);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void updateSize();
    [[nodiscard]] QFont labelFont() const;

    Theme m_theme;
    ToolType m_tool;
    QString m_glyph;
    bool m_showLabel = true;
    bool m_isTight = false;
};

} // namespace tavrel::ui
