#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "harness.h"

namespace {

/// One file for many runs: the head is written before the first and the tail after the last.
class OneReport : public benchmark::JSONReporter {
public:
    bool ReportContext(const Context& context) override {
        if (hasBegun_)
            return true;
        hasBegun_ = true;
        return JSONReporter::ReportContext(context);
    }
    void Finalize() override {}
    void End() {
        if (hasBegun_)
            JSONReporter::Finalize();
    }

private:
    bool hasBegun_ = false;
};

bool TakeOption(std::string_view argument, std::string_view name, std::string& value) {
    if (!argument.starts_with(name))
        return false;
    value = argument.substr(name.size());
    return true;
}

void AddAll(bench::Suite& suite) {
    using Add = void (*)(bench::Suite&);
    const Add groups[] = {bench::AddLifetime, bench::AddConcat,    bench::AddFormat,
                          bench::AddTokens,   bench::AddCodePages, bench::AddCompare,
                          bench::AddSearch,   bench::AddExtract,   bench::AddCase,
                          bench::AddReplace,  bench::AddRemove,    bench::AddEdit,
                          bench::AddFields,   bench::AddValues,    bench::AddSimilar,
                          bench::AddThreads,  bench::AddDoubling};
    for (Add add : groups)
        add(suite);
}

}  // namespace

int main(int argc, char** argv) {
    std::string filter = ".";
    std::string out = "results.json";
    std::string program = argv[0];
    std::string interleave = "--benchmark_enable_random_interleaving=true";
    std::string repetitions = "--benchmark_repetitions=5";
    std::string time = "--benchmark_min_time=0.05";
    std::vector<char*> rest = {program.data(), interleave.data(), repetitions.data(), time.data()};
    for (int i = 1; i < argc; i++) {
        if (!TakeOption(argv[i], "--filter=", filter) && !TakeOption(argv[i], "--out=", out))
            rest.push_back(argv[i]);
    }
    int count = static_cast<int>(rest.size());
    benchmark::Initialize(&count, rest.data());
    if (benchmark::ReportUnrecognizedArguments(count, rest.data()))
        return 1;

    std::ofstream file(out);
    OneReport report;
    report.SetOutputStream(&file);
    bench::Suite suite;
    AddAll(suite);
    suite.Run(filter, report);
    report.End();
    if (!file.flush()) {
        std::fprintf(stderr, "cannot write %s\n", out.c_str());
        return 1;
    }
    return 0;
}
