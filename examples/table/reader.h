#pragma once

#include <Kelm.h>

#include "options.h"
#include "plan.h"
#include "report.h"
#include "table.h"

/// Reads every file of the options, does the plan's edits and keeps the rows that pass its tests.
/// Files and rows that cannot be read are reported and left out. Throws `WrongUse` for options that
/// do not fit the fields.
class Reader {
public:
    Reader(const Options& options, Report& report);

    void ReadFiles();

    Table& GetTable() { return m_table; }
    const Plan& GetPlan();

private:
    void ReadFile(const Input& input);
    void TakeLine(const Kelm& bytes);
    void TakeRow(Kelm& row);
    void TakeHeader(const Kelm& row);
    void SetNames(const Kelm& names);
    bool HasRightFields(const Kelm& row);
    bool Decode(const Kelm& bytes, Kelm& text);
    void Problem(const Kelm& text);

    const Options& m_options;
    Report& m_report;
    Table m_table;
    Plan m_plan;
    bool m_hasPlan = false;
    const Input* m_input = nullptr;
    bool m_awaitsHeader = false;
    int m_line = 0;
};
