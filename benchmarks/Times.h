// How the benchmarks measure, and compare the product with its floor.
#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

#include <benchmark/benchmark.h>
#include <time.h>

namespace benchmarks {

using Clock = std::chrono::steady_clock;

template <typename Work>
double SecondsOf(Work work) {
    const Clock::time_point start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

inline double Quantile(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1,
                           static_cast<size_t>(share * static_cast<double>(values.size())))];
}

inline double Median(const std::vector<double>& values) {
    return Quantile(values, 0.5);
}

// Of the whole process, which others on the machine cannot spoil.
inline double CpuSeconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

template <typename Work>
double CpuSecondsOf(Work work) {
    const double start = CpuSeconds();
    work();
    return CpuSeconds() - start;
}

// The product and its floor in turn: the ratios of their medians, by the clock and by the processor's time.
class Paired {
  public:
    template <typename Work>
    void Floor(Work work) {
        Measure(work, floor_);
    }
    template <typename Work>
    void Product(Work work) {
        Measure(work, product_);
    }
    // Of the product.
    double lastSeconds() const { return product_.clock.back(); }

    void Report(benchmark::State& state) const {
        state.counters["ratio"] = Median(product_.clock) / Median(floor_.clock);
        state.counters["cpu_ratio"] = Median(product_.processor) / Median(floor_.processor);
        state.counters["cpu_ms"] = Median(product_.processor) * 1000;
        state.counters["floor_cpu_ms"] = Median(floor_.processor) * 1000;
        state.counters["wait_ms"] = Median(product_.clock) * 1000;
        state.counters["floor_ms"] = Median(floor_.clock) * 1000;
    }

  private:
    struct Series {
        std::vector<double> clock;
        std::vector<double> processor;
    };

    template <typename Work>
    static void Measure(Work work, Series& series) {
        double waited = 0;
        series.processor.push_back(CpuSecondsOf([&] { waited = SecondsOf(work); }));
        series.clock.push_back(waited);
    }

    Series floor_;
    Series product_;
};

}  // namespace benchmarks
