#pragma once

#include <string>
#include <vector>

class EditorManager;

struct OpenRequestOptions
{
    int argc = 0; ///< the process's own command line
    char** argv = nullptr;
    bool reload = false;    ///< read resources again that are open already
    std::string reportFile; ///< takes one line a process; empty for none
};

struct OpenRequestResult
{
    std::vector<std::string> requested; ///< as the command line has them
    std::vector<std::string> found;     ///< of these, the names of files that are there
    std::vector<std::string> opened;    ///< of these, what this process opened
    bool uniquePerApp = false;
    std::string startFailure; ///< why no new process could be started; empty when none failed
};

/// Opens what the command line of this process asks for: looks the resources up in the shared file system,
/// offers them to @p manager and starts a new editor process for the rest. Call it once at start-up, with the
/// file system's roots and the asset registry filled, before there are further threads.
///
/// A new process that cannot be started shows in the log as a message of priority 5, and nothing else comes
/// of it. With a report file, this process and those that it starts, directly or not, each append one JSON
/// object to it: "pid", "requested", "found", "opened", "uniquePerApp" and "startFailure". The file's path is
/// handed on in the environment, since the command line of a new process is the request's alone.
OpenRequestResult runOpenRequest(EditorManager& manager, const OpenRequestOptions& options);
