#include "ui/group_card.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace tavrel::ui {
namespace {

constexpr int kRowHeight = 36;

} // namespace

GroupCard::GroupCard(QWidget *parent) : QFrame(parent), m_content(new QVBoxLayout(this))
{
    setObjectName(QStringLiteral("groupCard"));
    m_content->setContentsMargins(12, 4, 12, 4);
    m_content->setSpacing(0);
}

void GroupCard::part()
{
    if (m_content->isEmpty())
        return;
    auto *line = new QFrame(this);
    line->setProperty("role", QStringLiteral("hairline"));
    line->setFixedHeight(1);
    m_content->addWidget(line);
}

void GroupCard::addRow(QWidget *row)
{
    part();
    m_content->addWidget(row);
}

void GroupCard::addRow(const QString &label, QWidget *control)
{
    auto *row = new QWidget(this);
    row->setMinimumHeight(kRowHeight);
    auto *line = new QHBoxLayout(row);
    line->setContentsMargins(0, 4, 0, 4);
    line->setSpacing(12);
    auto *text = new QLabel(label, row);
    text->setProperty("role", QStringLiteral("body"));
    text->setBuddy(control);
    if (control->accessibleName().isEmpty())
        control->setAccessibleName(label);
    line->addWidget(text, 1);
    line->addWidget(control, 0, Qt::AlignVCenter);
    addRow(row);
}

} // namespace tavrel::ui
