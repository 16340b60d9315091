#pragma once

#include "kodo/math/vector3.hpp"

namespace Kodo
{

/// An origin and a direction, of any length.
struct Ray
{
    Vector3 origin;
    Vector3 direction;
};

} // namespace Kodo
