#pragma once

#include "annotate/tool_type.h"
#include "settings/settings_config.h"
#include "ui/theme.h"

#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QRectF>
#include <QWidget>

#include <optional>

namespace tavrel::ui {

class ToolbarConfigDialog;
class ToolbarWidget;
class ToolGuideBubble;

/// The panels that stand over the frozen picture beside a selection: toolbar, attribute bar, the bubble that points to
/// hidden tools, and the editor of the toolbar. It makes them when they are first needed, keeps them in step with the
/// overlay and puts them in their places. GUI thread only.
class OverlayPanels final : public QObject
{
    Q_OBJECT

public:
    /// What the panels have to show.
    struct State
    {
        QRectF selection; ///< overlay coordinates
        bool isShown = false;
        ToolType tool = ToolType::None;
        bool canUndo = false;
        bool canRedo = false;
    };

    OverlayPanels(QWidget *overlay, const SettingsConfig &config);

    void setConfig(const SettingsConfig &config);
    /// The overlay becomes its parent. It shows while a tool is active.
    void setAttributeBar(QWidget *bar);
    /// Makes the toolbar ahead of the first selection, so that it is there at once.
    void prepare();

    void show(const State &state);
    /// Puts the toolbar somewhere else until forgetPosition().
    void moveToolbar(const QPoint &position);
    void forgetPosition() { m_position.reset(); }
    /// Whether a shown panel meets an area of the overlay.
    [[nodiscard]] bool cover(const QRectF &area) const;
    [[nodiscard]] ToolbarWidget *toolbar() const { return m_toolbar; }

Q_SIGNALS:
    void toolChosen(tavrel::ToolType tool);
    void actionChosen(tavrel::ToolType action);
    void configChanged(const QString &json);
    void guideDismissed();
    void placed();           ///< panels have moved without show() being called
    void keyboardReturned(); ///< the editor that had the keyboard is closed

private:
    void setTheme(const Theme &theme);
    void place();
    void placeGuide();
    void dismissGuide();
    void openConfig();
    void takeConfig(const QString &json);

    QWidget *m_overlay;
    SettingsConfig m_config;
    Theme m_theme;
    State m_state;
    std::optional<QPoint> m_position; ///< where the user has dragged the toolbar
    ToolbarWidget *m_toolbar = nullptr;
    QPointer<QWidget> m_attributeBar;
    ToolGuideBubble *m_guide = nullptr;
    ToolbarConfigDialog *m_configDialog = nullptr;
};

} // namespace tavrel::ui
