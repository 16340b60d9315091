#include "kodo/loom/resource_map.hpp"

#include "kodo/core/text_position.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace Kodo::Loom
{

namespace
{

using Json = nlohmann::json;

class ResourceMapReader
{
public:
    ResourceMapReader(ResourceMap& map, const std::string& name, std::vector<std::string>& faults)
        : m_map(map), m_name(name), m_faults(faults)
    {
    }

    bool read(std::string_view text)
    {
        const std::optional<Json> root = parse(text);
        return root && readMembers(*root);
    }

private:
    std::optional<Json> parse(std::string_view text)
    {
        try
        {
            return Json::parse(text);
        }
        catch (const Json::parse_error& error)
        {
            // Its text begins with a name of its own and a place that counts bytes.
            std::string_view what = error.what();
            const std::size_t place = what.find(", column ");
            const std::size_t reason = what.find(": ", place == std::string_view::npos ? 0 : place);
            what = reason == std::string_view::npos ? what : what.substr(reason + 2);
            m_faults.push_back(textPosition(m_name, text, std::max<std::size_t>(error.byte, 1) - 1) + ": " +
                               std::string(what));
            return std::nullopt;
        }
    }

    bool readMembers(const Json& root)
    {
        if (!root.is_object())
        {
            return fault("", "is no object");
        }
        const auto language = root.find("language");
        const auto catalogues = root.find("catalogues");
        if (language == root.end() || !language->is_string())
        {
            return fault("/language", "is no text");
        }
        if (catalogues == root.end() || !catalogues->is_object())
        {
            return fault("/catalogues", "is no object");
        }
        m_map.language = language->get<std::string>();
        readCatalogues(*catalogues);
        for (const auto& [key, value] : root.items())
        {
            if (key == "fallbacks")
            {
                readFallbacks(value);
            }
            else if (key != "language" && key != "catalogues")
            {
                fault("/" + key, "is not known; it is ignored");
            }
        }
        if (!m_map.knows(m_map.language))
        {
            fault("/language", "is \"" + m_map.language + "\", which has no catalogue");
        }
        return true;
    }

    void readCatalogues(const Json& domains)
    {
        for (const auto& [domain, files] : domains.items())
        {
            const std::string path = "/catalogues/" + domain;
            if (domain.empty() || domain.find_first_of("#:") != std::string::npos)
            {
                fault(path, "cannot stand in a key; it is ignored");
                continue;
            }
            if (!files.is_object())
            {
                fault(path, "is no object; it is ignored");
                continue;
            }
            for (const auto& [language, file] : files.items())
            {
                if (file.is_string() && !language.empty())
                {
                    m_map.catalogues[domain][language] = file.get<std::string>();
                }
                else
                {
                    fault(path + "/" + language, language.empty() ? "names no language; it is ignored"
                                                                  : "is no text; it is ignored");
                }
            }
        }
    }

    void readFallbacks(const Json& languages)
    {
        if (!languages.is_object())
        {
            fault("/fallbacks", "is no object; it is ignored");
            return;
        }
        for (const auto& [language, fallbacks] : languages.items())
        {
            const std::string path = "/fallbacks/" + language;
            if (language.empty() || !fallbacks.is_array())
            {
                fault(path, "is no list for a language; it is ignored");
                continue;
            }
            std::vector<std::string>& list = m_map.fallbacks[language];
            for (const Json& fallback : fallbacks)
            {
                readFallback(list, fallback, path + "/" + std::to_string(&fallback - &fallbacks[0]));
            }
        }
    }

    void readFallback(std::vector<std::string>& list, const Json& fallback, const std::string& path)
    {
        if (!fallback.is_string())
        {
            fault(path, "is no text; it is ignored");
        }
        else if (!m_map.hasCatalogue(fallback.get<std::string>()))
        {
            fault(path, "is \"" + fallback.get<std::string>() + "\", which has no catalogue; it is ignored");
        }
        else
        {
            list.push_back(fallback.get<std::string>());
        }
    }

    bool fault(const std::string& path, const std::string& what)
    {
        m_faults.push_back(m_name + ": " + (path.empty() ? "the resource map" : path) + " " + what);
        return false;
    }

    ResourceMap& m_map;
    const std::string& m_name;
    std::vector<std::string>& m_faults;
};

} // namespace

bool ResourceMap::hasCatalogue(const std::string& name) const
{
    return std::any_of(catalogues.begin(), catalogues.end(),
                       [&name](const auto& domain) { return domain.second.contains(name); });
}

std::vector<std::string> ResourceMap::languages() const
{
    std::set<std::string> names;
    for (const auto& [domain, files] : catalogues)
    {
        for (const auto& [name, file] : files)
        {
            names.insert(name);
        }
    }
    for (const auto& [name, list] : fallbacks)
    {
        names.insert(name);
    }
    return {names.begin(), names.end()};
}

bool parseResourceMap(ResourceMap& out, std::string_view text, const std::string& name,
                      std::vector<std::string>& faults)
{
    return ResourceMapReader(out, name, faults).read(text);
}

} // namespace Kodo::Loom
