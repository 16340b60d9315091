#include "editor/commands/curve_commands.hpp"

#include "editor/commands/finished.hpp"
#include "editor/curve/color_text.hpp"
#include "editor/curve/curve_geometry.hpp"
#include "editor/curve/position_text.hpp"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace
{

/// What a script names, or a LevelError.
class CurveArguments
{
public:
    CurveArguments(std::string name, std::function<Level&()> level)
        : m_name(std::move(name)), m_level(std::move(level))
    {
    }

    Level& level() const { return m_level(); }
    const std::string& name() const noexcept { return m_name; }

    std::shared_ptr<CurveDocument> document() const
    {
        auto document = level().findDocument(m_name);
        if (document == nullptr)
        {
            throw LevelError("there is no curve \"" + m_name + "\"");
        }
        return document;
    }

    static Position position(const std::string& text)
    {
        const std::optional<Position> position = parsePosition(text);
        if (!position)
        {
            throw LevelError("\"" + text + "\" is no position: three numbers with blanks between them");
        }
        expectShowable({*position});
        return *position;
    }

    static double parameter(const std::string& text)
    {
        double value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        {
            throw LevelError("\"" + text + "\" is no parameter: a number");
        }
        return value;
    }

    static std::size_t index(const CurveDocument& document, std::uint64_t index)
    {
        const std::size_t points = document.pointIds().size();
        if (index >= points)
        {
            throw LevelError("there is no point " + std::to_string(index) + ": the curve has " +
                             std::to_string(points));
        }
        return static_cast<std::size_t>(index);
    }

private:
    std::string m_name;
    std::function<Level&()> m_level;
};

void addPointCommands(CommandObject& object, const CurveArguments& curve)
{
    object.addCommand(
        "addPoint", [curve](const std::string& text)
        { return finished([&] { curve.level().addPoints(curve.name(), {curve.position(text)}); }); });
    object.addCommand(
        "insertPoint",
        [curve](const std::string& text, const std::string& parameter)
        {
            return finished(
                [&] { curve.document()->insertPoint(curve.position(text), curve.parameter(parameter)); });
        });
    object.addCommand("movePoint",
                      [curve](std::uint64_t point, const std::string& text)
                      {
                          return finished(
                              [&]
                              {
                                  const auto document = curve.document();
                                  document->movePoint(curve.index(*document, point), curve.position(text));
                              });
                      });
    object.addCommand("removePoint",
                      [curve](std::uint64_t point)
                      {
                          return finished(
                              [&]
                              {
                                  const auto document = curve.document();
                                  document->removePoint(curve.index(*document, point));
                              });
                      });
    object.addCommand("swapPoints",
                      [curve](std::uint64_t first, std::uint64_t second)
                      {
                          return finished(
                              [&]
                              {
                                  const auto document = curve.document();
                                  document->swapPoints(curve.index(*document, first),
                                                       curve.index(*document, second));
                              });
                      });
}

void split(CurveDocument& document, double parameter)
{
    if (document.pointIds().empty())
    {
        throw LevelError("the curve has no point");
    }
    expectShowable({CurveGeometry::positionAt(document.curve(), parameter)});
    document.splitAt(parameter);
}

void addSplitCommands(CommandObject& object, const CurveArguments& curve)
{
    object.addCommand("split", [curve](const std::string& parameter)
                      { return finished([&] { split(*curve.document(), curve.parameter(parameter)); }); });
    object.addCommand("splitNear",
                      [curve](const std::string& text)
                      {
                          return finished(
                              [&]
                              {
                                  const auto document = curve.document();
                                  const Position position = curve.position(text);
                                  split(*document,
                                        CurveGeometry::project(document->curve(), position).parameter);
                              });
                      });
}

void addShapeCommands(CommandObject& object, const CurveArguments& curve)
{
    object.addCommand("setHandles",
                      [curve](std::uint64_t point, const std::string& in, const std::string& out)
                      {
                          return finished(
                              [&]
                              {
                                  const auto document = curve.document();
                                  const std::size_t index = curve.index(*document, point);
                                  if (document->curve().kind != CurveKind::Bezier)
                                  {
                                      throw LevelError("only a Bezier curve's points have handles");
                                  }
                                  document->setHandles(index, {curve.position(in), curve.position(out)});
                              });
                      });
    object.addCommand("setKind",
                      [curve](const std::string& text)
                      {
                          return finished(
                              [&]
                              {
                                  const std::optional<CurveKind> kind = curveKindOf(text);
                                  if (!kind)
                                  {
                                      throw LevelError("\"" + text +
                                                       "\" is no kind: linear, catmullRom or bezier");
                                  }
                                  curve.document()->setKind(*kind);
                              });
                      });
    object.addCommand("setClosed", [curve](bool closed)
                      { return finished([&] { curve.document()->setClosed(closed); }); });
    object.addCommand("setColor",
                      [curve](const std::string& text)
                      {
                          return finished(
                              [&]
                              {
                                  const auto color = parseColor(text);
                                  if (!color && !text.empty())
                                  {
                                      throw LevelError("\"" + text +
                                                       "\" is no colour: six hexadecimal digits");
                                  }
                                  curve.document()->setColor(color);
                              });
                      });
}

} // namespace

void addCurveCommands(CommandObject& object, const std::string& name, std::function<Level&()> level)
{
    const CurveArguments curve(name, std::move(level));
    addPointCommands(object, curve);
    addSplitCommands(object, curve);
    addShapeCommands(object, curve);
}
