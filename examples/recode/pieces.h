#pragma once

#include <Kelm.h>

/// A part of a text that begins and ends between two characters.
struct Piece {
    Kelm bytes;
    WString text;  ///< what they decode to
};

/// Reads a file from its beginning in pieces, of which it keeps the present one.
class PieceReader {
public:
    /// `codePage` is none whose text shifts between sets.
    PieceReader(int descriptor, unsigned int codePage);

    /// False at the end. Throws `Failure` and `Interrupted`.
    bool Next(Piece& piece);

private:
    int m_descriptor;
    unsigned int m_codePage;
    Kelm m_rest;  // the first bytes of a character that the last piece did not hold whole
};
