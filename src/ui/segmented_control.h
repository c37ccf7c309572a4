#pragma once

#include "ui/theme.h"

#include <QList>
#include <QVariantAnimation>
#include <QWidget>

namespace tavrel::ui {

/// A few choices side by side, one of which is taken; a thumb glides to it. Tab reaches the control, the arrow keys,
/// Home and End choose. For a screen reader it is a list of tabs.
class SegmentedControl final : public QWidget
{
    Q_OBJECT

public:
    struct Item
    {
        QString text{};
        QString glyph{}; ///< editor or line glyph by name; empty for none
        QString tip{};
    };

    explicit SegmentedControl(const Theme &theme, QWidget *parent = nullptr);

    void setTheme(const Theme &theme);
    /// The choice stays where it is, within the items there are.
    void setItems(const QList<Item> &items);
    [[nodiscard]] const QList<Item> &items() const { return m_items; }
    enum class Motion { Jump, Glide };
    /// Limited to -1 (none) and the last item. Raises nothing.
    void setCurrent(int index, Motion motion = Motion::Jump);
    [[nodiscard]] int current() const { return m_current; }
    /// Where the thumb is shown, in items.
    [[nodiscard]] double animatedIndex() const { return m_animatedIndex; }
    /// The item at a distance from the left edge, the rim before the first one included; -1 for none.
    [[nodiscard]] int indexAt(double x) const;
    [[nodiscard]] QRectF cell(int index) const;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    /// As if the user had chosen it.
    void choose(int index);

Q_SIGNALS:
    void currentChanged(int index); ///< by the user

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void setHovered(int index);
    void announce();
    void paintItem(QPainter &painter, int index) const;
    [[nodiscard]] QFont itemFont(bool isCurrent) const;

    Theme m_theme;
    QList<Item> m_items;
    int m_current = 0;
    int m_hovered = -1;
    double m_animatedIndex = 0;
    QVariantAnimation m_animation;
};

} // namespace tavrel::ui
