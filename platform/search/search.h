#pragma once

/// What the classes see of searching: runs of units, whatever they mean.
#include "search/scan.h"
#include "search/text_search.h"
