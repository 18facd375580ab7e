#pragma once

#include <Kelm.h>

#include <vector>

#include "options.h"
#include "table.h"

/// A test of a field.
struct Test {
    enum Kind { Same, Other, With, Without, Equal, Less, AtMost, More, AtLeast, Set, NotSet };
    Kind kind;
    Kelm text;
    double number;

    bool Passes(const Kelm& value) const;
};

/// What happens to each row: a field is changed, or tested.
struct Step {
    Request::Kind kind;
    int field;
    Kelm oldText;  ///< to replace or to remove
    Kelm newText;
    Test test;
    int tabWidth;  ///< of every field
};

struct SortKey {
    int field;
    bool isNumber;
    bool isFalling;
};

/// The options with every field found by its name. Fields count from 0 here.
struct Plan {
    std::vector<Step> steps;  ///< in the order of the arguments
    bool anyCase = false;
    std::vector<SortKey> keys;
    std::vector<int> fields;  ///< to print
    int alikeField = -1;
    Kelm alikeShare;
};

/// For a table whose names and number of fields are known. Throws `WrongUse`.
Plan MakePlan(const Options& options, const Table& table);

/// Does the steps of the plan. False, and the row is of no more use, if it fails a test.
bool RunSteps(const Plan& plan, int fields, Kelm& row);

void SortRows(const Plan& plan, std::vector<Row>& rows);
