#pragma once

#include "kodo/core/inherits.hpp"
#include "kodo/loom/ui_resource_manager.hpp"
#include "tern_common/export.hpp"
#include "tern_common/localization/i_localization.hpp"

#include <memory>
#include <string>
#include <unordered_map>

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // of the base: nothing is destroyed through it
#endif

/// The display texts of the game data's items: vehicles by their tags, arenas by the base names of their
/// files.
///
/// Construction reads all definitions through the process's file system and translates their names into a
/// cache, which never changes afterwards: build a new object where definitions or the language have changed.
/// Definitions that can't be read, or whose names hold no key, are skipped without a word. Lookups change
/// nothing of this object and take no lock.
///
/// Final, as its destructor is not virtual: nothing that derives from it could be destroyed through it.
class TERN_COMMON_API Localization final : public Kodo::Inherits<ILocalization>
{
public:
    /// Tells the UI framework which resource map holds the editor's catalogues.
    class TERN_COMMON_API ResourceManager : public Kodo::Loom::UiResourceManager
    {
    public:
        /// Always "gui/canopy/res_map.json".
        const char* resourceMapPath() override;
    };

    /// Builds the cache: the vehicles of each group, then the arenas. Of several definitions with one name
    /// the last one read counts, so that an arena hides a vehicle.
    Localization();
    Localization(const Localization&) = delete;
    Localization& operator=(const Localization&) = delete;
    ~Localization();

    /// The cached text of @p key; where there is none, or an empty one, what loomTranslate() gives.
    std::string translate(const std::string& key) override;

    /// The cached text of @p key, an item's short name; empty when there is none.
    std::string translateByCache(const std::string& key) const;

    /// What the UI framework makes of @p key, whatever the cache holds.
    std::string loomTranslate(const std::string& key) const;

private:
    void initCache();
    void cacheVehicles();
    void cacheArenas();
    void cacheName(std::string key, const std::string& name);

    // In this order: the cache goes first, then the manager.
    std::unique_ptr<ResourceManager> m_resourceManager;
    std::unordered_map<std::string, std::string> m_cache;
};

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
