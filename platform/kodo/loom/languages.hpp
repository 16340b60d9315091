#pragma once

#include "kodo/core/text_hash.hpp"
#include "kodo/loom/resource_map.hpp"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Kodo::Loom
{

class LazyCatalogue;

/// The catalogues to be asked, in order, for each domain, when one language is spoken.
struct Language
{
    std::string name;
    std::unordered_map<std::string, std::vector<const LazyCatalogue*>, TextHash, std::equal_to<>> domains;

    /// The text of the first catalogue that has one; empty when none has. Reads the catalogues that it needs
    /// and are not read yet, and tells what is wrong with them.
    std::string_view find(std::string_view domain, std::string_view message) const;
};

/// All languages of a resource map and the catalogues they share. Any thread may ask.
class Languages
{
public:
    Languages();
    explicit Languages(const ResourceMap& map);
    Languages(Languages&& other) noexcept;
    Languages& operator=(Languages&& other) noexcept;
    ~Languages();

    /// Null for what is not known. A language stays where it is when this object is moved.
    const Language* find(const std::string& name) const;
    /// Sorted.
    std::vector<std::string> names() const;

private:
    std::vector<std::unique_ptr<const LazyCatalogue>> m_catalogues;
    std::map<std::string, Language> m_languages;
};

} // namespace Kodo::Loom
