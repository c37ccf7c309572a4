#pragma once

#include <QLabel>

namespace tavrel::ui {

/// The heading of a side panel: one line in the role "title", cut with an ellipsis where the panel is too narrow; the
/// tool tip then has the whole of it. Plain text.
class SidebarTitleLabel final : public QLabel
{
    Q_OBJECT

public:
    explicit SidebarTitleLabel(const QString &title, QWidget *parent = nullptr);

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
};

} // namespace tavrel::ui
