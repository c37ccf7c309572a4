#include "ui/attribute_bar.h"

#include "annotate/shape_document.h"
#include "ui/color_library.h"
#include "ui/segment_track.h"
#include "ui/thickness_capsule.h"
#include "ui/value_control.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <utility>

namespace tavrel::ui {
namespace {

constexpr QMargins kPanelMargins{12, 8, 12, 8};
constexpr int kSpacing = 8;
constexpr int kRowSpacing = 10;
constexpr double kPanelRadius = 12;
constexpr int kPanelHeight = 52; ///< one for all tools, so that the panels beside it stay where they are
constexpr QSize kSeparator{1, 22};
constexpr char kFocusKey[] = "tavrelFocusKey";

QString styleOf(const Theme &theme)
{
    return QStringLiteral(
               "QLabel { color: %1; font-size: 12px; background: transparent; }"
               "QLabel#attrHintPill { color: %2; background: %3; border-radius: 14px; padding: 0 14px; min-height: "
               "28px; }"
               "QLabel#attrValuePill { color: %1; background: %3; border-radius: 14px; padding: 0 12px; min-height: "
               "28px;"
               " font-size: 14px; font-weight: 500; }"
               "QLineEdit { color: %1; background: %4; border: 1px solid %5; border-radius: 8px; padding: 0 8px;"
               " font-size: 13px; selection-background-color: %6; }"
               "QLineEdit:focus { border: 1px solid %6; }"
               "QFrame#separator { background: %7; border: none; }")
        .arg(css(theme.primaryText()), css(theme.secondaryText()), css(theme.hoverFill()), css(theme.fieldSurface()),
             css(theme.fieldBorder()), css(theme.accent()), css(theme.separator()));
}

/// The control in a widget that Tab reaches and the name it is found again by.
QString focusKeyOf(const QWidget *widget)
{
    const QVariant segment = widget->property("tavrelSegmentKey");
    return segment.isValid() ? segment.toString() : widget->objectName();
}

} // namespace

AttributeBar::AttributeBar(ShapeDocument *document, QWidget *parent, int fixedWidth)
    : QFrame(parent),
      m_document(document),
      m_theme(lightTheme()),
      m_fixedWidth(fixedWidth)
{
    setObjectName(QStringLiteral("panel"));
    setAccessibleName(tr("样式"));
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::ArrowCursor);
    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(0);
    setFormat();
    setStyleSheet(styleOf(m_theme));
    connect(&ColorLibrary::instance(), &ColorLibrary::changed, this, &AttributeBar::rebuildSoon);
    // A press on what takes no focus would hand it to the next widget below that does: the host, which would end a text
    // being typed. With the one that has it as its proxy the bar counts as focused, and it stays there.
    connect(qApp, &QApplication::focusChanged, this, [this](const QWidget *, QWidget *focused) {
        if (focused != this)
            setFocusProxy(focused && focused->window() == window() ? focused : nullptr);
    });
    rebuild();
}

AttributeBar::~AttributeBar()
{
    closePopup();
    disconnect(qApp, nullptr, this, nullptr); // the focus moves on while the widget below this class goes
}

const ShapeAttributes &AttributeBar::now() const
{
    return m_document->attributes();
}

AttributeBar::Shown AttributeBar::shownNow() const
{
    return {m_document->attributes(), m_document->sequenceValue(), m_document->markerSnapText()};
}

void AttributeBar::setTheme(const Theme &theme)
{
    if (theme == m_theme)
        return;
    m_theme = theme;
    setStyleSheet(styleOf(theme));
    if (m_popup)
        m_popup->applyTheme(theme);
    refresh();
}

void AttributeBar::setTool(ToolType tool)
{
    if (tool == m_tool && shownNow() == m_shown)
        return;
    if (tool != m_tool)
        closePopup();
    m_tool = tool;
    refresh();
}

void AttributeBar::setFixedBarWidth(int width)
{
    if (width == m_fixedWidth)
        return;
    m_fixedWidth = width;
    setFormat();
    refresh();
}

void AttributeBar::setFormat()
{
    layout()->setContentsMargins(isCompact() ? kPanelMargins : QMargins());
    setMinimumHeight(isCompact() ? kPanelHeight : 0);
    setMaximumHeight(isCompact() ? kPanelHeight : QWIDGETSIZE_MAX);
    setMinimumWidth(m_fixedWidth);
    setMaximumWidth(isCompact() ? QWIDGETSIZE_MAX : m_fixedWidth);
}

void AttributeBar::refresh()
{
    if (m_changing > 0)
        rebuildSoon();
    else
        rebuild();
}

void AttributeBar::rebuildSoon()
{
    if (std::exchange(m_isRebuildDue, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_isRebuildDue)
                rebuild();
        },
        Qt::QueuedConnection);
}

// --- changes ---------------------------------------------------------------------------------------------------------

void AttributeBar::apply(const Change &change, After after)
{
    ++m_changing;
    change(*m_document);
    m_shown = shownNow();
    const QPointer<AttributeBar> self(this);
    Q_EMIT attributesChanged();
    if (!self)
        return;
    --m_changing;
    if (after == After::Rebuild)
        rebuildSoon();
}

void AttributeBar::preview(const Change &change)
{
    ++m_changing;
    change(*m_document);
    m_shown = shownNow();
    const QPointer<AttributeBar> self(this);
    Q_EMIT previewChanged();
    if (self)
        --m_changing;
}

void AttributeBar::changeVariant(ToolType tool)
{
    if (tool == m_tool)
        return;
    ++m_changing;
    const QPointer<AttributeBar> self(this);
    Q_EMIT toolVariantChanged(tool);
    if (self)
        --m_changing;
}

void AttributeBar::setColor(const QString &color, bool isFinal)
{
    const auto commit = isFinal ? ShapeDocument::Commit::Yes : ShapeDocument::Commit::No;
    const Change change = [&color, commit](ShapeDocument &document) {
        document.setColor(color, commit);
        if (document.tool() == ToolType::Watermark)
            document.setWatermark(commit);
    };
    if (isFinal)
        apply(change, After::Rebuild);
    else
        preview(change);
}

// --- controls --------------------------------------------------------------------------------------------------------

void AttributeBar::rebuild()
{
    m_isRebuildDue = false;
    const QWidget *focused = focusWidget();
    const bool hadFocus = m_content && focused && m_content->isAncestorOf(focused) && focused->hasFocus();
    const QString focusKey = hadFocus ? focusKeyOf(focused) : QString();

    QWidget *old = m_content;
    m_content = new QWidget(this);
    m_line = isCompact() ? static_cast<QBoxLayout *>(new QHBoxLayout(m_content)) : new QVBoxLayout(m_content);
    m_line->setContentsMargins(0, 0, 0, 0);
    m_line->setSpacing(isCompact() ? kSpacing : kRowSpacing);
    m_shown = shownNow();
    fill();
    layout()->addWidget(m_content);
    m_content->show();

    if (!focusKey.isEmpty()) {
        const QList<QWidget *> children = m_content->findChildren<QWidget *>();
        const auto found = std::find_if(children.begin(), children.end(),
                                        [&](const QWidget *child) { return focusKeyOf(child) == focusKey; });
        if (found != children.end())
            (*found)->setFocus(Qt::OtherFocusReason);
        else
            returnFocus();
    }
    if (old) {
        // A signal of one of them may still be on its way.
        layout()->removeWidget(old);
        old->hide();
        old->setParent(nullptr);
        old->deleteLater();
    }
    updateGeometry();
    const QPointer<AttributeBar> self(this);
    Q_EMIT rebuilt();
    if (!self)
        return;
    layout()->activate();
    followPopup(); // now that its button has its place
}

void AttributeBar::fill()
{
    switch (m_tool) {
    case ToolType::Rect:
    case ToolType::Circle:
        fillBoxTool();
        break;
    case ToolType::Line:
    case ToolType::Arrow:
        fillArrow();
        break;
    case ToolType::Pen:
        addThickness();
        addSeparator();
        addSwatches();
        break;
    case ToolType::Marker:
        fillMarker();
        break;
    case ToolType::Eraser:
        addHint(tr("点击或拖动，擦除碰到的标注"));
        break;
    case ToolType::Sequence:
        fillSequence();
        break;
    case ToolType::Mosaic:
    case ToolType::MosaicPen:
        fillMosaic();
        break;
    case ToolType::SmartErase:
        fillErase();
        break;
    case ToolType::Spotlight:
        fillSpotlight();
        break;
    case ToolType::Watermark:
        fillWatermark();
        break;
    case ToolType::Magnifier:
        fillMagnifier();
        break;
    case ToolType::Text:
        fillText();
        break;
    default:
        break;
    }
}

void AttributeBar::add(QWidget *widget)
{
    m_line->addWidget(widget, 0, isCompact() ? Qt::AlignVCenter : Qt::Alignment());
}

void AttributeBar::addRow(const QList<QWidget *> &widgets)
{
    if (isCompact()) {
        for (QWidget *widget : widgets)
            add(widget);
        return;
    }
    auto *row = new QHBoxLayout;
    row->setSpacing(kSpacing);
    for (QWidget *widget : widgets)
        row->addWidget(widget, 0, Qt::AlignVCenter);
    row->addStretch();
    m_line->addLayout(row);
}

void AttributeBar::addSeparator()
{
    auto *line = new QFrame(m_content);
    line->setObjectName(QStringLiteral("separator"));
    if (isCompact())
        line->setFixedSize(kSeparator);
    else
        line->setFixedHeight(1);
    add(line);
}

void AttributeBar::addHint(const QString &text)
{
    auto *pill = new QLabel(text, m_content);
    pill->setObjectName(QStringLiteral("attrHintPill"));
    pill->setWordWrap(!isCompact());
    add(pill);
}

void AttributeBar::addSegment(const QList<SegmentTrack::Item> &items, const QString &current,
                              const std::function<void(const QString &)> &chosen)
{
    auto *track = new SegmentTrack(items, current, m_theme, m_content);
    connect(track, &SegmentTrack::chosen, this, chosen);
    addRow({track});
}

void AttributeBar::addThickness()
{
    constexpr ValueRange kRange{1, 30};
    const double value = now().baseThickness;
    if (!isCompact()) {
        addValue(QStringLiteral("thickness"), tr("粗细"), kRange, value,
                 [](ShapeDocument &document, int thickness, bool isFinal) {
                     document.setThickness(thickness, isFinal ? ShapeDocument::Commit::Yes : ShapeDocument::Commit::No);
                 });
        return;
    }
    auto *capsule =
        new ThicknessCapsule(qRound(value), kRange.least, kRange.most, QColor(now().color), m_theme, m_content);
    capsule->setObjectName(QStringLiteral("thickness"));
    capsule->setWheelReversed(m_isWheelReversed);
    connect(capsule, &ThicknessCapsule::valueChanged, this, [this](int thickness) {
        apply([thickness](ShapeDocument &document) { document.setThickness(thickness); }, After::Keep);
    });
    add(capsule);
}

QWidget *AttributeBar::addValue(const QString &key, const QString &label, ValueRange range, double value,
                                const std::function<void(ShapeDocument &, int, bool)> &change)
{
    auto *control = new ValueControl(key, label, range.least, range.most, qRound(value),
                                     key == u"opacity" ? QStringLiteral("%") : QString(), m_theme, m_content);
    if (isCompact())
        control->setMaximumWidth(control->sizeHint().width());
    connect(control, &ValueControl::previewed, this,
            [this, change](int next) { preview([&](ShapeDocument &document) { change(document, next, false); }); });
    connect(control, &ValueControl::changed, this, [this, change](int next) {
        apply([&](ShapeDocument &document) { change(document, next, true); }, After::Keep);
    });
    add(control);
    return control;
}

void AttributeBar::addFontSize(ValueRange range)
{
    addValue(QStringLiteral("fontSize"), tr("字号"), range, now().baseFontSize,
             [](ShapeDocument &document, int size, bool isFinal) {
                 document.setFontSize(size, isFinal ? ShapeDocument::Commit::Yes : ShapeDocument::Commit::No);
             });
}

void AttributeBar::guard(QLineEdit *edit)
{
    edit->installEventFilter(this);
    edit->setAttribute(Qt::WA_MacShowFocusRect, false);
}

void AttributeBar::returnFocus()
{
    window()->setFocus(Qt::OtherFocusReason);
}

// --- events ----------------------------------------------------------------------------------------------------------

bool AttributeBar::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        auto *edit = qobject_cast<QLineEdit *>(watched);
        if (edit && !isAncestorOf(edit)) // while the board is open all events come by
            edit = nullptr;
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (edit && (key == Qt::Key_Escape || key == Qt::Key_Return || key == Qt::Key_Enter)) {
            edit->clearFocus();
            returnFocus();
            return true;
        }
    }
    if (event->type() == QEvent::MouseButtonPress && m_popup && !m_eyedropper && watched->isWidgetType()) {
        const auto *widget = static_cast<QWidget *>(watched);
        // A menu of one of its fields is a window of its own, and still a part of it.
        const auto isPartOf = [widget](const QWidget *owner) {
            const QWidget *part = widget;
            while (part && part != owner)
                part = part->parentWidget();
            return part != nullptr;
        };
        const bool isInside = isPartOf(m_popup) || isPartOf(this);
        if (!isInside)
            closePopup();
    }
    return QFrame::eventFilter(watched, event);
}

void AttributeBar::keyPressEvent(QKeyEvent *event)
{
    // What a line edit has no use for goes no further: the window behind has a meaning for nearly every key.
    QWidget *focused = focusWidget();
    if (qobject_cast<QLineEdit *>(focused)) {
        event->accept();
    } else if (event->key() == Qt::Key_Escape) {
        returnFocus();
    } else if (auto *button = qobject_cast<QAbstractButton *>(focused);
               button && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
        button->click();
    } else {
        QFrame::keyPressEvent(event);
    }
}

// The pointer over the panel does not mean what lies below it.
void AttributeBar::mousePressEvent(QMouseEvent *event)
{
    event->accept();
}

void AttributeBar::mouseReleaseEvent(QMouseEvent *event)
{
    event->accept();
}

void AttributeBar::mouseMoveEvent(QMouseEvent *event)
{
    event->accept();
}

void AttributeBar::wheelEvent(QWheelEvent *event)
{
    event->accept();
}

void AttributeBar::moveEvent(QMoveEvent *event)
{
    QFrame::moveEvent(event);
    followPopup();
}

void AttributeBar::hideEvent(QHideEvent *event)
{
    closePopup();
    QFrame::hideEvent(event);
}

void AttributeBar::paintEvent(QPaintEvent *)
{
    if (!isCompact())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(m_theme.panelBorder(), 1));
    painter.setBrush(m_theme.panelSurface());
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kPanelRadius, kPanelRadius);
}

} // namespace tavrel::ui
