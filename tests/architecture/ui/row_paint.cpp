// Belongs to row.h, and so closes a circle.
#include "ui/row.h"

#include "ui/panel.h"
