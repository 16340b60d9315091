#include "editor/app/find_items.hpp"

#include "editor/search/filter_matching.hpp"

#include <array>
#include <cstdio>

std::vector<std::size_t> findItems(const LevelData& level, const FilterQuery& query)
{
    std::vector<SearchableItem> items;
    items.reserve(level.items.size());
    for (const Item& item : level.items)
    {
        items.push_back({item.name, item.type, {item.properties.begin(), item.properties.end()}});
    }
    return findMatches(query, items);
}

std::string describe(const FilterMark& mark)
{
    const char* text = "";
    switch (mark.kind)
    {
    case FilterMark::Kind::UnterminatedQuote:
        text = "a quote that is not closed";
        break;
    case FilterMark::Kind::UnknownEscape:
        text = "a backslash before something else than a quote or a backslash";
        break;
    case FilterMark::Kind::EmptyKey:
        text = "a value without a key";
        break;
    case FilterMark::Kind::EmptyValue:
        text = "a key without a value";
        break;
    case FilterMark::Kind::EmptyPhrase:
        text = "quotes with nothing in them";
        break;
    case FilterMark::Kind::LoneNegation:
        text = "a dash with nothing behind it";
        break;
    }
    return "column " + std::to_string(mark.pos + 1) + ": " + text;
}

std::string describe(const Item& item)
{
    std::array<char, 96> position{};
    static_cast<void>(std::snprintf(position.data(), position.size(), "%g %g %g", item.position[0],
                                    item.position[1], item.position[2]));
    std::string text = "\"" + item.name + "\" type:" + item.type + " at " + position.data();
    for (const auto& [key, value] : item.properties)
    {
        text.append(" ").append(key).append(":").append(value);
    }
    return text;
}
