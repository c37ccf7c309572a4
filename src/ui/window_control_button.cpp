#include "ui/window_control_button.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace tavrel::ui {
namespace {

constexpr double kArm = 5; ///< half the side of a sign

QString words(const char *source)
{
    return QCoreApplication::translate("WindowChrome", source);
}

} // namespace

WindowControlButton::WindowControlButton(Kind kind, const Theme &theme, QWidget *parent)
    : QAbstractButton(parent),
      m_kind(kind),
      m_theme(theme)
{
    setObjectName(kind == Kind::Minimize   ? QStringLiteral("windowMinimize")
                  : kind == Kind::Maximize ? QStringLiteral("windowMaximize")
                                           : QStringLiteral("windowClose"));
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::ArrowCursor);
    setFixedSize(kWidth, kHeight);
    describe();
}

void WindowControlButton::describe()
{
    QString name;
    switch (m_kind) {
    case Kind::Minimize:
        name = words(QT_TRANSLATE_NOOP("WindowChrome", "最小化"));
        break;
    case Kind::Maximize:
        name = m_restores ? words(QT_TRANSLATE_NOOP("WindowChrome", "还原"))
                          : words(QT_TRANSLATE_NOOP("WindowChrome", "最大化"));
        break;
    case Kind::Close:
        name = words(QT_TRANSLATE_NOOP("WindowChrome", "关闭"));
        break;
    }
    setToolTip(name);
    setAccessibleName(name);
}

void WindowControlButton::setTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

void WindowControlButton::setRestores(bool restores)
{
    if (restores == m_restores)
        return;
    m_restores = restores;
    describe();
    update();
}

QSize WindowControlButton::sizeHint() const
{
    return {kWidth, kHeight};
}

void WindowControlButton::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        describe();
    QAbstractButton::changeEvent(event);
}

void WindowControlButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const bool closes = m_kind == Kind::Close;
    const bool lit = isEnabled() && (underMouse() || isDown());
    if (lit) {
        QColor fill = closes ? destructiveRed : m_theme.hoverFill();
        if (isDown())
            fill = closes ? fill.darker(115) : m_theme.toolPressedFill();
        painter.fillRect(rect(), fill);
    }
    painter.setPen(QPen(!isEnabled()    ? m_theme.studioDisabledText()
                        : lit && closes ? QColor(Qt::white)
                                        : m_theme.studioText(),
                        1, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    paintSign(painter);
}

void WindowControlButton::paintSign(QPainter &painter) const
{
    // Lines of one unit are crisp when they run through the middle of a pixel.
    const double x = std::round(width() / 2.0) + 0.5;
    const double y = std::round(height() / 2.0) + 0.5;
    const QRectF box(x - kArm, y - kArm, 2 * kArm, 2 * kArm);
    switch (m_kind) {
    case Kind::Minimize:
        painter.drawLine(QPointF(x - kArm, y), QPointF(x + kArm, y));
        break;
    case Kind::Maximize:
        if (m_restores) {
            painter.drawRect(box.adjusted(0, 2, -2, 0));
            const QPolygonF behind{box.topLeft() + QPointF(2, 2), box.topLeft() + QPointF(2, 0), box.topRight(),
                                   box.bottomRight() - QPointF(0, 2), box.bottomRight() - QPointF(2, 2)};
            painter.drawPolyline(behind);
        } else {
            painter.drawRect(box);
        }
        break;
    case Kind::Close:
        painter.setRenderHint(QPainter::Antialiasing);
        painter.drawLine(box.topLeft(), box.bottomRight());
        painter.drawLine(box.topRight(), box.bottomLeft());
        break;
    }
}

} // namespace tavrel::ui
