#pragma once

#include "editor/curve/curve_data.hpp"
#include "editor/history/edit_history.hpp"
#include "qua/flags.hpp"
#include "qua/signal.hpp"
#include "tern/reflected_object.hpp"
#include "tern/setter_flag.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

class CurvePoint;

/// A curve under edit: its data, the identity of its points, and every change of it as an edit that can be
/// undone. Shared by whoever shows it. Main thread only.
///
/// An edit yields whether it was made. A point that is not there and a coordinate that the scene cannot hold
/// are reported, and nothing changes. A curve may have any number of points, none and one as well; it is a
/// place then, not a line. changed() is emitted once an edit, undo or redo has been made.
class CurveDocument : public std::enable_shared_from_this<CurveDocument>
{
public:
    /// Names a point for as long as the curve lives. Undoing the removal of a point brings back the same.
    enum class PointId : std::uint64_t
    {
    };

    using SetterFlags = qua::Flags<tern::SetterFlag>;

    /// @p history, where the edits are remembered, may be shared with others; one of its own when null.
    /// Handles that the kind has no use for are dropped, missing ones are zero.
    static std::shared_ptr<CurveDocument> make(Curve curve, std::shared_ptr<EditHistory> history = nullptr);

    const Curve& curve() const noexcept { return m_state.curve; }
    EditHistory& history() const noexcept { return *m_history; }
    /// Differs whenever the curve has changed.
    std::uint64_t revision() const noexcept { return m_revision; }
    /// One a point, in the points' order.
    const std::vector<PointId>& pointIds() const noexcept { return m_state.ids; }
    std::optional<std::size_t> indexOf(PointId id) const noexcept;

    /// Adds a point at @p position, where @p parameter tells its place in the order; see
    /// CurveGeometry::insertPoint(). Where @p position is the curve's own at that parameter, the shape stays.
    bool insertPoint(const Position& position, double parameter);
    /// Adds a point where the curve is at @p parameter.
    bool splitAt(double parameter);
    /// Adds points behind the last one: all of them or none. To add none is no edit.
    bool appendPoints(const std::vector<Position>& points);
    bool removePoint(std::size_t index);
    /// An Interactive move and the move of the same point directly after it are one step; a NoUndo one is not
    /// remembered.
    bool movePoint(std::size_t index, const Position& position, SetterFlags flags = {});
    /// False for a curve whose kind has no handles.
    bool setHandles(std::size_t index, const CurveHandles& handles, SetterFlags flags = {});
    /// Exchanges the places of two points in the order.
    bool swapPoints(std::size_t first, std::size_t second);
    /// A Bezier curve is given the handles with which it keeps its shape; the other kinds have none.
    bool setKind(CurveKind kind);
    bool setClosed(bool closed);
    bool setColor(std::optional<Kodo::Render::Colour32Bit> color);

    /// The reflected object that stands for a point: a CurvePoint, the same for as long as anyone holds it.
    /// Empty, and reported, for a point that is not there.
    tern::ReflectedObject pointObject(std::size_t index);
    /// The one that stands for whichever point is the first.
    tern::ReflectedObject firstPointObject();

    [[nodiscard]] qua::Connection connectChanged(std::function<void()> slot);

private:
    class Edit;

    struct State
    {
        Curve curve;
        std::vector<PointId> ids;
    };

    CurveDocument(Curve curve, std::shared_ptr<EditHistory> history);

    /// Makes the edit that leads to @p next, if it is one.
    void change(State next, SetterFlags flags = {});
    void insert(State& state, std::size_t index, const Position& position);
    tern::ReflectedObject objectOf(std::optional<PointId> id);

    State m_state;
    std::uint64_t m_lastId = 0;
    std::uint64_t m_revision = 0;
    std::shared_ptr<EditHistory> m_history;
    std::map<std::optional<PointId>, std::weak_ptr<CurvePoint>> m_objects;
    qua::Signal<void()> m_changed;
};
