#pragma once

#include "vell/export.hpp"

#include <functional>
#include <map>
#include <shared_mutex>
#include <string>
#include <string_view>

namespace vell
{

/// Which extensions stand for which types of assets. The host fills the shared registry at start-up. Every
/// operation may be called from any thread.
class VELL_API AssetRegistry
{
public:
    AssetRegistry();
    AssetRegistry(const AssetRegistry&) = delete;
    AssetRegistry& operator=(const AssetRegistry&) = delete;
    ~AssetRegistry();

    /// The registry the process shares; empty at first.
    static AssetRegistry& instance();

    /// Gives files of that extension the type; an empty type takes the extension out. The extension is
    /// written without its dot, and ASCII letters in it count the same in both cases.
    void setType(std::string_view extension, std::string type);

    /// The type of the file that @p path names, by the longest known extension: what follows one of the dots
    /// of its name ("curve.json" before "json"); empty when none is known. A name's leading dot starts no
    /// extension. The file need not exist.
    std::string typeOf(std::string_view path) const;

private:
    mutable std::shared_mutex m_mutex;
    std::map<std::string, std::string, std::less<>> m_types;
};

} // namespace vell
