#pragma once

#include <Kelm.h>

#include "report.h"
#include "table.h"

/// Pairs of different texts in one field of the rows that have at least `share` of the longer text
/// in common, as a table of its own: the most alike first. Compares the first `limit` different
/// texts, each with those whose length lets it reach the share; says so if there are more.
Table FindAlike(const Table& table, int field, double share, int limit, Report& report);
