#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QWidget;

namespace tavrel::ui {

/// A row of round swatches of fixed colours; the chosen one has a ring.
///
/// colors   "#RRGGBB"; what is no colour is left out
/// current  the one that has the ring first; may be none of them
/// size     of a swatch, in pixels
/// chosen   told the colour of a click, after the ring has moved; may delete the row
[[nodiscard]] QWidget *makeColorSwatches(const QStringList &colors, const QString &current, int size,
                                         std::function<void(const QString &hex)> chosen, QWidget *parent = nullptr);

} // namespace tavrel::ui
