#include "kodo/loom/resource_map.hpp"

#include "kodo/core/text_position.hpp"
#include "kodo/loom/json_outline.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>

namespace Kodo::Loom
{

namespace
{

using Kind = JsonOutline::Kind;

constexpr std::size_t LONGEST_NAME = 200; ///< of the file's, in a message

class ResourceMapReader
{
public:
    ResourceMapReader(ResourceMap& map, const std::string& name, std::vector<std::string>& faults)
        : m_map(map), m_name(name), m_faults(faults)
    {
    }

    bool read(std::string_view text)
    {
        JsonFault found;
        const std::optional<JsonOutline> root = readJson(text, found);
        if (!root)
        {
            m_faults.push_back(textPosition(m_name, text, found.offset) + ": " + found.what);
            return false;
        }
        return readMembers(*root);
    }

private:
    bool readMembers(const JsonOutline& root)
    {
        if (root.kind != Kind::Object)
        {
            return fault("", "is no object");
        }
        const JsonOutline* const language = root.find("language");
        const JsonOutline* const catalogues = root.find("catalogues");
        if (language == nullptr || language->kind != Kind::Text)
        {
            return fault("/language", "is no text");
        }
        if (catalogues == nullptr || catalogues->kind != Kind::Object)
        {
            return fault("/catalogues", "is no object");
        }
        m_map.language = language->text;
        readCatalogues(*catalogues);
        for (const auto& [key, value] : root.members)
        {
            if (key == "fallbacks")
            {
                readFallbacks(*value);
            }
            else if (key != "language" && key != "catalogues")
            {
                fault("/" + key, "is not known; it is ignored");
            }
        }
        if (!m_map.knows(m_map.language))
        {
            fault("/language", "is " + quoted(m_map.language) + ", which has no catalogue");
        }
        return true;
    }

    void readCatalogues(const JsonOutline& domains)
    {
        for (const auto& [domain, files] : domains.members)
        {
            const std::string path = "/catalogues/" + domain;
            if (domain.empty() || domain.find_first_of("#:") != std::string::npos)
            {
                fault(path, "cannot stand in a key; it is ignored");
                continue;
            }
            if (files->kind != Kind::Object)
            {
                fault(path, "is no object; it is ignored");
                continue;
            }
            for (const auto& [language, file] : files->members)
            {
                readCatalogue(domain, language, *file);
            }
        }
    }

    void readCatalogue(const std::string& domain, const std::string& language, const JsonOutline& file)
    {
        if (const char* const wrong = faultOf(language, file))
        {
            fault("/catalogues/" + domain + "/" + language, wrong);
            return;
        }
        m_map.catalogues[domain][language] = file.text;
        m_spoken.insert(language);
    }

    /// Null for nothing.
    static const char* faultOf(const std::string& language, const JsonOutline& file)
    {
        if (language.empty())
        {
            return "names no language; it is ignored";
        }
        if (file.kind != Kind::Text)
        {
            return "is no text; it is ignored";
        }
        return file.text.empty() ? "names no file; it is ignored" : nullptr;
    }

    void readFallbacks(const JsonOutline& languages)
    {
        if (languages.kind != Kind::Object)
        {
            fault("/fallbacks", "is no object; it is ignored");
            return;
        }
        for (const auto& [language, fallbacks] : languages.members)
        {
            const std::string path = "/fallbacks/" + language;
            if (language.empty() || fallbacks->kind != Kind::List)
            {
                fault(path, "is no list for a language; it is ignored");
                continue;
            }
            std::vector<std::string>& list = m_map.fallbacks[language];
            for (std::size_t i = 0; i < fallbacks->items.size(); ++i)
            {
                readFallback(list, fallbacks->items[i], path + "/" + std::to_string(i));
            }
        }
    }

    void readFallback(std::vector<std::string>& list, const std::optional<std::string>& fallback,
                      const std::string& path)
    {
        if (!fallback)
        {
            fault(path, "is no text; it is ignored");
        }
        else if (!m_spoken.contains(*fallback))
        {
            fault(path, "is " + quoted(*fallback) + ", which has no catalogue; it is ignored");
        }
        else
        {
            list.push_back(*fallback);
        }
    }

    static std::string quoted(const std::string& name) { return '"' + shortened(name, LONGEST_NAME) + '"'; }

    bool fault(const std::string& path, const std::string& what)
    {
        m_faults.push_back(m_name + ": " +
                           (path.empty() ? "the resource map" : shortened(path, LONGEST_NAME)) + " " + what);
        return false;
    }

    ResourceMap& m_map;
    const std::string& m_name;
    std::vector<std::string>& m_faults;
    std::set<std::string> m_spoken; ///< the languages that have a catalogue
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
