#pragma once

#include "editor/curve/curve_document.hpp"
#include "tern/meta_object.hpp"
#include "tern/object.hpp"

#include <memory>
#include <optional>
#include <string_view>

/// What stands for one point of a curve in property panels and under the mouse: a reflected object with the
/// property "position", a text "x y z" in curve space. Setting it moves the point by way of the document, so
/// that it can be undone. The object stays with its point wherever that stands in the order; it is inert
/// while the point is gone (no value, setting it fails), and works again once the removal is undone. Main
/// thread only.
class CurvePoint final : public tern::Object
{
public:
    static constexpr const char* POSITION = "position";

    /// Without an @p id it stands for whichever point is the first.
    CurvePoint(std::weak_ptr<CurveDocument> document, std::optional<CurveDocument::PointId> id) noexcept;

    /// The curve; null when it is gone.
    std::shared_ptr<CurveDocument> document() const noexcept { return m_document.lock(); }
    /// The point's place in the order; nothing when the point is gone.
    std::optional<std::size_t> index() const noexcept;

    std::optional<Position> position() const;
    /// False when the point is gone or the scene cannot hold the place.
    bool setPosition(const Position& position, CurveDocument::SetterFlags flags = {});

private:
    std::weak_ptr<CurveDocument> m_document;
    std::optional<CurveDocument::PointId> m_id;
};

/// Registers CurvePoint with its property.
template <>
class tern::StaticMetaObject<CurvePoint> : public tern::BaseStaticMetaObject<0>
{
public:
    StaticMetaObject();
};
