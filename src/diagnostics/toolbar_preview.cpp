#include "diagnostics/toolbar_preview.h"

#include "overlay/tool_guide_bubble.h"
#include "overlay/toolbar_widget.h"
#include "process/languages.h"
#include "ui/toolbar_config_dialog.h"

#include <QApplication>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

namespace tavrel {
namespace {

constexpr int kMargin = 24;

/// Stands below the panels as a dimmed picture would.
class Ground final : public QWidget
{
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        QLinearGradient gradient(0, 0, width(), height());
        gradient.setColorAt(0, QColor(92, 124, 160));
        gradient.setColorAt(1, QColor(150, 110, 96));
        painter.fillRect(rect(), gradient);
    }
};

ui::ToolbarWidget *addToolbar(QWidget &ground, const ui::Theme &theme, int y)
{
    auto *toolbar = new ui::ToolbarWidget(&ground);
    toolbar->setTheme(theme);
    toolbar->setHistoryState(true, false);
    toolbar->setCurrentTool(ToolType::Circle);
    toolbar->move(kMargin, y);
    return toolbar;
}

/// Collapsed with its bubble, expanded, and without labels.
std::unique_ptr<QWidget> toolbars(const ui::Theme &theme)
{
    auto ground = std::make_unique<Ground>();
    auto *collapsed = addToolbar(*ground, theme, kMargin);
    auto *bubble = new ui::ToolGuideBubble(ground.get());
    bubble->setTheme(theme);
    bubble->setTools(collapsed->hiddenTools());

    auto *expanded = addToolbar(*ground, theme, collapsed->y() + collapsed->height() + bubble->height() + kMargin);
    expanded->setExpanded(true);
    auto *plain = addToolbar(*ground, theme, expanded->y() + expanded->height() + kMargin);
    plain->setShowLabels(false);
    ground->resize(expanded->width() + 2 * kMargin, plain->y() + plain->height() + 2 * kMargin);
    bubble->pointAt(collapsed->expandCentre(), collapsed->geometry());
    bubble->show();
    return ground;
}

std::unique_ptr<QWidget> configDialog(const ui::Theme &theme)
{
    auto ground = std::make_unique<Ground>();
    ground->resize(520, 460);
    auto *dialog = new ui::ToolbarConfigDialog(ground.get());
    dialog->open(theme, QString());
    return ground;
}

QImage picture(QWidget &widget)
{
    widget.setAttribute(Qt::WA_DontShowOnScreen);
    widget.show();
    QCoreApplication::processEvents();
    return widget.grab().toImage();
}

/// The light one above the dark one.
QImage inBothThemes(const std::function<std::unique_ptr<QWidget>(const ui::Theme &)> &make)
{
    const QImage light = picture(*make(ui::lightTheme()));
    const QImage dark = picture(*make(ui::darkTheme()));
    QImage both(std::max(light.width(), dark.width()), light.height() + dark.height(), QImage::Format_RGB32);
    both.setDevicePixelRatio(light.devicePixelRatio());
    QPainter painter(&both);
    painter.drawImage(QPointF(0, 0), light);
    painter.drawImage(QPointF(0, light.height() / light.devicePixelRatio()), dark);
    painter.end();
    return both;
}

int render(const char *option, const QStringList &values, std::unique_ptr<QWidget> (*make)(const ui::Theme &theme))
{
    const QString path = values.value(0);
    if (path.isEmpty() || path.startsWith(u"--")) {
        std::fprintf(stderr, "用法: tavrel %s <out.png> [--lang en]\n", option);
        return 2;
    }
    LanguageApplier language;
    const auto lang = values.indexOf(QStringLiteral("--lang"));
    language.apply(lang > 0 ? values.value(lang + 1) : QStringLiteral("system"));
    if (inBothThemes(make).save(path)) {
        std::printf("%s\n", qPrintable(path));
        return 0;
    }
    std::fprintf(stderr, "无法写入 %s\n", qPrintable(path));
    return 1;
}

} // namespace

int renderToolbarPreview(const QStringList &values)
{
    return render("--render-toolbar-preview", values, toolbars);
}

int renderToolbarConfigPreview(const QStringList &values)
{
    return render("--render-toolbar-config-preview", values, configDialog);
}

} // namespace tavrel
