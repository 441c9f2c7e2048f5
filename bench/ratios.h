#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace quobrix::bench {

/// A claim: what is measured under the name OURS takes at most AIM times the time of THEIRS, TIMES over.
struct Ratio {
    std::string label;
    std::string ours;
    std::string theirs;
    double aim = 0; ///< 0: none, the ratio is told for what it is
    double times = 1;
};

/// The console's report, which remembers each benchmark's repetitions.
class RatioReporter final : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override;
    /// A table of RATIOS, in Markdown: the ratio of the medians, that of the least times (which other work on the
    /// machine disturbs least), the aim, and the two medians in milliseconds (in brackets: of the processor). Those of
    /// benchmarks that did not run are left out.
    void printRatios(const std::vector<Ratio>& ratios) const;

private:
    struct Times {
        std::vector<double> real; ///< seconds
        std::vector<double> processor;
    };
    std::map<std::string, Times> times_;
};

/// Runs all registered benchmarks several times over, interleaved so that a busy machine is unfair to nobody, and
/// prints the ratios. The command line is Google Benchmark's.
int runAndCompare(int argc, char** argv, const std::vector<Ratio>& ratios);

} // namespace quobrix::bench
