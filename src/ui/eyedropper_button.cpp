#include "ui/eyedropper_button.h"

#include "ui/color_paint.h"
#include "ui/glyph_pen.h"

#include <QKeyEvent>
#include <QPainter>

namespace tavrel::ui {
namespace {

constexpr int kSide = 36;
constexpr int kGlyphSize = 18;
constexpr qreal kRadius = 10;

void paintPipette(QPainter &painter, const QRectF &rect, const QColor &color)
{
    painter.save();
    painter.translate(rect.topLeft());
    painter.scale(rect.width() / GlyphPen::box, rect.height() / GlyphPen::box);
    GlyphPen pen(painter, color);
    pen.stroke(Trace(13.2, 8.8).arc(18, 6, 2.6, 225, 405).to(15.2, 10.8)); // bulb
    pen.line(10.6, 6.4, 17.6, 13.4);
    pen.stroke(Trace(12.2, 8).to(5.4, 14.8).to(4.2, 19.8).to(9.2, 18.6).to(16, 11.8));
    pen.finish();
    painter.restore();
}

} // namespace

EyedropperButton::EyedropperButton(QWidget *parent) : QAbstractButton(parent), m_theme(lightTheme())
{
    setObjectName(QStringLiteral("eyedropperButton"));
    setFixedSize(kSide, kSide);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QAbstractButton::clicked, this, &EyedropperButton::eyedropperRequested);
    describe();
}

void EyedropperButton::describe()
{
    setAccessibleName(tr("取色器"));
    setToolTip(tr("取色：点一下，再点画面上任意位置吸取颜色（Esc 取消）"));
}

void EyedropperButton::applyTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

QSize EyedropperButton::sizeHint() const
{
    return {kSide, kSide};
}

void EyedropperButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isDown() ? m_theme.toolPressedFill() : underMouse() ? m_theme.hoverFill() : m_theme.fieldFill());
    painter.drawRoundedRect(rect(), kRadius, kRadius);
    QRectF glyph(0, 0, kGlyphSize, kGlyphSize);
    glyph.moveCenter(QRectF(rect()).center());
    paintPipette(painter, glyph, m_theme.toolIcon());
    if (m_showsFocus && hasFocus())
        paintFocusRing(painter, rect(), kRadius, m_theme);
}

void EyedropperButton::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void EyedropperButton::focusInEvent(QFocusEvent *event)
{
    m_showsFocus = event->reason() != Qt::MouseFocusReason;
    QAbstractButton::focusInEvent(event);
}

void EyedropperButton::changeEvent(QEvent *event)
{
    QAbstractButton::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        describe();
}

} // namespace tavrel::ui
