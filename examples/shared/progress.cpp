#include "progress.h"

#include <unistd.h>

#include <cstdio>

#include "terminal.h"

ProgressLine::ProgressLine() : m_isTerminal(isatty(STDERR_FILENO) != 0) {}

void ProgressLine::Show(const Kelm& text) {
    const auto now = std::chrono::steady_clock::now();
    if (!m_isTerminal || now - m_last < std::chrono::milliseconds(100)) {
        return;
    }
    m_last = now;
    m_isShown = true;
    // A line that the terminal wraps could not be taken away again.
    std::fprintf(stderr, "\r\033[K%s", CutTo(text, 79).constBuffer());
}

void ProgressLine::Clear() {
    if (m_isShown) {
        std::fputs("\r\033[K", stderr);
        m_isShown = false;
    }
}
