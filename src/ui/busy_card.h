#pragma once

#include "ui/theme.h"

#include <QElapsedTimer>
#include <QString>
#include <QTimer>
#include <QWidget>

namespace tavrel::ui {

/// A small card of its own that says what the program is busy with. It takes neither keyboard nor pointer: what it
/// waits for happens elsewhere. GUI thread only.
class BusyCard final : public QWidget
{
    Q_OBJECT

public:
    explicit BusyCard(QWidget *parent = nullptr);

    void setTheme(const Theme &theme);
    void setTitle(const QString &title);
    /// Where what lies behind the card does not show through, its corners are cut off.
    void setMixed(bool isMixed);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void cutCorners();

    Theme m_theme;
    QString m_title;
    bool m_isMixed = true;
    QTimer m_frames;
    QElapsedTimer m_shownFor;
};

} // namespace tavrel::ui
