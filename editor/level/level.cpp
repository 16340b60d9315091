#include "editor/level/level.hpp"

#include <algorithm>
#include <utility>

void expectShowable(const std::vector<Position>& points)
{
    for (const Position& point : points)
    {
        if (!isFinite(point))
        {
            throw LevelError("a coordinate is not finite");
        }
        if (!isShowable(point))
        {
            throw LevelError("a coordinate is too large for the scene");
        }
    }
}

/// The coming or going of a curve.
class Level::CurveEdit final : public EditHistory::IEdit
{
public:
    CurveEdit(Level& level, std::size_t index, std::shared_ptr<CurveDocument> document, bool isAdded)
        : m_level(level), m_index(index), m_document(std::move(document)), m_isAdded(isAdded)
    {
    }

    void undo() override { apply(!m_isAdded); }
    void redo() override { apply(m_isAdded); }

private:
    void apply(bool add)
    {
        if (add)
        {
            const std::size_t index = std::min(m_index, m_level.m_curves.size());
            m_level.m_curves.insert(m_level.m_curves.begin() + static_cast<std::ptrdiff_t>(index),
                                    m_document);
            m_level.m_curveAdded(m_document->curve().name);
        }
        else
        {
            std::erase(m_level.m_curves, m_document);
            m_level.m_curveRemoved(m_document->curve().name);
        }
    }

    Level& m_level; // the history forgets its edits before the level goes
    std::size_t m_index;
    std::shared_ptr<CurveDocument> m_document;
    bool m_isAdded;
};

bool isCurveName(std::string_view name) noexcept
{
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return !name.empty() && !isDigit(name.front()) &&
           std::all_of(name.begin(), name.end(), [&](char c) { return isLetter(c) || isDigit(c); });
}

Level::Level() : m_history(std::make_shared<EditHistory>()) {}

Level::~Level()
{
    m_history->clear();
}

std::vector<Curve> Level::curves() const
{
    std::vector<Curve> curves;
    curves.reserve(m_curves.size());
    for (const auto& document : m_curves)
    {
        curves.push_back(document->curve());
    }
    return curves;
}

LevelData Level::data() const
{
    return {curves(), m_items};
}

const Curve* Level::findCurve(std::string_view name) const noexcept
{
    const std::shared_ptr<CurveDocument> document = findDocument(name);
    return document == nullptr ? nullptr : &document->curve();
}

std::shared_ptr<CurveDocument> Level::findDocument(std::string_view name) const noexcept
{
    const auto found = std::find_if(m_curves.begin(), m_curves.end(),
                                    [name](const auto& document) { return document->curve().name == name; });
    return found == m_curves.end() ? nullptr : *found;
}

void Level::replace(LevelData data)
{
    m_history->clear();
    const auto before = std::exchange(m_curves, {});
    for (Curve& curve : data.curves)
    {
        m_curves.push_back(CurveDocument::make(std::move(curve), m_history));
    }
    m_items = std::move(data.items);
    const auto added = m_curves; // a slot may edit the level
    for (const auto& document : before)
    {
        m_curveRemoved(document->curve().name);
    }
    for (const auto& document : added)
    {
        m_curveAdded(document->curve().name);
    }
}

void Level::addCurve(const std::string& name)
{
    addCurve(Curve{name, false, {}});
}

void Level::addCurve(const Curve& curve)
{
    if (!isCurveName(curve.name))
    {
        throw LevelError("\"" + curve.name +
                         "\" is no curve name: letters, digits and \"_\", no digit first");
    }
    if (findCurve(curve.name) != nullptr)
    {
        throw LevelError("there is a curve \"" + curve.name + "\" already");
    }
    expectShowable(curve.points);
    for (const CurveHandles& handles : curve.handles)
    {
        expectShowable({handles.in, handles.out});
    }
    const auto document = CurveDocument::make(curve, m_history);
    m_curves.push_back(document);
    m_history->push(std::make_unique<CurveEdit>(*this, m_curves.size() - 1, document, true));
    m_curveAdded(document->curve().name);
}

void Level::removeCurve(const std::string& name)
{
    const auto document = findDocument(name);
    if (document == nullptr)
    {
        throw LevelError("there is no curve \"" + name + "\"");
    }
    const auto place = std::find(m_curves.begin(), m_curves.end(), document);
    const auto index = static_cast<std::size_t>(place - m_curves.begin());
    m_curves.erase(place);
    m_history->push(std::make_unique<CurveEdit>(*this, index, document, false));
    m_curveRemoved(document->curve().name);
}

void Level::addPoints(const std::string& curve, const std::vector<Position>& points)
{
    const auto document = findDocument(curve);
    if (document == nullptr)
    {
        throw LevelError("there is no curve \"" + curve + "\"");
    }
    expectShowable(points);
    document->appendPoints(points);
}

qua::Connection Level::connectCurveAdded(std::function<void(const std::string&)> slot)
{
    return m_curveAdded.connect(std::move(slot));
}

qua::Connection Level::connectCurveRemoved(std::function<void(const std::string&)> slot)
{
    return m_curveRemoved.connect(std::move(slot));
}
