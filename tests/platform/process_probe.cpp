#include "tests/support/process_record.hpp"

#include <cstdio>
#include <cstdlib>

/// Started by tests: writes down what it got and ends.
int main(int argc, char** argv)
{
    if (std::getenv("TERN_PROBE_TALKS") != nullptr)
    {
        std::puts("probe says hello");
        std::fflush(stdout);
    }
    return writeProcessRecord(argc, argv) ? 0 : 1;
}
