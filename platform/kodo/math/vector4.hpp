#pragma once

namespace Kodo
{

/// Four floats, side by side without padding.
struct Vector4
{
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;
    float w = 0.0F;

    friend constexpr bool operator==(const Vector4&, const Vector4&) noexcept = default;
};

} // namespace Kodo
