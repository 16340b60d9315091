#pragma once

#include "kodo/math/matrix.hpp"
#include "kodo/math/quaternion.hpp"
#include "kodo/math/vector3.hpp"

#include <rapidcheck.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <ostream>

/// Random math values, and the plain formulas in double that results are compared with.

/// Three numbers as exact as can be had.
struct Exact : std::array<double, 3>
{
    Exact(double x, double y, double z) : std::array<double, 3>{x, y, z} {}
    explicit Exact(const Kodo::Vector3& v) : Exact(v.x, v.y, v.z) {}
};

inline double lengthOf(const Kodo::Vector3& v)
{
    return std::hypot(static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z));
}

/// @p v turned by q v q*, multiplied out.
inline Exact turnedBy(const Kodo::Quaternion& q, const Exact& v)
{
    const auto product = [](const std::array<double, 4>& a, const std::array<double, 4>& b)
    {
        return std::array<double, 4>{a[0] * b[0] - a[1] * b[1] - a[2] * b[2] - a[3] * b[3],
                                     a[0] * b[1] + a[1] * b[0] + a[2] * b[3] - a[3] * b[2],
                                     a[0] * b[2] - a[1] * b[3] + a[2] * b[0] + a[3] * b[1],
                                     a[0] * b[3] + a[1] * b[2] - a[2] * b[1] + a[3] * b[0]};
    };
    const std::array<double, 4> turn{q.w, q.x, q.y, q.z};
    const std::array<double, 4> back{q.w, -static_cast<double>(q.x), -static_cast<double>(q.y),
                                     -static_cast<double>(q.z)};
    const std::array<double, 4> turned = product(product(turn, {0.0, v[0], v[1], v[2]}), back);
    return {turned[1], turned[2], turned[3]};
}

/// Whether @p product is a times b but for the rounding of floats, in proportion to what is summed up.
inline bool isNearProduct(const Kodo::Matrix& product, const Kodo::Matrix& a, const Kodo::Matrix& b)
{
    constexpr double EPSILON = 8.0 * std::numeric_limits<float>::epsilon();
    bool isNear = true;
    for (int row = 0; row < 4; ++row)
    {
        for (int column = 0; column < 4; ++column)
        {
            double sum = 0.0;
            double magnitude = 1e-36;
            for (int i = 0; i < 4; ++i)
            {
                const double term = static_cast<double>(a.m[row][i]) * static_cast<double>(b.m[i][column]);
                sum += term;
                magnitude += std::fabs(term);
            }
            isNear = isNear && std::fabs(product.m[row][column] - sum) <= EPSILON * magnitude;
        }
    }
    return isNear;
}

/// A float of any value up to @p limit either way.
inline rc::Gen<float> floatUpTo(float limit)
{
    return rc::gen::map(rc::gen::inRange(-1000000, 1000001),
                        [limit](int millionths) { return static_cast<float>(millionths) * 1e-6F * limit; });
}

inline rc::Gen<Kodo::Vector3> anyVector(float limit)
{
    return rc::gen::construct<Kodo::Vector3>(floatUpTo(limit), floatUpTo(limit), floatUpTo(limit));
}

inline rc::Gen<Kodo::Quaternion> anyRotation()
{
    return rc::gen::apply(&Kodo::Quaternion::fromAngleAxis, floatUpTo(3.2F), anyVector(1.0F));
}

/// A size of either sign.
inline rc::Gen<float> scaleBetween(float least, float largest)
{
    return rc::gen::map(rc::gen::tuple(rc::gen::inRange(0, 1001), rc::gen::arbitrary<bool>()),
                        [least, largest](const std::tuple<int, bool>& choice)
                        {
                            const float part = static_cast<float>(std::get<0>(choice)) / 1000.0F;
                            const float size = least + (largest - least) * part;
                            return std::get<1>(choice) ? -size : size;
                        });
}

/// A size from the tiniest to the hugest that still has an inverse among floats.
inline rc::Gen<float> nonzeroScale()
{
    return rc::gen::oneOf(scaleBetween(0.1F, 10.0F), scaleBetween(1e-6F, 1e-5F), scaleBetween(1e-30F, 1e-29F),
                          scaleBetween(1e5F, 1e6F), scaleBetween(1e29F, 1e30F));
}

inline rc::Gen<Kodo::Matrix> transform(const rc::Gen<float>& scale)
{
    return rc::gen::apply(&Kodo::Matrix::constructTransformationMatrix, anyVector(1000.0F), anyRotation(),
                          rc::gen::construct<Kodo::Vector3>(scale, scale, scale));
}

/// Sixteen numbers without any meaning.
inline rc::Gen<Kodo::Matrix> anyMatrix()
{
    return rc::gen::map(rc::gen::container<std::array<float, 16>>(floatUpTo(1000.0F)),
                        [](const std::array<float, 16>& elements)
                        {
                            Kodo::Matrix matrix;
                            std::copy(elements.begin(), elements.end(), &matrix.m[0][0]);
                            return matrix;
                        });
}

namespace Kodo
{

inline void showValue(const Vector3& v, std::ostream& out)
{
    out << '(' << v.x << ", " << v.y << ", " << v.z << ')';
}
inline void showValue(const Quaternion& q, std::ostream& out)
{
    out << '(' << q.x << ", " << q.y << ", " << q.z << "; " << q.w << ')';
}
inline void showValue(const Matrix& matrix, std::ostream& out)
{
    for (const auto& row : matrix.m)
    {
        out << '[' << row[0] << ' ' << row[1] << ' ' << row[2] << ' ' << row[3] << ']';
    }
}
inline void PrintTo(const Vector3& v, std::ostream* out)
{
    showValue(v, *out);
}
inline void PrintTo(const Matrix& matrix, std::ostream* out)
{
    showValue(matrix, *out);
}

} // namespace Kodo
