#include "ui/segment_track.h"

#include "ui/glyph_button.h"

#include <QHBoxLayout>
#include <QPainter>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr int kMargin = 2;
constexpr double kRadius = 9;
constexpr char kKey[] = "tavrelSegmentKey";

} // namespace

SegmentTrack::SegmentTrack(const QList<Item> &items, const QString &current, const Theme &theme, QWidget *parent)
    : QFrame(parent),
      m_theme(theme)
{
    setObjectName(QStringLiteral("attrSegmentTrack"));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    row->setSpacing(kMargin);
    for (const Item &item : items) {
        auto *button = new GlyphButton(item.glyph, item.tip, theme, this);
        button->setProperty(kKey, item.key);
        button->setCheckable(true);
        button->setAutoExclusive(true);
        button->setChecked(item.key == current);
        row->addWidget(button);
        m_buttons.append(button);
    }
    // Connected last: what stands at first is no choice.
    for (GlyphButton *button : std::as_const(m_buttons)) {
        connect(button, &GlyphButton::toggled, this, [this, button](bool on) {
            if (on)
                Q_EMIT chosen(button->property(kKey).toString());
        });
    }
}

QString SegmentTrack::current() const
{
    const auto on =
        std::find_if(m_buttons.begin(), m_buttons.end(), [](const GlyphButton *button) { return button->isChecked(); });
    return on == m_buttons.end() ? QString() : (*on)->property(kKey).toString();
}

void SegmentTrack::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_theme.hoverFill());
    painter.drawRoundedRect(QRectF(rect()), kRadius, kRadius);
}

} // namespace tavrel::ui
