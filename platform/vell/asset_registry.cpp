#include "vell/asset_registry.hpp"

#include <algorithm>
#include <mutex>
#include <utility>

namespace vell
{

namespace
{

#if defined(_WIN32)
constexpr std::string_view SEPARATORS = "/\\:";
#else
constexpr std::string_view SEPARATORS = "/";
#endif

std::string lowered(std::string_view text)
{
    std::string result(text);
    for (char& c : result)
    {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return result;
}

std::string_view extensionOf(std::string_view path)
{
    const std::size_t separator = path.find_last_of(SEPARATORS);
    const std::string_view name = separator == std::string_view::npos ? path : path.substr(separator + 1);
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

} // namespace

AssetRegistry::AssetRegistry() = default;
AssetRegistry::~AssetRegistry() = default;

AssetRegistry& AssetRegistry::instance()
{
    static AssetRegistry registry;
    return registry;
}

void AssetRegistry::setType(std::string_view extension, std::string type)
{
    const std::unique_lock lock(m_mutex);
    if (type.empty())
    {
        m_types.erase(lowered(extension));
    }
    else if (!extension.empty())
    {
        m_types.insert_or_assign(lowered(extension), std::move(type));
    }
}

std::string AssetRegistry::typeOf(std::string_view path) const
{
    const std::string_view extension = extensionOf(path);
    const bool isLower =
        std::none_of(extension.begin(), extension.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
    const std::shared_lock lock(m_mutex);
    const auto found = isLower ? m_types.find(extension) : m_types.find(lowered(extension));
    return found == m_types.end() ? std::string() : found->second;
}

} // namespace vell
