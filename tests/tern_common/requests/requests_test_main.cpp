#include "tern_common/requests/open_resources_request.hpp"
#include "tests/support/process_record.hpp"
#include "tests/support/scripted_command_line.hpp"
#include "tests/tern_common/requests/relay.hpp"
#include "vell/asset_registry.hpp"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace
{

void relay(int argc, char** argv)
{
    if (std::getenv(RELAY) == std::string_view(AFTER_UPDATE))
    {
        const std::filesystem::path program = argv[0];
        const std::filesystem::path update = program.string() + ".update";
        std::filesystem::copy_file(program, update);
        std::filesystem::rename(update, program);
    }
    ::unsetenv(RELAY); // the process started next writes its record
    vell::AssetRegistry::instance().setType("curve", "Curve");
    const std::vector<std::string> arguments(argv, argv + argc);
    vell::OpenResourcesRequest::createFromArgs(ScriptedCommandLine(arguments, arguments))
        ->exec(nullptr, false);
}

} // namespace

/// The tests, or what the tests start: requests begin new processes of the program that makes them.
int main(int argc, char** argv)
{
    if (std::getenv(RELAY) != nullptr)
    {
        relay(argc, argv);
        return 0;
    }
    if (writeProcessRecord(argc, argv))
    {
        return 0;
    }
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
