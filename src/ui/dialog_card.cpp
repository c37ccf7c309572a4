#include "ui/dialog_card.h"

#include "ui/theme_source.h"
#include "ui/wrapped_label.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tavrel::ui::dialogs {
namespace {

constexpr int kBadgeSide = 28;
constexpr int kTextWidth = 320;  ///< texts wrap here; the card is this wide and its margins
constexpr int kTextHeight = 300; ///< a longer text scrolls
constexpr int kScrollRoom = 12;

QString cardStyle(const Theme &theme)
{
    return QStringLiteral(
               "QWidget#dlgHead, QWidget#dlgBody, QLabel#dlgIcon { background: transparent; }"
               "QLabel#dlgTitle { color: %1; font-size: 15px; font-weight: 600; background: transparent; }"
               "QLabel#dlgText { color: %2; font-size: 13px; background: transparent; }"
               "QLineEdit { color: %1; background: %3; border: 1px solid %4; border-radius: 8px; padding: 6px 9px; "
               "font-size: 13px; selection-background-color: %5; }"
               "QLineEdit:focus { border: 1px solid %5; }")
        .arg(css(theme.primaryText()), css(theme.secondaryText()), css(theme.fieldSurface()), css(theme.fieldBorder()),
             css(theme.accent()));
}

/// Filled in the accent or in red, plain for cancel; the border shows the keyboard's place.
QString buttonStyle(const Theme &theme, ButtonSpec::Role role)
{
    const QColor fill = role == ButtonSpec::Primary       ? theme.accent()
                        : role == ButtonSpec::Destructive ? destructiveRed
                                                          : theme.fieldFill();
    const bool plain = role == ButtonSpec::Cancel;
    const QColor hover = plain ? theme.strongBorder() : fill.lighter(112);
    const QColor pressed = plain ? theme.toolPressedFill() : fill.darker(115);
    const QColor ring = plain ? theme.accent() : theme.dark ? fill.lighter(150) : fill.darker(150);
    return QStringLiteral("QPushButton { color: %1; background: %2; border: 2px solid transparent; border-radius: 8px; "
                          "padding: 5px 14px; font-size: 13px; min-width: 52px; }"
                          "QPushButton:hover { background: %3; }"
                          "QPushButton:pressed { background: %4; }"
                          "QPushButton:focus { border: 2px solid %5; }")
        .arg(plain ? css(theme.primaryText()) : QStringLiteral("white"), css(fill), css(hover), css(pressed),
             css(ring));
}

QColor badgeColor(Icon icon)
{
    switch (icon) {
    case Icon::Warning:
        return {255, 149, 0};
    case Icon::Error:
        return destructiveRed;
    default:
        return selectionBlue;
    }
}

QString badgeLetter(Icon icon)
{
    switch (icon) {
    case Icon::Information:
        return QStringLiteral("i");
    case Icon::Question:
        return QStringLiteral("?");
    default:
        return QStringLiteral("!");
    }
}

/// A plain widget has no role of its own.
QAccessibleInterface *accessibleCard(const QString &className, QObject *object)
{
    if (className == QLatin1String(DialogCard::staticMetaObject.className()))
        return new QAccessibleWidget(static_cast<QWidget *>(object), QAccessible::Dialog);
    return nullptr;
}

} // namespace

IconBadge::IconBadge(QWidget *parent) : QLabel(parent)
{
    setFixedSize(kBadgeSide, kBadgeSide);
}

void IconBadge::setIcon(Icon icon)
{
    m_icon = icon;
    setVisible(icon != Icon::None);
    update();
}

QSize IconBadge::sizeHint() const
{
    return {kBadgeSide, kBadgeSide};
}

void IconBadge::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(badgeColor(m_icon));
    painter.drawEllipse(QRectF(rect()).adjusted(1, 1, -1, -1));
    QFont letter = font();
    letter.setPixelSize(17);
    letter.setBold(true);
    painter.setFont(letter);
    painter.setPen(Qt::white);
    painter.drawText(rect(), Qt::AlignCenter, badgeLetter(m_icon));
}

DialogCard::DialogCard(const ThemeSource &themes, QWidget *parent)
    : QWidget(parent),
      m_theme(themes.current()),
      m_head(new QWidget(this)),
      m_icon(new IconBadge(m_head)),
      m_title(new WrappedLabel(kTextWidth, m_head)),
      m_text(new WrappedLabel(kTextWidth, nullptr)),
      m_textArea(new QScrollArea(m_head)),
      m_body(new QWidget(this)),
      m_bodyLayout(new QVBoxLayout(m_body)),
      m_buttonRow(new QHBoxLayout)
{
    setObjectName(QStringLiteral("dialogCard"));
    m_head->setObjectName(QStringLiteral("dlgHead"));
    m_icon->setObjectName(QStringLiteral("dlgIcon"));
    m_title->setObjectName(QStringLiteral("dlgTitle"));
    m_text->setObjectName(QStringLiteral("dlgText"));
    m_body->setObjectName(QStringLiteral("dlgBody"));
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(accessibleCard);
        return true;
    }();
    setStyleSheet(cardStyle(m_theme));
    connect(&themes, &ThemeSource::changed, this, &DialogCard::setTheme);
    setFocusPolicy(Qt::ClickFocus);
    m_textArea->setFrameShape(QFrame::NoFrame);
    m_textArea->setFocusPolicy(Qt::NoFocus);
    m_textArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_textArea->setWidget(m_text);
    m_textArea->viewport()->setAutoFillBackground(false);

    auto *texts = new QVBoxLayout;
    texts->setSpacing(6);
    texts->addWidget(m_title);
    texts->addWidget(m_textArea);
    auto *head = new QHBoxLayout(m_head);
    head->setContentsMargins(0, 0, 0, 0);
    head->setSpacing(12);
    head->addWidget(m_icon, 0, Qt::AlignTop);
    head->addLayout(texts);

    m_bodyLayout->setContentsMargins(0, 0, 0, 0);
    m_buttonRow->setSpacing(8);
    auto *all = new QVBoxLayout(this);
    all->setContentsMargins(22, 20, 22, 18);
    all->setSpacing(16);
    all->addWidget(m_head);
    all->addWidget(m_body);
    all->addLayout(m_buttonRow);
    m_icon->hide();
    m_body->hide();
    updateHead();
}

void DialogCard::setIcon(Icon icon)
{
    m_icon->setIcon(icon);
    updateHead();
}

void DialogCard::setTitle(const QString &title)
{
    m_title->setText(title);
    setAccessibleName(title);
    updateHead();
}

void DialogCard::setText(const QString &text)
{
    m_text->setText(text);
    setAccessibleDescription(text);
    updateHead();
}

void DialogCard::updateHead()
{
    const bool hasTitle = !m_title->text().isEmpty();
    const bool hasText = !m_text->text().isEmpty();
    m_title->setVisible(hasTitle);
    m_textArea->setVisible(hasText);
    fitText();
    m_head->setVisible(hasTitle || hasText || !m_icon->isHidden());
}

void DialogCard::fitText()
{
    const QSize text = m_text->sizeHint();
    m_text->resize(text);
    const bool scrolls = text.height() > kTextHeight;
    m_textArea->setFixedSize(text.width() + (scrolls ? kScrollRoom : 0),
                             scrolls ? m_text->heightOfWholeLines(kTextHeight) : text.height());
}

void DialogCard::setTheme(const Theme &theme)
{
    m_theme = theme;
    setStyleSheet(cardStyle(theme));
    for (qsizetype i = 0; i < m_buttons.size(); ++i)
        m_buttonWidgets[i]->setStyleSheet(buttonStyle(theme, m_buttons[i].role));
    if (parentWidget())
        parentWidget()->update(); // the host paints the shadow
}

void DialogCard::setContent(QWidget *content)
{
    m_bodyLayout->addWidget(content);
    m_body->show();
}

void DialogCard::setButtons(const QList<ButtonSpec> &buttons)
{
    while (QLayoutItem *item = m_buttonRow->takeAt(0))
        delete item;
    bool hadFocus = false;
    for (QPushButton *old : std::as_const(m_buttonWidgets)) {
        hadFocus |= old->hasFocus();
        old->hide();
        old->deleteLater();
    }
    m_buttonWidgets.clear();
    m_buttons = buttons;
    m_buttonRow->addStretch(1);
    for (const ButtonSpec &spec : buttons) {
        auto *button = new QPushButton(spec.text, this);
        button->setAutoDefault(false);
        button->setStyleSheet(buttonStyle(m_theme, spec.role));
        button->setAccessibleName(spec.text);
        button->installEventFilter(this);
        connect(button, &QPushButton::clicked, this, [this, id = spec.id] { finish(id); });
        m_buttonRow->addWidget(button);
        m_buttonWidgets.append(button);
    }
    if (hadFocus)
        takeFocus();
}

QList<QWidget *> DialogCard::focusStops() const
{
    QList<QWidget *> stops;
    const auto add = [&](QWidget *widget) {
        if ((widget->focusPolicy() & Qt::TabFocus) && widget->isEnabled() && widget->isVisibleTo(this))
            stops.append(widget);
    };
    for (QWidget *next = m_body->nextInFocusChain(); next != m_body; next = next->nextInFocusChain()) {
        if (m_body->isAncestorOf(next))
            add(next);
    }
    for (QPushButton *button : m_buttonWidgets)
        add(button);
    return stops;
}

void DialogCard::takeFocus()
{
    const QList<QWidget *> stops = focusStops();
    QWidget *target = this;
    if (!stops.isEmpty() && m_body->isAncestorOf(stops.first())) {
        target = stops.first();
    } else {
        for (qsizetype i = m_buttons.size() - 1; i >= 0; --i) {
            if (m_buttons[i].isDefault)
                target = m_buttonWidgets[i];
        }
    }
    target->setFocus(Qt::ActiveWindowFocusReason);
    if (auto *field = qobject_cast<QLineEdit *>(target))
        field->selectAll();
}

bool DialogCard::focusNextPrevChild(bool next)
{
    const QList<QWidget *> stops = focusStops();
    if (stops.isEmpty())
        return false;
    const auto current = std::find_if(stops.begin(), stops.end(), [](const QWidget *stop) { return stop->hasFocus(); });
    qsizetype index = next ? 0 : stops.size() - 1;
    if (current != stops.end())
        index = (current - stops.begin() + (next ? 1 : stops.size() - 1)) % stops.size();
    stops[index]->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

void DialogCard::finish(int id)
{
    if (std::exchange(m_finished, true))
        return;
    QAccessibleEvent gone(this, QAccessible::DialogEnd);
    QAccessible::updateAccessibility(&gone);
    Q_EMIT finished(id);
}

void DialogCard::dismiss()
{
    const ButtonSpec *button = escapeButton();
    finish(button ? button->id : kDismissed);
}

const ButtonSpec *DialogCard::defaultButton() const
{
    const auto found = std::find_if(m_buttons.begin(), m_buttons.end(), [](const auto &b) { return b.isDefault; });
    return found == m_buttons.end() ? nullptr : &*found;
}

const ButtonSpec *DialogCard::escapeButton() const
{
    const auto found =
        std::find_if(m_buttons.begin(), m_buttons.end(), [](const auto &b) { return b.role == ButtonSpec::Cancel; });
    if (found != m_buttons.end())
        return &*found;
    return m_buttons.size() == 1 ? &m_buttons.first() : nullptr;
}

bool DialogCard::eventFilter(QObject *watched, QEvent *event)
{
    // The second press of a double click whose first one ended the dialog before this one.
    if (event->type() == QEvent::MouseButtonDblClick && !m_pressed)
        return true;
    m_pressed = m_pressed || event->type() == QEvent::MouseButtonPress;
    return QWidget::eventFilter(watched, event);
}

bool DialogCard::event(QEvent *event)
{
    // Accepted, a key is a key press and not a shortcut of the window below the sheet.
    if (event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

void DialogCard::keyPressEvent(QKeyEvent *event)
{
    event->accept();
    const ButtonSpec *button = nullptr;
    const bool ends = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Escape;
    if (ends && event->isAutoRepeat())
        return; // held since before: nobody has seen this dialog yet
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // A focused button is what the user sees as chosen; it wins over the default.
        for (qsizetype i = 0; i < m_buttonWidgets.size(); ++i) {
            if (m_buttonWidgets[i]->hasFocus())
                button = &m_buttons[i];
        }
        if (!button)
            button = defaultButton();
        break;
    case Qt::Key_Escape:
        button = escapeButton();
        break;
    case Qt::Key_PageUp:
        m_textArea->verticalScrollBar()->triggerAction(QScrollBar::SliderPageStepSub);
        break;
    case Qt::Key_PageDown:
        m_textArea->verticalScrollBar()->triggerAction(QScrollBar::SliderPageStepAdd);
        break;
    default:
        break;
    }
    if (button)
        finish(button->id);
}

void DialogCard::keyReleaseEvent(QKeyEvent *event)
{
    event->accept();
}

void DialogCard::showEvent(QShowEvent *event)
{
    fitText(); // the fonts are known now
    QAccessibleEvent shown(this, QAccessible::DialogStart);
    QAccessible::updateAccessibility(&shown);
    QWidget::showEvent(event);
}

void DialogCard::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(m_theme.cardBorder(), 0.5));
    painter.setBrush(m_theme.cardSurface());
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.25, 0.25, -0.25, -0.25), kRadius, kRadius);
}

} // namespace tavrel::ui::dialogs
