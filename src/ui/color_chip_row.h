#pragma once

#include "ui/theme.h"

#include <QList>
#include <QPointer>
#include <QWidget>

namespace tavrel::ui {

class ColorChip;
class ColorLibrary;

/// The colours of a library as chips that can be dragged into another order. Follows every change of the library, also
/// in the middle of a drag, which it ends; a library that has gone is an empty one.
class ColorChipRow final : public QWidget
{
    Q_OBJECT

public:
    enum class AddChip { Without, With };

    /// columns  chips side by side; 0 puts all in one row
    ColorChipRow(ColorLibrary *library, int chipSize, int columns, AddChip addChip, QWidget *parent);
    ~ColorChipRow() override;

    void applyTheme(const Theme &theme);
    /// The colour in use ("#RRGGBB"); its chip has a ring.
    void setCurrent(const QString &hex);
    void reload();

    [[nodiscard]] const QList<ColorChip *> &chips() const { return m_chips; } ///< without the one that adds
    [[nodiscard]] ColorChip *addChip() const { return m_addChip; }
    [[nodiscard]] bool isDragging() const { return m_dragSource >= 0; }
    /// Where the chip would go: an insertion point of the library; negative outside of the row and without a drag.
    [[nodiscard]] qsizetype insertionIndex() const { return m_insertion; }
    /// The top left of the chip at `index`, from 0.
    [[nodiscard]] QPoint cellPosition(qsizetype index) const;

Q_SIGNALS:
    void colorChosen(const QString &hex);
    void addRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    class Ghost;
    struct Focus
    {
        qsizetype index = -1; ///< of the chip with the keyboard; the count for the one that adds
        QString hex;
        Qt::FocusReason reason = Qt::OtherFocusReason;
    };

    [[nodiscard]] int columns() const;
    [[nodiscard]] qsizetype insertionAt(const QPoint &point) const;
    [[nodiscard]] Focus focus() const;
    void giveFocus(const Focus &focus);
    void makeChips();
    void layOut();
    void describe();
    bool dragFilter(ColorChip *chip, QEvent *event);
    void beginDrag(qsizetype source);
    void dragTo(const QPoint &point);
    void drop();
    void cancelDrag();

    QPointer<ColorLibrary> m_library;
    Theme m_theme;
    QString m_current;
    int m_chipSize;
    int m_columns;
    bool m_withAddChip;
    QList<ColorChip *> m_chips;
    ColorChip *m_addChip = nullptr;
    QPointer<ColorChip> m_pressed;
    QPoint m_pressPoint;
    qsizetype m_dragSource = -1;
    qsizetype m_insertion = -1;
    QPointer<QWidget> m_ghost;
};

} // namespace tavrel::ui
