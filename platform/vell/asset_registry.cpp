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

std::string_view fileName(std::string_view path)
{
    const std::size_t separator = path.find_last_of(SEPARATORS);
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
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
    const std::string_view name = fileName(path);
    const bool isLower = std::none_of(name.begin(), name.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
    const std::string copy = isLower ? std::string() : lowered(name);
    const std::string_view folded = isLower ? name : std::string_view(copy);

    const std::shared_lock lock(m_mutex);
    for (std::size_t dot = folded.find('.', 1); dot != std::string_view::npos;
         dot = folded.find('.', dot + 1))
    {
        if (const auto found = m_types.find(folded.substr(dot + 1)); found != m_types.end())
        {
            return found->second;
        }
    }
    return {};
}

} // namespace vell
