#pragma once

#include <Kelm.h>

#include <map>

#include "../shared/source.h"

/// Ordered by the library's own `<`.
using WordCounts = std::map<Kelm, int>;

struct Text {
    Source source;
    WString wide;
    int bytes;   ///< as they stand in the file
    int narrow;  ///< bytes in the code page of the process
    int lines;   ///< with something on them
    int tokens;  ///< as `Kelm::Token` gives them
    int words;
};

/// A message on stderr.
void Complain(const Kelm& message);

/// Reads and decodes a file. Complains and gives false if that fails or the file is no text.
bool ReadText(const Source& source, Text& text);

/// Fills in the numbers of the text and counts its words, in lower case.
void CountText(Text& text, WordCounts& counts);
