#include "editor/requests/open_request.hpp"

#include "editor/requests/command_line_parser.hpp"
#include "editor/requests/editor_manager.hpp"
#include "kodo/core/debug_message_helper.hpp"
#include "qua/process.hpp"
#include "tern_common/requests/open_resources_request.hpp"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#if defined(_WIN32)
#include <process.h>
#else
#include <unistd.h>
#endif

namespace
{

constexpr const char* REPORT_VARIABLE = "TERN_EDITOR_REPORT";

int processId()
{
#if defined(_WIN32)
    return ::_getpid();
#else
    return ::getpid();
#endif
}

/// The file to report to, by the options or by the process that started this one; new processes will know it.
std::string agreeOnReportFile(const std::string& given)
{
    if (given.empty())
    {
        const char* const inherited = std::getenv(REPORT_VARIABLE);
        return inherited == nullptr ? std::string() : inherited;
    }
    std::error_code error;
    std::string file = std::filesystem::absolute(given, error).string();
#if defined(_WIN32)
    ::_putenv_s(REPORT_VARIABLE, file.c_str());
#else
    ::setenv(REPORT_VARIABLE, file.c_str(), 1);
#endif
    return file;
}

void logMessage(const std::string& text)
{
    Kodo::DebugMessageHelper(0, 5).message(text);
}

/// Appends the report as one line. The line is written at once, so that those of several processes don't mix.
void writeReport(const std::string& file, const OpenRequestResult& result)
{
    const nlohmann::json report{{"pid", processId()},
                                {"requested", result.requested},
                                {"found", result.found},
                                {"opened", result.opened},
                                {"uniquePerApp", result.uniquePerApp},
                                {"startFailure", result.startFailure}};
    // Names need not be text: what is none is replaced instead of thrown at.
    const std::string line = report.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
    std::ofstream out(file, std::ios_base::binary | std::ios_base::app);
    out << line << std::flush;
    if (!out)
    {
        logMessage("The report file '" + file + "' could not be written");
    }
}

} // namespace

OpenRequestResult runOpenRequest(EditorManager& manager, const OpenRequestOptions& options)
{
    const std::string reportFile = agreeOnReportFile(options.reportFile);
    OpenRequestResult result;

    const auto request =
        vell::OpenResourcesRequest::createFromArgs(CommandLineParser(options.argc, options.argv));
    result.requested = request->resources();
    result.uniquePerApp = request->isUniquePerApp();
    request->dissolveResources();
    result.found = request->resources();

    const qua::Connection opened = manager.connectOpened([&result](const IEditor& editor)
                                                         { result.opened.push_back(editor.resource()); });
    const qua::Connection startFailed = qua::Process::connectStartFailed(
        [&result](const qua::Process& process)
        {
            result.startFailure = process.error().message();
            logMessage("A new editor process could not be started: " + result.startFailure);
        });
    request->exec(&manager, options.reload);

    if (!reportFile.empty())
    {
        writeReport(reportFile, result);
    }
    return result;
}
