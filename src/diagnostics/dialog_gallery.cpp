#include "diagnostics/dialog_gallery.h"

#include "process/check_language.h"
#include "process/languages.h"
#include "ui/action_button.h"
#include "ui/chip.h"
#include "ui/dialog_hosts.h"
#include "ui/dialog_services.h"
#include "ui/dialogs.h"
#include "ui/flow_layout.h"
#include "ui/group_card.h"
#include "ui/menu_panel.h"
#include "ui/menu_row.h"
#include "ui/panel_frame.h"
#include "ui/panel_resize_handle.h"
#include "ui/rail_icon_button.h"
#include "ui/shell_panel.h"
#include "ui/sidebar_title_label.h"
#include "ui/studio_card.h"
#include "ui/theme_source.h"
#include "ui/tool_tile.h"
#include "ui/window_chrome.h"
#include "ui/window_control_button.h"

#include <QApplication>
#include <QButtonGroup>
#include <QDir>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>

#include <cstdio>
#include <memory>

namespace tavrel {
namespace {

using ui::dialogs::Icon;
using Kind = ui::WindowControlButton::Kind;

/// Words for the samples; what the program itself says comes from the translator.
struct Words
{
    QString title, text, longText, remove, name, path, hint, section, label;
    QStringList menu, choices, tools, rail;
};

Words wordsOf(bool english)
{
    if (english)
        return {QStringLiteral("Delete this capture?"),
                QStringLiteral("It leaves the history for good; a saved file stays where it is."),
                QStringLiteral("Rotating first merges the background and annotations into the image; they can no "
                               "longer be edited afterwards. "),
                QStringLiteral("Delete"),
                QStringLiteral("Rename"),
                QStringLiteral("The file could not be written:\n/home/someone/Pictures/a-folder-with-a-very-long-name-"
                               "that-has-no-blank-in-it/capture-2026-11-23.png"),
                QStringLiteral("Pick a tool, then tune its style here."),
                QStringLiteral("Aspect ratio"),
                QStringLiteral("Shadow"),
                {QStringLiteral("Copy"), QStringLiteral("Save as…"), QStringLiteral("Always on top"),
                 QStringLiteral("Opacity"), QStringLiteral("Close")},
                {QStringLiteral("Free"), QStringLiteral("Original"), QStringLiteral("1:1"), QStringLiteral("4:3"),
                 QStringLiteral("16:9"), QStringLiteral("Custom")},
                {QStringLiteral("Rectangle"), QStringLiteral("Arrow"), QStringLiteral("Smart erase"),
                 QStringLiteral("Text")},
                {QStringLiteral("Annotate"), QStringLiteral("Crop"), QStringLiteral("Background"),
                 QStringLiteral("Stitch")}};
    return {QStringLiteral("删除这条截图记录？"),
            QStringLiteral("它会从历史中永久移除；已保存的文件不受影响。"),
            QStringLiteral("旋转需要先将背景和标注合成到图片上，合成后背景和标注将无法编辑。"),
            QStringLiteral("删除"),
            QStringLiteral("重命名"),
            QStringLiteral("无法写入文件：\n/home/someone/图片/一个名字非常非常长而且中间没有空格的文件夹/"
                           "capture-2026-11-23-with-a-long-name.png"),
            QStringLiteral("选择一个工具后，在这里调整它的样式。"),
            QStringLiteral("比例"),
            QStringLiteral("阴影"),
            {QStringLiteral("复制"), QStringLiteral("另存为…"), QStringLiteral("始终置顶"), QStringLiteral("不透明度"),
             QStringLiteral("关闭")},
            {QStringLiteral("自由"), QStringLiteral("原始"), QStringLiteral("1:1"), QStringLiteral("4:3"),
             QStringLiteral("16:9"), QStringLiteral("自定义")},
            {QStringLiteral("矩形"), QStringLiteral("箭头"), QStringLiteral("智能擦除"), QStringLiteral("文字")},
            {QStringLiteral("标注"), QStringLiteral("裁剪"), QStringLiteral("背景"), QStringLiteral("拼接")}};
}

Words lengthenedWords()
{
    Words words = wordsOf(true);
    for (QString *text : {&words.title, &words.text, &words.longText, &words.remove, &words.name, &words.hint,
                          &words.section, &words.label})
        *text = lengthened(*text);
    for (QStringList *texts : {&words.menu, &words.choices, &words.tools, &words.rail}) {
        for (QString &text : *texts)
            text = lengthened(text);
    }
    return words;
}

QImage pictureOf(QWidget &widget)
{
    widget.setAttribute(Qt::WA_DontShowOnScreen);
    widget.show();
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    return widget.grab().toImage();
}

/// Stands for a window of the program.
std::unique_ptr<QWidget> makeWindow(const ui::Theme &theme, const QSize &size)
{
    auto window = std::make_unique<QWidget>();
    window->setObjectName(QStringLiteral("studioWindow"));
    window->setStyleSheet(QStringLiteral("QWidget#studioWindow { background: %1; }").arg(theme.studioWindow().name()) +
                          ui::studioStyleSheet(theme));
    window->resize(size);
    window->setAttribute(Qt::WA_DontShowOnScreen);
    return window;
}

/// What hovers or has the keyboard as the picture wants it, without a pointer.
void hover(QWidget *widget)
{
    widget->setAttribute(Qt::WA_UnderMouse);
    widget->update();
}

/// Several pictures of one size on a sheet, in two columns.
QImage sheetOf(const QList<QImage> &pictures)
{
    constexpr int columns = 2;
    const QSize cell = pictures.first().size();
    const int rows = static_cast<int>(pictures.size() + columns - 1) / columns;
    QImage sheet(cell.width() * columns, cell.height() * rows, QImage::Format_RGB32);
    sheet.fill(Qt::gray);
    QPainter painter(&sheet);
    for (int i = 0; i < pictures.size(); ++i) {
        QImage plain = pictures[i];
        plain.setDevicePixelRatio(1);
        painter.drawImage((i % columns) * cell.width(), (i / columns) * cell.height(), plain);
    }
    painter.end();
    return sheet;
}

using Ask = std::function<void(QWidget *)>;

QImage dialogPicture(const ui::Theme &theme, const Ask &ask)
{
    const auto window = makeWindow(theme, {560, 440});
    ui::WindowChrome::install(window.get(), ui::dialogs::themes(), 52);
    window->show();
    QCoreApplication::processEvents();
    ask(window.get());
    return pictureOf(*window);
}

QImage dialogs(const ui::Theme &theme, const Words &words)
{
    using namespace ui::dialogs;
    QString twenty;
    for (int i = 0; i < 20; ++i)
        twenty += words.longText;
    const auto tell = [&](Icon icon, const QString &title, const QString &text) {
        return [=](QWidget *window) { message(window, icon, title, text, {}); };
    };
    Options destructive;
    destructive.destructive = true;
    destructive.okText = words.remove;
    Options yes;
    yes.cancelDefault = false;
    const QList<Ask> asks{
        tell(Icon::Information, words.title, words.text),
        tell(Icon::Error, words.title, words.path),
        tell(Icon::None, words.title, {}),
        tell(Icon::None, {}, words.text),
        tell(Icon::Warning, words.title, twenty),
        tell(Icon::Information, words.longText, words.longText),
        [&](QWidget *window) { confirm(window, Icon::Question, words.title, words.text, yes, {}, nullptr); },
        [&](QWidget *window) { confirm(window, Icon::Warning, words.title, words.text, destructive, {}, nullptr); },
        [&](QWidget *window) { askText(window, words.name, words.text, QStringLiteral("capture-1"), {}); },
        [&](QWidget *window) { askText(window, words.name, {}, {}, {}); },
    };
    QList<QImage> pictures;
    for (const Ask &ask : asks)
        pictures.append(dialogPicture(theme, ask));
    return sheetOf(pictures);
}

/// On a coloured ground, as over another program's window.
QImage floating(const ui::Theme &theme, const Words &words)
{
    auto *card = new ui::dialogs::DialogCard(ui::dialogs::themes());
    card->setIcon(Icon::Question);
    card->setTitle(words.title);
    card->setText(words.text);
    card->setButtons({{words.choices[5], ui::dialogs::ButtonSpec::Cancel, true, 0},
                      {words.choices[0], ui::dialogs::ButtonSpec::Primary, false, 1},
                      {words.remove, ui::dialogs::ButtonSpec::Destructive, false, 2}});
    ui::dialogs::FloatingDialog dialog(card, true);
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    const QImage picture = pictureOf(dialog);
    QImage ground(picture.size(), QImage::Format_RGB32);
    ground.setDevicePixelRatio(picture.devicePixelRatio());
    ground.fill(theme.dark ? QColor(60, 84, 110) : QColor(190, 206, 220));
    QPainter(&ground).drawImage(QPointF(0, 0), picture);
    return ground;
}

QImage colorDialog(const ui::Theme &theme)
{
    const auto window = makeWindow(theme, {560, 640});
    window->show();
    ui::dialogs::pickColor(window.get(), QColor(30, 120, 220, 200), {});
    return pictureOf(*window);
}

QImage menus(const ui::Theme &theme, const Words &words)
{
    const auto entry = [](const char *id, const QString &label) {
        return ui::MenuEntry{QString::fromLatin1(id), label};
    };
    ui::MenuEntry copy = entry("copy", words.menu[0]);
    copy.shortcut = QStringLiteral("Ctrl+C");
    copy.glyph = QStringLiteral("ed_copy");
    ui::MenuEntry save = entry("save", words.menu[1]);
    save.shortcut = QStringLiteral("Ctrl+Shift+S");
    save.glyph = QStringLiteral("ed_save");
    ui::MenuEntry top = entry("top", words.menu[2]);
    top.startsGroup = true;
    top.isCheckable = true;
    top.isChecked = true;
    top.glyph = QStringLiteral("ed_pin");
    ui::MenuEntry opacity = entry("opacity", words.menu[3]);
    opacity.submenu = {entry("o1", QStringLiteral("50%")), entry("o2", QStringLiteral("75%"))};
    ui::MenuEntry close = entry("close", words.menu[4]);
    close.startsGroup = true;
    close.isEnabled = false;
    close.glyph = QStringLiteral("ed_close");
    auto menu = std::make_unique<ui::MenuPanel>(QList{copy, save, top, opacity, close}, theme, nullptr);
    menu->setAttribute(Qt::WA_DeleteOnClose, false);
    menu->rows().at(2)->setLit(true);
    const QImage one = pictureOf(*menu);
    const double ratio = one.devicePixelRatio();
    QImage ground(one.size() + QSize(40, 40), QImage::Format_RGB32);
    ground.setDevicePixelRatio(ratio);
    ground.fill(theme.dark ? QColor(60, 84, 110) : QColor(190, 206, 220));
    QPainter(&ground).drawImage(QPointF(20 / ratio, 20 / ratio), one);
    return ground;
}

/// Rest, hover, press and disabled, for each button and for a maximised window.
QImage windowButtons(const ui::Theme &theme)
{
    const auto window = makeWindow(theme, {230, 190});
    int y = 10;
    for (const bool restores : {false, true}) {
        for (int state = 0; state < 4; ++state) {
            if (restores && state > 1)
                continue;
            int x = 20;
            for (const Kind kind : {Kind::Minimize, Kind::Maximize, Kind::Close}) {
                auto *button = new ui::WindowControlButton(kind, theme, window.get());
                button->move(x, y);
                button->setRestores(restores);
                button->setDown(state == 2);
                button->setDisabled(state == 3);
                button->show();
                if (state == 1)
                    hover(button);
                x += ui::WindowControlButton::kWidth + 4;
            }
            y += 30;
        }
    }
    return pictureOf(*window);
}

void focus(QWidget *widget)
{
    QFocusEvent event(QEvent::FocusIn, Qt::TabFocusReason);
    QApplication::sendEvent(widget, &event);
    widget->setFocus(Qt::TabFocusReason);
}

QWidget *looks(const ui::Theme &theme, const Words &words)
{
    auto *card = new ui::StudioCard(theme);
    auto *grid = new QGridLayout(card);
    grid->setContentsMargins(16, 16, 16, 16);
    using Look = ui::ActionButton::Look;
    int row = 0;
    for (const Look look : {Look::Plain, Look::Tinted, Look::Filled, Look::Primary}) {
        for (int state = 0; state < 5; ++state) {
            auto *button = new ui::ActionButton(state == 4 ? QString() : QStringLiteral("ed_folder"),
                                                state == 3 ? QString() : words.menu[state % 2], look, theme, card);
            button->setHasMenu(state == 1);
            button->setDisabled(state == 2);
            if (state == 1)
                hover(button);
            grid->addWidget(button, row, state);
        }
        ++row;
    }
    return card;
}

QWidget *sidePanel(const ui::Theme &theme, const Words &words)
{
    const ui::PanelFrame frame = ui::makePanel(words.longText, words.hint);
    auto *tiles = new QWidget;
    auto *flow = new ui::FlowLayout(6, tiles);
    const QList<ToolType> tools{ToolType::Rect, ToolType::Arrow, ToolType::Eraser, ToolType::Text};
    for (int i = 0; i < 4; ++i) {
        auto *tile = new ui::ToolTile(tools[i], words.tools[i], theme);
        tile->setChecked(i == 1);
        tile->setDisabled(i == 2);
        if (i == 3)
            hover(tile);
        flow->addWidget(tile);
    }
    frame.add(tiles);
    auto *heading = new QLabel(words.section);
    heading->setProperty("role", QStringLiteral("section"));
    frame.add(heading);
    auto *chips = new QWidget;
    auto *line = new ui::FlowLayout(6, chips);
    for (int i = 0; i < words.choices.size(); ++i) {
        auto *chip = new ui::Chip(words.choices[i], theme);
        chip->setChecked(i == 1);
        chip->setDisabled(i == 4);
        if (i == 2)
            hover(chip);
        line->addWidget(chip);
    }
    frame.add(chips);
    auto *group = new ui::GroupCard;
    auto *value = new QLabel(QStringLiteral("24 px"));
    value->setProperty("role", QStringLiteral("value"));
    group->addRow(words.label, value);
    group->addRow(words.choices[5], new ui::ActionButton(QStringLiteral("ed_reset"), words.choices[0],
                                                         ui::ActionButton::Look::Plain, theme));
    frame.add(group);
    return frame.panel;
}

QImage studio(const ui::Theme &theme, const Words &words)
{
    const auto window = makeWindow(theme, {900, 520});
    ui::WindowChrome::install(window.get(), ui::dialogs::themes(), 52);
    auto *all = new QGridLayout(window.get());
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    auto *title = new ui::ShellPanel(ui::ShellPanel::Surface::TitleBar, Qt::BottomEdge, theme);
    title->setFixedHeight(52);
    auto *titleRow = new QHBoxLayout(title);
    titleRow->setContentsMargins(16, 0, 16, 0);
    auto *name = new QLabel(words.name);
    name->setProperty("role", QStringLiteral("windowTitle"));
    titleRow->addWidget(name);
    all->addWidget(title, 0, 0, 1, 3);
    auto *rail = new ui::ShellPanel(ui::ShellPanel::Surface::Rail, Qt::RightEdge, theme);
    rail->setFixedWidth(ui::RailIconButton::kRailWidth);
    auto *railColumn = new QVBoxLayout(rail);
    railColumn->setContentsMargins(0, 8, 0, 8);
    railColumn->setSpacing(2);
    const QStringList glyphs{QStringLiteral("ed_edit"), QStringLiteral("ed_crop"), QStringLiteral("ed_background"),
                             QStringLiteral("ed_stitch")};
    QList<ui::RailIconButton *> sections;
    for (int i = 0; i < 4; ++i) {
        sections.append(new ui::RailIconButton(glyphs[i], words.rail[i], theme));
        sections.last()->setChecked(i == 0);
        railColumn->addWidget(sections.last());
    }
    hover(sections[1]);
    sections[3]->setDisabled(true);
    railColumn->addStretch(1);
    all->addWidget(rail, 1, 0);
    auto *side = new ui::ShellPanel(ui::ShellPanel::Surface::Side, Qt::RightEdge, theme);
    side->setFixedWidth(304);
    auto *sideColumn = new QVBoxLayout(side);
    sideColumn->setContentsMargins(0, 0, 0, 0);
    sideColumn->addWidget(sidePanel(theme, words));
    all->addWidget(side, 1, 1);
    auto *middle = new QWidget;
    auto *middleColumn = new QVBoxLayout(middle);
    middleColumn->setContentsMargins(30, 30, 30, 30);
    middleColumn->addWidget(looks(theme, words));
    middleColumn->addStretch(1);
    all->addWidget(middle, 1, 2);
    auto *handle = new ui::PanelResizeHandle(side, ui::PanelResizeHandle::Side::Right, theme, window.get());
    window->show();
    QCoreApplication::processEvents();
    handle->setGeometry(side->geometry().right() - 3, side->y(), ui::PanelResizeHandle::kWidth, side->height());
    handle->show();
    window->activateWindow();
    focus(sections[2]);
    return pictureOf(*window);
}

} // namespace

int renderDialogGallery(const QStringList &values)
{
    const QString folder = values.value(0);
    if (folder.isEmpty() || folder.startsWith(u"--")) {
        std::fprintf(stderr, "用法: tavrel --render-dialog-gallery <folder> [--lang en]\n");
        return 2;
    }
    LanguageApplier language;
    const auto lang = values.indexOf(QStringLiteral("--lang"));
    const QString code = lang > 0 ? values.value(lang + 1) : QStringLiteral("system");
    language.apply(code);
    const Words words = code == u"check" ? lengthenedWords() : wordsOf(code == u"en");
    const QDir out(folder);
    bool written = out.mkpath(QStringLiteral("."));
    const auto write = [&](const QString &name, const QImage &image) {
        const QString path = out.filePath(name + QStringLiteral(".png"));
        written = image.save(path) && written;
        std::printf("%s\n", qPrintable(path));
    };
    for (const QString &name : {QStringLiteral("light"), QStringLiteral("dark")}) {
        const ui::ThemeSource themes(name);
        const ui::Theme &theme = themes.current();
        ui::dialogs::setThemeSource(&themes);
        const QString suffix = u'-' + name;
        write(QStringLiteral("dialogs") + suffix, dialogs(theme, words));
        write(QStringLiteral("floating") + suffix, floating(theme, words));
        write(QStringLiteral("color") + suffix, colorDialog(theme));
        write(QStringLiteral("menu") + suffix, menus(theme, words));
        write(QStringLiteral("window-buttons") + suffix, windowButtons(theme));
        write(QStringLiteral("studio") + suffix, studio(theme, words));
        ui::dialogs::setThemeSource(nullptr);
    }
    return written ? 0 : 1;
}

} // namespace tavrel
