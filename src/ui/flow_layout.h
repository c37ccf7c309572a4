#pragma once

#include <QLayout>
#include <QList>

namespace tavrel::ui {

/// Items one after the other, in as many lines as the width asks for. Each keeps its preferred size; one that is wider
/// than a line is cut to it.
class FlowLayout final : public QLayout
{
    Q_OBJECT

public:
    explicit FlowLayout(int spacing = 6, QWidget *parent = nullptr);
    ~FlowLayout() override;

    void addItem(QLayoutItem *item) override;
    [[nodiscard]] int count() const override;
    [[nodiscard]] QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;
    [[nodiscard]] Qt::Orientations expandingDirections() const override;
    [[nodiscard]] bool hasHeightForWidth() const override;
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;    ///< all in one line
    [[nodiscard]] QSize minimumSize() const override; ///< the largest item
    void setGeometry(const QRect &rect) override;

private:
    enum class Apply { No, Yes };
    int layOut(const QRect &rect, Apply apply) const;

    QList<QLayoutItem *> m_items;
};

} // namespace tavrel::ui
