#pragma once

#include "kodo/export.hpp"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Kodo::Loom
{

/// Knows the message catalogues of the user interface: which there are says the resource map, a JSON file in
/// the shared file system (docs/localization.md). The map is read once, when it is first needed or on
/// initialize(); each catalogue when a message is first looked for in it. Whatever is wrong with them is one
/// message on the report channel, and the rest works.
///
/// A subclass says where its map is. The operations may be called from any thread, but for construction and
/// destruction.
class KODO_API UiResourceManager
{
public:
    UiResourceManager();
    UiResourceManager(const UiResourceManager&) = delete;
    UiResourceManager& operator=(const UiResourceManager&) = delete;
    virtual ~UiResourceManager();

    /// Reads the resource map unless that was done, and tells whether there is one that can be used.
    virtual bool initialize();
    /// The map's name in the shared file system. Asked when the map is to be read.
    virtual const char* resourceMapPath();

    /// The languages that the map knows, sorted.
    std::vector<std::string> languages() const;
    /// The language that is spoken; empty without a map.
    std::string language() const;
    /// Speaks another language from now on. False, with nothing changed, for one that the map does not know.
    /// The catalogues of the other languages stay loaded.
    bool setLanguage(const std::string& language);

    /// The translation of @p message in the catalogue of @p domain, in the language that is spoken or else
    /// the first of its fallbacks that has it; empty when there is none. Lives as long as the manager.
    std::string_view find(std::string_view domain, std::string_view message) const;

private:
    class Catalogues;
    const std::unique_ptr<Catalogues> m_catalogues;
};

} // namespace Kodo::Loom
