#pragma once

#include "ui/row.h"
