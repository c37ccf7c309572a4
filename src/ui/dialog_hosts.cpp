#include "ui/dialog_hosts.h"

#include "ui/paint_helpers.h"

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
    if (!m_translucent)
        return;
    QPainter painter(this);
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
    // Closed by the window manager: the same as the button that Escape would press.
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QCoreApplication::sendEvent(m_card, &escape);
    QWidget::closeEvent(event);
}

DialogSheet::DialogSheet(QWidget *window, DialogCard *card) : QWidget(window), m_card(card)
{
    setObjectName(QStringLiteral("dialogSheet"));
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
    follow();
    raise();
    m_card->show();
    m_card->takeFocus();
    QWidget::showEvent(event);
}

void DialogSheet::paintEvent(QPaintEvent *)
{
    const bool dark = m_card->theme().dark;
    QPainter painter(this);
    painter.fillRect(rect(), QColor(0, 0, 0, dark ? 120 : 80));
    if (m_card->isVisible())
        paintShadow(painter, m_card, QColor(0, 0, 0, dark ? 150 : 70));
}

void DialogSheet::mousePressEvent(QMouseEvent *event)
{
    event->accept(); // the window below is out of reach
}

SheetQueue &SheetQueue::instance()
{
    static SheetQueue queue;
    return queue;
}

int SheetQueue::openCount() const
{
    int count = 0;
    for (const auto &sheets : m_sheets)
        count +=
            static_cast<int>(std::count_if(sheets.begin(), sheets.end(), [](const auto &s) { return !s.isNull(); }));
    return count;
}

void SheetQueue::enqueue(QWidget *window, DialogCard *card)
{
    auto *sheet = new DialogSheet(window, card);
    if (!m_sheets.contains(window))
        connect(window, &QObject::destroyed, this, [this, window] { m_sheets.remove(window); });
    m_sheets[window].append(sheet);
    // Queued, so that the answer's own work, a further dialog for instance, is done before the next sheet shows.
    connect(card, &DialogCard::finished, sheet, [this, sheet, window] {
        sheet->hide();
        sheet->deleteLater();
        m_sheets[window].removeOne(sheet);
        QMetaObject::invokeMethod(
            this,
            [this, guard = QPointer<QWidget>(window)] {
                if (guard)
                    showNext(guard);
            },
            Qt::QueuedConnection);
    });
    showNext(window);
}

void SheetQueue::showNext(QWidget *window)
{
    QList<QPointer<DialogSheet>> &sheets = m_sheets[window];
    sheets.removeAll(nullptr);
    if (!sheets.isEmpty() && !sheets.first()->isVisible())
        sheets.first()->show();
}

} // namespace tavrel::ui::dialogs
