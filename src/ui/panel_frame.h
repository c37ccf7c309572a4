#pragma once

#include <QString>

class QVBoxLayout;
class QWidget;

namespace tavrel::ui {

/// The frame of a side panel: a heading with a hint below it, and room that scrolls. Looks come from the studio style
/// sheet.
struct PanelFrame
{
    QWidget *panel = nullptr;
    QVBoxLayout *content = nullptr; ///< lays out the widget named "panelContent", from the top
};

/// hint  empty for none
[[nodiscard]] PanelFrame makePanel(const QString &title, const QString &hint, QWidget *parent = nullptr);

} // namespace tavrel::ui
