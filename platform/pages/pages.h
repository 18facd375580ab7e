#pragma once

/// What the classes see of code pages: which one is the process's, and the way between the widths.
#include "pages/code_pages.h"
#include "pages/conversion.h"
