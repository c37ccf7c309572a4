#pragma once

#include <QLabel>
#include <QTextLayout>

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
    /// The height of the lines, from the first one, that are whole within `most`.
    [[nodiscard]] int heightOfWholeLines(int most) const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    /// The text in lines. Kept until text, font, width or direction change: a long text takes milliseconds, and layouts
    /// ask for its size many times.
    const QTextLayout &lines(qreal width) const;

    mutable QTextLayout m_lines;
    mutable qreal m_width = -1;
};

} // namespace tavrel::ui
