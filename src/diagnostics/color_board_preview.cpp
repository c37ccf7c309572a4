#include "diagnostics/color_board_preview.h"

#include "process/languages.h"
#include "ui/color_board.h"
#include "ui/color_chip.h"
#include "ui/color_chip_row.h"
#include "ui/color_library.h"
#include "ui/color_swatches.h"
#include "ui/eyedropper_layer.h"
#include "ui/eyedropper_sample.h"

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>

#include <cstdio>
#include <memory>
#include <vector>

namespace tavrel {
namespace {

constexpr int kMargin = 24;

/// Stands below the panels as a picture would.
class Ground final : public QWidget
{
public:
    explicit Ground(const QSize &size) { resize(size); }

    [[nodiscard]] QImage picture() const
    {
        QImage image((QSizeF(size()) * devicePixelRatioF()).toSize(), QImage::Format_RGB32);
        QPainter painter(&image);
        QLinearGradient gradient(0, 0, image.width(), image.height());
        gradient.setColorAt(0, QColor(92, 124, 160));
        gradient.setColorAt(0.5, QColor(240, 190, 90));
        gradient.setColorAt(1, QColor(150, 110, 96));
        painter.fillRect(image.rect(), gradient);
        for (int x = 0; x < image.width(); x += 7)
            painter.fillRect(x, 0, 1, image.height(), QColor(255, 255, 255, 90));
        painter.end();
        image.setDevicePixelRatio(devicePixelRatioF());
        return image;
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.drawImage(0, 0, picture());
    }
};

QImage pictureOf(QWidget &widget)
{
    widget.setAttribute(Qt::WA_DontShowOnScreen);
    widget.show();
    QCoreApplication::processEvents();
    return widget.grab().toImage();
}

QStringList fullPalette()
{
    QStringList colors = ui::ColorLibrary::defaults();
    for (int i = 0; colors.size() < ui::ColorLibrary::kMaxColors; ++i)
        colors.append(QColor::fromHsv(i * 18, 90 + i * 6, 235 - i * 7).name());
    return colors;
}

/// Boards with the default palette, a full and an empty one.
QImage boards(const ui::Theme &theme)
{
    Ground ground({3 * ui::ColorBoard::kWidth + 4 * kMargin, 480});
    const QList<QStringList> palettes{ui::ColorLibrary::defaults(), fullPalette(), {}};
    const QStringList colors{QStringLiteral("#007AFF"), QStringLiteral("#80FF8C00"), QStringLiteral("#FFFFFF")};
    std::vector<std::unique_ptr<ui::ColorLibrary>> libraries;
    for (int i = 0; i < palettes.size(); ++i) {
        libraries.push_back(std::make_unique<ui::ColorLibrary>());
        libraries.back()->setColors(palettes[i]);
        auto *board = new ui::ColorBoard(&ground, libraries.back().get());
        board->applyTheme(theme);
        board->setColor(colors[i], false);
        const int x = kMargin + i * (ui::ColorBoard::kWidth + kMargin);
        board->popupAt(QRect(x, 8, ui::ColorBoard::kWidth, 8));
    }
    return pictureOf(ground);
}

/// A chip on its way to another place.
QImage dragged(const ui::Theme &theme)
{
    Ground ground({ui::ColorBoard::kWidth + 2 * kMargin, 470});
    ui::ColorLibrary library;
    library.setColors(fullPalette().mid(0, 14));
    auto *board = new ui::ColorBoard(&ground, &library);
    board->applyTheme(theme);
    board->popupAt(QRect(kMargin, 8, ui::ColorBoard::kWidth, 8));
    pictureOf(ground);
    QWidget *chip = board->findChild<ui::ColorChipRow *>()->chips().at(1);
    const auto send = [chip](QEvent::Type type, const QPointF &point) {
        QMouseEvent event(type, point, chip->mapToGlobal(point), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(chip, &event);
    };
    send(QEvent::MouseButtonPress, QPointF(11, 11));
    send(QEvent::MouseMove, QPointF(11, 11) + QPointF(5 * 24 - 2, 3));
    return pictureOf(ground);
}

/// Every control with the keyboard's ring, and swatches of fixed colours.
QImage focused(const ui::Theme &theme)
{
    Ground ground({3 * ui::ColorBoard::kWidth + 4 * kMargin, 480});
    ui::ColorLibrary library;
    const QStringList names{QStringLiteral("colorSvArea"), QStringLiteral("colorHueBar"), QStringLiteral("hexEdit")};
    for (int i = 0; i < names.size(); ++i) {
        auto *board = new ui::ColorBoard(&ground, &library);
        board->applyTheme(theme);
        board->setColor(QStringLiteral("#40D651"), false);
        const int x = kMargin + i * (ui::ColorBoard::kWidth + kMargin);
        board->popupAt(QRect(x, 8, ui::ColorBoard::kWidth, 8));
        QFocusEvent focus(QEvent::FocusIn, Qt::TabFocusReason);
        QCoreApplication::sendEvent(board->findChild<QWidget *>(names[i]), &focus);
        QWidget *other = i == 0 ? board->findChild<QWidget *>(QStringLiteral("eyedropperButton"))
                                : board->findChild<QWidget *>(QStringLiteral("colorAlphaBar"));
        QFocusEvent second(QEvent::FocusIn, Qt::TabFocusReason);
        QCoreApplication::sendEvent(other, &second);
    }
    QWidget *row = ui::makeColorSwatches(fullPalette().mid(0, 12), QStringLiteral("#007AFF"), 26, {}, &ground);
    row->adjustSize();
    row->move(kMargin, ground.height() - row->height() - kMargin / 2);
    return pictureOf(ground);
}

/// The loupe in the middle, and where it had to turn to the other side.
QImage loupes()
{
    QImage all;
    int y = 0;
    for (const QPointF &point : {QPointF(120, 60), QPointF(560, 280)}) {
        Ground ground({600, 300});
        ground.setAttribute(Qt::WA_DontShowOnScreen);
        ground.show();
        const QImage picture = ground.picture();
        auto *layer =
            new ui::EyedropperLayer(&ground, [&](const QPointF &at) { return ui::eyedropperSample(picture, at); });
        QMouseEvent move(QEvent::MouseMove, point, point, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(layer, &move);
        const QImage one = pictureOf(ground);
        if (all.isNull())
            all = QImage(one.width(), one.height() * 2, QImage::Format_RGB32);
        QPainter painter(&all);
        QImage plain = one;
        plain.setDevicePixelRatio(1);
        painter.drawImage(0, y, plain);
        y += one.height();
    }
    return all;
}

} // namespace

int renderColorBoardPreview(const QStringList &values)
{
    const QString folder = values.value(0);
    if (folder.isEmpty() || folder.startsWith(u"--")) {
        std::fprintf(stderr, "用法: tavrel --render-color-board-preview <folder> [--lang en]\n");
        return 2;
    }
    LanguageApplier language;
    const auto lang = values.indexOf(QStringLiteral("--lang"));
    language.apply(lang > 0 ? values.value(lang + 1) : QStringLiteral("system"));
    const QDir out(folder);
    bool written = out.mkpath(QStringLiteral("."));
    const auto write = [&](const QString &name, const QImage &image) {
        const QString path = out.filePath(name + u".png"_qs);
        written = image.save(path) && written;
        std::printf("%s\n", qPrintable(path));
    };
    for (const ui::Theme &theme : {ui::lightTheme(), ui::darkTheme()}) {
        const QString suffix = theme.dark ? QStringLiteral("-dark") : QStringLiteral("-light");
        write(QStringLiteral("boards") + suffix, boards(theme));
        write(QStringLiteral("focus") + suffix, focused(theme));
        write(QStringLiteral("drag") + suffix, dragged(theme));
    }
    write(QStringLiteral("loupes"), loupes());
    return written ? 0 : 1;
}

} // namespace tavrel
