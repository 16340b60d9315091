#pragma once

#include "qua/signal.hpp"

#include <array>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// World coordinates in metres: x to the east, y up, z to the north.
using Position = std::array<double, 3>;

struct Curve
{
    std::string name;
    bool closed = false;
    std::vector<Position> points;

    bool operator==(const Curve&) const = default;
};

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

/// Whether a curve may have this name: letters, digits and "_", no digit first, so that scripts can say it.
bool isCurveName(std::string_view name) noexcept;

/// The level under edit: named curves and items. Main thread only. Signals are emitted after the change.
class Level
{
public:
    const std::vector<Curve>& curves() const noexcept { return m_data.curves; }
    const std::vector<Item>& items() const noexcept { return m_data.items; }
    const LevelData& data() const noexcept { return m_data; }
    /// The curve, or null.
    const Curve* findCurve(std::string_view name) const noexcept;

    /// Replaces everything. Each curve is announced as removed, then each new one as added.
    void replace(LevelData data);

    /// These throw LevelError: for a name that is no curve name or is taken, for a curve that is not there,
    /// for a coordinate that is not finite.
    void addCurve(const std::string& name);
    void removeCurve(const std::string& name);
    void addPoints(const std::string& curve, const std::vector<Position>& points);

    [[nodiscard]] qua::Connection connectCurveAdded(std::function<void(const std::string& name)> slot);
    [[nodiscard]] qua::Connection connectCurveRemoved(std::function<void(const std::string& name)> slot);

private:
    LevelData m_data;
    qua::Signal<void(const std::string&)> m_curveAdded;
    qua::Signal<void(const std::string&)> m_curveRemoved;
};
