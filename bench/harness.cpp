#include "harness.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <regex>

namespace bench {

namespace {
constexpr const char* kUsualLocale = "C.UTF-8";

[[noreturn]] void Fail(const std::string& message) {
    std::fprintf(stderr, "%s\n", message.c_str());
    std::exit(1);
}

/// For a message: the length and what of the beginning is ASCII.
std::string Start(const Answer& answer) {
    std::string text = std::to_string(answer.size()) + " units \"";
    for (char16_t unit : answer.substr(0, 100))
        text += unit >= u' ' && unit < 0x7F ? static_cast<char>(unit) : '?';
    return text + '"';
}
}  // namespace

Workload::~Workload() {
    if (hasLocale_)
        std::setlocale(LC_ALL, kUsualLocale);
}

void Workload::UseLocale(const char* name) {
    if (std::setlocale(LC_ALL, name) == nullptr)
        Fail(std::string("no locale ") + name + "; is LOCPATH set?");
    hasLocale_ = true;
}

double Workload::Seconds(int batch) {
    timespec now = {};
    clock_gettime(batch == 1 ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

std::string Workload::SizeName() const {
    return size_ == kLarge ? "1M" : std::to_string(size_);
}

void Workload::Expect(const char* implementation, const Answer& answer) {
    if (!answer_) {
        answer_ = answer;
        firstImplementation_ = implementation;
    } else if (*answer_ != answer) {
        Fail(name_ + "/" + SizeName() + ": " + implementation + " gives " + Start(answer) + ", " +
             firstImplementation_ + " " + Start(*answer_));
    }
}

void Suite::Run(const std::string& filter, benchmark::BenchmarkReporter& reporter) const {
    std::regex pattern(filter);
    std::setlocale(LC_ALL, kUsualLocale);
    for (const Case& entry : cases_) {
        if (!std::regex_search(entry.name, pattern))
            continue;
        for (int size : entry.sizes) {
            std::fprintf(stderr, "%s/%d\n", entry.name.c_str(), size);
            Workload workload(entry.name, size);
            entry.build(workload);
            benchmark::RunSpecifiedBenchmarks(&reporter, nullptr, ".");
            benchmark::ClearRegisteredBenchmarks();
        }
    }
}

}  // namespace bench
