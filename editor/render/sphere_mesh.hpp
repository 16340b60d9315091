#pragma once

#include "kodo/math/vector3.hpp"

#include <cstdint>
#include <vector>

/// A ball of radius 1 as triangles. Every vertex is its own normal.
struct SphereMesh
{
    std::vector<Kodo::Vector3> vertices;
    /// Three a triangle, clockwise seen from outside in a left-handed system.
    std::vector<std::uint16_t> indices;
};

/// An icosahedron, each triangle split into four @p splits times (at most 6): 20 * 4^splits triangles.
SphereMesh makeSphereMesh(int splits);
