// The math library keeps its matrices for column vectors, column by column: in memory that is a matrix for
// row vectors, row by row. Its product a * b is our b * a, therefore.

#include "kodo/math/matrix.hpp"

#include <glm/gtc/quaternion.hpp>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <cmath>

namespace Kodo
{

namespace
{

constexpr Matrix makeIdentity() noexcept
{
    Matrix matrix;
    matrix.setTranslate({});
    return matrix;
}

glm::mat4 toGlm(const Matrix& matrix) noexcept
{
    return glm::make_mat4(&matrix.m[0][0]);
}

Matrix fromGlm(const glm::mat4& matrix) noexcept
{
    Matrix result;
    std::copy_n(glm::value_ptr(matrix), 16, &result.m[0][0]);
    return result;
}

bool isFinite(const Matrix& matrix) noexcept
{
    const float* elements = &matrix.m[0][0];
    return std::all_of(elements, elements + 16, [](float element) { return std::isfinite(element); });
}

/// The power of two that brings the largest element of @p row to between 1 and 2; 0 when all are zero.
double balancingFactor(const glm::dvec4& row) noexcept
{
    double largest = 0.0;
    for (int i = 0; i < 4; ++i)
    {
        largest = std::max(largest, std::fabs(row[i]));
    }
    return largest > 0.0 ? std::ldexp(1.0, -std::ilogb(largest)) : 0.0;
}

/// Multiplies each row with its balancing factor; yields the factors.
glm::dvec4 balanceRows(glm::dmat4& rows) noexcept
{
    glm::dvec4 factors(0.0);
    for (int i = 0; i < 4; ++i)
    {
        factors[i] = balancingFactor(rows[i]);
        rows[i] *= factors[i];
    }
    return factors;
}

/// Multiplies each row and each element of a row with factors.
glm::dmat4 scaled(const glm::dmat4& rows, const glm::dvec4& ofRow, const glm::dvec4& ofColumn) noexcept
{
    glm::dmat4 result = rows;
    for (int i = 0; i < 4; ++i)
    {
        result[i] *= ofColumn * ofRow[i];
    }
    return result;
}

/// Determinants of singular matrices come out below this: with elements up to 2, far above the rounding.
constexpr double SINGULAR_DETERMINANT = 1e-12;

} // namespace

constinit const Matrix Matrix::IDENTITY = makeIdentity();

void Matrix::postMultiply(const Matrix& next) noexcept
{
    *this = fromGlm(toGlm(next) * toGlm(*this));
}

void Matrix::preMultiply(const Matrix& first) noexcept
{
    *this = fromGlm(toGlm(*this) * toGlm(first));
}

bool Matrix::invert() noexcept
{
    if (!isFinite(*this))
    {
        return false;
    }
    // Balanced first: a determinant tells nothing while it also holds the scales, as of objects a millimetre
    // small that stand kilometres away.
    glm::dmat4 rows(toGlm(*this));
    const glm::dvec4 rowFactors = balanceRows(rows);
    glm::dmat4 columns = glm::transpose(rows);
    const glm::dvec4 columnFactors = balanceRows(columns);
    const glm::dmat4 balanced = glm::transpose(columns);
    if (!(std::fabs(glm::determinant(balanced)) > SINGULAR_DETERMINANT))
    {
        return false;
    }
    const Matrix inverse = fromGlm(glm::mat4(scaled(glm::inverse(balanced), columnFactors, rowFactors)));
    if (!isFinite(inverse))
    {
        return false;
    }
    *this = inverse;
    return true;
}

Matrix Matrix::constructTransformationMatrix(const Vector3& position, const Quaternion& rotation,
                                             const Vector3& scale) noexcept
{
    glm::mat4 result = glm::mat4_cast(glm::quat(rotation.w, rotation.x, rotation.y, rotation.z));
    result[0] *= scale.x;
    result[1] *= scale.y;
    result[2] *= scale.z;
    result[3] = glm::vec4(position.x, position.y, position.z, 1.0F);
    return fromGlm(result);
}

namespace
{

bool almostEqual(float a, float b, float epsilon) noexcept
{
    return a == b || std::fabs(a - b) <= epsilon; // infinities are equal and have no difference
}

} // namespace

bool almostEqual(const Matrix& a, const Matrix& b, float epsilon) noexcept
{
    const float* elements = &a.m[0][0];
    return std::equal(elements, elements + 16, &b.m[0][0],
                      [epsilon](float x, float y) { return almostEqual(x, y, epsilon); });
}

bool almostEqual(const Vector3& a, const Vector3& b, float epsilon) noexcept
{
    return almostEqual(a.x, b.x, epsilon) && almostEqual(a.y, b.y, epsilon) && almostEqual(a.z, b.z, epsilon);
}

} // namespace Kodo
