#include "ui/color_swatches.h"

#include "ui/color_chip.h"
#include "ui/color_library.h"

#include <QHBoxLayout>

#include <memory>

namespace tavrel::ui {

QWidget *makeColorSwatches(const QStringList &colors, const QString &current, int size,
                           std::function<void(const QString &hex)> chosen, QWidget *parent)
{
    auto *row = new QWidget(parent);
    row->setObjectName(QStringLiteral("colorSwatches"));
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    const auto shared = std::make_shared<std::function<void(const QString &)>>(std::move(chosen));
    for (const QString &color : colors) {
        const QString hex = ColorLibrary::normalize(color);
        if (hex.isEmpty())
            continue;
        auto *chip = new ColorChip(hex, size, row);
        chip->setToolTip(hex);
        chip->setSelected(hex == ColorLibrary::normalize(current));
        layout->addWidget(chip);
        QObject::connect(chip, &QAbstractButton::clicked, row, [row, hex, shared] {
            for (ColorChip *other : row->findChildren<ColorChip *>())
                other->setSelected(other->hex() == hex);
            const std::function<void(const QString &)> call(*shared); // the row may go in it, and this function with it
            if (call)
                call(hex);
        });
    }
    return row;
}

} // namespace tavrel::ui
