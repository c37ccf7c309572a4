#include "overlay/overlay_panels.h"

#include "overlay/panel_placement.h"
#include "overlay/tool_guide_bubble.h"
#include "overlay/toolbar_widget.h"
#include "ui/attribute_bar.h"
#include "ui/tool_tips.h"
#include "ui/toolbar_config_dialog.h"
#include "ui/toolbar_layout.h"

#include <array>

namespace tavrel::ui {
namespace {

constexpr int kBarMargin = 4; ///< between the attribute bar and the sides of the overlay

} // namespace

OverlayPanels::OverlayPanels(QWidget *overlay, ShapeDocument &document, const SettingsConfig &config,
                             const Theme &theme)
    : QObject(overlay),
      m_overlay(overlay),
      m_document(document),
      m_config(config),
      m_theme(theme)
{}

void OverlayPanels::prepare()
{
    if (m_toolbar)
        return;
    m_toolbar = new ToolbarWidget(m_overlay);
    m_toolbar->hide();
    m_toolbar->setTheme(m_theme);
    m_toolbar->setShowLabels(m_config.showToolbarText);
    m_toolbar->setConfig(parseToolbarLayout(m_config.toolbarConfig));
    connect(m_toolbar, &ToolbarWidget::toolSelected, this, &OverlayPanels::toolChosen);
    connect(m_toolbar, &ToolbarWidget::actionTriggered, this, &OverlayPanels::actionChosen);
    connect(m_toolbar, &ToolbarWidget::layoutChanged, this, [this] {
        if (m_toolbar->isExpanded())
            dismissGuide();
        place();
        Q_EMIT placed();
    });
    connect(m_toolbar, &ToolbarWidget::configRequested, this, [this] {
        dismissGuide();
        openConfig();
    });
    connect(m_toolbar, &ToolbarWidget::dragRequested, this, [this](const QPoint &topLeft) {
        moveToolbar(topLeft);
        Q_EMIT placed();
    });
    prepareAttributeBar();
}

void OverlayPanels::prepareAttributeBar()
{
    m_attributeBar = new AttributeBar(&m_document, m_overlay);
    m_attributeBar->hide();
    m_barTips = new ToolTips(m_attributeBar);
    m_barTips->setTheme(m_theme);
    m_attributeBar->setTheme(m_theme);
    m_attributeBar->setWheelReversed(m_config.wheelZoomReversed);
    m_attributeBar->setEyedropperSource(m_eyedropperSource);
    connect(m_attributeBar, &AttributeBar::toolVariantChanged, this, &OverlayPanels::toolChosen);
    connect(m_attributeBar, &AttributeBar::attributesChanged, this, &OverlayPanels::attributesChanged);
    connect(m_attributeBar, &AttributeBar::previewChanged, this, &OverlayPanels::attributesChanged);
    connect(m_attributeBar, &AttributeBar::boardOpened, m_barTips, &ToolTips::watchAll);
    connect(m_attributeBar, &AttributeBar::rebuilt, this, [this] {
        m_barTips->leave();
        const QList<QWidget *> controls = m_attributeBar->findChildren<QWidget *>();
        for (QWidget *control : controls) {
            if (!control->toolTip().isEmpty())
                m_barTips->watch(control);
        }
        place();
        Q_EMIT placed();
    });
}

void OverlayPanels::setConfig(const SettingsConfig &config)
{
    m_config = config;
    if (m_attributeBar)
        m_attributeBar->setWheelReversed(config.wheelZoomReversed);
    if (m_toolbar) {
        m_toolbar->setShowLabels(config.showToolbarText);
        m_toolbar->setConfig(parseToolbarLayout(config.toolbarConfig));
    }
    place();
}

void OverlayPanels::setTheme(const Theme &theme)
{
    m_theme = theme;
    if (m_toolbar)
        m_toolbar->setTheme(theme);
    if (m_attributeBar) {
        m_barTips->setTheme(theme);
        m_attributeBar->setTheme(theme);
    }
    if (m_guide)
        m_guide->setTheme(theme);
    if (m_configDialog)
        m_configDialog->setTheme(theme);
}

void OverlayPanels::show(const State &state)
{
    m_state = state;
    if (state.isShown)
        prepare();
    if (m_toolbar) {
        m_toolbar->setAbsent(state.absent);
        m_toolbar->setHistoryState(state.canUndo, state.canRedo);
        // May expand the toolbar, which places it.
        m_toolbar->setCurrentTool(state.tool);
        m_attributeBar->setTool(state.isShown ? state.tool : ToolType::None);
    }
    place();
}

void OverlayPanels::moveToolbar(const QPoint &position)
{
    m_position = position;
    place();
}

bool OverlayPanels::cover(const QRectF &area) const
{
    const std::array<const QWidget *, 3> panels{m_toolbar, m_attributeBar, m_guide};
    for (const QWidget *panel : panels) {
        if (panel && !panel->isHidden() && area.intersects(QRectF(panel->geometry())))
            return true;
    }
    return false;
}

void OverlayPanels::place()
{
    const bool showsToolbar = m_toolbar && m_state.isShown;
    const bool showsBar = showsToolbar && m_state.tool != ToolType::None;
    if (showsToolbar) {
        m_toolbar->setRoom(m_overlay->width() - 2 * kPanelEdge);
        m_toolbar->adjustSize();
        m_attributeBar->setMaximumWidth(m_overlay->width() - 2 * kBarMargin);
        m_attributeBar->adjustSize();
        // Room for the bar is kept while it is hidden: the toolbar must not jump away from a click on a tool.
        const PanelPlacement place =
            placePanels(m_state.selection, m_overlay->size(), m_toolbar->size(), m_attributeBar->size(), m_position);
        if (m_position)
            m_position = place.toolbar;
        m_toolbar->move(place.toolbar);
        if (showsBar)
            m_attributeBar->move(place.attributeBar);
    }
    if (m_toolbar) {
        m_toolbar->setVisible(showsToolbar);
        m_attributeBar->setVisible(showsBar);
    }
    placeGuide();
}

void OverlayPanels::placeGuide()
{
    const bool isConfiguring = m_configDialog && !m_configDialog->isHidden();
    const bool shows = !m_config.toolGuideShown && m_toolbar && !m_toolbar->isHidden() && m_toolbar->hasHiddenTools() &&
                       !m_toolbar->isExpanded() && !isConfiguring;
    if (!shows) {
        if (m_guide)
            m_guide->hide();
        return;
    }
    if (!m_guide) {
        m_guide = new ToolGuideBubble(m_overlay);
        m_guide->setTheme(m_theme);
        connect(m_guide, &ToolGuideBubble::dismissed, this, [this] {
            dismissGuide();
            Q_EMIT placed();
        });
    }
    m_guide->setTools(m_toolbar->hiddenTools());
    m_guide->pointAt(m_toolbar->expandCentre(), m_toolbar->geometry(),
                     m_attributeBar->isHidden() ? QRect() : m_attributeBar->geometry());
    m_guide->show();
    m_guide->raise();
}

void OverlayPanels::dismissGuide()
{
    if (m_config.toolGuideShown)
        return;
    m_config.toolGuideShown = true;
    placeGuide();
    Q_EMIT guideDismissed();
}

void OverlayPanels::openConfig()
{
    if (!m_configDialog) {
        m_configDialog = new ToolbarConfigDialog(m_overlay);
        connect(m_configDialog, &ToolbarConfigDialog::configChanged, this, &OverlayPanels::takeConfig);
        connect(m_configDialog, &ToolbarConfigDialog::closeRequested, this, [this] {
            m_configDialog->hide();
            place();
            Q_EMIT keyboardReturned();
        });
    }
    m_configDialog->open(m_theme, m_config.toolbarConfig);
    placeGuide();
}

void OverlayPanels::takeConfig(const QString &json)
{
    m_config.toolbarConfig = json;
    m_toolbar->setConfig(parseToolbarLayout(json));
    place();
    Q_EMIT placed();
    Q_EMIT configChanged(json);
}

} // namespace tavrel::ui
