#pragma once

#include <string>
#include <vector>

/// Two benchmarks of the same program whose times are compared.
struct Ratio
{
    std::string subject;   ///< a benchmark's name, arguments included
    std::string reference; ///< what it is measured against
    double limit;          ///< what the ratio of medians is meant not to exceed
};

/// Runs the registered benchmarks, each several times and interleaved with the others, so that a change of
/// the machine's speed meets subject and reference alike, and prints the ratios of their median times:
/// processor time, which other programs disturb least, or passed time for those registered with
/// UseRealTime(). Google Benchmark's own options may be given as well. Returns the program's exit code: 1
/// when a benchmark failed.
int runBenchmarks(int argc, char** argv, const std::vector<Ratio>& ratios);
