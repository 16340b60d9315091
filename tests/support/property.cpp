#include "tests/support/property.hpp"

#include <cstdlib>
#include <string>

bool takePropertySeedFromEnvironment()
{
    const char* const seed = std::getenv("TERN_TEST_SEED");
    if (seed == nullptr)
    {
        return false;
    }
    const std::string parameters = std::string("seed=") + seed;
#if defined(_WIN32)
    return _putenv_s("RC_PARAMS", parameters.c_str()) == 0;
#else
    return setenv("RC_PARAMS", parameters.c_str(), 1) == 0;
#endif
}
