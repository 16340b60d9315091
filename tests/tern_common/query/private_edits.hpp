#pragma once

#include "tern_common/query/query.hpp"

#include <string>

/// Calls of the edits that Query keeps to itself: one of their rules, the missing token, shows nowhere else.
struct PrivateEdits
{
    static void removeTokenFromString(const Query& query, std::string& text, const Query::Token& token);
    static void normalizeSpaceAfterToken(Query& query, std::string& text, std::size_t index);
};
