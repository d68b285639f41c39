#include "ratio_main.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>

namespace marrowfin::bench {

namespace {

// Remembers the times so that the ratios can be printed after the run.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        // With repetitions the median stands for a benchmark.
        for (const auto& r : runs)
            if (r.run_type != Run::RT_Aggregate || r.aggregate_name == "median")
                times[r.run_name.str()] = r.GetAdjustedRealTime();
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> times;
};

}  // namespace

int RunWithRatios(int argc, char** argv, const std::vector<std::pair<std::string, std::string>>& ratios) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const auto& [a, b] : ratios) {
        auto ia = reporter.times.find(a), ib = reporter.times.find(b);
        if (ia == reporter.times.end() || ib == reporter.times.end() || ib->second <= 0) continue;
        std::printf("ratio %s / %s = %.2f\n", a.c_str(), b.c_str(), ia->second / ib->second);
    }
    benchmark::Shutdown();
    return 0;
}

}  // namespace marrowfin::bench
