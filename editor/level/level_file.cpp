#include "editor/level/level_file.hpp"

#include "editor/curve/color_text.hpp"
#include "editor/files/atomic_file.hpp"
#include "editor/files/file_error.hpp"
#include "editor/level/gpx_track.hpp"
#include "editor/level/json_locator.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <optional>
#include <set>

namespace fs = std::filesystem;

namespace
{

using nlohmann::ordered_json;
using Pointer = ordered_json::json_pointer;

/// What is wrong with a level, and at which value.
struct LevelMistake
{
    Pointer where;
    std::string text;
};

/// Takes a level out of a JSON document, with every value checked. Throws LevelMistake.
class LevelReader
{
public:
    explicit LevelReader(const ordered_json& document) : m_document(document) {}

    LevelData read() const
    {
        const Pointer root;
        expect(m_document.is_object(), root, "a level is an object");
        expect(m_document.value("format", ordered_json()) == "tern-level", root / "format",
               "the format is not \"tern-level\"");
        const ordered_json& version = member(root, "version");
        expect(version.is_number_integer(), root / "version", "a version is an integer");
        expect(version <= LEVEL_FILE_VERSION, root / "version",
               "version " + version.dump() + " is newer than version " + std::to_string(LEVEL_FILE_VERSION) +
                   ", the latest that this editor reads");
        expect(version == LEVEL_FILE_VERSION, root / "version", "there is no version " + version.dump());
        expectOnly(root, {"format", "version", "curves", "items"});

        LevelData level;
        forEach(root / "curves", [&](const Pointer& at) { level.curves.push_back(readCurve(at)); });
        forEach(root / "items", [&](const Pointer& at) { level.items.push_back(readItem(at)); });
        expectDistinctCurveNames(level);
        return level;
    }

private:
    static void expect(bool condition, const Pointer& where, const std::string& text)
    {
        if (!condition)
        {
            throw LevelMistake{where, text};
        }
    }

    const ordered_json& member(const Pointer& object, const std::string& name) const
    {
        expect(m_document.contains(object / name), object, "\"" + name + "\" is missing");
        return m_document.at(object / name);
    }

    void expectOnly(const Pointer& object, std::initializer_list<std::string_view> names) const
    {
        expect(m_document.at(object).is_object(), object, "this is no object");
        for (const auto& [name, value] : m_document.at(object).items())
        {
            expect(std::find(names.begin(), names.end(), name) != names.end(), object / name,
                   "a member \"" + name + "\" is not known here");
        }
    }

    template <class Read>
    void forEach(const Pointer& array, Read read) const
    {
        if (!m_document.contains(array))
        {
            return;
        }
        expect(m_document.at(array).is_array(), array, "this is no array");
        for (std::size_t i = 0; i < m_document.at(array).size(); ++i)
        {
            read(array / i);
        }
    }

    std::string readText(const Pointer& object, const std::string& name) const
    {
        const ordered_json& value = member(object, name);
        expect(value.is_string(), object / name, "\"" + name + "\" is no text");
        return value.get<std::string>();
    }

    Position readPosition(const Pointer& at) const
    {
        const ordered_json& value = m_document.at(at);
        Position position{};
        expect(value.is_array() && value.size() == position.size(), at,
               "a position is an array of three numbers");
        for (std::size_t i = 0; i < position.size(); ++i)
        {
            expect(value[i].is_number(), at / i, "a coordinate is a number");
            position[i] = value[i].get<double>();
        }
        return position;
    }

    Curve readCurve(const Pointer& at) const
    {
        expectOnly(at, {"name", "closed", "kind", "color", "points"});
        Curve curve;
        curve.name = readText(at, "name");
        expect(isCurveName(curve.name), at / "name",
               "a curve's name has letters, digits and \"_\", no digit first");
        if (m_document.contains(at / "closed"))
        {
            expect(m_document.at(at / "closed").is_boolean(), at / "closed", "\"closed\" is true or false");
            curve.closed = m_document.at(at / "closed").get<bool>();
        }
        if (m_document.contains(at / "kind"))
        {
            const std::optional<CurveKind> kind = curveKindOf(readText(at, "kind"));
            expect(kind.has_value(), at / "kind",
                   "a curve's kind is \"linear\", \"catmullRom\" or \"bezier\"");
            curve.kind = *kind;
        }
        if (m_document.contains(at / "color"))
        {
            curve.color = parseColor(readText(at, "color"));
            expect(curve.color.has_value(), at / "color", "a colour is six hexadecimal digits");
        }
        forEach(at / "points", [&](const Pointer& point) { readPoint(point, curve); });
        return curve;
    }

    void readPoint(const Pointer& at, Curve& curve) const
    {
        CurveHandles handles;
        if (m_document.at(at).is_object())
        {
            expect(curve.kind == CurveKind::Bezier, at, "only a Bezier curve's points have handles");
            expectOnly(at, {"position", "in", "out"});
            static_cast<void>(member(at, "position"));
            curve.points.push_back(readPosition(at / "position"));
            handles.in = m_document.contains(at / "in") ? readPosition(at / "in") : Position{};
            handles.out = m_document.contains(at / "out") ? readPosition(at / "out") : Position{};
        }
        else
        {
            curve.points.push_back(readPosition(at));
        }
        if (curve.kind == CurveKind::Bezier)
        {
            curve.handles.push_back(handles);
        }
    }

    Item readItem(const Pointer& at) const
    {
        expectOnly(at, {"name", "type", "position", "properties"});
        Item item;
        item.name = readText(at, "name");
        item.type = readText(at, "type");
        if (m_document.contains(at / "position"))
        {
            item.position = readPosition(at / "position");
        }
        if (m_document.contains(at / "properties"))
        {
            const Pointer properties = at / "properties";
            expect(m_document.at(properties).is_object(), properties, "this is no object");
            for (const auto& [name, value] : m_document.at(properties).items())
            {
                item.properties[name] = readText(properties, name);
            }
        }
        return item;
    }

    static void expectDistinctCurveNames(const LevelData& level)
    {
        std::set<std::string_view> names;
        for (std::size_t i = 0; i < level.curves.size(); ++i)
        {
            expect(names.insert(level.curves[i].name).second, Pointer() / "curves" / i / "name",
                   "a second curve \"" + level.curves[i].name + "\"");
        }
    }

    const ordered_json& m_document;
};

/// The members of a curve but its points.
std::string formatShape(const Curve& curve)
{
    std::string text =
        "\"name\": " + ordered_json(curve.name).dump() + ", \"closed\": " + (curve.closed ? "true" : "false");
    if (curve.kind != CurveKind::Linear)
    {
        text += ", \"kind\": \"" + std::string(curveKindName(curve.kind)) + "\"";
    }
    if (curve.color)
    {
        text += ", \"color\": \"" + formatColor(*curve.color) + "\"";
    }
    return text;
}

ordered_json toJson(const Curve& curve, std::size_t point)
{
    if (curve.kind != CurveKind::Bezier)
    {
        return curve.points[point];
    }
    const CurveHandles handles = point < curve.handles.size() ? curve.handles[point] : CurveHandles{};
    return {{"position", curve.points[point]}, {"in", handles.in}, {"out", handles.out}};
}

ordered_json toJson(const Item& item)
{
    ordered_json json{{"name", item.name}, {"type", item.type}, {"position", item.position}};
    if (!item.properties.empty())
    {
        json["properties"] = item.properties;
    }
    return json;
}

/// Appends an array with an element a line, indented.
template <class Elements, class Format>
void formatLines(std::string& text, const Elements& elements, const std::string& indent, Format format)
{
    text += "[";
    const char* separator = "\n";
    for (const auto& element : elements)
    {
        text += separator + indent + "    ";
        format(element);
        separator = ",\n";
    }
    text += elements.empty() ? "]" : "\n" + indent + "]";
}

} // namespace

LevelData readLevelFile(const fs::path& file)
{
    return parseLevel(readWholeFile(file), file);
}

LevelData parseLevel(std::string_view text, const fs::path& file)
{
    ordered_json document;
    try
    {
        document = ordered_json::parse(text);
    }
    catch (const ordered_json::exception&)
    {
        const std::size_t offset = locateJsonError(text);
        throw FileError(file, positionAt(text, offset),
                        offset >= text.size() ? "not JSON: the file ends too early" : "not JSON");
    }
    try
    {
        LevelData level = LevelReader(document).read();
        if (const auto repeated = findRepeatedMember(text)) // the document holds the last one alone
        {
            throw FileError(file, positionAt(text, repeated->offset),
                            "a second member \"" + repeated->name + "\"");
        }
        return level;
    }
    catch (const LevelMistake& mistake)
    {
        throw FileError(file, positionAt(text, locateJsonValue(text, mistake.where.to_string())),
                        mistake.text);
    }
}

std::string formatLevel(const LevelData& level)
{
    std::string text =
        "{\n    \"format\": \"tern-level\",\n    \"version\": " + std::to_string(LEVEL_FILE_VERSION) +
        ",\n    \"curves\": ";
    formatLines(text, level.curves, "    ",
                [&text](const Curve& curve)
                {
                    text += "{" + formatShape(curve) + ", \"points\": ";
                    std::size_t point = 0;
                    formatLines(text, curve.points, "        ",
                                [&](const Position&) { text += toJson(curve, point++).dump(); });
                    text += "}";
                });
    text += ",\n    \"items\": ";
    formatLines(text, level.items, "    ", [&text](const Item& item) { text += toJson(item).dump(); });
    text += "\n}\n";
    return text;
}

void writeLevelFile(const fs::path& file, const LevelData& level)
{
    if (isTrackFile(file))
    {
        throw FileError(file, "cannot be saved: this is the name of a track, not of a level");
    }
    std::string text;
    try
    {
        text = formatLevel(level);
    }
    catch (const ordered_json::exception&)
    {
        throw FileError(file, "cannot be saved: a name or property is not valid UTF-8");
    }
    replaceFile(file, text);
}
