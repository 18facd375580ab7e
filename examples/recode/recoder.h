#pragma once

#include <Kelm.h>

#include <functional>

#include "../shared/progress.h"
#include "faults.h"
#include "options.h"

/// Re-encodes files as the options say, and tells what became of each.
class Recoder {
public:
    explicit Recoder(const Options& options) : m_options(options) {}

    /// A file, or every file below a folder in the order of their names.
    void TakePath(const Kelm& path);

    /// From standard input to standard output: all of it or nothing.
    void TakeStandardInput();

    /// Says how many files became what.
    void Summarize();

    bool HasFailed() const { return m_failed > 0; }

private:
    using Write = std::function<void(const Kelm& bytes)>;

    struct Result {
        std::vector<Fault> faults;
        bool isSame = true;  // the bytes, before and after
    };

    void TakeEntry(const Kelm& path);
    void TakeFile(const Kelm& path);
    unsigned int ChoosePage(int descriptor) const;
    Result Recode(const Kelm& name, int descriptor, const Way& way, const Write& write);
    bool Check(const Kelm& name, int descriptor, const Way& way);
    void Rewrite(const Kelm& name, int descriptor, const Way& way, const Write& write);
    void Fail(const Kelm& name, const Kelm& text);

    const Options& m_options;
    ProgressLine m_progress;
    int m_done = 0;
    int m_same = 0;
    int m_failed = 0;
};
