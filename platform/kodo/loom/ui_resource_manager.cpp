#include "kodo/loom/ui_resource_manager.hpp"

#include "kodo/core/debug_message_helper.hpp"
#include "kodo/fs/file_content.hpp"
#include "kodo/loom/languages.hpp"
#include "kodo/loom/resource_map.hpp"
#include "kodo/loom/ui_resource_utils.hpp"

#include <atomic>
#include <mutex>
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
        return m_languages.names();
    }
    bool select(const std::string& name)
    {
        current();
        const Language* const found = m_languages.find(name);
        if (found == nullptr)
        {
            return false;
        }
        m_current.store(found, std::memory_order_release);
        return true;
    }

private:
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

    /// Changes nothing where it throws, so that the next call reads the map.
    void read(const std::string& name, Faults& faults)
    {
        FS::FileContent content;
        ResourceMap map;
        bool isUsable = false;
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
            isUsable = parseResourceMap(map, content.view(), name, faults);
        }
        Languages languages(isUsable ? map : ResourceMap());
        const Language* const first = isUsable ? firstLanguage(languages, map, name, faults) : nullptr;
        m_languages = std::move(languages);
        m_isUsable = isUsable;
        m_current.store(first != nullptr ? first : &m_none, std::memory_order_release);
    }

    /// The one to be spoken at first: the process's, or else the map's.
    static const Language* firstLanguage(const Languages& languages, const ResourceMap& map,
                                         const std::string& name, Faults& faults)
    {
        const std::string wanted = UiResourceUtils::currentLanguage();
        const Language* const found = languages.find(wanted);
        if (found == nullptr && !wanted.empty())
        {
            faults.push_back(name + ": there is no language \"" + wanted + "\"");
        }
        return found != nullptr ? found : languages.find(map.language);
    }

    UiResourceManager& m_owner;
    std::mutex m_mutex; ///< held while the map is read
    bool m_isUsable = false;
    const Language m_none;
    Languages m_languages; ///< never changed once the map is read
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
    return m_catalogues->current().find(domain, message);
}

} // namespace Kodo::Loom
