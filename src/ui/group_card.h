#pragma once

#include <QFrame>

class QHBoxLayout;
class QVBoxLayout;

namespace tavrel::ui {

/// A rounded group of rows in a side panel. Its face comes from the studio style sheet.
class GroupCard final : public QFrame
{
    Q_OBJECT

public:
    explicit GroupCard(QWidget *parent = nullptr);

    /// A whole line; lines are parted by hairlines.
    void addRow(QWidget *row);
    /// A label on the left and its control on the right. The label names the control for assistive tools.
    void addRow(const QString &label, QWidget *control);
    [[nodiscard]] QVBoxLayout *content() const { return m_content; }

private:
    void part();

    QVBoxLayout *m_content;
};

} // namespace tavrel::ui
