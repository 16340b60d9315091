#include "benchmarks/ratio_report.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>

namespace
{

double timeOf(const benchmark::BenchmarkReporter::Run& run)
{
    return run.run_name.time_type.empty() ? run.cpu_accumulated_time : run.real_accumulated_time;
}

/// Prints the median of each benchmark and keeps the time of every run.
class TimeCollector : public benchmark::ConsoleReporter
{
public:
    TimeCollector() : ConsoleReporter(OO_None) {}

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
        {
            if (run.error_occurred)
            {
                m_failed = true;
            }
            else if (run.run_type == Run::RT_Iteration)
            {
                m_times[run.run_name.str()].push_back(timeOf(run) / static_cast<double>(run.iterations));
            }
        }
        std::vector<Run> medians;
        std::copy_if(runs.begin(), runs.end(), std::back_inserter(medians),
                     [](const Run& run) { return run.aggregate_name == "median"; });
        ConsoleReporter::ReportRuns(medians);
    }

    bool failed() const { return m_failed; }

    /// The median time of an iteration in seconds; 0 for a benchmark that did not run.
    double median(const std::string& name) const
    {
        const auto found = m_times.find(name);
        if (found == m_times.end())
        {
            return 0;
        }
        std::vector<double> times = found->second;
        std::sort(times.begin(), times.end());
        const std::size_t half = times.size() / 2;
        return times.size() % 2 != 0 ? times[half] : (times[half - 1] + times[half]) / 2;
    }

private:
    std::map<std::string, std::vector<double>> m_times;
    bool m_failed = false;
};

bool contains(const std::vector<std::string>& arguments, const std::string& option)
{
    return std::any_of(arguments.begin(), arguments.end(),
                       [&option](const std::string& argument) { return argument.starts_with(option); });
}

} // namespace

int runBenchmarks(int argc, char** argv, const std::vector<Ratio>& ratios)
{
    std::vector<std::string> arguments(argv, argv + argc);
    for (const char* standard : {"--benchmark_repetitions=9", "--benchmark_enable_random_interleaving=true",
                                 "--benchmark_min_time=0.1"})
    {
        const std::string option(standard);
        if (!contains(arguments, option.substr(0, option.find('=') + 1)))
        {
            arguments.push_back(option);
        }
    }
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
    {
        pointers.push_back(argument.data());
    }
    int count = static_cast<int>(pointers.size());
    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data()))
    {
        return 2;
    }
    TimeCollector times;
    benchmark::RunSpecifiedBenchmarks(&times);

    std::printf("\n%-44s %-44s %8s %8s\n", "benchmark", "against", "ratio", "limit");
    for (const Ratio& ratio : ratios)
    {
        const double subject = times.median(ratio.subject);
        const double reference = times.median(ratio.reference);
        if (subject > 0 && reference > 0)
        {
            std::printf("%-44s %-44s %8.3f %8.3f\n", ratio.subject.c_str(), ratio.reference.c_str(),
                        subject / reference, ratio.limit);
        }
    }
    return times.failed() ? 1 : 0;
}
