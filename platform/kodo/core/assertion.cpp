#include "kodo/core/assertion.hpp"

#include "kodo/core/debug_message_helper.hpp"

namespace Kodo
{

void reportAssertion(const char* expression, const char* path, int line) noexcept
{
    DebugMessageHelper(0, DebugMessageHelper::CRITICAL_PRIORITY)
        .criticalMessage("ASSERTION FAILED: %s\r\n%s(%d)%s%s\r\n", expression, path, line, "", "");
}

} // namespace Kodo
