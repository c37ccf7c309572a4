#pragma once

#include "ui/dialog_services.h"

#include <QLineEdit>

#include <optional>

namespace tavrel::ui {

/// The six digits of a colour. Takes no more than hexadecimal digits; a pasted "#" is left out. While it has the
/// keyboard the global hotkeys are suspended, and none of its keys reaches what is around it but Tab.
class HexEdit final : public QLineEdit
{
    Q_OBJECT

public:
    explicit HexEdit(QWidget *parent);

    /// Shows "#RRGGBB" without its "#".
    void setHex(const QString &hex);

Q_SIGNALS:
    void completed(const QString &hex); ///< the user's change has made it "#RRGGBB"
    void entered();
    void escaped();
    void focusChanged(bool focused);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void leave();

    std::optional<dialogs::OpenDialog> m_typing; ///< resumes the hotkeys also when the edit goes
    bool m_selectAtRelease = false;
};

} // namespace tavrel::ui
