#include "data.h"
#include "harness.h"

namespace bench {

namespace {

/// Two threads copy and destroy the same text.
void ContendedCopy(Workload& work) {
    std::string text = Words(work.Size());
    work.AddContended("kelm", [a = Kelm(text.c_str())] { return Kelm(a); });
    work.AddContended("shared_ptr",
                      [a = std::make_shared<const std::string>(text)] { return SharedText(a); });
    auto block = std::make_shared<BareCount::Block>(1, text);
    work.AddContended("atomic_pair", [block] { return BareCount(block.get()); });
#ifdef BENCH_QT
    work.AddContended("qt", [a = QtBytes(text)] { return QByteArray(a); });
#endif
}

}  // namespace

void AddThreads(Suite& suite) {
    suite.Add("contended_copy", {kMedium}, ContendedCopy);
}

}  // namespace bench
