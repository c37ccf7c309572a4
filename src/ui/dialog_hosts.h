#pragma once

#include "ui/dialog_card.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>

namespace tavrel::ui::dialogs {

/// A top-level window around a card, for when no window of the program is there to hold it.
class FloatingDialog final : public QWidget
{
    Q_OBJECT

public:
    /// Takes the card. Without `translucent` there is no shadow and the window is cut to the card's shape, because its
    /// empty parts would be black.
    FloatingDialog(DialogCard *card, bool translucent);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void fitToCard();
    void moveToPlace();

    DialogCard *m_card;
    bool m_translucent;
    bool m_placed = false; ///< by the user
};

/// Covers a window and shows a card on it. Nothing that is done with the pointer on it reaches the window; only its
/// chrome, where it has one, still moves it.
class DialogSheet final : public QWidget
{
    Q_OBJECT

public:
    /// Takes the card; the sheet is a child of `window`.
    DialogSheet(QWidget *window, DialogCard *card);

    [[nodiscard]] DialogCard *card() const { return m_card; }
    /// Where a card of this size goes on a sheet of that size: in the middle, above the centre, 20 from the top at
    /// least.
    [[nodiscard]] static QPoint cardPosition(const QSize &sheet, const QSize &card);
    /// Leaves the screen; the keyboard goes back to where it was before the sheet, the sheet is deleted later.
    void end();

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void follow();

    DialogCard *m_card;
    QPointer<QWidget> m_focusBefore;
};

/// Lets the sheets of one window show one after the other, and keeps keyboard and drops away from the rest of the
/// window meanwhile.
class SheetQueue final : public QObject
{
    Q_OBJECT

public:
    static SheetQueue &instance();

    /// Shows the card on the window as soon as the sheets before it have ended.
    void enqueue(QWidget *window, DialogCard *card);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] DialogSheet *shownSheet(const QWidget *window) const;
    void showNext(const QWidget *window);
    void remove(const DialogSheet *sheet, const QWidget *window);

    QHash<const QWidget *, QList<DialogSheet *>> m_sheets;
};

} // namespace tavrel::ui::dialogs
