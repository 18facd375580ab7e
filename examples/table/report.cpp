#include "report.h"

#include <algorithm>
#include <cstdio>

Report::Report(int mostRowProblems) : m_mostRowProblems(mostRowProblems) {}

void Report::Show(const Kelm& text) {
    m_progress.Clear();
    std::fprintf(stderr, "%s\n", text.constBuffer());
}

void Report::FileProblem(const Kelm& text) {
    ++m_fileProblems;
    Show("table: " + text);
}

void Report::RowProblem(const Kelm& path, int line, const Kelm& text) {
    if (m_rowProblems++ < m_mostRowProblems) {
        Show(Kelm::FromFormat("%s:%d: %s", path.constBuffer(), line, text.constBuffer()));
    }
}

void Report::Finish() {
    m_progress.Clear();
    const int hidden = std::max(0, m_rowProblems - m_mostRowProblems);
    if (hidden > 0) {
        Show(Kelm::FromFormat("table: more problems of rows: %d; --problems N shows N", hidden));
    }
}
