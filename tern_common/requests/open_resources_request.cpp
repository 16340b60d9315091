#include "tern_common/requests/open_resources_request.hpp"

#include "kodo/fs/multi_file_system.hpp"
#include "kodo/fs/utils.hpp"
#include "qua/process.hpp"
#include "vell/asset_registry.hpp"
#include "vell/i_command_line_parser.hpp"
#include "vell/i_editor_manager.hpp"

#include <boost/algorithm/string/split.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace vell
{

namespace
{

constexpr const char* UNIQUE_SWITCH = "-uniquePerApp";
constexpr std::string_view UNIQUE_SUFFIX = " -uniquePerApp";
constexpr const char* LIST_SEPARATOR = ",";

constexpr IEditorManager::OpenFlags OPEN_FLAGS(std::uint16_t{5});
constexpr IEditorManager::OpenFlags OPEN_FLAGS_ON_DEMAND(std::uint16_t{2});

void appendList(std::string& text, const std::vector<std::string>& items)
{
    const char* separator = "";
    for (const std::string& item : items)
    {
        text += separator;
        text += item;
        separator = LIST_SEPARATOR;
    }
}

} // namespace

OpenResourcesRequest::OpenResourcesRequest() = default;
OpenResourcesRequest::OpenResourcesRequest(const OpenResourcesRequest& other) = default;
OpenResourcesRequest::OpenResourcesRequest(OpenResourcesRequest&& other) noexcept = default;
OpenResourcesRequest& OpenResourcesRequest::operator=(const OpenResourcesRequest& other) = default;
OpenResourcesRequest& OpenResourcesRequest::operator=(OpenResourcesRequest&& other) noexcept = default;
OpenResourcesRequest::~OpenResourcesRequest() = default;

std::unique_ptr<OpenResourcesRequest>
OpenResourcesRequest::createFromArgs(const vell::ICommandLineParser& parser)
{
    auto request = std::make_unique<OpenResourcesRequest>();
    if (parser.argc() < 2)
    {
        return request;
    }
    const char* const first = parser.argv()[1];
    const std::string list = first == nullptr ? "" : first;
    if (list.empty())
    {
        return request;
    }
    std::vector<std::string> resources;
    boost::algorithm::split(resources, list,
                            [](char c) { return c == *LIST_SEPARATOR; }); // empty items are kept
    request->setResources(std::move(resources));
    if (parser.getFlag(UNIQUE_SWITCH))
    {
        request->setUniquePerApp(true);
    }
    return request;
}

void OpenResourcesRequest::addResource(std::string resource)
{
    m_resources.push_back(std::move(resource));
}

void OpenResourcesRequest::setResources(std::vector<std::string> resources)
{
    m_resources = std::move(resources);
}

const std::vector<std::string>& OpenResourcesRequest::resources() const
{
    return m_resources;
}

bool OpenResourcesRequest::empty() const
{
    return m_resources.empty();
}

void OpenResourcesRequest::setUniquePerApp(bool uniquePerApp)
{
    m_uniquePerApp = uniquePerApp;
}

bool OpenResourcesRequest::isUniquePerApp() const
{
    return m_uniquePerApp;
}

void OpenResourcesRequest::dissolveResources()
{
    std::vector<std::string> dissolved;
    dissolved.reserve(m_resources.size());
    for (const std::string& path : m_resources)
    {
        if (!Kodo::FS::Utils::fileExists(path))
        {
            continue;
        }
        std::string name = Kodo::FS::fileSystem().dissolveFilename(path, nullptr);
        if (!name.empty())
        {
            dissolved.push_back(std::move(name));
        }
    }
    m_resources = std::move(dissolved);
}

void OpenResourcesRequest::exec(IEditorManager* manager, bool flag)
{
    std::vector<std::string> left = m_resources;
    std::erase_if(left, [&types = AssetRegistry::instance()](const std::string& resource)
                  { return types.typeOf(resource).empty(); });
    if (manager != nullptr)
    {
        const IEditorManager::OpenFlags flags = flag ? OPEN_FLAGS | OPEN_FLAGS_ON_DEMAND : OPEN_FLAGS;
        bool accepted = false;
        const auto offer = [&](const std::string& resource)
        {
            if ((m_uniquePerApp && accepted) || manager->openResource(resource.c_str(), flags) == nullptr)
            {
                return false;
            }
            accepted = true;
            return true;
        };
        left.erase(std::remove_if(left.begin(), left.end(), offer), left.end());
        if (!manager->allowsNewInstance())
        {
            return;
        }
    }
    if (!left.empty())
    {
        qua::Process(queryString(left), ".").execDetached({});
    }
}

std::string OpenResourcesRequest::queryString(const std::vector<std::string>& resources) const
{
    const std::string application = Kodo::FS::Utils::appPath();
    std::size_t length = application.size() + 3 + resources.size() + UNIQUE_SUFFIX.size();
    for (const std::string& resource : resources)
    {
        length += resource.size();
    }
    std::string line;
    line.reserve(length);
    line += application;
    line += " \"";
    appendList(line, resources);
    line += '"';
    if (m_uniquePerApp)
    {
        line += UNIQUE_SUFFIX;
    }
    return line;
}

} // namespace vell
