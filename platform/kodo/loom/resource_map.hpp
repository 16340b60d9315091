#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Kodo::Loom
{

/// What the resource map says (docs/localization.md).
struct ResourceMap
{
    std::string language;
    std::map<std::string, std::vector<std::string>> fallbacks;            ///< of a language, in order
    std::map<std::string, std::map<std::string, std::string>> catalogues; ///< domain, language, file

    bool hasCatalogue(const std::string& name) const;
    bool knows(const std::string& name) const { return fallbacks.contains(name) || hasCatalogue(name); }
    std::vector<std::string> languages() const;
};

/// Reads a map from its JSON text. Each fault is added to @p faults as a message that begins with @p name.
/// What is wrong in one entry costs that entry; false, with one fault, for what is no map at all.
bool parseResourceMap(ResourceMap& out, std::string_view text, const std::string& name,
                      std::vector<std::string>& faults);

} // namespace Kodo::Loom
