#pragma once

#include <Kelm.h>

#include <cstddef>
#include <vector>

#include "pieces.h"

/// From one code page to another.
struct Way {
    unsigned int from;
    unsigned int to;
};

/// Where a character stands: line and column from 1, the byte from 0.
struct Place {
    long long line = 1;
    long long column = 1;
    long long byte = 0;
};

/// What stands in the way of a file, and where.
struct Fault {
    Place place;
    Kelm text;
};

/// Whether the code page defines all bytes of the piece, and none of them is NUL.
bool IsDefined(const Piece& piece, unsigned int codePage);

/// Moves the place behind the piece.
void Advance(const Piece& piece, Place& place);

/// The faults of the piece character by character; the place moves behind it, or behind the last
/// fault once there are `most` in all.
void FindFaults(const Piece& piece, const Way& way, std::size_t most, Place& place,
                std::vector<Fault>& faults);
