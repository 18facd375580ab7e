#pragma once

#include <Kelm.h>

#include <vector>

#include "report.h"
#include "table.h"

/// Prints the fields of the rows in columns, numbers to the right, none wider than `mostColumns`
/// unless that is 0.
void PrintAligned(const Table& table, const std::vector<int>& fields, int mostColumns);

/// Prints the names and rows with the delimiter between the fields, in a code page. Reports rows
/// that this code page cannot express and fields that hold the delimiter.
void PrintDelimited(const Table& table, const std::vector<int>& fields, char delimiter,
                    unsigned int codePage, Report& report);
