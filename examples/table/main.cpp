// Delimited files in any code page as one table: `table --help` tells how to call it.

#include <Kelm.h>

#include <algorithm>
#include <cstdio>
#include <new>
#include <numeric>
#include <vector>

#include "../shared/arguments.h"
#include "../shared/source.h"
#include "alike.h"
#include "options.h"
#include "plan.h"
#include "print.h"
#include "reader.h"
#include "report.h"
#include "table.h"

namespace {

enum Status { kFine = 0, kProblems = 1, kWrongUse = 2 };

void CutRows(Table& table, int first) {
    if (first >= 0 && table.rows.size() > static_cast<size_t>(first)) {
        table.rows.resize(static_cast<size_t>(first));
    }
}

void PrintAlike(const Table& table, const Plan& plan, const Options& options, Report& report) {
    Table pairs =
        FindAlike(table, plan.alikeField, plan.alikeShare.Double(), options.alikeLimit, report);
    CutRows(pairs, options.first);
    std::vector<int> fields(static_cast<size_t>(pairs.fields));
    std::iota(fields.begin(), fields.end(), 0);
    report.Progress().Clear();
    PrintAligned(pairs, fields, options.width);
}

void PrintResult(Table& table, const Plan& plan, const Options& options, Report& report) {
    if (plan.alikeField >= 0) {
        PrintAlike(table, plan, options, report);
        return;
    }
    SortRows(plan, table.rows);
    CutRows(table, options.first);
    report.Progress().Clear();
    if (options.isDelimited) {
        PrintDelimited(table, plan.fields, options.outputDelimiter, options.outputPage, report);
    } else {
        PrintAligned(table, plan.fields, options.width);
    }
}

Status Run(const Options& options) {
    Report report(options.problems);
    Reader reader(options, report);
    reader.ReadFiles();
    Table& table = reader.GetTable();
    if (table.fields > 0) {
        PrintResult(table, reader.GetPlan(), options, report);
    }
    const bool isWritten = FinishOutput("table");
    report.Finish();
    return isWritten && !report.HasProblems() ? kFine : kProblems;
}

}  // namespace

int main(int argc, char** argv) {
    UseLocaleOfUser();
    try {
        const Options options = ParseArguments(std::vector<Kelm>(argv + 1, argv + argc));
        if (options.help) {
            std::fputs(kHelp, stdout);
            return FinishOutput("table") ? kFine : kProblems;
        }
        return Run(options);
    } catch (const WrongUse& wrong) {
        std::fprintf(stderr, "table: %s\nTry table --help.\n", wrong.text.constBuffer());
        return kWrongUse;
    } catch (const std::bad_alloc&) {
        std::fputs("table: out of memory\n", stderr);
        return kProblems;
    }
}
