#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "answer.h"

namespace bench {

inline constexpr int kSmall = 12;
inline constexpr int kMedium = 1000;
inline constexpr int kLarge = 1 << 20;

/// One task at one size, and what solves it. Every implementation is run once before anything is
/// timed, and all must give the same answer.
class Workload {
public:
    Workload(std::string name, int size) : name_(std::move(name)), size_(size) {}
    Workload(const Workload&) = delete;
    Workload& operator=(const Workload&) = delete;
    ~Workload();

    int Size() const { return size_; }

    /// Runs this workload in another locale.
    void UseLocale(const char* name);

    /// Times `run()` and the destruction of its result, which is the answer.
    template <class Run>
    void Add(const char* implementation, Run run) {
        Expect(implementation, AnswerOf(run()));
        AddUnchecked(implementation, std::move(run));
    }

    /// The same without an answer: for growth, where sizes and so answers differ.
    template <class Run>
    void AddUnchecked(const char* implementation, Run run) {
        Register(implementation, [run](benchmark::State& state) mutable { Loop(state, run); });
    }

    /// Times `run(value)` on fresh values of `make()`, neither making nor destroying them. The
    /// value afterwards is the answer.
    template <class Make, class Run>
    void AddInPlace(const char* implementation, Make make, Run run) {
        auto value = make();
        run(value);
        Expect(implementation, AnswerOf(value));
        AddInPlaceUnchecked(implementation, std::move(make), std::move(run));
    }

    template <class Make, class Run>
    void AddInPlaceUnchecked(const char* implementation, Make make, Run run) {
        int batch = std::clamp(65536 / size_, 1, 256);
        Register(implementation, [=](benchmark::State& state) mutable {
            std::vector<double> times;
            for (auto _ : state) {
                times.push_back(TimeBatch(make, run, batch));
                state.SetIterationTime(times.back());
            }
            // The median leaves out the batches that another process interrupted.
            auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
            std::nth_element(times.begin(), middle, times.end());
            state.counters["ns"] = *middle / batch * 1e9;
        })->UseManualTime();
    }

    /// As `Add`, by two threads at once on the same data.
    template <class Run>
    void AddContended(const char* implementation, Run run) {
        Expect(implementation, AnswerOf(run()));
        Register(implementation, [run](benchmark::State& state) mutable { Loop(state, run); })
            ->Threads(2)
            ->UseRealTime();
    }

private:
    template <class Run>
    static void Loop(benchmark::State& state, Run& run) {
        Run* pRun = &run;
        for (auto _ : state) {
            // The address escapes, so what the run reads counts as changed each time.
            benchmark::DoNotOptimize(pRun);
            auto result = (*pRun)();
            benchmark::DoNotOptimize(result);
        }
    }

    template <class Make, class Run>
    static double TimeBatch(Make& make, Run& run, int batch) {
        std::vector<decltype(make())> values;
        values.reserve(static_cast<std::size_t>(batch));
        for (int i = 0; i < batch; i++)
            values.push_back(make());
        double begin = Seconds(batch);
        for (auto& value : values) {
            run(value);
            benchmark::DoNotOptimize(value);
        }
        return Seconds(batch) - begin;
    }

    /// The thread's own time for a single long run, which would otherwise hold the turns of other
    /// processes; the wall's for a batch of short ones, as that clock is the cheaper one to read.
    static double Seconds(int batch);

    template <class Body>
    benchmark::internal::Benchmark* Register(const char* implementation, Body body) {
        std::string name = name_ + "/" + SizeName() + "/" + implementation;
        return benchmark::RegisterBenchmark(name.c_str(), std::move(body));
    }

    std::string SizeName() const;
    void Expect(const char* implementation, const Answer& answer);

    std::string name_;
    int size_;
    std::optional<Answer> answer_;
    std::string firstImplementation_;
    bool hasLocale_ = false;
};

/// The list of workloads; each is built when it is its turn, so that one data set lives at a time.
class Suite {
public:
    using Build = std::function<void(Workload&)>;

    void Add(std::string name, std::vector<int> sizes, Build build) {
        cases_.push_back({std::move(name), std::move(sizes), std::move(build)});
    }

    /// Runs the workloads whose name matches, each with its implementations interleaved, and
    /// reports all of them as one run.
    void Run(const std::string& filter, benchmark::BenchmarkReporter& reporter) const;

private:
    struct Case {
        std::string name;
        std::vector<int> sizes;
        Build build;
    };
    std::vector<Case> cases_;
};

void AddLifetime(Suite& suite);
void AddConcat(Suite& suite);
void AddFormat(Suite& suite);
void AddTokens(Suite& suite);
void AddCodePages(Suite& suite);
void AddCompare(Suite& suite);
void AddSearch(Suite& suite);
void AddExtract(Suite& suite);
void AddCase(Suite& suite);
void AddReplace(Suite& suite);
void AddRemove(Suite& suite);
void AddEdit(Suite& suite);
void AddFields(Suite& suite);
void AddValues(Suite& suite);
void AddSimilar(Suite& suite);
void AddThreads(Suite& suite);
void AddDoubling(Suite& suite);

}  // namespace bench
