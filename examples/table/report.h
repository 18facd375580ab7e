#pragma once

#include <Kelm.h>

#include "../shared/progress.h"

/// What goes to stderr: problems, by file and line, and a progress line while a terminal watches.
class Report {
public:
    explicit Report(int mostRowProblems);

    /// A problem that concerns a whole file.
    void FileProblem(const Kelm& text);

    /// A problem of one row. Beyond the number given at construction they are only counted.
    void RowProblem(const Kelm& path, int line, const Kelm& text);

    /// How far the work is.
    ProgressLine& Progress() { return m_progress; }

    /// Says how many problems of rows were not shown.
    void Finish();

    bool HasProblems() const { return m_fileProblems + m_rowProblems > 0; }

private:
    void Show(const Kelm& text);

    ProgressLine m_progress;
    int m_mostRowProblems;
    int m_rowProblems = 0;
    int m_fileProblems = 0;
};
