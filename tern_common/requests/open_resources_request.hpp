#pragma once

#include "tern_common/export.hpp"

#include <memory>
#include <string>
#include <vector>

class IEditorManager;

namespace vell
{

class ICommandLineParser;

/// Resources that the user asked to open, offered to the running editor first; what it does not take goes to
/// a new editor process. A plain value; executing it does not change it. Bad resources are skipped in
/// silence.
class TERN_COMMON_API OpenResourcesRequest
{
public:
    OpenResourcesRequest();
    OpenResourcesRequest(const OpenResourcesRequest& other);
    OpenResourcesRequest(OpenResourcesRequest&& other) noexcept;
    OpenResourcesRequest& operator=(const OpenResourcesRequest& other);
    OpenResourcesRequest& operator=(OpenResourcesRequest&& other) noexcept;
    ~OpenResourcesRequest();

    /// The request of a command line: its first argument is the list of resources, separated by commas (two
    /// in a row have an empty resource between them), and the switch -uniquePerApp makes it unique. Without a
    /// first argument, or with an empty one, the request is empty and not unique whatever the switch says.
    /// Never null.
    static std::unique_ptr<OpenResourcesRequest> createFromArgs(const vell::ICommandLineParser& parser);

    /// Appends the resource as it is.
    void addResource(std::string resource);
    void setResources(std::vector<std::string> resources);
    const std::vector<std::string>& resources() const;
    bool empty() const;

    /// A unique request opens one resource at most in the running editor.
    void setUniquePerApp(bool uniquePerApp);
    bool isUniquePerApp() const;

    /// Replaces each path by the name under which the shared file system knows the file, and drops those that
    /// are not there or have no such name.
    void dissolveResources();

    /// Offers each resource of a known type to @p manager, in order, and starts one new process with those
    /// that it does not take, if it allows one. A null manager takes nothing and allows it.
    ///
    /// Resources are opened with the flags 5, and 2 on top when @p flag is set. The new process starts in
    /// this process's directory and is not waited for; that it cannot be started is ignored.
    void exec(IEditorManager* manager, bool flag);

protected:
    /// The command line of a new editor process for these resources:
    /// the application's path, a blank, the resources joined by commas in double quotes, and " -uniquePerApp"
    /// when the request is unique. Nothing is escaped.
    std::string queryString(const std::vector<std::string>& resources) const;

private:
    std::vector<std::string> m_resources;
    bool m_uniquePerApp = false;
};

} // namespace vell
