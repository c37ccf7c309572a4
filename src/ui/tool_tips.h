#pragma once

#include "ui/theme.h"

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QRegion>
#include <QTimer>
#include <QWidget>

namespace tavrel::ui {

/// Where a tip of this size goes beside what it tells about: below it, else above, always inside the host with some
/// room around where the host is large enough. What should stay readable is covered only if it lies on both sides.
/// All in the host's coordinates.
[[nodiscard]] QPoint placeTip(const QRect &anchor, const QSize &tip, const QSize &host, const QRegion &readable = {});

/// Shows tool tips as children of the window they belong to. A window of its own could end up below an overlay that
/// stands above all windows without a window manager.
///
/// Delays are the ones of the style: a first tip waits, the next one comes at once. GUI thread only.
class ToolTips final : public QObject
{
    Q_OBJECT

public:
    explicit ToolTips(QObject *parent);
    ~ToolTips() override;

    void setTheme(const Theme &theme);
    /// Shows the widget's own `toolTip` while the pointer rests on it, in place of the usual window.
    void watch(QWidget *target);
    /// The same for everything in it, also for what it gets later.
    void watchAll(QWidget *root);
    /// For parts of a widget: the pointer has come to this part. An empty text is the same as `leave`.
    void enter(QWidget *target, const QRect &part, const QString &text);
    void leave();
    /// The text that shows now, empty when none does.
    [[nodiscard]] QString shownText() const;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void show();
    void hide();

    Theme m_theme;
    QTimer m_wait;
    QTimer m_awake; ///< the next tip comes at once
    QPointer<QWidget> m_target;
    QRect m_part;
    QString m_text;
    QPointer<QWidget> m_tip;
};

} // namespace tavrel::ui
