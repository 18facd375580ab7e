#pragma once

#include <Kelm.h>

/// Columns that a terminal gives the text: East Asian wide characters take two, accents that stand
/// on the letter in front of them none.
int Columns(const Kelm& text);

Kelm PadLeft(const Kelm& text, int columns);   ///< The text at the right end of a column.
Kelm PadRight(const Kelm& text, int columns);  ///< The text at the left end of a column.

/// The text, or as much of its beginning as fits with a `~` behind it.
Kelm CutTo(const Kelm& text, int columns);

/// The text as one line that cannot move a terminal's cursor: tabs become blanks, other control
/// characters go.
Kelm Printable(Kelm text);
