#pragma once

#include "editor/search/filter_query.hpp"

#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

/// What a filter may ask about one item. Whoever has items makes these of them.
struct SearchableItem
{
    std::string name;
    std::string type;
    std::vector<std::pair<std::string, std::string>> properties; ///< key and text; a key may come repeatedly
};

/// Whether all terms of @p query that ask for anything hold for @p item. Letters of ASCII match in either
/// case. A word or phrase holds where the name contains it; a field where one of the item's texts under its
/// key is equal to its value. The keys `name` and `type` are the item's own, the others are properties.
bool matches(const FilterQuery& query, const SearchableItem& item);

/// The indices of the items that match, in order.
std::vector<std::size_t> findMatches(const FilterQuery& query, std::span<const SearchableItem> items);
