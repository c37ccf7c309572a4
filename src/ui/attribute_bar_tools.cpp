// What the attribute bar holds for each tool.
#include "ui/attribute_bar.h"

#include "annotate/shape_document.h"
#include "ui/color_library.h"
#include "ui/glyph_button.h"
#include "ui/menu_panel.h"
#include "ui/settings_combo_box.h"
#include "ui/watermark_choices.h"
#include "ui/watermark_edit.h"

#include <QApplication>
#include <QFontDatabase>
#include <QGridLayout>
#include <QIntValidator>
#include <QLabel>

#include <array>
#include <cmath>
#include <utility>

namespace tavrel::ui {
namespace {

using Commit = ShapeDocument::Commit;

constexpr QSize kNumberField{64, 36};
constexpr int kFontBoxWidth = 150;
constexpr int kWatermarkWidth = 220;
constexpr int kNarrowestWatermark = 110;
constexpr int kMenuGap = 4;

Commit commitIf(bool isFinal)
{
    return isFinal ? Commit::Yes : Commit::No;
}

constexpr std::array<std::pair<const char *, ArrowStyle>, 5> kArrowKeys{{
    {"arrowStandard", ArrowStyle::Standard},
    {"arrowWedge", ArrowStyle::Wedge},
    {"arrowOutline", ArrowStyle::WedgeOutline},
    {"arrowLine", ArrowStyle::Line},
    {"arrowDouble", ArrowStyle::Double},
}};

constexpr std::array<std::pair<const char *, TextStyle>, 4> kTextKeys{{
    {"textStd", TextStyle::Standard},
    {"textBorder", TextStyle::Border},
    {"textBg", TextStyle::Background},
    {"textRound", TextStyle::RoundBackground},
}};

/// The middle one first: a value right between two belongs to the one that comes earlier.
constexpr std::array<std::pair<const char *, double>, 3> kDimKeys{{{"dim2", 0.6}, {"dim1", 0.4}, {"dim3", 0.8}}};

template <typename Table, typename Value>
QString keyOf(const Table &table, Value value)
{
    for (const auto &[key, entry] : table) {
        if (entry == value)
            return QLatin1String(key);
    }
    return {};
}

template <typename Table>
auto valueOf(const Table &table, const QString &key)
{
    for (const auto &[name, value] : table) {
        if (key == QLatin1String(name))
            return value;
    }
    return table.front().second;
}

QString nearestDim(double dim)
{
    const auto *nearest = &kDimKeys.front();
    for (const auto &entry : kDimKeys) {
        if (std::abs(entry.second - dim) < std::abs(nearest->second - dim))
            nearest = &entry;
    }
    return QLatin1String(nearest->first);
}

/// The families that can be chosen. Listing them takes long, so it happens once.
const QStringList &fontFamilies()
{
    static const QStringList families = [] {
        QStringList all = QFontDatabase::families();
        all.removeIf([](const QString &family) { return QFontDatabase::isPrivateFamily(family); });
        return all;
    }();
    return families;
}

/// Numbers of badges. What is none gives way to the number there is, instead of standing in the field as if it counted.
class NumberValidator final : public QIntValidator
{
public:
    NumberValidator(const ShapeDocument &document, QObject *parent)
        : QIntValidator(1, 999, parent),
          m_document(document)
    {}

    void fixup(QString &text) const override { text = QString::number(m_document.sequenceValue()); }

private:
    const ShapeDocument &m_document;
};

} // namespace

void AttributeBar::addShapeSegment(bool isRound, const std::function<void(ShapeDocument &, bool)> &change)
{
    const QString rect = QStringLiteral("rect");
    const QString circle = QStringLiteral("circle");
    addSegment({{rect, rect, tr("矩形")}, {circle, circle, tr("圆形")}}, isRound ? circle : rect,
               [this, change, circle](const QString &key) {
                   apply([&](ShapeDocument &document) { change(document, key == circle); }, After::Rebuild);
               });
}

void AttributeBar::fillBoxTool()
{
    const QString rect = QStringLiteral("rect");
    const QString circle = QStringLiteral("circle");
    addSegment(
        {{rect, rect, tr("矩形")}, {circle, circle, tr("圆形")}}, m_tool == ToolType::Circle ? circle : rect,
        [this, circle](const QString &key) { changeVariant(key == circle ? ToolType::Circle : ToolType::Rect); });
    addSeparator();
    addThickness();
    addSeparator();
    addSwatches();
}

void AttributeBar::fillArrow()
{
    const auto item = [](const char *key, const QString &tip) {
        return SegmentTrack::Item{QLatin1String(key), QLatin1String(key), tip};
    };
    const QString current =
        m_tool == ToolType::Line ? QStringLiteral("arrowLine") : keyOf(kArrowKeys, now().arrowStyle);
    addSegment({item("arrowStandard", tr("箭头")), item("arrowWedge", tr("楔形")), item("arrowOutline", tr("空心")),
                item("arrowLine", tr("直线")), item("arrowDouble", tr("双向"))},
               current, [this](const QString &key) {
                   apply([&](ShapeDocument &document) { document.setArrowStyle(valueOf(kArrowKeys, key)); },
                         After::Rebuild);
                   changeVariant(ToolType::Arrow); // a plain line has no style to change
               });
    addSeparator();
    addThickness();
    addSeparator();
    addSwatches();
}

void AttributeBar::fillMarker()
{
    const QString freehand = QStringLiteral("freehand");
    const QString area = QStringLiteral("markerRect");
    const bool isArea = now().markerRectMode;
    addSegment({{freehand, freehand, tr("画笔")}, {area, area, tr("区域")}}, isArea ? area : freehand,
               [this, area](const QString &key) {
                   apply([&](ShapeDocument &document) { document.setMarkerRectMode(key == area); }, After::Rebuild);
               });
    if (!isArea && m_document->hasTextLineProvider()) {
        addSeparator();
        auto *snap = new GlyphButton(QStringLiteral("snapLine"), tr("智能整行：划过文字自动标记整行（需要文字识别）"),
                                     m_theme, m_content);
        snap->setObjectName(QStringLiteral("snapLine"));
        snap->setAccessibleName(tr("智能整行"));
        snap->setCheckable(true);
        snap->setChecked(m_document->markerSnapText());
        connect(snap, &GlyphButton::toggled, this, [this](bool on) {
            apply([on](ShapeDocument &document) { document.setMarkerSnapText(on); }, After::Keep);
        });
        addRow({snap});
    }
    addSeparator();
    addThickness();
    addSeparator();
    addSwatches();
}

void AttributeBar::fillSequence()
{
    auto *types = new SettingsComboBox(m_theme, m_content);
    types->setObjectName(QStringLiteral("sequenceType"));
    types->setAccessibleName(tr("序号样式"));
    const std::array<std::pair<QString, NumberType>, 6> kinds{{{QStringLiteral("1 2 3"), NumberType::Arabic},
                                                               {QStringLiteral("A B C"), NumberType::UpperLetter},
                                                               {QStringLiteral("a b c"), NumberType::LowerLetter},
                                                               {tr("一 二 三"), NumberType::Chinese},
                                                               {QStringLiteral("I II III"), NumberType::RomanUpper},
                                                               {QStringLiteral("i ii iii"), NumberType::RomanLower}}};
    for (const auto &[text, type] : kinds)
        types->addItem(text, static_cast<int>(type));
    types->setCurrentIndex(types->findData(static_cast<int>(now().sequenceType)));
    connect(types, &QComboBox::activated, this, [this, types](int index) {
        const auto type = static_cast<NumberType>(types->itemData(index).toInt());
        apply([type](ShapeDocument &document) { document.setSequenceType(type); }, After::Rebuild);
    });

    auto *number = new QLineEdit(QString::number(m_document->sequenceValue()), m_content);
    number->setObjectName(QStringLiteral("seqValue"));
    number->setFixedSize(kNumberField);
    number->setAlignment(Qt::AlignCenter);
    number->setMaxLength(3);
    number->setValidator(new NumberValidator(*m_document, number));
    number->setPlaceholderText(QString::number(m_document->sequenceValue()));
    number->setToolTip(tr("序号：改了之后，后面的序号自动顺延（没选中序号时 = 下一个要放的序号）"));
    number->setAccessibleName(tr("序号"));
    guard(number);
    connect(number, &QLineEdit::editingFinished, this, [this, number] {
        const int value = number->text().toInt();
        if (value != m_document->sequenceValue())
            apply([value](ShapeDocument &document) { document.setSequenceValue(value); }, After::Rebuild);
        else
            number->setText(QString::number(value)); // without zeros in front
    });

    auto *arrow = new GlyphButton(QStringLiteral("arrowStandard"), tr("箭头"), m_theme, m_content);
    arrow->setObjectName(QStringLiteral("sequenceArrow"));
    arrow->setCheckable(true);
    arrow->setChecked(now().sequenceArrow);
    connect(arrow, &GlyphButton::toggled, this,
            [this](bool on) { apply([on](ShapeDocument &document) { document.setSequenceArrow(on); }, After::Keep); });
    addRow({types, number, arrow});
    addSeparator();
    addFontSize({8, 96});
    addSeparator();
    addSwatches();
}

void AttributeBar::fillMosaic()
{
    const QString mosaic = QStringLiteral("mosaic");
    const QString blur = QStringLiteral("blur");
    const QString brush = QStringLiteral("mosaicPen");
    const bool isMosaic = now().mosaicMode == MosaicMode::Mosaic;
    addSegment({{mosaic, QStringLiteral("mosaicBlocks"), tr("马赛克")},
                {blur, QStringLiteral("blurDrop"), tr("模糊")},
                {brush, QStringLiteral("freehand"), tr("涂抹")}},
               m_tool == ToolType::MosaicPen ? brush
               : isMosaic                    ? mosaic
                                             : blur,
               [=, this](const QString &key) {
                   if (key == brush) { // which goes on with the kind there is
                       changeVariant(ToolType::MosaicPen);
                       return;
                   }
                   apply(
                       [&](ShapeDocument &document) {
                           document.setMosaicMode(key == mosaic ? MosaicMode::Mosaic : MosaicMode::Blur);
                       },
                       After::Rebuild);
                   changeVariant(ToolType::Mosaic);
               });
    addSeparator();
    // docs/redaction.md has the figures behind these.
    const QString honest =
        isMosaic
            ? tr("块大小不到 40 时，号码仍可能被还原；常见词语在任何块大小下都可能被猜出。"
                 "要彻底去除，请用智能擦除的“整个框都补掉”。")
            : tr("模糊强度 1 到 20 都可能被还原，请勿用来遮盖机密文字。要彻底去除，请用智能擦除的“整个框都补掉”。");
    QWidget *value = isMosaic ? addValue(QStringLiteral("blockSize"), tr("马赛克块大小"), {5, 40}, now().mosaicStrength,
                                         [](ShapeDocument &document, int size, bool isFinal) {
                                             document.setMosaicStrength(size, commitIf(isFinal));
                                         })
                              : addValue(QStringLiteral("strength"), tr("模糊强度"), {1, 20}, now().blurStrength,
                                         [](ShapeDocument &document, int strength, bool isFinal) {
                                             document.setBlurStrength(strength, commitIf(isFinal));
                                         });
    value->setToolTip(honest);
}

void AttributeBar::fillErase()
{
    const QString subject = QStringLiteral("eraseSubject");
    const QString box = QStringLiteral("eraseBox");
    addSegment({{subject, subject, tr("只删主体，保留框内的背景")}, {box, box, tr("整个框都补掉")}},
               now().eraseWholeBox ? box : subject, [this, box](const QString &key) {
                   apply([&](ShapeDocument &document) { document.setEraseWholeBox(key == box); }, After::Rebuild);
               });
}

void AttributeBar::fillSpotlight()
{
    addShapeSegment(now().spotlightRound,
                    [](ShapeDocument &document, bool round) { document.setSpotlightRound(round); });
    addSeparator();
    const auto item = [](const char *key, const QString &tip) {
        return SegmentTrack::Item{QLatin1String(key), QLatin1String(key), tip};
    };
    addSegment({item("dim1", tr("淡")), item("dim2", tr("中")), item("dim3", tr("深"))}, nearestDim(now().spotlightDim),
               [this](const QString &key) {
                   apply([&](ShapeDocument &document) { document.setSpotlightDim(valueOf(kDimKeys, key)); },
                         After::Rebuild);
               });
}

void AttributeBar::fillMagnifier()
{
    addShapeSegment(now().magnifierRound,
                    [](ShapeDocument &document, bool round) { document.setMagnifierRound(round); });
    addSeparator();
    auto *zoom = new QLabel(tr("%1×").arg(now().magnifierZoom, 0, 'f', 1), m_content);
    zoom->setObjectName(QStringLiteral("attrValuePill"));
    zoom->setToolTip(tr("在画面上滚轮调整放大倍数"));
    addRow({zoom});
    addSeparator();
    addThickness();
    addSeparator();
    addSwatches();
}

void AttributeBar::fillText()
{
    addFontSize({12, 96});
    addSeparator();
    const auto item = [](const char *key, const char *glyph, const QString &tip) {
        return SegmentTrack::Item{QLatin1String(key), QLatin1String(glyph), tip};
    };
    addSegment({item("textStd", "text", tr("标准")), item("textBorder", "textBorder", tr("描边")),
                item("textBg", "textBg", tr("背景")), item("textRound", "textRound", tr("圆角"))},
               keyOf(kTextKeys, now().textStyle), [this](const QString &key) {
                   apply([&](ShapeDocument &document) { document.setTextStyle(valueOf(kTextKeys, key)); },
                         After::Rebuild);
               });
    addSeparator();

    auto *fonts = new SettingsComboBox(m_theme, m_content);
    fonts->setObjectName(QStringLiteral("fontFamily"));
    fonts->setAccessibleName(tr("字体"));
    fonts->setFixedWidth(kFontBoxWidth);
    fonts->addItem(tr("系统默认"));
    fonts->addItems(fontFamilies());
    const QString family = now().fontFamily;
    const int known = family.isEmpty() ? 0 : fonts->findText(family, Qt::MatchFixedString);
    fonts->setCurrentIndex(known);
    if (known < 0) // gone since it was chosen; texts show the nearest there is and keep its name
        fonts->setPlaceholderText(tr("%1（未安装）").arg(family));
    connect(fonts, &QComboBox::activated, this, [this, fonts](int index) {
        const QString chosen = index == 0 ? QString() : fonts->itemText(index);
        apply([&](ShapeDocument &document) { document.setFontFamily(chosen); }, After::Keep);
    });
    addRow({fonts});
    addSeparator();
    addSwatches();
}

// --- watermark -------------------------------------------------------------------------------------------------------

void AttributeBar::fillWatermark()
{
    auto *edit = new WatermarkEdit(m_content);
    edit->setText(now().watermarkText);
    edit->setFixedHeight(kNumberField.height() - 4);
    edit->setMinimumWidth(kNarrowestWatermark);
    if (isCompact())
        edit->setFixedWidth(kWatermarkWidth);
    guard(edit);
    connect(edit, &QLineEdit::textChanged, this, [this](const QString &text) {
        apply(
            [&text](ShapeDocument &document) {
                document.setWatermarkText(text);
                document.setWatermark(Commit::No); // a state to go back to for each letter would be too many
            },
            After::Keep);
    });
    connect(edit, &QLineEdit::editingFinished, this, [this] { m_document->commit(); });

    auto *clock = new GlyphButton(QStringLiteral("clock"), tr("插入时间"), m_theme, m_content);
    clock->setObjectName(QStringLiteral("clock"));
    connect(clock, &GlyphButton::clicked, this, &AttributeBar::insertTimePattern);

    const WatermarkMode &mode = watermarkModeOf(now().watermarkMode);
    auto *layout = new GlyphButton(QLatin1String(mode.glyph), tr("水印排布方式"), m_theme, m_content);
    layout->setObjectName(QStringLiteral("watermarkMode"));
    layout->setAccessibleDescription(QCoreApplication::translate("WatermarkShape", mode.label));
    connect(layout, &GlyphButton::clicked, this, &AttributeBar::chooseWatermarkMode);

    addRow({edit, clock, layout});
    addValue(QStringLiteral("opacity"), tr("透明度"), {5, 100}, now().watermarkOpacity * 100,
             [](ShapeDocument &document, int percent, bool isFinal) {
                 document.setWatermarkOpacity(percent / 100.0);
                 document.setWatermark(commitIf(isFinal));
             });
    addValue(QStringLiteral("fontSize"), tr("字号"), {10, 100}, now().watermarkFontSize,
             [](ShapeDocument &document, int size, bool isFinal) {
                 document.setWatermarkFontSize(size);
                 document.setWatermark(commitIf(isFinal));
             });
    addSeparator();
    addSwatches();
}

void AttributeBar::popUpMenu(const QString &owner, const QList<MenuEntry> &entries,
                             const std::function<void(const QString &id)> &chosen)
{
    const auto *button = m_content->findChild<QWidget *>(owner);
    auto *menu = new MenuPanel(entries, m_theme, window());
    connect(menu, &MenuPanel::chosen, this, chosen);
    menu->exec(button->mapToGlobal(QPoint(0, button->height() + kMenuGap)));
}

void AttributeBar::insertTimePattern()
{
    QList<MenuEntry> entries;
    for (const WatermarkToken &token : watermarkTokens()) {
        const QString pattern = QLatin1String(token.pattern);
        entries.append(
            {.id = pattern, .label = QCoreApplication::translate("WatermarkShape", token.label), .shortcut = pattern});
    }
    popUpMenu(QStringLiteral("clock"), entries, [this](const QString &pattern) {
        if (auto *edit = m_content->findChild<WatermarkEdit *>()) {
            edit->insertPattern(pattern);
            edit->setFocus(Qt::OtherFocusReason);
        }
    });
}

void AttributeBar::chooseWatermarkMode()
{
    const WatermarkMode &current = watermarkModeOf(now().watermarkMode);
    QList<MenuEntry> entries;
    for (const WatermarkMode &mode : watermarkModes())
        entries.append({.id = QLatin1String(mode.word),
                        .label = QCoreApplication::translate("WatermarkShape", mode.label),
                        .glyph = QLatin1String(mode.glyph),
                        .isCheckable = true,
                        .isChecked = mode.word == current.word});
    popUpMenu(QStringLiteral("watermarkMode"), entries, [this](const QString &mode) {
        apply(
            [&mode](ShapeDocument &document) {
                document.setWatermarkMode(mode);
                document.setWatermark();
            },
            After::Rebuild);
    });
}

} // namespace tavrel::ui
