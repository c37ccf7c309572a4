#pragma once

#include "annotate/shape_enums.h"

#include <QString>

namespace tavrel {

/// A number as a badge writes it. Letters count as the columns of a spreadsheet do and are empty below 1, as Roman
/// numbers are; Chinese numbers from 100 on are written in digits.
[[nodiscard]] QString numberText(int number, NumberType type);

} // namespace tavrel
