#pragma once

#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>

namespace tavrel {

/// One field of the sheet: a kind of shape in one of its looks.
struct SheetCell
{
    QString name;
    QString shapes; ///< as a document stores them, in a picture of sheetCellSize()
    bool withHandles = false;
};

[[nodiscard]] QSize sheetCellSize();
[[nodiscard]] QList<SheetCell> sheetCells();
/// What lies below the shapes of a cell, with the device pixel ratio set.
[[nodiscard]] QImage sheetGround(bool dark, double ratio);

/// Draws every kind of shape in all its looks over a light and a dark picture at the ratios 1 and 2, and gives the exit
/// code.
///
/// values  what follows the option on the command line: the folder for the four pictures
[[nodiscard]] int renderShapeSheet(const QStringList &values);

} // namespace tavrel
