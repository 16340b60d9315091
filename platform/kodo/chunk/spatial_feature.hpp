#pragma once

#include "kodo/collision/scene_object.hpp"
#include "kodo/export.hpp"
#include "kodo/math/matrix.hpp"

#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace Kodo
{

/// Where the objects of a client space stand that someone wants followed. Main thread only.
class KODO_API SpatialFeature
{
public:
    void add(const SceneObject& object, const Matrix& transform);
    void remove(const SceneObject& object);
    bool isPresent(const SceneObject& object) const noexcept;
    /// Moves an object; one that is not here is ignored.
    void modify(const SceneObject& object, const Matrix& transform);
    /// Where an object stands; null when it is not here.
    const Matrix* transformOf(const SceneObject& object) const noexcept;
    std::size_t objectCount() const noexcept { return m_transforms.size(); }

private:
    std::unordered_map<std::uint64_t, Matrix> m_transforms;
};

} // namespace Kodo
