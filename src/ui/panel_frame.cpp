#include "ui/panel_frame.h"

#include "ui/sidebar_title_label.h"

#include <QScrollArea>
#include <QVBoxLayout>

namespace tavrel::ui {
namespace {

constexpr int kHintGap = 4;
constexpr int kContentGap = 10;

} // namespace

void PanelFrame::add(QWidget *widget) const
{
    content->insertWidget(content->count() - 1, widget);
}

PanelFrame makePanel(const QString &title, const QString &hint, QWidget *parent)
{
    auto *panel = new QWidget(parent);
    auto *all = new QVBoxLayout(panel);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);

    auto *header = new QWidget(panel);
    auto *headings = new QVBoxLayout(header);
    headings->setContentsMargins(18, 16, 18, 8);
    headings->setSpacing(kHintGap);
    headings->addWidget(new SidebarTitleLabel(title, header));
    if (!hint.isEmpty()) {
        auto *words = new QLabel(hint, header);
        words->setProperty("role", QStringLiteral("hint"));
        words->setTextFormat(Qt::PlainText);
        words->setWordWrap(true);
        headings->addWidget(words);
    }
    all->addWidget(header);

    auto *area = new QScrollArea(panel);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto *content = new QWidget;
    content->setObjectName(QStringLiteral("panelContent"));
    auto *rows = new QVBoxLayout(content);
    rows->setContentsMargins(14, 4, 14, 20);
    rows->setSpacing(kContentGap);
    rows->addStretch(1);
    area->setWidget(content);
    all->addWidget(area, 1);
    return {panel, rows};
}

} // namespace tavrel::ui
