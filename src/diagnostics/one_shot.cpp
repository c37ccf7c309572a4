#include "diagnostics/one_shot.h"

#include "diagnostics/app_icon.h"
#include "diagnostics/capture_probe.h"
#include "diagnostics/color_board_preview.h"
#include "diagnostics/control_gallery.h"
#include "diagnostics/detect_probe.h"
#include "diagnostics/dialog_gallery.h"
#include "diagnostics/elements_probe.h"
#include "diagnostics/erase_tools.h"
#include "diagnostics/hotkey_probe.h"
#include "diagnostics/hw_probe.h"
#include "diagnostics/long_selftest.h"
#include "diagnostics/service_probes.h"
#include "diagnostics/shape_sheet.h"
#include "diagnostics/toolbar_preview.h"
#include "diagnostics/window_chrome_probe.h"
#include "ui/icon_sheet.h"

#include <QImage>

#include <array>
#include <cstdio>

namespace tavrel {
namespace {

int usage(const char *line)
{
    std::fprintf(stderr, "用法: %s\n", line);
    return 2;
}

int writePicture(const QImage &image, const QString &path)
{
    if (image.save(path)) {
        std::printf("%s\n", qPrintable(path));
        return 0;
    }
    std::fprintf(stderr, "无法写入 %s\n", qPrintable(path));
    return 1;
}

int renderIconSheet(const QStringList &values)
{
    if (values.size() != 1)
        return usage("tavrel --render-icon-sheet <out.png>");
    return writePicture(ui::renderIconSheet(), values.first());
}

int renderGlyphSheet(const QStringList &values)
{
    if (values.isEmpty())
        return usage("tavrel --render-glyph-sheet <out.png> [name ...]");
    return writePicture(ui::renderGlyphSheet(values.mid(1)), values.first());
}

int detectProbe(const QStringList &values)
{
    if (values.size() != 1)
        return usage("tavrel --detect-probe <out.png>");
    return runDetectProbe(values.first());
}

struct OneShot
{
    const char *option;
    int (*run)(const QStringList &values);
};

constexpr std::array kOneShots{
    OneShot{"--render-color-board-preview", renderColorBoardPreview},
    OneShot{"--render-dialog-gallery", renderDialogGallery},
    OneShot{"--render-control-gallery", renderControlGallery},
    OneShot{"--render-toolbar-preview", renderToolbarPreview},
    OneShot{"--render-toolbar-config-preview", renderToolbarConfigPreview},
    OneShot{"--render-smart-erase-preview", renderSmartErasePreview},
    OneShot{"--erase-image", runEraseImage},
    OneShot{"--render-shape-sheet", renderShapeSheet},
    OneShot{"--permissions-probe", runPermissionsProbe},
    OneShot{"--autostart-probe", runAutoStartProbe},
    OneShot{"--render-icon-sheet", renderIconSheet},
    OneShot{"--render-app-icon", renderAppIcon},
    OneShot{"--render-document-icon", renderDocumentIcon},
    OneShot{"--elements-probe", runElementsProbe},
    OneShot{"--detect-probe", detectProbe},
    OneShot{"--hotkey-probe", runHotkeyProbe},
    OneShot{"--hw-probe", runHwProbe},
    OneShot{"--capture-probe", runCaptureProbe},
    OneShot{"--long-selftest", runLongSelftest},
    OneShot{"--render-glyph-sheet", renderGlyphSheet},
    OneShot{"--window-chrome-probe", runWindowChromeProbe},
};

} // namespace

int runOneShot(const QStringList &arguments)
{
    for (const OneShot &shot : kOneShots) {
        const auto at = arguments.indexOf(QString::fromLatin1(shot.option));
        if (at > 0)
            return shot.run(arguments.mid(at + 1));
    }
    return -1;
}

} // namespace tavrel
