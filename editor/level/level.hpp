#pragma once

#include "editor/curve/curve_data.hpp"
#include "editor/curve/curve_document.hpp"
#include "editor/history/edit_history.hpp"
#include "qua/signal.hpp"

#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct Item
{
    std::string name;
    std::string type;
    Position position{};
    std::map<std::string, std::string> properties;

    bool operator==(const Item&) const = default;
};

/// What a level file holds.
struct LevelData
{
    std::vector<Curve> curves;
    std::vector<Item> items;

    bool operator==(const LevelData&) const = default;
};

/// An edit that the level does not allow; the level is as it was.
class LevelError : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Throws LevelError where the scene cannot hold a position.
void expectShowable(const std::vector<Position>& points);

/// Whether a curve may have this name: letters, digits and "_", no digit first, so that scripts can say it.
bool isCurveName(std::string_view name) noexcept;

/// The level under edit: named curves and items. All edits, those of the curves' documents as well, are steps
/// of one history. Main thread only. Signals are emitted after the change.
class Level
{
public:
    Level();
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    /// Documents that others share live on, with an empty history.
    ~Level();

    /// Copies of what is there now.
    std::vector<Curve> curves() const;
    LevelData data() const;
    const std::vector<Item>& items() const noexcept { return m_items; }
    /// In the order in which they are drawn and saved.
    const std::vector<std::shared_ptr<CurveDocument>>& documents() const noexcept { return m_curves; }
    /// The curve, until the next edit of it, or null.
    const Curve* findCurve(std::string_view name) const noexcept;
    /// The curve's document; null where there is no such curve. Removing the curve and undoing that gives the
    /// same document back.
    std::shared_ptr<CurveDocument> findDocument(std::string_view name) const noexcept;
    EditHistory& history() const noexcept { return *m_history; }

    /// Replaces everything and forgets the history. Each curve is announced as removed, then each new one as
    /// added.
    void replace(LevelData data);

    /// These throw LevelError: for a name that is no curve name or is taken, for a curve that is not there,
    /// for a coordinate that is not finite or too large for the scene.
    void addCurve(const std::string& name);
    void addCurve(const Curve& curve);
    void removeCurve(const std::string& name);
    void addPoints(const std::string& curve, const std::vector<Position>& points);

    [[nodiscard]] qua::Connection connectCurveAdded(std::function<void(const std::string& name)> slot);
    [[nodiscard]] qua::Connection connectCurveRemoved(std::function<void(const std::string& name)> slot);

private:
    class CurveEdit;

    std::vector<std::shared_ptr<CurveDocument>> m_curves;
    std::vector<Item> m_items;
    std::shared_ptr<EditHistory> m_history;
    qua::Signal<void(const std::string&)> m_curveAdded;
    qua::Signal<void(const std::string&)> m_curveRemoved;
};
