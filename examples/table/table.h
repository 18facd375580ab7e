#pragma once

#include <Kelm.h>

#include <vector>

/// Separates the fields of a row in memory, whatever separates them in the file.
constexpr char kSeparator = '\x1f';

/// A row is one text: a block for each of its fields would cost several times the memory.
struct Row {
    Kelm text;
    int line;  ///< number in its file, from 1
    int file;  ///< index in `Table::files`
};

struct Table {
    Kelm names;        ///< joined like a row; empty if the fields have none
    int fields = 0;    ///< that a row has; 0 as long as that is not known
    int required = 0;  ///< that a row cannot do without
    std::vector<Row> rows;
    std::vector<Kelm> files;
};

/// Puts the fields of a row into `fields`, whose size stays: missing ones are empty. One walk with
/// `Find` and `Mid`, where `Element` in a loop would walk from the start for every field.
void SplitRow(const Kelm& row, std::vector<Kelm>& fields);

Kelm JoinRow(const std::vector<Kelm>& fields);
