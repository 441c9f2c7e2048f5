#include "ratios.h"

#include <fmt/format.h>

#include <algorithm>

namespace quobrix::bench {

namespace {

double median(std::vector<double> values) {
    const auto middle = values.begin() + std::ssize(values) / 2;
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs)
        if (run.run_type == Run::RT_Iteration && run.iterations > 0) {
            Times& times =
                times_[run.run_name.function_name + (run.run_name.args.empty() ? "" : "/") + run.run_name.args];
            times.real.push_back(run.real_accumulated_time / static_cast<double>(run.iterations));
            times.processor.push_back(run.cpu_accumulated_time / static_cast<double>(run.iterations));
        }
}

void RatioReporter::printRatios(const std::vector<Ratio>& ratios) const {
    fmt::print("\n| | ratio | of the least | aim | ms (processor) | against ms (processor) |\n"
               "|---|--:|--:|--:|--:|--:|\n");
    for (const Ratio& ratio : ratios) {
        const auto ours = times_.find(ratio.ours), theirs = times_.find(ratio.theirs);
        if (ours == times_.end() || theirs == times_.end())
            continue;
        const auto milliseconds = [](const Times& times) {
            return fmt::format("{:.3g} ({:.3g})", 1e3 * median(times.real), 1e3 * median(times.processor));
        };
        const double value = median(ours->second.real) / (ratio.times * median(theirs->second.real));
        const double least =
            std::ranges::min(ours->second.real) / (ratio.times * std::ranges::min(theirs->second.real));
        fmt::print("| {} | {:.3g}{} | {:.3g} | {} | {} | {} |\n", ratio.label, value,
                   ratio.aim > 0 && value > ratio.aim ? " (missed)" : "", least,
                   ratio.aim > 0 ? fmt::format("{:g}", ratio.aim) : "", milliseconds(ours->second),
                   milliseconds(theirs->second));
    }
}

int runAndCompare(int argc, char** argv, const std::vector<Ratio>& ratios) {
    std::vector<std::string> defaults = {"--benchmark_repetitions=7", "--benchmark_enable_random_interleaving=true",
                                         "--benchmark_report_aggregates_only=false", "--benchmark_min_time=0.5"};
    std::vector<char*> arguments = {argv[0]};
    for (std::string& option : defaults)
        arguments.push_back(option.data());
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios(ratios);
    return 0;
}

} // namespace quobrix::bench
