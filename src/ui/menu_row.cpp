#include "ui/menu_row.h"

#include "ui/glyphs.h"

#include <QAccessibleWidget>
#include <QFontMetrics>
#include <QPainter>

namespace tavrel::ui {
namespace {

constexpr int kFontSize = 13;
constexpr int kSide = 10; ///< between text and the ends of the row
constexpr int kGlyph = 16;
constexpr int kGap = 9;
constexpr int kShortcutGap = 24;
constexpr int kNarrowest = 120;
constexpr double kRadius = 6;

class MenuRowAccess final : public QAccessibleWidget
{
public:
    explicit MenuRowAccess(MenuRow *row) : QAccessibleWidget(row, QAccessible::MenuItem), m_row(*row) {}

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = m_row.entry().isCheckable;
        state.checked = m_row.entry().isChecked;
        state.focused = m_row.isLit();
        state.hasPopup = !m_row.entry().submenu.isEmpty();
        return state;
    }
    QString text(QAccessible::Text which) const override
    {
        return which == QAccessible::Accelerator ? m_row.entry().shortcut : QAccessibleWidget::text(which);
    }
    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString &action) override
    {
        if (action == pressAction() && m_row.isEnabled())
            Q_EMIT m_row.activated();
    }

private:
    MenuRow &m_row;
};

QAccessibleInterface *accessOf(const QString &, QObject *object)
{
    auto *row = qobject_cast<MenuRow *>(object);
    return row ? new MenuRowAccess(row) : nullptr;
}

void paintEntryGlyph(QPainter &painter, const QString &name, const QRect &box, const QColor &color)
{
    static const QStringList attributes = attributeGlyphNames();
    if (attributes.contains(name))
        paintAttributeGlyph(painter, name, box, color);
    else
        paintGlyph(painter, name, box, color);
}

} // namespace

MenuRow::MenuRow(const MenuEntry &entry, const Theme &theme, Columns columns, QWidget *parent)
    : QWidget(parent),
      m_entry(entry),
      m_theme(theme),
      m_columns(columns)
{
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(accessOf);
        return true;
    }();
    // The panel sees the pointer also beside its rows, and in its submenus.
    setAttribute(Qt::WA_TransparentForMouseEvents);
    QFont plain = font();
    plain.setPixelSize(kFontSize);
    setFont(plain);
    setEnabled(entry.isEnabled);
    setAccessibleName(entry.label);
    setFixedHeight(kHeight);
}

void MenuRow::setLit(bool lit)
{
    if (lit == m_isLit)
        return;
    m_isLit = lit;
    update();
    if (lit) {
        QAccessibleEvent focus(this, QAccessible::Focus);
        QAccessible::updateAccessibility(&focus);
    }
}

QSize MenuRow::sizeHint() const
{
    const QFontMetrics metrics(font());
    int width = 2 * kSide + metrics.horizontalAdvance(m_entry.label);
    if (m_columns.glyphs)
        width += kGlyph + kGap;
    if (!m_entry.shortcut.isEmpty())
        width += kShortcutGap + metrics.horizontalAdvance(m_entry.shortcut);
    if (m_columns.marks)
        width += kGlyph + kGap;
    return {std::max(width, kNarrowest), kHeight};
}

void MenuRow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_isLit) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_theme.hoverFill());
        painter.drawRoundedRect(QRectF(rect()), kRadius, kRadius);
    }
    const auto withAlpha = [this](QColor color) {
        if (!isEnabled())
            color.setAlphaF(color.alphaF() * 0.4F);
        return color;
    };
    const QColor text = withAlpha(m_theme.primaryText());
    const QColor quiet = withAlpha(m_theme.secondaryText());
    const int glyphTop = (height() - kGlyph) / 2;
    QRect room = rect().adjusted(kSide, 0, -kSide, 0);
    if (m_columns.glyphs) {
        if (!m_entry.glyph.isEmpty())
            paintEntryGlyph(painter, m_entry.glyph, {room.left(), glyphTop, kGlyph, kGlyph}, text);
        room.setLeft(room.left() + kGlyph + kGap);
    }
    if (m_columns.marks) {
        const QRect box(room.right() + 1 - kGlyph, glyphTop, kGlyph, kGlyph);
        if (!m_entry.submenu.isEmpty())
            paintGlyph(painter, QStringLiteral("ed_chevronRight"), box, quiet);
        else if (m_entry.isChecked)
            paintGlyph(painter, QStringLiteral("ed_check"), box, withAlpha(m_theme.accent()));
        room.setRight(room.right() - kGlyph - kGap);
    }
    painter.setFont(font());
    painter.setPen(quiet);
    painter.drawText(room, Qt::AlignRight | Qt::AlignVCenter, m_entry.shortcut);
    painter.setPen(text);
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter, m_entry.label);
}

} // namespace tavrel::ui
