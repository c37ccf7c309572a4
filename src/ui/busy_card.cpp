#include "ui/busy_card.h"

#include "ui/paint_helpers.h"

#include <QAccessible>
#include <QBitmap>
#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrel::ui {
namespace {

constexpr int kPadding = 16;
constexpr int kTrackGap = 10;
constexpr int kTrackHeight = 4;
constexpr int kLeastWidth = 220;
constexpr double kRadius = 12;
constexpr int kFrameMs = 33;
constexpr double kSweepMs = 1400; ///< there and back
constexpr double kRunner = 0.3;   ///< share of the track

QFont titleFont(const QWidget &card)
{
    QFont font = card.font();
    font.setPixelSize(13);
    return font;
}

} // namespace

BusyCard::BusyCard(QWidget *parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus |
                          Qt::WindowTransparentForInput | Qt::NoDropShadowWindowHint),
      m_theme(lightTheme())
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(QStringLiteral("Tavrel"));
    m_frames.setInterval(kFrameMs);
    connect(&m_frames, &QTimer::timeout, this, qOverload<>(&QWidget::update));
}

void BusyCard::setTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

void BusyCard::setTitle(const QString &title)
{
    m_title = title;
    setAccessibleName(title);
    adjustSize();
    update();
}

void BusyCard::setMixed(bool isMixed)
{
    m_isMixed = isMixed;
    cutCorners();
}

QSize BusyCard::sizeHint() const
{
    const QFontMetrics metrics(titleFont(*this));
    return {std::max(kLeastWidth, metrics.horizontalAdvance(m_title) + 2 * kPadding),
            2 * kPadding + metrics.height() + kTrackGap + kTrackHeight};
}

void BusyCard::cutCorners()
{
    if (m_isMixed) {
        clearMask();
        return;
    }
    QBitmap shape(size());
    shape.clear();
    QPainter painter(&shape);
    painter.setBrush(Qt::color1);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
    painter.end();
    setMask(shape);
}

void BusyCard::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    cutCorners();
}

void BusyCard::showEvent(QShowEvent *event)
{
    m_shownFor.start();
    m_frames.start();
    QAccessibleEvent told(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&told);
    QWidget::showEvent(event);
}

void BusyCard::hideEvent(QHideEvent *event)
{
    m_frames.stop();
    QWidget::hideEvent(event);
}

void BusyCard::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!m_isMixed)
        painter.fillRect(rect(), m_theme.panelSurface());
    panelSurface(painter, QRectF(rect()), m_theme);
    const QFont font = titleFont(*this);
    painter.setFont(font);
    painter.setPen(m_theme.primaryText());
    const QRectF inner = QRectF(rect()).adjusted(kPadding, kPadding, -kPadding, -kPadding);
    painter.drawText(inner, Qt::AlignLeft | Qt::AlignTop, m_title);

    const QRectF track(inner.left(), inner.bottom() - kTrackHeight, inner.width(), kTrackHeight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_theme.separator());
    painter.drawRoundedRect(track, kTrackHeight / 2.0, kTrackHeight / 2.0);
    const double phase = std::fmod(static_cast<double>(m_shownFor.elapsed()), kSweepMs) / kSweepMs;
    const double place = 0.5 - 0.5 * std::cos(phase * 2 * M_PI);
    QRectF runner = track;
    runner.setWidth(track.width() * kRunner);
    runner.moveLeft(track.left() + (track.width() - runner.width()) * place);
    painter.setBrush(m_theme.accent());
    painter.drawRoundedRect(runner, kTrackHeight / 2.0, kTrackHeight / 2.0);
}

} // namespace tavrel::ui
