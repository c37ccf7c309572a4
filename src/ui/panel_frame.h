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
    QVBoxLayout *content = nullptr; ///< lays out the widget named "panelContent"; ends in a stretch

    /// Puts a widget below those that are there, above the stretch.
    void add(QWidget *widget) const;
};

/// hint  empty for none
[[nodiscard]] PanelFrame makePanel(const QString &title, const QString &hint, QWidget *parent = nullptr);

} // namespace tavrel::ui
