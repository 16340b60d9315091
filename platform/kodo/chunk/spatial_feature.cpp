#include "kodo/chunk/spatial_feature.hpp"

namespace Kodo
{

void SpatialFeature::add(const SceneObject& object, const Matrix& transform)
{
    m_transforms.insert_or_assign(object.id(), transform);
}

void SpatialFeature::remove(const SceneObject& object)
{
    m_transforms.erase(object.id());
}

bool SpatialFeature::isPresent(const SceneObject& object) const noexcept
{
    return m_transforms.contains(object.id());
}

void SpatialFeature::modify(const SceneObject& object, const Matrix& transform)
{
    const auto found = m_transforms.find(object.id());
    if (found != m_transforms.end())
    {
        found->second = transform;
    }
}

const Matrix* SpatialFeature::transformOf(const SceneObject& object) const noexcept
{
    const auto found = m_transforms.find(object.id());
    return found == m_transforms.end() ? nullptr : &found->second;
}

} // namespace Kodo
