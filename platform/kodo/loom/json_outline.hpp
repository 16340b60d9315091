#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kodo::Loom
{

/// What a JSON text says, as far as a resource map goes: texts, and objects and lists of them. Of what lies
/// below its third level of objects and lists, or in a list but is no text, nothing is kept, so that no
/// nesting costs memory or stack. Unlike the JSON library's own values it takes no memory when it is
/// destroyed, which would end the process where there is none left.
struct JsonOutline
{
    enum class Kind
    {
        Text,
        Object,
        List,
        Other
    };

    Kind kind = Kind::Other;
    std::string text;
    std::map<std::string, std::unique_ptr<JsonOutline>> members; ///< of several with one name the last
    std::vector<std::optional<std::string>> items;               ///< of a list: nothing for what is no text

    /// Null when there is none.
    const JsonOutline* find(const std::string& member) const;
};

/// Where a text stops being JSON, and why.
struct JsonFault
{
    std::size_t offset = 0;
    std::string what;
};

/// Nothing, and @p fault, for what is no JSON.
std::optional<JsonOutline> readJson(std::string_view text, JsonFault& fault);

} // namespace Kodo::Loom
