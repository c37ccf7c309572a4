#include "overlay/overlay_hints.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrel::ui {
namespace {

constexpr double kGap = 8;
constexpr double kPadding = 16;

struct Hint
{
    const char *key;
    const char *description;
};

QString text(const char *source)
{
    return QCoreApplication::translate("CaptureOverlay", source);
}

const Hint kLineWidth{QT_TRANSLATE_NOOP("CaptureOverlay", "滚轮"), QT_TRANSLATE_NOOP("CaptureOverlay", "调整粗细")};
const Hint kStraight{QT_TRANSLATE_NOOP("CaptureOverlay", "Shift + 拖拽"),
                     QT_TRANSLATE_NOOP("CaptureOverlay", "起点到光标画直线")};

QList<Hint> toolHints(ToolType tool, bool markerRectMode)
{
    switch (tool) {
    case ToolType::Rect:
        return {
            {QT_TRANSLATE_NOOP("CaptureOverlay", "Shift + 拖拽"), QT_TRANSLATE_NOOP("CaptureOverlay", "保持正方形")},
            kLineWidth};
    case ToolType::Circle:
        return {{QT_TRANSLATE_NOOP("CaptureOverlay", "Shift + 拖拽"), QT_TRANSLATE_NOOP("CaptureOverlay", "保持正圆")},
                kLineWidth};
    case ToolType::Line:
    case ToolType::Arrow:
        return {kLineWidth};
    case ToolType::Pen:
        return {kStraight, kLineWidth};
    case ToolType::Marker:
        if (markerRectMode) {
            return {{QT_TRANSLATE_NOOP("CaptureOverlay", "拖拽"),
                     QT_TRANSLATE_NOOP("CaptureOverlay", "框选范围，整块高亮")}};
        }
        return {kStraight, kLineWidth};
    case ToolType::Eraser:
        return {{QT_TRANSLATE_NOOP("CaptureOverlay", "点击 / 拖动"),
                 QT_TRANSLATE_NOOP("CaptureOverlay", "擦除碰到的标注")}};
    case ToolType::Sequence:
        return {
            {QT_TRANSLATE_NOOP("CaptureOverlay", "点击"), QT_TRANSLATE_NOOP("CaptureOverlay", "添加序号")},
            {QT_TRANSLATE_NOOP("CaptureOverlay", "A "), QT_TRANSLATE_NOOP("CaptureOverlay", "给选中的序号输入文字")},
            {QT_TRANSLATE_NOOP("CaptureOverlay", "滚轮"), QT_TRANSLATE_NOOP("CaptureOverlay", "调整字号")}};
    case ToolType::Mosaic:
    case ToolType::MosaicPen:
        return {{QT_TRANSLATE_NOOP("CaptureOverlay", "拖拽"), QT_TRANSLATE_NOOP("CaptureOverlay", "框选要打码的区域")},
                {QT_TRANSLATE_NOOP("CaptureOverlay", "滚轮"),
                 QT_TRANSLATE_NOOP("CaptureOverlay", "调整马赛克 / 模糊强度")}};
    case ToolType::SmartErase:
        return {{QT_TRANSLATE_NOOP("CaptureOverlay", "框选"),
                 QT_TRANSLATE_NOOP("CaptureOverlay", "用周围背景覆盖遮住内容")}};
    case ToolType::Spotlight:
        return {{QT_TRANSLATE_NOOP("CaptureOverlay", "拖拽"),
                 QT_TRANSLATE_NOOP("CaptureOverlay", "框选高亮区域，周围压暗")},
                {QT_TRANSLATE_NOOP("CaptureOverlay", "Shift + 拖拽"),
                 QT_TRANSLATE_NOOP("CaptureOverlay", "正方形 / 正圆")}};
    case ToolType::Watermark:
        return {{QT_TRANSLATE_NOOP("CaptureOverlay", "输入文字"),
                 QT_TRANSLATE_NOOP("CaptureOverlay", "在属性栏输入后立即出现水印")},
                {QT_TRANSLATE_NOOP("CaptureOverlay", "点击时间块"),
                 QT_TRANSLATE_NOOP("CaptureOverlay", "插入当前时间（退格整块删除）")},
                {QT_TRANSLATE_NOOP("CaptureOverlay", "滚轮"), QT_TRANSLATE_NOOP("CaptureOverlay", "调整透明度")},
                {QT_TRANSLATE_NOOP("CaptureOverlay", "Shift + 滚轮"), QT_TRANSLATE_NOOP("CaptureOverlay", "调整大小")}};
    case ToolType::Magnifier:
        return {
            {QT_TRANSLATE_NOOP("CaptureOverlay", "拖拽"), QT_TRANSLATE_NOOP("CaptureOverlay", "框选要放大的区域")},
            {QT_TRANSLATE_NOOP("CaptureOverlay", "Shift + 拖拽"), QT_TRANSLATE_NOOP("CaptureOverlay", "正方形 / 正圆")},
            {QT_TRANSLATE_NOOP("CaptureOverlay", "滚轮"), QT_TRANSLATE_NOOP("CaptureOverlay", "调整放大倍数")},
            {QT_TRANSLATE_NOOP("CaptureOverlay", "Shift + 滚轮"), QT_TRANSLATE_NOOP("CaptureOverlay", "调整粗细")}};
    case ToolType::Text:
        return {{QT_TRANSLATE_NOOP("CaptureOverlay", "点击"), QT_TRANSLATE_NOOP("CaptureOverlay", "添加文字")},
                {QT_TRANSLATE_NOOP("CaptureOverlay", "滚轮"), QT_TRANSLATE_NOOP("CaptureOverlay", "调整字号")}};
    default:
        return {};
    }
}

QFont fontOf(int pixelSize)
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(pixelSize);
    return font;
}

QFont keyFont()
{
    return fontOf(12);
}

QFont descriptionFont()
{
    return fontOf(13);
}

} // namespace

QList<HintRow> hintRows(ToolType tool, bool markerRectMode, const BuiltinKeys &keys)
{
    QList<HintRow> rows;
    for (const Hint &hint : toolHints(tool, markerRectMode))
        rows.append({text(hint.key), text(hint.description)});
    if (!rows.isEmpty())
        rows.append(HintRow());
    rows.append({QStringLiteral("Esc"), text(QT_TRANSLATE_NOOP("CaptureOverlay", "取消截图"))});
    rows.append({QStringLiteral("Enter"), text(QT_TRANSLATE_NOOP("CaptureOverlay", "快速复制"))});
    const auto bound = [&rows](const HotkeyBinding &binding, const char *description) {
        if (binding.isActive())
            rows.append({binding.combo.toDisplayText(), text(description)});
    };
    bound(keys.selectFullScreen, QT_TRANSLATE_NOOP("CaptureOverlay", "框选全屏"));
    bound(keys.copySelection, QT_TRANSLATE_NOOP("CaptureOverlay", "复制选区"));
    bound(keys.saveScreenshot, QT_TRANSLATE_NOOP("CaptureOverlay", "保存截图"));
    bound(keys.pin, QT_TRANSLATE_NOOP("CaptureOverlay", "贴图"));
    bound(keys.prevHistory, QT_TRANSLATE_NOOP("CaptureOverlay", "上一个历史截图"));
    bound(keys.nextHistory, QT_TRANSLATE_NOOP("CaptureOverlay", "下一个历史截图"));
    return rows;
}

HintCard::HintCard(const QList<HintRow> &rows)
{
    const QFontMetricsF keyMetrics(keyFont());
    const QFontMetricsF descriptionMetrics(descriptionFont());
    const double chipHeight = keyMetrics.height() + 4;
    double y = kPadding;
    double widest = 0;
    for (const HintRow &row : rows) {
        if (row.isGap()) {
            y += kGap;
            continue;
        }
        const double chipWidth = std::max(keyMetrics.horizontalAdvance(row.key) + 16, chipHeight + 6);
        const double descriptionWidth = descriptionMetrics.horizontalAdvance(row.description);
        const double height = std::max(chipHeight, descriptionMetrics.height());
        m_rows.append({row, QRectF(kPadding, y + (height - chipHeight) / 2, chipWidth, chipHeight),
                       QRectF(kPadding + chipWidth + kGap, y, descriptionWidth + 1, height)});
        widest = std::max(widest, chipWidth + kGap + descriptionWidth);
        y += height + kGap;
    }
    m_size = {std::ceil(widest + 2 * kPadding), std::ceil(y - kGap + kPadding)};
}

QRectF HintCard::place(double height, double bottomInset) const
{
    return {QPointF(kPadding, height - bottomInset - kPadding - m_size.height()), m_size};
}

void HintCard::paint(QPainter &painter, const QPointF &topLeft) const
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(topLeft);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 166));
    painter.drawRoundedRect(QRectF(QPointF(0, 0), m_size), 16, 16);
    for (const Row &row : m_rows) {
        painter.setPen(QPen(QColor(255, 255, 255, 102), 1.0));
        painter.setBrush(QColor(255, 255, 255, 38));
        painter.drawRoundedRect(row.chip, 4, 4);
        painter.setFont(keyFont());
        painter.setPen(Qt::white);
        painter.drawText(row.chip, Qt::AlignCenter, row.text.key);
        painter.setFont(descriptionFont());
        painter.setPen(QColor(224, 224, 224));
        painter.drawText(row.description, Qt::AlignLeft | Qt::AlignVCenter, row.text.description);
    }
    painter.restore();
}

} // namespace tavrel::ui
