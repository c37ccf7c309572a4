#pragma once

#include "ui/theme.h"

#include <QFrame>
#include <QList>
#include <QString>

namespace tavrel::ui {

class GlyphButton;

/// A row of icon buttons of which one is on, on a common ground. The frame is named "attrSegmentTrack"; each button has
/// its key in the property `tavrelSegmentKey`. The arrow keys walk between the buttons.
class SegmentTrack final : public QFrame
{
    Q_OBJECT

public:
    struct Item
    {
        QString key;
        QString glyph; ///< of the attribute set
        QString tip;   ///< also the accessible name
    };

    /// current  key of the button that is on; an unknown one leaves all off
    SegmentTrack(const QList<Item> &items, const QString &current, const Theme &theme, QWidget *parent = nullptr);

    [[nodiscard]] QString current() const;

Q_SIGNALS:
    /// The user has put another button on.
    void chosen(const QString &key);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Theme m_theme;
    QList<GlyphButton *> m_buttons;
};

} // namespace tavrel::ui
