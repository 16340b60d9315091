#pragma once

#include "kodo/export.hpp"

#include <cstdint>

namespace Kodo
{

/// Names one object in a collision scene. Every handle made is another object; copies name the same one. A
/// scene that takes the object in remembers its place here, so that later calls find it without a search.
class KODO_API SceneObject
{
public:
    SceneObject() noexcept;

    std::uint64_t id() const noexcept { return m_id; }
    friend bool operator==(const SceneObject& a, const SceneObject& b) noexcept { return a.m_id == b.m_id; }

private:
    friend class CollisionScene;

    std::uint64_t m_id;               ///< never 0, never used twice in a process
    mutable std::uint32_t m_slot = 0; ///< a hint: the scene checks whose slot it is
};

} // namespace Kodo
