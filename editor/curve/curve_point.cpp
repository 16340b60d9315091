#include "editor/curve/curve_point.hpp"

#include "editor/curve/position_text.hpp"

#include <string>
#include <utility>

CurvePoint::CurvePoint(std::weak_ptr<CurveDocument> document,
                       std::optional<CurveDocument::PointId> id) noexcept
    : m_document(std::move(document)), m_id(id)
{
}

std::optional<std::size_t> CurvePoint::index() const noexcept
{
    const std::shared_ptr<CurveDocument> curve = document();
    if (curve == nullptr || curve->pointIds().empty())
    {
        return std::nullopt;
    }
    return m_id ? curve->indexOf(*m_id) : 0;
}

std::optional<Position> CurvePoint::position() const
{
    const std::optional<std::size_t> place = index();
    return place ? std::optional(document()->curve().points[*place]) : std::nullopt;
}

bool CurvePoint::setPosition(const Position& position, CurveDocument::SetterFlags flags)
{
    const std::optional<std::size_t> place = index();
    return place && isShowable(position) && document()->movePoint(*place, position, flags);
}

namespace
{

vell::Variant readPosition(const tern::Object& object)
{
    const std::optional<Position> position = dynamic_cast<const CurvePoint&>(object).position();
    return position ? vell::Variant(formatPosition(*position)) : vell::Variant();
}

bool writePosition(tern::Object& object, const vell::Variant& value)
{
    const auto* const text = value.peek<std::string>();
    const std::optional<Position> position = text != nullptr ? parsePosition(*text) : std::nullopt;
    return position && dynamic_cast<CurvePoint&>(object).setPosition(*position);
}

} // namespace

tern::StaticMetaObject<CurvePoint>::StaticMetaObject()
    : BaseStaticMetaObject(typeid(CurvePoint), "CurvePoint",
                           tern::Annotations({vell::Variant("Curve Point")}), Bases())
{
    addProperty(
        {CurvePoint::POSITION, readPosition, writePosition, tern::Annotations({vell::Variant("Position")})});
    MetaObjectManager::instance().registerType(*this);
}
