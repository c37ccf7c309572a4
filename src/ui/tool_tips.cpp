#include "ui/tool_tips.h"

#include <QEvent>
#include <QFontMetrics>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr int kGap = 6;        ///< to what the tip tells about
constexpr int kEdge = 4;       ///< to the edges of the host
constexpr int kMaxWidth = 280; ///< of the text; a longer one wraps
constexpr QMargins kPadding{9, 5, 9, 5};
constexpr int kWrapping = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextWordWrap;

/// The tip itself. The pointer does not notice it.
class Tip final : public QWidget
{
public:
    Tip(QWidget *host, const Theme &theme, const QString &text) : QWidget(host), m_theme(theme), m_text(text)
    {
        setObjectName(QStringLiteral("toolTip"));
        setAttribute(Qt::WA_TransparentForMouseEvents);
        QFont small = font();
        small.setPixelSize(12);
        setFont(small);
        const QSize textSize =
            QFontMetrics(small).boundingRect(QRect(0, 0, kMaxWidth, QWIDGETSIZE_MAX), kWrapping, text).size();
        resize(textSize.grownBy(kPadding));
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(m_theme.cardBorder());
        painter.setBrush(m_theme.cardSurface());
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
        painter.setPen(m_theme.primaryText());
        painter.drawText(rect().marginsRemoved(kPadding), kWrapping, m_text);
    }

private:
    Theme m_theme;
    QString m_text;
};

/// What lies above the branch that a widget belongs to: a bubble, a bar below the toolbar.
QRegion panelsAbove(const QWidget *target, const QWidget *host)
{
    QRegion panels;
    bool isAbove = false;
    for (const QObject *child : host->children()) {
        const auto *panel = qobject_cast<const QWidget *>(child);
        if (!panel || panel->isWindow())
            continue;
        if (isAbove && panel->isVisible())
            panels += panel->geometry();
        isAbove |= panel == target || panel->isAncestorOf(target);
    }
    return panels;
}

int within(int value, int size, int room)
{
    return std::max(std::min(value, room - size - kEdge), std::min(kEdge, std::max(room - size, 0)));
}

} // namespace

QPoint placeTip(const QRect &anchor, const QSize &tip, const QSize &host, const QRegion &readable)
{
    const int x = within(anchor.center().x() - tip.width() / 2, tip.width(), host.width());
    const int below = anchor.top() + anchor.height() + kGap;
    const int above = anchor.top() - kGap - tip.height();
    const auto covers = [&](int y) { return readable.intersects(QRect(QPoint(x, y), tip)); };
    const bool fitsBelow = below + tip.height() <= host.height() - kEdge;
    const bool fitsAbove = above >= kEdge;
    const bool isBelow = fitsBelow ? !covers(below) || !fitsAbove || covers(above) : !fitsAbove;
    return {x, within(isBelow ? below : above, tip.height(), host.height())};
}

ToolTips::ToolTips(QObject *parent) : QObject(parent), m_theme(lightTheme())
{
    m_wait.setSingleShot(true);
    m_awake.setSingleShot(true);
    connect(&m_wait, &QTimer::timeout, this, &ToolTips::show);
}

ToolTips::~ToolTips()
{
    delete m_tip;
}

void ToolTips::setTheme(const Theme &theme)
{
    m_theme = theme;
    leave();
}

void ToolTips::watch(QWidget *target)
{
    target->installEventFilter(this);
}

void ToolTips::watchAll(QWidget *root)
{
    watch(root);
    const QObjectList &children = root->children();
    for (QObject *child : children) {
        if (auto *widget = qobject_cast<QWidget *>(child))
            watchAll(widget);
    }
}

void ToolTips::enter(QWidget *target, const QRect &part, const QString &text)
{
    if (target == m_target && part == m_part && text == m_text)
        return;
    leave();
    if (text.isEmpty())
        return;
    m_target = target;
    m_part = part;
    m_text = text;
    if (m_awake.isActive())
        show();
    else
        m_wait.start(target->style()->styleHint(QStyle::SH_ToolTip_WakeUpDelay, nullptr, target));
}

void ToolTips::leave()
{
    m_wait.stop();
    hide();
    m_target = nullptr;
    m_part = {};
    m_text.clear();
}

QString ToolTips::shownText() const
{
    return m_tip ? m_text : QString();
}

void ToolTips::show()
{
    if (!m_target || !m_target->isVisible())
        return;
    QWidget *host = m_target->window();
    const QRect anchor(m_target->mapTo(host, m_part.topLeft()), m_part.size());
    const QRegion readable = panelsAbove(m_target, host);
    m_tip = new Tip(host, m_theme, m_text);
    m_tip->move(placeTip(anchor, m_tip->size(), host->size(), readable));
    m_tip->show();
    m_tip->raise();
}

void ToolTips::hide()
{
    if (!m_tip)
        return;
    // Later: the host may be walking its children, hiding one after the other.
    m_tip->hide();
    m_tip->deleteLater();
    m_tip.clear();
    if (m_target)
        m_awake.start(m_target->style()->styleHint(QStyle::SH_ToolTip_FallAsleepDelay, nullptr, m_target));
}

bool ToolTips::eventFilter(QObject *watched, QEvent *event)
{
    auto *target = qobject_cast<QWidget *>(watched);
    switch (event->type()) {
    case QEvent::Enter:
        if (!target->toolTip().isEmpty()) // else it is a part of something that may have one
            enter(target, target->rect(), target->toolTip());
        break;
    case QEvent::ChildPolished:
        if (auto *child = qobject_cast<QWidget *>(static_cast<QChildEvent *>(event)->child()))
            watchAll(child);
        break;
    case QEvent::Leave:
    case QEvent::Hide:
        if (target == m_target)
            leave();
        break;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
        leave();
        m_awake.stop();
        break;
    case QEvent::ToolTip:
        return true; // not as a window as well
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace tavrel::ui
