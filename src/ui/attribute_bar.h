#pragma once

#include "annotate/shape_attributes.h"
#include "annotate/tool_type.h"
#include "ui/color_board.h"
#include "ui/eyedropper_layer.h"
#include "ui/menu_panel.h"
#include "ui/segment_track.h"
#include "ui/theme.h"

#include <QFrame>
#include <QPointer>

#include <functional>

class QBoxLayout;
class QLineEdit;

namespace tavrel {
class ShapeDocument;
}

namespace tavrel::ui {

/// Shows what the chosen tool can change. It works on a ShapeDocument directly, so a change goes to the tool and to a
/// selected shape of a fitting class at once.
///
/// Without a fixed width it is one line on a panel of its own, for an overlay; with one its controls are rows, for a
/// side panel. Controls hold no state: they are made anew from the document when the tool or a value changes, but never
/// while a signal of theirs is on its way; then it happens in the next turn of the event loop.
///
/// Line edits in it keep the keyboard to themselves; Escape and Return give it back to the window. GUI thread only.
/// Budget for making the controls anew: 16 ms; bench_overlay_attributes shows it.
class AttributeBar final : public QFrame
{
    Q_OBJECT

public:
    /// document    has to outlive the bar
    /// fixedWidth  0 for one line
    explicit AttributeBar(ShapeDocument *document, QWidget *parent = nullptr, int fixedWidth = 0);
    ~AttributeBar() override;

    void setTheme(const Theme &theme);
    /// `None` empties the bar.
    void setTool(ToolType tool);
    [[nodiscard]] ToolType tool() const { return m_tool; }
    void setFixedBarWidth(int width);
    /// Takes the values of the document up again.
    void refresh();

    /// The user's choice of direction, on top of the system's.
    void setWheelReversed(bool reversed) { m_isWheelReversed = reversed; }
    /// Where the eyedropper takes its colours from; without it the board has none.
    void setEyedropperSource(EyedropperLayer::Source source) { m_eyedropperSource = std::move(source); }

Q_SIGNALS:
    void toolVariantChanged(tavrel::ToolType tool);
    void attributesChanged();
    void previewChanged();            ///< a value while it is dragged; nothing is committed yet
    void rebuilt();                   ///< all controls are new; the size may be another one
    void boardOpened(QWidget *board); ///< a child of the window, with colours to choose; about to be shown

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    /// What the controls show; another one makes them out of date.
    struct Shown
    {
        ShapeAttributes attributes;
        int sequenceValue = 0;
        bool snaps = false;

        friend bool operator==(const Shown &, const Shown &) = default;
    };
    using Change = std::function<void(ShapeDocument &)>;
    enum class After { Keep, Rebuild }; ///< whether other controls depend on what changed

    [[nodiscard]] bool isCompact() const { return m_fixedWidth == 0; }
    [[nodiscard]] Shown shownNow() const;
    [[nodiscard]] const ShapeAttributes &now() const;
    void apply(const Change &change, After after);
    void preview(const Change &change);
    void changeVariant(ToolType tool);
    void setFormat();
    void rebuild();
    void rebuildSoon();
    void fill();

    void add(QWidget *widget);
    void addSeparator();
    /// Controls that share a row also where controls are rows.
    void addRow(const QList<QWidget *> &widgets);
    void addSegment(const QList<SegmentTrack::Item> &items, const QString &current,
                    const std::function<void(const QString &key)> &chosen);
    void addShapeSegment(bool isRound, const std::function<void(ShapeDocument &, bool round)> &change);
    void addThickness();
    struct ValueRange
    {
        int least;
        int most;
    };
    QWidget *addValue(const QString &key, const QString &label, ValueRange range, double value,
                      const std::function<void(ShapeDocument &, int value, bool isFinal)> &change);
    void addHint(const QString &text);
    void addFontSize(ValueRange range);
    void addSwatches();

    void fillBoxTool();
    void fillArrow();
    void fillMarker();
    void fillSequence();
    void fillMosaic();
    void fillErase();
    void fillSpotlight();
    void fillWatermark();
    void fillMagnifier();
    void fillText();

    void setColor(const QString &color, bool isFinal);
    void guard(QLineEdit *edit);
    void returnFocus();
    /// A menu below a control of this name.
    void popUpMenu(const QString &owner, const QList<MenuEntry> &entries,
                   const std::function<void(const QString &id)> &chosen);
    void insertTimePattern();
    void chooseWatermarkMode();
    void togglePopup();
    void closePopup();
    /// Keeps the board beside its button.
    void followPopup();
    [[nodiscard]] QRect popupAnchor() const;
    void startEyedropper();

    ShapeDocument *m_document;
    Theme m_theme;
    ToolType m_tool = ToolType::None;
    int m_fixedWidth;
    bool m_isWheelReversed = false;
    EyedropperLayer::Source m_eyedropperSource;
    QPointer<ColorBoard> m_popup;
    QPointer<EyedropperLayer> m_eyedropper;

    QWidget *m_content = nullptr;
    QBoxLayout *m_line = nullptr; ///< of the content
    Shown m_shown;
    int m_changing = 0; ///< signals of the controls that are being handled
    bool m_isRebuildDue = false;
};

} // namespace tavrel::ui
