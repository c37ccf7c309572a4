#pragma once

#include <QLabel>

class QTextLayout;

namespace tavrel::ui {

/// Plain text in lines of a fixed width, as high as its lines. Unlike QLabel it breaks a word that is wider than the
/// line, a path or an address for instance, instead of cutting it off.
class WrappedLabel final : public QLabel
{
    Q_OBJECT

public:
    WrappedLabel(int width, QWidget *parent);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    /// Breaks the text into lines; returns their height.
    qreal layOut(QTextLayout &layout, qreal width) const;
};

} // namespace tavrel::ui
