#include "kodo/loom/ui_resource_manager.hpp"

#include "kodo/core/debug_message_helper.hpp"
#include "kodo/core/text_hash.hpp"
#include "kodo/fs/file_content.hpp"
#include "kodo/loom/mo_catalogue.hpp"
#include "kodo/loom/resource_map.hpp"
#include "kodo/loom/ui_resource_utils.hpp"

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <unordered_map>
#include <utility>

namespace Kodo::Loom
{

namespace
{

using Faults = std::vector<std::string>;

void report(const Faults& faults)
{
    for (const std::string& fault : faults)
    {
        DebugMessageHelper(0, 5).message(fault);
    }
}

constexpr std::size_t MAX_MAP_SIZE = std::size_t{16} * 1024 * 1024;

/// A catalogue that is read when it is first asked.
class LazyCatalogue
{
public:
    explicit LazyCatalogue(std::string file) : m_file(std::move(file)) {}

    const MoCatalogue& get() const
    {
        const MoCatalogue* loaded = m_loaded.load(std::memory_order_acquire);
        return loaded != nullptr ? *loaded : load();
    }

private:
    const MoCatalogue& load() const
    {
        std::string fault;
        {
            const std::lock_guard lock(m_mutex);
            if (!m_catalogue)
            {
                m_catalogue = read(fault);
                m_loaded.store(m_catalogue.get(), std::memory_order_release);
            }
        }
        if (!fault.empty()) // unlocked: whoever receives it may translate
        {
            report({m_file + ": " + fault});
        }
        return *m_catalogue;
    }

    std::unique_ptr<const MoCatalogue> read(std::string& fault) const
    {
        FS::FileContent content;
        const FS::FileReading reading = FS::readFile(content, m_file, MoCatalogue::MAX_FILE_SIZE);
        if (reading != FS::FileReading::Done)
        {
            fault = FS::describe(reading, MoCatalogue::MAX_FILE_SIZE);
            return std::make_unique<const MoCatalogue>();
        }
        return std::make_unique<const MoCatalogue>(std::move(content), fault);
    }

    std::string m_file;
    mutable std::mutex m_mutex;
    mutable std::unique_ptr<const MoCatalogue> m_catalogue;
    mutable std::atomic<const MoCatalogue*> m_loaded{nullptr};
};

/// The catalogues to be asked, in order, for each domain, when one language is spoken.
struct Language
{
    std::string name;
    std::unordered_map<std::string, std::vector<const LazyCatalogue*>, TextHash, std::equal_to<>> domains;
};

} // namespace

class UiResourceManager::Catalogues
{
public:
    explicit Catalogues(UiResourceManager& owner) noexcept : m_owner(owner) {}

    const Language& current()
    {
        const Language* language = m_current.load(std::memory_order_acquire);
        return language != nullptr ? *language : load();
    }
    bool isUsable()
    {
        current();
        return m_isUsable;
    }
    std::vector<std::string> languages()
    {
        current();
        std::vector<std::string> names;
        for (const auto& [name, language] : m_languages)
        {
            names.push_back(name);
        }
        return names;
    }
    bool select(const std::string& name)
    {
        current();
        const auto found = m_languages.find(name);
        if (found == m_languages.end())
        {
            return false;
        }
        m_current.store(&found->second, std::memory_order_release);
        return true;
    }

private:
    /// The domains and catalogues of one language.
    using Catalogued = std::vector<std::pair<const std::string*, const LazyCatalogue*>>;

    const Language& load()
    {
        const char* const path = m_owner.resourceMapPath();
        const std::string name = path != nullptr ? path : "";
        Faults faults;
        {
            const std::lock_guard lock(m_mutex);
            if (m_current.load(std::memory_order_relaxed) == nullptr)
            {
                read(name, faults);
            }
        }
        report(faults); // unlocked: whoever receives it may translate
        return *m_current.load(std::memory_order_acquire);
    }

    void read(const std::string& name, Faults& faults)
    {
        FS::FileContent content;
        ResourceMap map;
        const FS::FileReading reading = FS::readFile(content, name, MAX_MAP_SIZE);
        if (name.empty())
        {
            faults.emplace_back("There is no resource map: the resource manager names none");
        }
        else if (reading != FS::FileReading::Done)
        {
            faults.push_back(name + ": " + FS::describe(reading, MAX_MAP_SIZE));
        }
        else
        {
            m_isUsable = parseResourceMap(map, content.view(), name, faults);
        }
        const Language* first = &m_none;
        if (m_isUsable)
        {
            makeLanguages(map);
            first = firstLanguage(map, name, faults);
        }
        m_current.store(first, std::memory_order_release);
    }

    void makeLanguages(const ResourceMap& map)
    {
        std::map<std::string, const LazyCatalogue*> byFile; // one file may serve several languages
        std::map<std::string, Catalogued> byLanguage;
        for (const auto& [domain, files] : map.catalogues)
        {
            for (const auto& [name, file] : files)
            {
                byLanguage[name].emplace_back(&domain, catalogue(byFile, file));
            }
        }
        for (const std::string& name : map.languages())
        {
            std::vector<std::string> order{name};
            if (const auto fallbacks = map.fallbacks.find(name); fallbacks != map.fallbacks.end())
            {
                order.insert(order.end(), fallbacks->second.begin(), fallbacks->second.end());
            }
            Language& language = m_languages[name];
            language.name = name;
            std::set<std::string_view> added; // each counts where it stands first
            for (const std::string& each : order)
            {
                if (added.insert(each).second)
                {
                    addCatalogues(language, byLanguage[each]);
                }
            }
        }
    }

    static void addCatalogues(Language& language, const Catalogued& catalogues)
    {
        for (const auto& [domain, catalogue] : catalogues)
        {
            language.domains[*domain].push_back(catalogue);
        }
    }

    const LazyCatalogue* catalogue(std::map<std::string, const LazyCatalogue*>& byFile,
                                   const std::string& file)
    {
        const LazyCatalogue*& known = byFile[file];
        if (known == nullptr)
        {
            known = m_catalogues.emplace_back(std::make_unique<const LazyCatalogue>(file)).get();
        }
        return known;
    }

    const Language* firstLanguage(const ResourceMap& map, const std::string& name, Faults& faults) const
    {
        const std::string wanted = UiResourceUtils::currentLanguage();
        if (const auto found = m_languages.find(wanted); found != m_languages.end())
        {
            return &found->second;
        }
        if (!wanted.empty())
        {
            faults.push_back(name + ": there is no language \"" + wanted + "\"");
        }
        const auto found = m_languages.find(map.language);
        return found != m_languages.end() ? &found->second : &m_none;
    }

    UiResourceManager& m_owner;
    std::mutex m_mutex; ///< held while the map is read
    bool m_isUsable = false;
    const Language m_none;
    std::vector<std::unique_ptr<const LazyCatalogue>> m_catalogues;
    std::map<std::string, Language> m_languages; ///< never changed once the map is read
    std::atomic<const Language*> m_current{nullptr};
};

UiResourceManager::UiResourceManager() : m_catalogues(std::make_unique<Catalogues>(*this)) {}
UiResourceManager::~UiResourceManager() = default;

bool UiResourceManager::initialize()
{
    return m_catalogues->isUsable();
}

const char* UiResourceManager::resourceMapPath()
{
    return "";
}

std::vector<std::string> UiResourceManager::languages() const
{
    return m_catalogues->languages();
}

std::string UiResourceManager::language() const
{
    return m_catalogues->current().name;
}

bool UiResourceManager::setLanguage(const std::string& language)
{
    return m_catalogues->select(language);
}

std::string_view UiResourceManager::find(std::string_view domain, std::string_view message) const
{
    const Language& language = m_catalogues->current();
    const auto catalogues = language.domains.find(domain);
    if (catalogues == language.domains.end())
    {
        return {};
    }
    for (const LazyCatalogue* catalogue : catalogues->second)
    {
        if (const std::string_view text = catalogue->get().find(message); !text.empty())
        {
            return text;
        }
    }
    return {};
}

} // namespace Kodo::Loom
