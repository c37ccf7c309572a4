#include "diagnostics/control_gallery.h"

#include "annotate/shape_document.h"
#include "process/languages.h"
#include "ui/action_button.h"
#include "ui/attribute_bar.h"
#include "ui/chip.h"
#include "ui/color_chip.h"
#include "ui/color_library.h"
#include "ui/glyph_button.h"
#include "ui/menu_panel.h"
#include "ui/modern_slider.h"
#include "ui/position_picker.h"
#include "ui/rail_icon_button.h"
#include "ui/segment_track.h"
#include "ui/segmented_control.h"
#include "ui/settings_combo_box.h"
#include "ui/thickness_capsule.h"
#include "ui/toggle_switch.h"
#include "ui/tool_tile.h"
#include "ui/window_control_button.h"

#include <QApplication>
#include <QDir>
#include <QEnterEvent>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>

#include <array>
#include <cstdio>
#include <functional>
#include <memory>

namespace tavrel {
namespace {

constexpr int kMargin = 16;
constexpr int kCaption = 20;
constexpr QSize kCell(230, 118);

enum class State { Rest, Hovered, Pressed, Focused, Disabled };
constexpr std::array kStates{State::Rest, State::Hovered, State::Pressed, State::Focused, State::Disabled};
constexpr std::array kStateNames{"rest", "hovered", "pressed", "focus", "disabled"};

struct Exhibit
{
    const char *name;
    std::function<QWidget *(const ui::Theme &theme, QWidget *parent)> make;
};

QString text(const char *source)
{
    return QCoreApplication::translate("tavrel::ui::AttributeBar", source);
}

QList<Exhibit> exhibits()
{
    return {
        {"ModernSlider",
         [](const ui::Theme &theme, QWidget *parent) {
             auto *slider = new ui::ModernSlider(theme, parent);
             slider->setRange(0, 100);
             slider->setValue(50);
             slider->resize(200, slider->height());
             return slider;
         }},
        {"ModernSlider, at its start",
         [](const ui::Theme &theme, QWidget *parent) {
             auto *slider = new ui::ModernSlider(theme, parent);
             slider->resize(200, slider->height());
             return slider;
         }},
        {"ToggleSwitch, off",
         [](const ui::Theme &theme, QWidget *parent) { return new ui::ToggleSwitch(theme, parent); }},
        {"ToggleSwitch, on",
         [](const ui::Theme &theme, QWidget *parent) {
             auto *button = new ui::ToggleSwitch(theme, parent);
             button->setChecked(true);
             return button;
         }},
        {"SegmentedControl",
         [](const ui::Theme &theme, QWidget *parent) {
             auto *control = new ui::SegmentedControl(theme, parent);
             control->setItems(
                 {{.text = text("标准")}, {.text = text("描边")}, {.text = text("背景"), .glyph = u"ed_plus"_qs}});
             control->resize(210, control->height());
             return control;
         }},
        {"PositionPicker",
         [](const ui::Theme &theme, QWidget *parent) {
             auto *picker = new ui::PositionPicker(theme, parent);
             picker->resize(200, picker->height());
             return picker;
         }},
        {"SegmentTrack",
         [](const ui::Theme &theme, QWidget *parent) {
             return new ui::SegmentTrack({{u"rect"_qs, u"rect"_qs, {}}, {u"circle"_qs, u"circle"_qs, {}}}, u"rect"_qs,
                                         theme, parent);
         }},
        {"GlyphButton",
         [](const ui::Theme &theme, QWidget *parent) {
             return new ui::GlyphButton(QStringLiteral("clock"), {}, theme, parent);
         }},
        {"ThicknessCapsule",
         [](const ui::Theme &theme, QWidget *parent) {
             return new ui::ThicknessCapsule(12, 1, 30, QColor(0xF9, 0x34, 0x42), theme, parent);
         }},
        {"SettingsComboBox",
         [](const ui::Theme &theme, QWidget *parent) {
             auto *box = new ui::SettingsComboBox(theme, parent);
             box->addItem(text("系统默认"));
             return box;
         }},
        {"ColorChip",
         [](const ui::Theme &theme, QWidget *parent) {
             auto *chip = new ui::ColorChip(QStringLiteral("#40D651"), 26, parent);
             chip->applyTheme(theme);
             return chip;
         }},
        {"ActionButton",
         [](const ui::Theme &theme, QWidget *parent) {
             return new ui::ActionButton(u"ed_copy"_qs, text("更多颜色"), ui::ActionButton::Look::Plain, theme, parent);
         }},
        {"ActionButton, filled",
         [](const ui::Theme &theme, QWidget *parent) {
             auto *button = new ui::ActionButton({}, text("更多颜色"), ui::ActionButton::Look::Filled, theme, parent);
             button->setHasMenu(true);
             return button;
         }},
        {"ActionButton, primary",
         [](const ui::Theme &theme, QWidget *parent) {
             return new ui::ActionButton({}, text("更多颜色"), ui::ActionButton::Look::Primary, theme, parent);
         }},
        {"Chip, checked",
         [](const ui::Theme &theme, QWidget *parent) {
             auto *chip = new ui::Chip(text("标准"), theme, parent);
             chip->setChecked(true);
             return chip;
         }},
        {"ToolTile",
         [](const ui::Theme &theme, QWidget *parent) {
             return new ui::ToolTile(ToolType::Watermark, text("水印排布方式"), theme, parent);
         }},
        {"RailIconButton",
         [](const ui::Theme &theme, QWidget *parent) {
             return new ui::RailIconButton(u"ed_crop"_qs, text("背景"), theme, parent);
         }},
        {"WindowControlButton",
         [](const ui::Theme &theme, QWidget *parent) {
             return new ui::WindowControlButton(ui::WindowControlButton::Kind::Close, theme, parent);
         }},
    };
}

void force(QWidget &control, State state)
{
    const QPointF centre = QRectF(control.rect()).center();
    QWidget *target = control.childAt(centre.toPoint()) ? control.childAt(centre.toPoint()) : &control;
    switch (state) {
    case State::Rest:
        break;
    case State::Hovered: {
        for (QWidget *widget : {target, &control}) {
            widget->setAttribute(Qt::WA_UnderMouse);
            QEnterEvent enter(centre, centre, centre);
            QCoreApplication::sendEvent(widget, &enter);
        }
        QMouseEvent move(QEvent::MouseMove, centre, centre, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(target, &move);
        break;
    }
    case State::Pressed: {
        target->setAttribute(Qt::WA_UnderMouse);
        if (qobject_cast<QComboBox *>(target))
            break; // it would open
        QMouseEvent press(QEvent::MouseButtonPress, centre, centre, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(target, &press);
        break;
    }
    case State::Focused:
        target->setFocus(Qt::TabFocusReason);
        break;
    case State::Disabled:
        control.setEnabled(false);
        break;
    }
}

QImage cell(const Exhibit &exhibit, const ui::Theme &theme, State state)
{
    QWidget window;
    window.setAttribute(Qt::WA_DontShowOnScreen);
    window.resize(kCell);
    window.setPalette(QPalette(theme.studioPanel()));
    window.setAutoFillBackground(true);
    QWidget *control = exhibit.make(theme, &window);
    if (control->size().isEmpty() || control->size() == QSize(100, 30))
        control->adjustSize();
    control->move((kCell.width() - control->width()) / 2, (kCell.height() - control->height()) / 2);
    window.setFocusPolicy(Qt::StrongFocus);
    window.show();
    QApplication::setActiveWindow(&window);
    window.setFocus();
    force(*control, state);
    QCoreApplication::processEvents();
    return window.grab().toImage();
}

QImage controls(const ui::Theme &theme)
{
    const QList<Exhibit> all = exhibits();
    const double ratio = qApp->devicePixelRatio();
    const QSize size(kMargin + static_cast<int>(kStates.size()) * (kCell.width() + kMargin),
                     kMargin + static_cast<int>(all.size()) * (kCell.height() + kCaption + kMargin));
    QImage sheet((QSizeF(size) * ratio).toSize(), QImage::Format_RGB32);
    sheet.setDevicePixelRatio(ratio);
    sheet.fill(theme.studioWindow());
    QPainter painter(&sheet);
    painter.setPen(theme.studioText());
    for (int row = 0; row < all.size(); ++row) {
        for (std::size_t i = 0; i < kStates.size(); ++i) {
            const QPoint at(kMargin + static_cast<int>(i) * (kCell.width() + kMargin),
                            kMargin + row * (kCell.height() + kCaption + kMargin));
            painter.drawText(QRect(at, QSize(kCell.width(), kCaption)), Qt::AlignLeft | Qt::AlignVCenter,
                             QStringLiteral("%1: %2").arg(QLatin1String(all[row].name), QLatin1String(kStateNames[i])));
            painter.drawImage(at + QPoint(0, kCaption), cell(all[row], theme, kStates[i]));
        }
    }
    return sheet;
}

constexpr std::array kTools{ToolType::Rect,      ToolType::Arrow,     ToolType::Pen,       ToolType::Marker,
                            ToolType::Eraser,    ToolType::Sequence,  ToolType::Mosaic,    ToolType::SmartErase,
                            ToolType::Spotlight, ToolType::Watermark, ToolType::Magnifier, ToolType::Text};

/// The bars of all tools, in one line or as rows.
QImage bars(const ui::Theme &theme, int fixedWidth)
{
    QWidget window;
    window.setAttribute(Qt::WA_DontShowOnScreen);
    window.setPalette(QPalette(fixedWidth > 0 ? theme.studioPanel() : QColor(110, 130, 150)));
    ShapeDocument document;
    document.setTextLineProvider([] { return QList<QRectF>(); });
    document.setWatermarkText(QStringLiteral("Draft {{yyyy-MM-dd}}"));
    QPoint at(kMargin, kMargin);
    QRect whole;
    for (const ToolType tool : kTools) {
        document.setTool(tool);
        auto *bar = new ui::AttributeBar(&document, &window, fixedWidth);
        bar->setTheme(theme);
        bar->setTool(tool);
        bar->adjustSize();
        bar->move(at);
        whole |= bar->geometry();
        if (fixedWidth == 0)
            at.ry() += bar->height() + kMargin;
        else
            at = at.x() > 4 * fixedWidth ? QPoint(kMargin, at.y() + 260) : at + QPoint(fixedWidth + 2 * kMargin, 0);
    }
    window.resize(whole.right() + kMargin, whole.bottom() + kMargin);
    window.show();
    QCoreApplication::processEvents();
    return window.grab().toImage();
}

QImage menu(const ui::Theme &theme)
{
    QWidget window;
    window.setAttribute(Qt::WA_DontShowOnScreen);
    window.setPalette(QPalette(QColor(110, 130, 150)));
    auto *panel = new ui::MenuPanel(
        {{.id = u"a"_qs, .label = text("更多颜色"), .shortcut = u"Ctrl+C"_qs, .glyph = u"ed_copy"_qs},
         {.id = u"b"_qs, .label = text("标准"), .isCheckable = true, .isChecked = true},
         {.id = u"c"_qs, .label = text("描边"), .isCheckable = true, .isEnabled = false},
         {.id = u"d"_qs, .label = text("水印排布方式"), .glyph = u"wmTile"_qs, .startsGroup = true, .submenu = {{}}}},
        theme, &window);
    panel->setWindowFlags(Qt::Widget);
    panel->move(kMargin, kMargin);
    window.resize(panel->size() + QSize(2 * kMargin, 2 * kMargin));
    window.show();
    const QPointF first(40, 40);
    QMouseEvent move(QEvent::MouseMove, first, panel->mapToGlobal(first), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(panel, &move);
    return window.grab().toImage();
}

} // namespace

int renderControlGallery(const QStringList &values)
{
    const QString folder = values.value(0);
    if (folder.isEmpty() || folder.startsWith(u"--")) {
        std::fprintf(stderr, "用法: tavrel --render-control-gallery <folder> [--lang en]\n");
        return 2;
    }
    LanguageApplier language;
    const auto lang = values.indexOf(QStringLiteral("--lang"));
    language.apply(lang > 0 ? values.value(lang + 1) : QStringLiteral("system"));
    ui::ColorLibrary::instance().reset();
    const QDir out(folder);
    bool written = out.mkpath(QStringLiteral("."));
    const auto write = [&](const QString &name, const ui::Theme &theme, const QImage &image) {
        const QString path = out.filePath(name + (theme.dark ? u"-dark.png"_qs : u"-light.png"_qs));
        written = image.save(path) && written;
        std::printf("%s\n", qPrintable(path));
    };
    for (const ui::Theme &theme : {ui::lightTheme(), ui::darkTheme()}) {
        write(QStringLiteral("controls"), theme, controls(theme));
        write(QStringLiteral("attribute-bars"), theme, bars(theme, 0));
        write(QStringLiteral("attribute-rows"), theme, bars(theme, 264));
        write(QStringLiteral("menu"), theme, menu(theme));
    }
    return written ? 0 : 1;
}

} // namespace tavrel
