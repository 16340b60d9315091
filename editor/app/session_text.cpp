#include "editor/app/session_text.hpp"

std::string SessionText::count(std::size_t number, const std::string& noun)
{
    return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

std::string SessionText::describe(const LevelData& level)
{
    std::size_t points = 0;
    for (const Curve& curve : level.curves)
    {
        points += curve.points.size();
    }
    return count(level.curves.size(), "curve") + " with " + count(points, "point") + ", " +
           count(level.items.size(), "item");
}

std::string SessionText::onOneLine(std::string_view report)
{
    std::string text(report);
    while (text.ends_with('\n') || text.ends_with('\r'))
    {
        text.pop_back();
    }
    for (std::size_t at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at))
    {
        text.replace(at, 2, " at ");
    }
    return text;
}
