#pragma once

#include <Kelm.h>

#include <chrono>

/// Wrong arguments; the text says what is wrong with them.
struct WrongUse {
    Kelm text;
};

/// What goes to stderr: problems, by file and line, and a progress line while a terminal watches.
class Report {
public:
    explicit Report(int mostRowProblems);

    /// A problem that concerns a whole file.
    void FileProblem(const Kelm& text);

    /// A problem of one row. Beyond the number given at construction they are only counted.
    void RowProblem(const Kelm& path, int line, const Kelm& text);

    /// Shows the text in the place of the one before, unless that is very young.
    void Progress(const Kelm& text);

    /// Takes the progress line away, for output that follows.
    void ClearProgress();

    /// Says how many problems of rows were not shown.
    void Finish();

    bool HasProblems() const { return m_fileProblems + m_rowProblems > 0; }

private:
    void Show(const Kelm& text);

    bool m_isTerminal;
    bool m_hasProgress = false;
    std::chrono::steady_clock::time_point m_lastProgress;
    int m_mostRowProblems;
    int m_rowProblems = 0;
    int m_fileProblems = 0;
};
