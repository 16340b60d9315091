#include "kodo/loom/resource_map.hpp"

#include "kodo/core/text_position.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>
#include <utility>

namespace Kodo::Loom
{

namespace
{

using Json = nlohmann::json;

/// Where a text stops being JSON, and why. Its own pass: the parser tells the place of some faults only here.
class JsonFault : private nlohmann::json_sax<Json>
{
public:
    explicit JsonFault(std::string_view text)
    {
        Json::sax_parse(text, static_cast<nlohmann::json_sax<Json>*>(this));
    }

    std::size_t offset() const noexcept { return m_offset; }
    const std::string& what() const noexcept { return m_what; }

private:
    static constexpr std::size_t LONGEST_REASON = 200;

    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool start_object(std::size_t) override { return true; }
    bool key(string_t&) override { return true; }
    bool end_object() override { return true; }
    bool start_array(std::size_t) override { return true; }
    bool end_array() override { return true; }
    bool parse_error(std::size_t position, const std::string&, const Json::exception& error) override
    {
        m_offset = position > 0 ? position - 1 : 0;
        m_what = error.what();
        // Its text begins with a name of its own and a place that counts bytes.
        if (m_what.starts_with('['))
        {
            m_what.erase(0, std::min(m_what.find("] ") + 2, m_what.size()));
        }
        if (const std::size_t reason = m_what.find(": "); m_what.starts_with("parse error"))
        {
            m_what.erase(0, reason + 2);
        }
        m_what = shortened(m_what, LONGEST_REASON); // it ends in what was read last, however long that is
        return false;
    }

    std::size_t m_offset = 0;
    std::string m_what;
};

class ResourceMapReader
{
public:
    ResourceMapReader(ResourceMap& map, const std::string& name, std::vector<std::string>& faults)
        : m_map(map), m_name(name), m_faults(faults)
    {
    }

    bool read(std::string_view text)
    {
        if (const std::size_t nul = text.find('\0'); nul != std::string_view::npos) // to the parser the end
        {
            m_faults.push_back(textPosition(m_name, text, nul) + ": a NUL in the text");
            return false;
        }
        const Json root = Json::parse(text, nullptr, false);
        if (root.is_discarded())
        {
            const JsonFault found(text);
            m_faults.push_back(textPosition(m_name, text, found.offset()) + ": " + found.what());
            return false;
        }
        return readMembers(root);
    }

private:
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
                readCatalogue(domain, language, file);
            }
        }
    }

    void readCatalogue(const std::string& domain, const std::string& language, const Json& file)
    {
        if (const char* const wrong = faultOf(language, file))
        {
            fault("/catalogues/" + domain + "/" + language, wrong);
            return;
        }
        m_map.catalogues[domain][language] = file.get<std::string>();
        m_spoken.insert(language);
    }

    /// Null for nothing.
    static const char* faultOf(const std::string& language, const Json& file)
    {
        if (language.empty())
        {
            return "names no language; it is ignored";
        }
        if (!file.is_string())
        {
            return "is no text; it is ignored";
        }
        return file.get_ref<const std::string&>().empty() ? "names no file; it is ignored" : nullptr;
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
        else if (!m_spoken.contains(fallback.get<std::string>()))
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
