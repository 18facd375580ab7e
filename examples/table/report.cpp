#include "report.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

Report::Report(int mostRowProblems)
    : m_isTerminal(isatty(STDERR_FILENO) != 0), m_mostRowProblems(mostRowProblems) {}

void Report::Show(const Kelm& text) {
    ClearProgress();
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

void Report::Progress(const Kelm& text) {
    const auto now = std::chrono::steady_clock::now();
    if (!m_isTerminal || now - m_lastProgress < std::chrono::milliseconds(100)) {
        return;
    }
    m_lastProgress = now;
    m_hasProgress = true;
    std::fprintf(stderr, "\r\033[K%s", text.constBuffer());
}

void Report::ClearProgress() {
    if (m_hasProgress) {
        std::fputs("\r\033[K", stderr);
        m_hasProgress = false;
    }
}

void Report::Finish() {
    ClearProgress();
    const int hidden = std::max(0, m_rowProblems - m_mostRowProblems);
    if (hidden > 0) {
        Show(Kelm::FromFormat("table: more problems of rows: %d; --problems N shows N", hidden));
    }
}
