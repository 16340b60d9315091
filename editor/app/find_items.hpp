#pragma once

#include "editor/level/level.hpp"
#include "editor/search/filter_query.hpp"

#include <cstddef>
#include <string>
#include <vector>

/// The indices of the level's items that match, in order. Fields ask for the item's name, its type and its
/// properties.
std::vector<std::size_t> findItems(const LevelData& level, const FilterQuery& query);

/// What is wrong at a mark, with its place counted from 1: "column 3: a key without a value".
std::string describe(const FilterMark& mark);

/// An item on one line.
std::string describe(const Item& item);
