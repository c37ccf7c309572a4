#include "ui/menu_panel.h"

#include "platform/window_controller.h"
#include "ui/dialog_services.h"
#include "ui/menu_row.h"
#include "ui/paint_helpers.h"

#include <QAccessibleWidget>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr int kMargin = 6;
constexpr int kGroupGap = 9;
constexpr double kRadius = 12;
constexpr int kSubmenuOverlap = 4;
constexpr int kRestMs = 140;
constexpr int kScreenEdge = 4;

class MenuAccess final : public QAccessibleWidget
{
public:
    explicit MenuAccess(MenuPanel *menu) : QAccessibleWidget(menu, QAccessible::PopupMenu) {}
};

QAccessibleInterface *accessOf(const QString &, QObject *object)
{
    auto *menu = qobject_cast<MenuPanel *>(object);
    return menu ? new MenuAccess(menu) : nullptr;
}

} // namespace

MenuPanel::MenuPanel(const QList<MenuEntry> &entries, const Theme &theme, QWidget *parent)
    : QWidget(parent, Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint),
      m_theme(theme),
      m_isTranslucent(!dialogs::windowController() || dialogs::windowController()->isCompositing())
{
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(accessOf);
        return true;
    }();
    setObjectName(QStringLiteral("menuPanel"));
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_QuitOnClose, false);
    setAttribute(Qt::WA_TranslucentBackground, m_isTranslucent);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);

    MenuRow::Columns columns;
    for (const MenuEntry &entry : entries) {
        columns.glyphs = columns.glyphs || !entry.glyph.isEmpty();
        columns.marks = columns.marks || entry.isCheckable || !entry.submenu.isEmpty();
    }
    int width = 0;
    for (const MenuEntry &entry : entries) {
        auto *row = new MenuRow(entry, theme, columns, this);
        width = std::max(width, row->sizeHint().width());
        m_rows.append(row);
    }
    int top = kMargin;
    for (int i = 0; i < m_rows.size(); ++i) {
        if (i > 0 && entries[i].startsGroup) {
            m_lines.append(top + kGroupGap / 2);
            top += kGroupGap;
        }
        m_rows[i]->setGeometry(kMargin, top, width, MenuRow::kHeight);
        connect(m_rows[i], &MenuRow::activated, this, [this, i] { choose(i); });
        top += MenuRow::kHeight;
    }
    setFixedSize(width + 2 * kMargin, top + kMargin);
    if (!m_isTranslucent) {
        QPainterPath shape;
        shape.addRoundedRect(QRectF(rect()), kRadius, kRadius);
        setMask(QRegion(shape.toFillPolygon().toPolygon()));
    }
    m_rest.setSingleShot(true);
    m_rest.setInterval(kRestMs);
    connect(&m_rest, &QTimer::timeout, this, [this] { openSubmenu(false); });
}

MenuPanel::~MenuPanel() = default;

void MenuPanel::exec(const QPoint &globalPos)
{
    place(QRect(globalPos, size()), QRect(globalPos, QSize(0, 0)));
    show();
    setFocus(Qt::PopupFocusReason);
}

void MenuPanel::place(const QRect &wanted, const QRect &beside)
{
    const QScreen *display = QGuiApplication::screenAt(beside.center());
    if (!display)
        display = screen();
    const QRect free = display->geometry().adjusted(kScreenEdge, kScreenEdge, -kScreenEdge, -kScreenEdge);
    QPoint corner = wanted.topLeft();
    if (corner.x() + width() > free.left() + free.width())
        corner.setX(m_above ? beside.left() - width() + kSubmenuOverlap : free.left() + free.width() - width());
    if (corner.y() + height() > free.top() + free.height())
        corner.setY(free.top() + free.height() - height());
    move(std::max(corner.x(), free.left()), std::max(corner.y(), free.top()));
}

MenuPanel *MenuPanel::root()
{
    MenuPanel *panel = this;
    while (panel->m_above)
        panel = panel->m_above;
    return panel;
}

MenuPanel *MenuPanel::panelAt(const QPoint &globalPos)
{
    for (MenuPanel *panel = this; panel; panel = panel->m_above) {
        if (panel->frameGeometry().contains(globalPos))
            return panel;
    }
    return nullptr;
}

int MenuPanel::rowAt(const QPoint &point) const
{
    const auto found = std::find_if(m_rows.begin(), m_rows.end(),
                                    [&point](const MenuRow *row) { return row->geometry().contains(point); });
    return found == m_rows.end() ? -1 : static_cast<int>(found - m_rows.begin());
}

void MenuPanel::setCurrent(int index)
{
    if (index >= 0 && !m_rows[index]->isEnabled())
        index = -1;
    if (index == m_current)
        return;
    if (m_current >= 0)
        m_rows[m_current]->setLit(false);
    m_current = index;
    closeSubmenu();
    m_rest.stop();
    if (index < 0)
        return;
    m_rows[index]->setLit(true);
    if (!m_rows[index]->entry().submenu.isEmpty())
        m_rest.start();
}

void MenuPanel::step(int direction)
{
    const int count = static_cast<int>(m_rows.size());
    int index = m_current < 0 && direction < 0 ? count : m_current;
    for (int tries = 0; tries < count; ++tries) {
        index = (index + direction + count) % count;
        if (m_rows[index]->isEnabled()) {
            setCurrent(index);
            return;
        }
    }
}

void MenuPanel::openSubmenu(bool byKey)
{
    m_rest.stop();
    if (m_current < 0 || m_submenu)
        return;
    MenuRow *row = m_rows[m_current];
    if (row->entry().submenu.isEmpty())
        return;
    m_submenu = new MenuPanel(row->entry().submenu, m_theme, this);
    m_submenu->m_above = this;
    const QRect beside(mapToGlobal(QPoint(0, row->y())), QSize(width(), row->height()));
    m_submenu->place(QRect(beside.left() + width() - kSubmenuOverlap, beside.top() - kMargin, m_submenu->width(),
                           m_submenu->height()),
                     beside);
    m_submenu->show();
    m_submenu->setFocus(Qt::PopupFocusReason);
    if (byKey)
        m_submenu->step(1);
}

void MenuPanel::closeSubmenu()
{
    if (m_submenu)
        m_submenu->close();
    m_submenu.clear();
}

void MenuPanel::choose(int index)
{
    const MenuRow *row = m_rows[index];
    if (!row->isEnabled())
        return;
    if (!row->entry().submenu.isEmpty()) {
        setCurrent(index);
        openSubmenu(false);
        return;
    }
    const QString id = row->entry().id;
    MenuPanel *top = root();
    const QPointer<MenuPanel> alive(top);
    top->close(); // with all submenus; they are deleted later
    if (alive)
        Q_EMIT top->chosen(id);
}

bool MenuPanel::event(QEvent *event)
{
    if (event->type() == QEvent::Leave && !m_submenu)
        setCurrent(-1);
    return QWidget::event(event);
}

void MenuPanel::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint global = event->globalPosition().toPoint();
    MenuPanel *panel = panelAt(global);
    if (!panel) {
        setCurrent(-1);
        return;
    }
    const int row = panel->rowAt(panel->mapFromGlobal(global));
    if (row >= 0 || panel == this)
        panel->setCurrent(row);
}

void MenuPanel::mousePressEvent(QMouseEvent *event)
{
    const QPoint global = event->globalPosition().toPoint();
    MenuPanel *panel = panelAt(global);
    if (!panel) {
        root()->close();
        return;
    }
    panel->m_pressed = panel->rowAt(panel->mapFromGlobal(global));
    panel->setCurrent(panel->m_pressed);
}

void MenuPanel::mouseReleaseEvent(QMouseEvent *event)
{
    const QPoint global = event->globalPosition().toPoint();
    MenuPanel *panel = panelAt(global);
    if (!panel)
        return;
    const int row = panel->rowAt(panel->mapFromGlobal(global));
    const int pressed = std::exchange(panel->m_pressed, -1);
    if (row >= 0 && row == pressed)
        panel->choose(row);
}

void MenuPanel::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Backtab:
        step(-1);
        break;
    case Qt::Key_Down:
    case Qt::Key_Tab:
        step(1);
        break;
    case Qt::Key_Home:
        setCurrent(-1);
        step(1);
        break;
    case Qt::Key_End:
        setCurrent(-1);
        step(-1);
        break;
    case Qt::Key_Right:
        openSubmenu(true);
        break;
    case Qt::Key_Left:
        if (m_above)
            m_above->closeSubmenu();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        if (m_current >= 0) {
            if (!m_rows[m_current]->entry().submenu.isEmpty())
                openSubmenu(true);
            else
                choose(m_current);
        }
        break;
    case Qt::Key_Escape:
        if (m_above)
            m_above->closeSubmenu();
        else
            close();
        break;
    default:
        break; // no key means anything to what lies below
    }
}

void MenuPanel::closeEvent(QCloseEvent *event)
{
    closeSubmenu();
    QWidget::closeEvent(event);
    Q_EMIT closed();
}

void MenuPanel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    panelSurface(painter, QRectF(rect()), m_theme);
    painter.setRenderHint(QPainter::Antialiasing, false);
    for (const int y : m_lines)
        painter.fillRect(QRect(2 * kMargin, y, width() - 4 * kMargin, 1), m_theme.separator());
}

} // namespace tavrel::ui
