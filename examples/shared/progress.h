#pragma once

#include <Kelm.h>

#include <chrono>

/// A line on stderr that tells how far the work is, only while a terminal watches.
class ProgressLine {
public:
    ProgressLine();

    /// Shows the text in the place of the one before, unless that is very young.
    void Show(const Kelm& text);

    /// Takes the line away, for output that follows.
    void Clear();

private:
    bool m_isTerminal;
    bool m_isShown = false;
    std::chrono::steady_clock::time_point m_last;
};
