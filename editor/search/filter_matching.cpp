#include "editor/search/filter_matching.hpp"

#include "editor/search/ascii_case.hpp"

#include <algorithm>

namespace
{

bool hasField(const SearchableItem& item, const FilterTerm& term)
{
    if (AsciiCase::equal(term.key, "name"))
    {
        return AsciiCase::equal(item.name, term.value);
    }
    if (AsciiCase::equal(term.key, "type"))
    {
        return AsciiCase::equal(item.type, term.value);
    }
    return std::any_of(item.properties.begin(), item.properties.end(),
                       [&](const auto& property) {
                           return AsciiCase::equal(property.first, term.key) &&
                                  AsciiCase::equal(property.second, term.value);
                       });
}

bool holds(const FilterTerm& term, const SearchableItem& item)
{
    const bool found = term.field ? hasField(item, term) : AsciiCase::contains(item.name, term.value);
    return term.ignored || found != term.negated;
}

} // namespace

bool matches(const FilterQuery& query, const SearchableItem& item)
{
    return std::all_of(query.terms().begin(), query.terms().end(),
                       [&](const FilterTerm& term) { return holds(term, item); });
}

std::vector<std::size_t> findMatches(const FilterQuery& query, std::span<const SearchableItem> items)
{
    std::vector<std::size_t> found;
    for (std::size_t index = 0; index < items.size(); ++index)
    {
        if (matches(query, items[index]))
        {
            found.push_back(index);
        }
    }
    return found;
}
