#include "kodo/core/text_position.hpp"

#include <algorithm>

namespace Kodo
{

namespace
{

bool beginsCharacter(char unit) noexcept
{
    return (static_cast<unsigned char>(unit) & 0xC0U) != 0x80U;
}

} // namespace

std::string textPosition(std::string_view name, std::string_view text, std::size_t offset)
{
    offset = std::min(offset, text.size());
    while (offset > 0 && offset < text.size() && !beginsCharacter(text[offset]))
    {
        --offset;
    }
    std::string_view before = text.substr(0, offset);
    if (constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF"; before.starts_with(BYTE_ORDER_MARK))
    {
        before.remove_prefix(BYTE_ORDER_MARK.size());
    }
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const std::string_view inLine = before.substr(before.rfind('\n') + 1); // npos + 1 is 0
    const auto column = std::count_if(inLine.begin(), inLine.end(), beginsCharacter) + 1;
    return std::string(name) + ':' + std::to_string(line) + ':' + std::to_string(column);
}

std::string shortened(std::string_view text, std::size_t limit)
{
    if (text.size() <= limit)
    {
        return std::string(text);
    }
    while (limit > 0 && !beginsCharacter(text[limit]))
    {
        --limit;
    }
    return std::string(text.substr(0, limit)) + "...";
}

} // namespace Kodo
