#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The byte offset of the value that the JSON pointer (RFC 6901) @p pointer names in @p text, which must be
/// valid JSON; 0 where there is no such value. The JSON library keeps no places: this reads the text again,
/// for the one place a message needs.
std::size_t locateJsonValue(std::string_view text, const std::string& pointer);

/// A member of an object whose name another one before it has.
struct RepeatedMember
{
    std::string name;
    std::size_t offset; ///< of the name, in bytes
};

/// The first repeated member in @p text, which must be valid JSON. The JSON library keeps the last of such
/// members and drops the others.
std::optional<RepeatedMember> findRepeatedMember(std::string_view text);

/// The byte offset at which @p text stops being JSON; its size where it ends too early.
std::size_t locateJsonError(std::string_view text);
