#pragma once

/// What the classes see of narrow text: walked by character, folded and ordered, and byte by byte.
#include "multibyte/case.h"
#include "multibyte/characters.h"
#include "multibyte/single_bytes.h"
