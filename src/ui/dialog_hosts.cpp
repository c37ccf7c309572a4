#include "ui/dialog_hosts.h"

#include "ui/dialog_services.h"
#include "ui/paint_helpers.h"
#include "ui/window_chrome.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace tavrel::ui::dialogs {
namespace {

constexpr QPoint kCardOffset(28, 24);
constexpr QSize kShadowRoom(56, 52);
constexpr int kLeastTop = 20;

void paintShadow(QPainter &painter, const QWidget *card, const QColor &color)
{
    softShadow(painter, QRectF(card->geometry()), 14, 26, 8, color);
}

} // namespace

FloatingDialog::FloatingDialog(DialogCard *card, bool translucent)
    : QWidget(nullptr, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      m_card(card),
      m_translucent(translucent)
{
    setObjectName(QStringLiteral("floatingDialog"));
    setAttribute(Qt::WA_TranslucentBackground, translucent);
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(card->accessibleName().isEmpty() ? QStringLiteral("Tavrel") : card->accessibleName());
    setAccessibleName(windowTitle());
    card->setParent(this);
    card->move(translucent ? kCardOffset : QPoint(0, 0));
    card->installEventFilter(this);
    card->ensurePolished();
    card->adjustSize();
    card->show();
    fitToCard();
    connect(card, &DialogCard::finished, this, &QWidget::close);
}

void FloatingDialog::fitToCard()
{
    setFixedSize(m_card->size() + (m_translucent ? kShadowRoom : QSize(0, 0)));
    if (!m_translucent) {
        QPainterPath shape;
        shape.addRoundedRect(QRectF(rect()), DialogCard::kRadius, DialogCard::kRadius);
        setMask(QRegion(shape.toFillPolygon().toPolygon()));
    }
    if (!m_placed)
        moveToPlace();
}

void FloatingDialog::moveToPlace()
{
    const QScreen *display = QGuiApplication::screenAt(QCursor::pos());
    if (!display)
        display = QGuiApplication::primaryScreen();
    if (!display)
        return;
    const QRect free = display->availableGeometry();
    move(free.left() + (free.width() - width()) / 2, free.top() + static_cast<int>((free.height() - height()) * 0.38));
}

bool FloatingDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize)
        fitToCard();
    else if (event->type() == QEvent::LayoutRequest)
        m_card->adjustSize();
    return QWidget::eventFilter(watched, event);
}

void FloatingDialog::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (!m_translucent) {
        painter.fillRect(rect(), m_card->theme().cardSurface()); // behind the card's smoothed corners
        return;
    }
    paintShadow(painter, m_card, m_card->theme().dark ? QColor(0, 0, 0, 150) : QColor(15, 23, 42, 52));
}

void FloatingDialog::mousePressEvent(QMouseEvent *event)
{
    m_placed = true;
    if (event->button() == Qt::LeftButton && windowHandle())
        windowHandle()->startSystemMove();
}

void FloatingDialog::closeEvent(QCloseEvent *event)
{
    m_card->dismiss(); // closed by the window manager
    QWidget::closeEvent(event);
}

DialogSheet::DialogSheet(QWidget *window, DialogCard *card) : QWidget(window), m_card(card)
{
    setObjectName(QStringLiteral("dialogSheet"));
    setAttribute(Qt::WA_NoMousePropagation);
    card->setParent(this);
    card->installEventFilter(this);
    window->installEventFilter(this);
    hide();
}

QPoint DialogSheet::cardPosition(const QSize &sheet, const QSize &card)
{
    return {(sheet.width() - card.width()) / 2,
            std::max(static_cast<int>((sheet.height() - card.height()) * 0.38), kLeastTop)};
}

void DialogSheet::follow()
{
    setGeometry(parentWidget()->rect());
    m_card->adjustSize();
    m_card->move(cardPosition(size(), m_card->size()));
    update();
}

bool DialogSheet::eventFilter(QObject *watched, QEvent *event)
{
    const bool windowResized = watched == parent() && event->type() == QEvent::Resize;
    const bool cardChanged = watched == m_card && event->type() == QEvent::LayoutRequest;
    if (isVisible() && (windowResized || cardChanged))
        follow();
    return QWidget::eventFilter(watched, event);
}

void DialogSheet::showEvent(QShowEvent *event)
{
    if (!event->spontaneous())
        m_focusBefore = window()->focusWidget();
    follow();
    raise();
    if (WindowChrome *chrome = WindowChrome::of(window()))
        chrome->addCover(this);
    m_card->show();
    m_card->takeFocus();
    QWidget::showEvent(event);
}

bool DialogSheet::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        // What lies below the dialog can be looked at by moving the window aside.
        if (WindowChrome *chrome = WindowChrome::of(window());
            chrome && chrome->moveBy(*static_cast<QMouseEvent *>(event)))
            return true;
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void DialogSheet::paintEvent(QPaintEvent *)
{
    const bool dark = m_card->theme().dark;
    QPainter painter(this);
    painter.fillRect(rect(), QColor(0, 0, 0, dark ? 120 : 80));
    if (m_card->isVisible())
        paintShadow(painter, m_card, QColor(0, 0, 0, dark ? 150 : 70));
}

void DialogSheet::end()
{
    hide();
    if (m_focusBefore)
        m_focusBefore->setFocus(Qt::OtherFocusReason);
    else if (QWidget *next = window()->focusWidget())
        next->clearFocus(); // hiding had passed the keyboard on to whatever comes next
    deleteLater();
}

SheetQueue &SheetQueue::instance()
{
    static SheetQueue queue;
    return queue;
}

void SheetQueue::enqueue(QWidget *window, DialogCard *card)
{
    auto *sheet = new DialogSheet(window, card);
    new CloseWatch(
        window, [card] { card->dismiss(); }, sheet);
    if (m_sheets.isEmpty())
        QCoreApplication::instance()->installEventFilter(this);
    m_sheets[window].append(sheet);
    connect(sheet, &QObject::destroyed, this, [this, sheet, window] { remove(sheet, window); });
    connect(card, &DialogCard::finished, sheet, [this, sheet, window] {
        remove(sheet, window);
        sheet->end();
    });
    showNext(window);
}

void SheetQueue::showNext(const QWidget *window)
{
    const QList<DialogSheet *> sheets = m_sheets.value(window);
    if (!sheets.isEmpty() && sheets.first()->isHidden())
        sheets.first()->show();
}

void SheetQueue::remove(const DialogSheet *sheet, const QWidget *window)
{
    const auto sheets = m_sheets.find(window);
    if (sheets == m_sheets.end())
        return;
    sheets->removeIf([sheet](const DialogSheet *other) { return other == sheet; });
    if (!sheets->isEmpty()) {
        // Queued, so that the answer's own work is done before the next sheet shows.
        QMetaObject::invokeMethod(
            this, [this, window] { showNext(window); }, Qt::QueuedConnection);
        return;
    }
    m_sheets.erase(sheets);
    if (m_sheets.isEmpty() && QCoreApplication::instance())
        QCoreApplication::instance()->removeEventFilter(this);
}

DialogSheet *SheetQueue::shownSheet(const QWidget *window) const
{
    const QList<DialogSheet *> sheets = m_sheets.value(window);
    return sheets.isEmpty() || sheets.first()->isHidden() ? nullptr : sheets.first();
}

bool SheetQueue::eventFilter(QObject *watched, QEvent *event)
{
    const QEvent::Type type = event->type();
    const bool isKey = type == QEvent::KeyPress || type == QEvent::KeyRelease || type == QEvent::ShortcutOverride;
    const bool isDrop = type == QEvent::DragEnter || type == QEvent::DragMove || type == QEvent::Drop;
    if ((!isKey && !isDrop && type != QEvent::FocusIn) || !watched->isWidgetType())
        return false;
    auto *widget = static_cast<QWidget *>(watched);
    DialogSheet *sheet = shownSheet(widget->window());
    if (!sheet || widget == sheet->card() || sheet->card()->isAncestorOf(widget))
        return false;
    if (isDrop) {
        event->ignore();
        return true;
    }
    if (isKey) {
        QCoreApplication::sendEvent(sheet->card(), event);
        return true;
    }
    // The window may set its focus at any time, or get it by a click; queued, because it is still being moved.
    QMetaObject::invokeMethod(
        sheet, [sheet] { sheet->card()->takeFocus(); }, Qt::QueuedConnection);
    return false;
}

} // namespace tavrel::ui::dialogs
