#include "ui/color_chip_row.h"

#include "ui/color_chip.h"
#include "ui/color_library.h"
#include "ui/color_paint.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace tavrel::ui {
namespace {

constexpr int kGap = 2;
constexpr int kGhostRoom = 6;
constexpr int kGhostLift = 4; ///< so that the finger or pointer does not cover it
constexpr qreal kShadowOffset = 1.5;

} // namespace

/// The chip that follows the pointer.
class ColorChipRow::Ghost final : public QWidget
{
public:
    Ghost(const QColor &color, int chipSize, QWidget *window) : QWidget(window), m_color(color)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAttribute(Qt::WA_TranslucentBackground);
        setFocusPolicy(Qt::NoFocus);
        resize(chipSize + kGhostRoom, chipSize + kGhostRoom);
    }

    void follow(const QPoint &globalPoint)
    {
        const QPoint point = parentWidget()->mapFromGlobal(globalPoint);
        move(point - QPoint(width() / 2, height() / 2 + kGhostLift));
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        constexpr qreal kInset = kGhostRoom / 2.0;
        const QRectF chip = QRectF(rect()).adjusted(kInset, kInset, -kInset, -kInset);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, 40));
        painter.drawEllipse(chip.translated(0, kShadowOffset));
        paintChip(painter, chip, m_color);
        paintSelectionRing(painter, rect());
    }

private:
    QColor m_color;
};

ColorChipRow::ColorChipRow(ColorLibrary *library, int chipSize, int columns, AddChip addChip, QWidget *parent)
    : QWidget(parent),
      m_library(library),
      m_theme(lightTheme()),
      m_chipSize(chipSize),
      m_columns(columns),
      m_withAddChip(addChip == AddChip::With)
{
    setObjectName(QStringLiteral("colorChipRow"));
    if (library) {
        connect(library, &ColorLibrary::changed, this, &ColorChipRow::reload);
        connect(library, &QObject::destroyed, this, &ColorChipRow::reload);
    }
    makeChips();
}

ColorChipRow::~ColorChipRow()
{
    delete m_ghost;
}

void ColorChipRow::applyTheme(const Theme &theme)
{
    m_theme = theme;
    for (ColorChip *chip : std::as_const(m_chips))
        chip->applyTheme(theme);
    if (m_addChip)
        m_addChip->applyTheme(theme);
}

void ColorChipRow::setCurrent(const QString &hex)
{
    m_current = ColorLibrary::normalize(hex);
    for (ColorChip *chip : std::as_const(m_chips))
        chip->setSelected(chip->hex() == m_current);
}

void ColorChipRow::reload()
{
    cancelDrag();
    m_pressed.clear();
    const Focus before = focus();
    QList<ColorChip *> old = std::exchange(m_chips, {});
    if (m_addChip)
        old.append(std::exchange(m_addChip, nullptr));
    makeChips();
    giveFocus(before);
    // Later, because it may be one of them whose click or key brought the change.
    for (ColorChip *chip : std::as_const(old)) {
        chip->removeEventFilter(this);
        chip->disconnect(this);
        chip->hide();
        chip->deleteLater();
    }
}

ColorChipRow::Focus ColorChipRow::focus() const
{
    Focus result;
    for (qsizetype i = 0; i < m_chips.size(); ++i) {
        if (m_chips[i]->hasFocus())
            result = {i, m_chips[i]->hex(), m_chips[i]->showsFocus() ? Qt::TabFocusReason : Qt::MouseFocusReason};
    }
    if (m_addChip && m_addChip->hasFocus())
        result = {m_chips.size(), {}, m_addChip->showsFocus() ? Qt::TabFocusReason : Qt::MouseFocusReason};
    return result;
}

void ColorChipRow::giveFocus(const Focus &focus)
{
    if (focus.index < 0)
        return;
    QWidget *next = nullptr;
    for (ColorChip *chip : std::as_const(m_chips)) {
        if (chip->hex() == focus.hex)
            next = chip;
    }
    if (!next && focus.hex.isEmpty() && m_addChip && m_addChip->isEnabled())
        next = m_addChip;
    if (!next && !m_chips.isEmpty())
        next = m_chips[std::min(focus.index, m_chips.size() - 1)];
    if (!next)
        next = m_addChip;
    if (next)
        next->setFocus(focus.reason);
}

void ColorChipRow::makeChips()
{
    const auto make = [this](const QString &hex) {
        auto *chip = new ColorChip(hex, m_chipSize, this);
        chip->applyTheme(m_theme);
        chip->setSelected(!hex.isEmpty() && hex == m_current);
        return chip;
    };
    for (const QString &hex : m_library ? m_library->colors() : QStringList()) {
        ColorChip *chip = make(hex);
        chip->installEventFilter(this);
        connect(chip, &QAbstractButton::clicked, this, [this, hex] { Q_EMIT colorChosen(hex); });
        connect(chip, &ColorChip::removeRequested, this, [this, hex] {
            if (m_library)
                m_library->remove(hex);
        });
        m_chips.append(chip);
    }
    if (m_withAddChip) {
        m_addChip = make({});
        m_addChip->setEnabled(m_library && !m_library->isFull());
        connect(m_addChip, &QAbstractButton::clicked, this, &ColorChipRow::addRequested);
    }
    describe();
    layOut();
    for (ColorChip *chip : std::as_const(m_chips))
        chip->show();
    if (m_addChip)
        m_addChip->show();
}

void ColorChipRow::describe()
{
    for (ColorChip *chip : std::as_const(m_chips))
        chip->setToolTip(tr("%1（拖动调整顺序，按 Delete 移出色板）").arg(chip->hex()));
    if (!m_addChip)
        return;
    m_addChip->setAccessibleName(tr("把当前颜色加进色板"));
    m_addChip->setToolTip(m_addChip->isEnabled() || !m_library
                              ? tr("把当前颜色加进色板")
                              : tr("色板已满（最多 %1 个颜色）").arg(ColorLibrary::kMaxColors));
}

int ColorChipRow::columns() const
{
    const auto cells = static_cast<int>(m_chips.size()) + (m_withAddChip ? 1 : 0);
    return m_columns > 0 ? m_columns : std::max(1, cells);
}

QPoint ColorChipRow::cellPosition(qsizetype index) const
{
    const int pitch = m_chipSize + kGap;
    const int cell = static_cast<int>(index);
    return {cell % columns() * pitch, cell / columns() * pitch};
}

void ColorChipRow::layOut()
{
    // During a drag the others stand as they would after it, and the faded chip fills the gap.
    QList<ColorChip *> order = m_chips;
    if (m_dragSource >= 0 && m_insertion >= 0)
        order.move(m_dragSource, m_insertion > m_dragSource ? m_insertion - 1 : m_insertion);
    if (m_addChip)
        order.append(m_addChip);
    for (qsizetype i = 0; i < order.size(); ++i)
        order[i]->move(cellPosition(i));
    const int pitch = m_chipSize + kGap;
    const int rows = std::max(1, (static_cast<int>(order.size()) + columns() - 1) / columns());
    setFixedSize(columns() * pitch, rows * pitch);
}

qsizetype ColorChipRow::insertionAt(const QPoint &point) const
{
    if (!rect().contains(point))
        return -1;
    const int pitch = m_chipSize + kGap;
    const qsizetype cell = point.y() / pitch * columns() + std::min(point.x() / pitch, columns() - 1);
    const qsizetype place = std::min(cell, m_chips.size() - 1);
    return place > m_dragSource ? place + 1 : place;
}

bool ColorChipRow::eventFilter(QObject *watched, QEvent *event)
{
    auto *chip = qobject_cast<ColorChip *>(watched);
    return chip && dragFilter(chip, event);
}

bool ColorChipRow::dragFilter(ColorChip *chip, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        if (isDragging())
            return true;
        if (mouse->button() == Qt::LeftButton) {
            m_pressed = chip;
            m_pressPoint = mouse->globalPosition().toPoint();
        }
        return false;
    }
    case QEvent::MouseMove: {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        if (m_pressed != chip || !(mouse->buttons() & Qt::LeftButton))
            return isDragging();
        const QPoint point = mouse->globalPosition().toPoint();
        if (!isDragging()) {
            if ((point - m_pressPoint).manhattanLength() < QApplication::startDragDistance())
                return false;
            beginDrag(m_chips.indexOf(chip));
        }
        dragTo(point);
        return true;
    }
    case QEvent::MouseButtonRelease: {
        if (static_cast<QMouseEvent *>(event)->button() != Qt::LeftButton)
            return isDragging();
        m_pressed.clear();
        if (!isDragging())
            return false;
        drop();
        return true;
    }
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
        if (!isDragging())
            return false;
        if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
            m_pressed.clear();
            cancelDrag();
        }
        event->accept();
        return true;
    default:
        return false;
    }
}

void ColorChipRow::beginDrag(qsizetype source)
{
    ColorChip *chip = m_chips.value(source);
    if (!chip)
        return;
    m_dragSource = source;
    chip->setDown(false);
    chip->setFaded(true);
    m_ghost = new Ghost(QColor(chip->hex()), m_chipSize, window());
}

void ColorChipRow::dragTo(const QPoint &point)
{
    if (m_ghost) {
        static_cast<Ghost *>(m_ghost.data())->follow(point);
        m_ghost->show();
        m_ghost->raise();
    }
    const qsizetype insertion = insertionAt(mapFromGlobal(point));
    if (insertion == m_insertion)
        return;
    m_insertion = insertion;
    layOut();
}

void ColorChipRow::drop()
{
    const qsizetype source = m_dragSource;
    const qsizetype insertion = m_insertion;
    cancelDrag();
    if (insertion >= 0 && m_library)
        m_library->move(source, insertion);
}

void ColorChipRow::cancelDrag()
{
    if (!isDragging())
        return;
    m_chips[std::exchange(m_dragSource, -1)]->setFaded(false);
    m_insertion = -1;
    if (m_ghost) {
        // Later, because it may be the window that is hiding its children one by one.
        m_ghost->hide();
        m_ghost->deleteLater();
        m_ghost.clear();
    }
    layOut();
}

void ColorChipRow::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    m_pressed.clear();
    cancelDrag();
}

void ColorChipRow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        describe();
}

} // namespace tavrel::ui
