#include "ui/color_board.h"

#include "ui/color_alpha_bar.h"
#include "ui/color_chip_row.h"
#include "ui/color_hue_bar.h"
#include "ui/color_library.h"
#include "ui/color_preview.h"
#include "ui/color_sv_area.h"
#include "ui/eyedropper_button.h"
#include "ui/hex_edit.h"
#include "ui/paint_helpers.h"
#include "ui/wrapped_label.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrel::ui {
namespace {

constexpr int kMargin = 12;
constexpr int kContent = ColorBoard::kWidth - 2 * kMargin;
constexpr int kSvHeight = 150;
constexpr int kHexHeight = 40;
constexpr int kAlphaTextWidth = 38;
constexpr int kChipSize = 20;
constexpr int kChipColumns = 11; ///< the default palette and the chip that adds
constexpr int kDistance = 8;     ///< from the anchor and the window's edges

QString boardStyle(const Theme &theme)
{
    return QStringLiteral(
               "QLabel { background: transparent; color: %2; font-size: 12px; }"
               "QLabel#paletteHeading { color: %1; font-weight: 600; }"
               "QLabel#paletteHint { font-size: 11px; }"
               "QFrame#hexBox { background: %3; border: 1px solid %4; border-radius: 10px; }"
               "QFrame#hexBox[editing=\"true\"] { border: 1px solid %5; }"
               "QLabel#hexHash { font-size: 14px; }"
               "QLineEdit#hexEdit { color: %1; background: transparent; border: none; padding: 0; font-size: 14px; "
               "selection-background-color: %5; }"
               "QPushButton#resetPalette { color: %2; background: transparent; border: 1px solid transparent; "
               "border-radius: 6px; padding: 2px 7px; font-size: 12px; }"
               "QPushButton#resetPalette:hover { background: %6; color: %1; }"
               "QPushButton#resetPalette:pressed { background: %7; }"
               "QPushButton#resetPalette:focus { border: 1px solid %5; }")
        .arg(css(theme.primaryText()), css(theme.secondaryText()), css(theme.fieldSurface()), css(theme.fieldBorder()),
             css(theme.accent()), css(theme.hoverFill()), css(theme.toolPressedFill()));
}

} // namespace

ColorBoard::ColorBoard(QWidget *window, ColorLibrary *library)
    : QFrame(window),
      m_library(library ? library : &ColorLibrary::instance()),
      m_theme(lightTheme()),
      m_baseColor(fallbackColor),
      m_sv(new ColorSvArea(this)),
      m_dropper(new EyedropperButton(this)),
      m_hueBar(new ColorHueBar(this)),
      m_alphaBar(new ColorAlphaBar(this)),
      m_alphaText(new QLabel(this)),
      m_preview(new ColorPreview(this)),
      m_hexBox(new QFrame(this)),
      m_hexHash(new QLabel(QStringLiteral("#"), m_hexBox)),
      m_hexEdit(new HexEdit(m_hexBox)),
      m_heading(new QLabel(this)),
      m_reset(new QPushButton(this)),
      m_row(new ColorChipRow(m_library, kChipSize, kChipColumns, ColorChipRow::AddChip::With, this)),
      m_hint(new WrappedLabel(kContent, this))
{
    setObjectName(QStringLiteral("colorBoard"));
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_NoMousePropagation);
    setFocusPolicy(Qt::ClickFocus);
    setCursor(Qt::ArrowCursor);
    m_alphaText->setObjectName(QStringLiteral("alphaText"));
    m_hexBox->setObjectName(QStringLiteral("hexBox"));
    m_hexHash->setObjectName(QStringLiteral("hexHash"));
    m_heading->setObjectName(QStringLiteral("paletteHeading"));
    m_reset->setObjectName(QStringLiteral("resetPalette"));
    m_hint->setObjectName(QStringLiteral("paletteHint"));
    build();
    connectControls();
    describe();
    applyTheme(m_theme);
    m_hsv = hsvOf(m_baseColor, 0);
    refresh();
    refreshPalette();
    hide();
}

void ColorBoard::build()
{
    m_sv->setFixedSize(kContent, kSvHeight);
    m_alphaText->setFixedWidth(kAlphaTextWidth);
    m_alphaText->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_preview->setFixedSize(kHexHeight, kHexHeight);
    m_hexBox->setFixedHeight(kHexHeight);
    m_reset->setAutoDefault(false);

    auto *alphaLine = new QHBoxLayout;
    alphaLine->setSpacing(2);
    alphaLine->addWidget(m_alphaBar);
    alphaLine->addWidget(m_alphaText);
    auto *bars = new QVBoxLayout;
    bars->setSpacing(4);
    bars->addWidget(m_hueBar);
    bars->addLayout(alphaLine);
    auto *barLine = new QHBoxLayout;
    barLine->setSpacing(8);
    barLine->addWidget(m_dropper);
    barLine->addLayout(bars);

    auto *hexLine = new QHBoxLayout(m_hexBox);
    hexLine->setContentsMargins(12, 0, 8, 0);
    hexLine->setSpacing(4);
    hexLine->addWidget(m_hexHash);
    hexLine->addWidget(m_hexEdit);
    auto *valueLine = new QHBoxLayout;
    valueLine->setSpacing(8);
    valueLine->addWidget(m_preview);
    valueLine->addWidget(m_hexBox);

    auto *headingLine = new QHBoxLayout;
    headingLine->addWidget(m_heading);
    headingLine->addStretch(1);
    headingLine->addWidget(m_reset);

    auto *all = new QVBoxLayout(this);
    all->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    all->setSpacing(10);
    all->addWidget(m_sv);
    all->addLayout(barLine);
    all->addLayout(valueLine);
    all->addLayout(headingLine);
    all->addWidget(m_row);
    all->addWidget(m_hint);
    all->setSizeConstraint(QLayout::SetFixedSize);
}

void ColorBoard::connectControls()
{
    connect(m_sv, &ColorSlider::moved, this, [this] { takeHsv(m_sv->hsv()); });
    connect(m_hueBar, &ColorSlider::moved, this, [this] { takeHsv({m_hueBar->hue(), m_hsv.saturation, m_hsv.value}); });
    connect(m_alphaBar, &ColorSlider::moved, this, [this] {
        m_alpha = m_alphaBar->alpha();
        refresh();
        Q_EMIT colorChanged(currentHex());
    });
    for (ColorSlider *slider : std::initializer_list<ColorSlider *>{m_sv, m_hueBar, m_alphaBar})
        connect(slider, &ColorSlider::committed, this, &ColorBoard::commit);
    connect(m_dropper, &EyedropperButton::eyedropperRequested, this, &ColorBoard::eyedropperRequested);

    connect(m_hexEdit, &HexEdit::completed, this, [this](const QString &hex) {
        setColor(hex, true);
        m_hexChanged = true;
        Q_EMIT colorChanged(currentHex());
    });
    connect(m_hexEdit, &HexEdit::entered, this, [this] {
        m_hexEdit->clearFocus();
        setFocus(Qt::OtherFocusReason);
    });
    connect(m_hexEdit, &HexEdit::escaped, this, &ColorBoard::closeRequested);
    connect(m_hexEdit, &HexEdit::focusChanged, this, [this](bool focused) {
        m_hexBox->setProperty("editing", focused);
        m_hexBox->style()->unpolish(m_hexBox);
        m_hexBox->style()->polish(m_hexBox);
        if (focused)
            return;
        m_hexEdit->setHex(m_baseColor.name().toUpper()); // fewer than six digits are none
        if (std::exchange(m_hexChanged, false))
            commit();
    });

    connect(m_row, &ColorChipRow::colorChosen, this, &ColorBoard::chooseChip);
    connect(m_row, &ColorChipRow::addRequested, this, [this] {
        if (m_library)
            m_library->add(hexOf(m_baseColor));
    });
    connect(m_reset, &QPushButton::clicked, this, [this] {
        if (m_library)
            m_library->reset();
    });
    if (m_library) {
        connect(m_library, &ColorLibrary::changed, this, &ColorBoard::refreshPalette);
        connect(m_library, &QObject::destroyed, this, &ColorBoard::refreshPalette);
    }
}

void ColorBoard::describe()
{
    setAccessibleName(tr("颜色"));
    m_sv->setAccessibleName(tr("饱和度与明度"));
    m_hueBar->setAccessibleName(tr("色相"));
    m_alphaBar->setAccessibleName(tr("透明度"));
    m_alphaBar->setToolTip(tr("透明度"));
    m_alphaText->setToolTip(tr("透明度"));
    m_preview->setAccessibleName(tr("当前颜色"));
    m_hexEdit->setAccessibleName(tr("十六进制颜色"));
    m_heading->setText(tr("色板"));
    m_reset->setText(tr("重置"));
    m_reset->setAccessibleName(tr("重置"));
    m_reset->setToolTip(tr("恢复成默认的 10 个预设色（自己加的、删掉的、排过序的都还原）"));
    m_hint->setText(tr("色板是空的：点 ＋ 加入当前颜色，或点「重置」恢复默认。按住色块拖动可以调整顺序"));
}

void ColorBoard::setColor(const QString &text, bool keepAlpha)
{
    const ColorText read = readColorText(text).value_or(ColorText{fallbackColor, {}});
    const double alpha = std::clamp(read.alpha.value_or(keepAlpha ? m_alpha : 1.0), ColorAlphaBar::kLeastAlpha, 1.0);
    // A host may answer each change with the text that it got, which is coarser than what is kept here.
    if (hexOf(m_baseColor, alpha) != currentHex())
        m_alpha = alpha;
    if (read.color.rgb() != m_baseColor.rgb()) {
        m_hsv = hsvOf(read.color, m_hsv.hue);
        m_baseColor = read.color;
    }
    refresh();
}

QString ColorBoard::currentHex() const
{
    return hexOf(m_baseColor, m_alpha);
}

void ColorBoard::takeHsv(const Hsv &hsv)
{
    m_hsv = hsv;
    m_baseColor = colorOf(hsv);
    refresh();
    Q_EMIT colorChanged(currentHex());
}

void ColorBoard::commit()
{
    place();
    Q_EMIT colorCommitted(currentHex());
}

bool ColorBoard::isDragging() const
{
    return m_sv->isDragging() || m_hueBar->isDragging() || m_alphaBar->isDragging() || m_row->isDragging();
}

void ColorBoard::place()
{
    if (m_anchor && !isDragging())
        move(popupPosition(*m_anchor, size(), parentWidget()->size()));
}

void ColorBoard::chooseChip(const QString &hex)
{
    setColor(hex, true);
    const QPointer<ColorBoard> self(this);
    Q_EMIT colorChanged(currentHex());
    if (self)
        commit();
}

void ColorBoard::refresh()
{
    m_sv->setHsv(m_hsv);
    m_hueBar->setHue(m_hsv.hue);
    m_alphaBar->setColor(m_baseColor);
    m_alphaBar->setAlpha(m_alpha);
    m_alphaText->setText(QStringLiteral("%1%").arg(std::lround(m_alpha * 100)));
    QColor shown = m_baseColor;
    shown.setAlphaF(static_cast<float>(m_alpha));
    m_preview->setColor(shown);
    m_hexEdit->setHex(hexOf(m_baseColor));
    m_row->setCurrent(hexOf(m_baseColor));
}

void ColorBoard::refreshPalette()
{
    m_hint->setVisible(!m_library || m_library->colors().isEmpty());
}

void ColorBoard::popupAt(const QRect &anchor)
{
    m_anchor = anchor;
    if (isVisible() && isDragging())
        return; // not away from under the pointer; the end of the drag moves it
    ensurePolished();
    layout()->activate();
    adjustSize();
    place();
    if (isVisible())
        return; // it has only been moved
    show();
    raise();
}

QPoint ColorBoard::popupPosition(const QRect &anchor, const QSize &board, const QSize &window)
{
    const int left = anchor.x() + anchor.width() / 2 - board.width() / 2;
    const int x = std::max(kDistance, std::min(left, window.width() - board.width() - kDistance));
    int y = anchor.y() + anchor.height() + kDistance;
    if (y + board.height() > window.height() - kDistance)
        y = anchor.y() - board.height() - kDistance;
    if (y < kDistance)
        y = std::max(kDistance, window.height() - board.height() - kDistance);
    return {x, y};
}

void ColorBoard::applyTheme(const Theme &theme)
{
    m_theme = theme;
    setStyleSheet(boardStyle(theme));
    for (ColorSlider *slider : std::initializer_list<ColorSlider *>{m_sv, m_hueBar, m_alphaBar})
        slider->applyTheme(theme);
    m_dropper->applyTheme(theme);
    m_preview->applyTheme(theme);
    m_row->applyTheme(theme);
    update();
}

bool ColorBoard::event(QEvent *event)
{
    // Escape belongs to the board before any shortcut of the window.
    if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QFrame::event(event);
}

void ColorBoard::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    panelSurface(painter, rect(), m_theme);
}

void ColorBoard::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        Q_EMIT closeRequested();
    else
        QFrame::keyPressEvent(event);
}

void ColorBoard::resizeEvent(QResizeEvent *event)
{
    QFrame::resizeEvent(event);
    if (isVisible())
        place();
}

void ColorBoard::showEvent(QShowEvent *event)
{
    QFrame::showEvent(event);
    if (event->spontaneous() || !m_anchor)
        return;
    m_focusBefore = window()->focusWidget();
    setFocus(Qt::PopupFocusReason);
}

void ColorBoard::hideEvent(QHideEvent *event)
{
    QFrame::hideEvent(event);
    QWidget *before = m_focusBefore;
    m_focusBefore.clear();
    QWidget *focus = window()->focusWidget();
    if (!m_anchor || event->spontaneous() || !focus || (focus != this && !isAncestorOf(focus)))
        return;
    if (before)
        before->setFocus(Qt::OtherFocusReason);
    else
        focus->clearFocus(); // else it goes to whatever comes next in the window
}

void ColorBoard::changeEvent(QEvent *event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        describe();
}

bool ColorBoard::focusNextPrevChild(bool next)
{
    if (!isVisible())
        return false;
    if (!m_anchor) // part of something else
        return QFrame::focusNextPrevChild(next);
    // Within the pop-up the keyboard goes round.
    QList<QWidget *> stops;
    for (QWidget *widget : std::initializer_list<QWidget *>{m_sv, m_dropper, m_hueBar, m_alphaBar, m_hexEdit, m_reset})
        stops.append(widget);
    for (QWidget *chip : m_row->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly))
        stops.append(chip);
    stops.removeIf([](const QWidget *stop) { return stop->isHidden() || !stop->isEnabled(); });
    const auto current = std::find_if(stops.begin(), stops.end(), [](const QWidget *stop) { return stop->hasFocus(); });
    qsizetype index = next ? 0 : stops.size() - 1;
    if (current != stops.end())
        index = (current - stops.begin() + (next ? 1 : stops.size() - 1)) % stops.size();
    stops[index]->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

} // namespace tavrel::ui
