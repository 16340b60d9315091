#include "editor/app/open_session.hpp"

#include "editor/files/file_error.hpp"
#include "editor/level/track_curve.hpp"
#include "editor/requests/asset_types.hpp"
#include "editor/requests/editor_manager.hpp"
#include "editor/requests/open_request.hpp"
#include "kodo/core/debug_message_helper.hpp"
#include "kodo/fs/multi_file_system.hpp"
#include "vell/asset_registry.hpp"

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace
{

/// Whether this editor can show what the resource holds; says why not.
bool accepts(const std::string& resource, std::ostream& errors)
{
    const std::string name = Kodo::FS::fileSystem().diskPath(resource);
    const std::filesystem::path file(std::u8string(name.begin(), name.end())); // UTF-8 on Windows too
    const std::string type = vell::AssetRegistry::instance().typeOf(resource);
    try
    {
        if (type == "Level" || type == "Track")
        {
            readDocument(file);
        }
        return true;
    }
    catch (const FileError& error)
    {
        errors << "error: " << error.what() << '\n';
        return false;
    }
}

bool contains(const std::vector<std::string>& names, const std::string& name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

int runOpenSession(const EditorOptions& options, const char* program, std::ostream& out, std::ostream& errors)
{
    const Kodo::DebugMessageSink sink([&errors](const Kodo::DebugMessage& message)
                                      { errors << "error: " << message.text << '\n'; });
    registerAssetTypes();
    Kodo::FS::fileSystem().addRoot(".");

    EditorManager::Policy policy;
    policy.accepts = [&errors](const std::string& resource) { return accepts(resource, errors); };
    EditorManager manager(policy);

    // The request reads the process's own command line: as it would be without this editor's further options.
    std::vector<std::string> arguments{program, options.resources, "-uniquePerApp"};
    arguments.resize(options.uniquePerApp ? 3 : 2);
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
    {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);

    OpenRequestOptions request;
    request.argc = static_cast<int>(arguments.size());
    request.argv = argv.data();
    request.reportFile = options.report ? options.report->string() : std::string();
    const OpenRequestResult result = runOpenRequest(manager, request);

    for (const std::string& resource : result.opened)
    {
        out << resource << ": opened\n";
    }
    std::size_t left = 0;
    for (const std::string& resource : result.found)
    {
        const bool handedOn = manager.editorCount() > 0 &&
                              !vell::AssetRegistry::instance().typeOf(resource).empty() &&
                              result.startFailure.empty();
        if (!contains(result.opened, resource))
        {
            out << resource << (handedOn ? ": left to a new editor process\n" : ": not opened\n");
            left += handedOn ? 0 : 1;
        }
    }
    const bool allFound = result.found.size() == result.requested.size();
    if (!allFound)
    {
        errors << "error: " << result.requested.size() - result.found.size()
               << " of the resources are no files below the working directory\n";
    }
    return allFound && left == 0 && result.startFailure.empty() ? 0 : 1;
}
