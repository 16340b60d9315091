#include "kodo/loom/languages.hpp"

#include "kodo/core/debug_message_helper.hpp"
#include "kodo/fs/file_content.hpp"
#include "kodo/loom/mo_catalogue.hpp"

#include <atomic>
#include <mutex>
#include <set>
#include <utility>

namespace Kodo::Loom
{

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
            DebugMessageHelper(0, 5).message(m_file + ": " + fault);
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

namespace
{

/// The domains and catalogues of one language.
using Catalogued = std::vector<std::pair<const std::string*, const LazyCatalogue*>>;

void addCatalogues(Language& language, const Catalogued& catalogues)
{
    for (const auto& [domain, catalogue] : catalogues)
    {
        language.domains[*domain].push_back(catalogue);
    }
}

} // namespace

std::string_view Language::find(std::string_view domain, std::string_view message) const
{
    const auto catalogues = domains.find(domain);
    if (catalogues == domains.end())
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

Languages::Languages() = default;

Languages::Languages(const ResourceMap& map)
{
    std::map<std::string, const LazyCatalogue*> byFile; // one file may serve several languages
    std::map<std::string, Catalogued> byLanguage;
    for (const auto& [domain, files] : map.catalogues)
    {
        for (const auto& [name, file] : files)
        {
            const LazyCatalogue*& known = byFile[file];
            if (known == nullptr)
            {
                known = m_catalogues.emplace_back(std::make_unique<const LazyCatalogue>(file)).get();
            }
            byLanguage[name].emplace_back(&domain, known);
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

Languages::Languages(Languages&& other) noexcept = default;
Languages& Languages::operator=(Languages&& other) noexcept = default;
Languages::~Languages() = default;

const Language* Languages::find(const std::string& name) const
{
    const auto found = m_languages.find(name);
    return found == m_languages.end() ? nullptr : &found->second;
}

std::vector<std::string> Languages::names() const
{
    std::vector<std::string> names;
    for (const auto& [name, language] : m_languages)
    {
        names.push_back(name);
    }
    return names;
}

} // namespace Kodo::Loom
