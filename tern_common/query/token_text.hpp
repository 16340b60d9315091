#pragma once

#include "tern_common/query/query.hpp"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The tidying of whole texts in one pass. It holds for records that liesInOrder() vouches for and gives
/// then, to the byte, what editing token by token gives.
namespace TernCommonDetail
{

/// Whether the records lie in a text of @p size bytes, in increasing order and without overlapping, and their
/// values begin in it.
bool liesInOrder(std::size_t size, const std::vector<Query::Token>& tokens) noexcept;

/// @p text with every gap behind a token made one space, or nothing behind a token of length 0.
std::string withNormalSpaces(std::string_view text, const std::vector<Query::Token>& tokens);

/// @p text after each token has been erased, with the spaces behind it, once for every earlier token of the
/// same type and value, the last token first.
std::string withoutRepetitions(std::string_view text, const std::vector<Query::Token>& tokens);

} // namespace TernCommonDetail
