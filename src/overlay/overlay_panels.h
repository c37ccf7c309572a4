#pragma once

#include "annotate/tool_type.h"
#include "settings/settings_config.h"
#include "ui/eyedropper_layer.h"
#include "ui/theme.h"

#include <QObject>
#include <QPoint>
#include <QRectF>
#include <QSet>
#include <QWidget>

#include <optional>

namespace tavrel {
class ShapeDocument;
}

namespace tavrel::ui {

class AttributeBar;
class ToolTips;
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
        QSet<ToolType> absent; ///< tools and actions that nobody takes here
    };

    /// document  whose attributes the bar sets; has to outlive the panels' use
    OverlayPanels(QWidget *overlay, ShapeDocument &document, const SettingsConfig &config, const Theme &theme);

    void setConfig(const SettingsConfig &config);
    void setTheme(const Theme &theme);
    /// Where the eyedropper finds its colours; to be set before the panels are shown.
    void setEyedropperSource(EyedropperLayer::Source source) { m_eyedropperSource = std::move(source); }
    /// Makes toolbar and attribute bar ahead of the first selection, so that they are there at once.
    void prepare();

    void show(const State &state);
    /// Puts the toolbar somewhere else until forgetPosition().
    void moveToolbar(const QPoint &position);
    void forgetPosition() { m_position.reset(); }
    /// Whether a shown panel meets an area of the overlay.
    [[nodiscard]] bool cover(const QRectF &area) const;
    [[nodiscard]] ToolbarWidget *toolbar() const { return m_toolbar; }
    /// Shows while a tool is active.
    [[nodiscard]] AttributeBar *attributeBar() const { return m_attributeBar; }

Q_SIGNALS:
    void toolChosen(tavrel::ToolType tool);
    void actionChosen(tavrel::ToolType action);
    void attributesChanged(); ///< of the document, for good or while a value is dragged
    void configChanged(const QString &json);
    void guideDismissed();
    void placed();           ///< panels have moved without show() being called
    void keyboardReturned(); ///< the editor that had the keyboard is closed

private:
    void prepareAttributeBar();
    void place();
    void placeGuide();
    void dismissGuide();
    void openConfig();
    void takeConfig(const QString &json);

    QWidget *m_overlay;
    ShapeDocument &m_document;
    SettingsConfig m_config;
    Theme m_theme;
    State m_state;
    std::optional<QPoint> m_position; ///< where the user has dragged the toolbar
    ToolbarWidget *m_toolbar = nullptr;
    EyedropperLayer::Source m_eyedropperSource;
    AttributeBar *m_attributeBar = nullptr;
    ToolTips *m_barTips = nullptr;
    ToolGuideBubble *m_guide = nullptr;
    ToolbarConfigDialog *m_configDialog = nullptr;
};

} // namespace tavrel::ui
