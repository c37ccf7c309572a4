// The colours of the attribute bar: swatches, the board and the eyedropper.
#include "ui/attribute_bar.h"

#include "annotate/shape_document.h"
#include "ui/color_chip.h"
#include "ui/color_library.h"
#include "ui/color_value.h"

#include <QApplication>
#include <QConicalGradient>
#include <QGridLayout>
#include <QPainter>
#include <QPainterPath>
#include <QToolButton>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr int kOneRow = 12; ///< most chips that stand in one row of the line
constexpr int kLargeChip = 22;
constexpr int kSmallChip = 16; ///< of two rows
constexpr int kChipGap = 2;
constexpr int kWheelButton = 28;
constexpr double kWheel = 18;
constexpr double kWheelHole = 8;

/// Opens the board: a wheel of all hues.
class MoreColorsButton final : public QToolButton
{
public:
    MoreColorsButton(const QString &tip, const Theme &theme, QWidget *parent) : QToolButton(parent), m_theme(theme)
    {
        setObjectName(QStringLiteral("moreColors"));
        setFixedSize(kWheelButton, kWheelButton);
        setFocusPolicy(Qt::TabFocus);
        setCursor(Qt::PointingHandCursor);
        setAttribute(Qt::WA_Hover);
        setToolTip(tip);
        setAccessibleName(tip);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF face = QRectF(rect()).adjusted(1, 1, -1, -1);
        painter.setPen(hasFocus() ? QPen(m_theme.accent(), 1.5) : QPen(Qt::NoPen));
        painter.setBrush(underMouse() || isDown() ? m_theme.hoverFill() : m_theme.transparent());
        painter.drawRoundedRect(face, 7, 7);
        QConicalGradient hues(face.center(), 90);
        for (int i = 0; i <= 6; ++i)
            hues.setColorAt(i / 6.0, QColor::fromHsv(i % 6 * 60, 205, 245));
        painter.setPen(Qt::NoPen);
        QPainterPath ring;
        ring.addEllipse(face.center(), kWheel / 2, kWheel / 2);
        ring.addEllipse(face.center(), kWheelHole / 2, kWheelHole / 2);
        painter.fillPath(ring, hues);
    }

private:
    Theme m_theme;
};

} // namespace

void AttributeBar::addSwatches()
{
    const QStringList &colors = ColorLibrary::instance().colors();
    const int count = static_cast<int>(colors.size());
    const bool isOneRow = !isCompact() || count <= kOneRow;
    const int size = isOneRow ? kLargeChip : kSmallChip;
    const int columns = !isCompact() ? std::max(1, (m_fixedWidth + kChipGap) / (size + kChipGap))
                        : isOneRow   ? std::max(1, count)
                                     : (count + 1) / 2;
    const QString current = hexOf(QColor(now().color));
    if (count > 0) {
        auto *palette = new QWidget(m_content);
        palette->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        auto *grid = new QGridLayout(palette);
        grid->setContentsMargins(0, 0, 0, 0);
        grid->setSpacing(kChipGap);
        for (int i = 0; i < count; ++i) {
            auto *chip = new ColorChip(colors[i], size, palette);
            chip->setObjectName(QStringLiteral("swatch%1").arg(i));
            chip->setFocusPolicy(Qt::TabFocus);
            chip->applyTheme(m_theme);
            chip->setToolTip(colors[i]);
            chip->setSelected(colors[i] == current);
            connect(chip, &ColorChip::clicked, this, [this, hex = colors[i]] { setColor(hex, true); });
            grid->addWidget(chip, i / columns, i % columns);
        }
        addRow({palette});
    }
    auto *more = new MoreColorsButton(tr("更多颜色"), m_theme, m_content);
    connect(more, &QToolButton::clicked, this, &AttributeBar::togglePopup);
    auto *chip = new ColorChip(current, kLargeChip, m_content);
    chip->setObjectName(QStringLiteral("currentColor"));
    chip->setFocusPolicy(Qt::TabFocus);
    chip->applyTheme(m_theme);
    chip->setToolTip(tr("当前颜色"));
    chip->setAccessibleName(tr("当前颜色"));
    connect(chip, &ColorChip::clicked, this, &AttributeBar::togglePopup);
    addRow({more, chip});
}

QRect AttributeBar::popupAnchor() const
{
    const auto *button = m_content->findChild<QWidget *>(QStringLiteral("moreColors"));
    if (!button)
        return geometry();
    return {button->mapTo(window(), QPoint()), button->size()};
}

void AttributeBar::togglePopup()
{
    if (m_popup) {
        closePopup();
        return;
    }
    m_popup = new ColorBoard(window());
    m_popup->applyTheme(m_theme);
    m_popup->setColor(now().color, false);
    connect(m_popup, &ColorBoard::colorChanged, this, [this](const QString &color) { setColor(color, false); });
    connect(m_popup, &ColorBoard::colorCommitted, this, [this](const QString &color) { setColor(color, true); });
    connect(m_popup, &ColorBoard::closeRequested, this, [this] {
        closePopup();
        returnFocus();
    });
    connect(m_popup, &ColorBoard::eyedropperRequested, this, &AttributeBar::startEyedropper);
    Q_EMIT boardOpened(m_popup);
    m_popup->popupAt(popupAnchor());
    qApp->installEventFilter(this);
}

void AttributeBar::closePopup()
{
    if (!m_popup)
        return;
    qApp->removeEventFilter(this);
    // It may be the board's own signal that closes it.
    m_popup->hide();
    m_popup->deleteLater();
    m_popup.clear();
    if (m_eyedropper) {
        m_eyedropper->hide();
        m_eyedropper->deleteLater();
        m_eyedropper.clear();
    }
}

void AttributeBar::followPopup()
{
    if (m_popup && m_popup->isVisible())
        m_popup->popupAt(popupAnchor());
}

void AttributeBar::startEyedropper()
{
    if (!m_eyedropperSource || m_eyedropper)
        return;
    m_popup->hide(); // what it covers can be picked, too
    m_eyedropper = new EyedropperLayer(window(), m_eyedropperSource);
    const auto end = [this] {
        if (m_eyedropper)
            m_eyedropper->deleteLater();
        m_eyedropper.clear();
        if (m_popup)
            m_popup->show();
    };
    connect(m_eyedropper, &EyedropperLayer::picked, this, [this, end](const QColor &color) {
        end();
        if (m_popup)
            m_popup->setColor(hexOf(color), true);
        setColor(m_popup ? m_popup->currentHex() : hexOf(color), true);
    });
    connect(m_eyedropper, &EyedropperLayer::cancelled, this, end);
}

} // namespace tavrel::ui
