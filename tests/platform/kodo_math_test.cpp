#include "kodo/math/matrix.hpp"
#include "kodo/math/quaternion.hpp"
#include "kodo/math/ray.hpp"
#include "kodo/math/vector3.hpp"
#include "kodo/math/vector4.hpp"
#include "tests/support/math.hpp"
#include "tests/support/property.hpp"

#include <cmath>
#include <limits>
#include <numbers>

using Kodo::Matrix;
using Kodo::Quaternion;
using Kodo::Vector3;

namespace
{

constexpr float INFINITE = std::numeric_limits<float>::infinity();
constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
constexpr float LARGEST = std::numeric_limits<float>::max();

// Whoever computes at load or at compile time has the same values.
static_assert(Vector3(1.0F, 2.0F, 3.0F) + Vector3(4.0F, 5.0F, 6.0F) == Vector3(5.0F, 7.0F, 9.0F));
static_assert(Vector3(1.0F, 2.0F, 3.0F).dotProduct({4.0F, 5.0F, 6.0F}) == 32.0F);
static_assert(Vector3(1.0F, 0.0F, 0.0F).crossProduct({0.0F, 1.0F, 0.0F}) == Vector3(0.0F, 0.0F, 1.0F));
static_assert(-Vector3(1.0F, -2.0F, 3.0F) == Vector3(-1.0F, 2.0F, -3.0F));
static_assert(2.0F * Vector3(1.0F, 2.0F, 3.0F) - Vector3(1.0F, 1.0F, 1.0F) == Vector3(1.0F, 3.0F, 5.0F));
static_assert(Kodo::Vector4().w == 0.0F && Quaternion().w == 1.0F);
static_assert(Kodo::Ray().direction == Vector3());
static_assert(sizeof(Kodo::Vector4) == 4 * sizeof(float) && sizeof(Matrix) == 16 * sizeof(float));

TEST(Vector3Test, ItsLengthNeitherOverflowsNorVanishes)
{
    EXPECT_EQ(Vector3(3.0F, 4.0F, 12.0F).length(), 13.0F);
    EXPECT_EQ(Vector3(3e30F, 4e30F, 0.0F).length(), 5e30F);
    EXPECT_EQ(Vector3(0.0F, 0.0F, -1e-40F).length(), 1e-40F);
    EXPECT_EQ(Vector3::ZERO.length(), 0.0F);
}

TEST(Vector3Test, NormalisingKeepsTheDirectionAndNothingElse)
{
    for (const float factor : {1e-40F, 1e-20F, 1.0F, 1e20F, 3e37F})
    {
        const Vector3 unit = (Vector3(0.0F, -3.0F, 4.0F) * factor).normalised();
        EXPECT_EQ(unit.x, 0.0F);
        EXPECT_NEAR(unit.y, -0.6F, 1e-4F) << factor; // few digits are left of the smallest numbers
        EXPECT_NEAR(unit.z, 0.8F, 1e-4F) << factor;
        EXPECT_NEAR(unit.length(), 1.0F, 1e-6F) << factor;
    }
}

TEST(Vector3Test, WhatHasNoDirectionNormalisesToZero)
{
    EXPECT_EQ(Vector3::ZERO.normalised(), Vector3::ZERO);
    EXPECT_EQ(Vector3(INFINITE, 1.0F, 0.0F).normalised(), Vector3::ZERO);
    EXPECT_EQ(Vector3(0.0F, NOT_A_NUMBER, 0.0F).normalised(), Vector3::ZERO);
}

TEST(QuaternionTest, TurnsCounterClockwiseWhateverTheAxisLength)
{
    const float quarter = std::numbers::pi_v<float> / 2.0F;
    for (const float length : {1e-30F, 1.0F, 1e30F})
    {
        const Quaternion turn = Quaternion::fromAngleAxis(quarter, {0.0F, 0.0F, length});
        EXPECT_NEAR(turn.z, std::sqrt(0.5F), 1e-6F);
        EXPECT_NEAR(turn.w, std::sqrt(0.5F), 1e-6F);
        const Matrix matrix = Matrix::constructTransformationMatrix({}, turn, {1.0F, 1.0F, 1.0F});
        EXPECT_TRUE(almostEqual(matrix.applyVector({1.0F, 0.0F, 0.0F}), {0.0F, 1.0F, 0.0F}, 1e-6F));
        EXPECT_TRUE(almostEqual(matrix.applyVector({0.0F, 1.0F, 0.0F}), {-1.0F, 0.0F, 0.0F}, 1e-6F));
    }
}

TEST(QuaternionTest, WithoutAnAxisOrAnAngleThereIsNoTurn)
{
    EXPECT_EQ(Quaternion::fromAngleAxis(1.0F, Vector3::ZERO), Quaternion::IDENTITY);
    EXPECT_EQ(Quaternion::fromAngleAxis(1.0F, {INFINITE, 0.0F, 0.0F}), Quaternion::IDENTITY);
    EXPECT_EQ(Quaternion::fromAngleAxis(NOT_A_NUMBER, {1.0F, 0.0F, 0.0F}), Quaternion::IDENTITY);
    EXPECT_EQ(Quaternion::fromAngleAxis(0.0F, {1.0F, 0.0F, 0.0F}), Quaternion::IDENTITY);
}

TEST(MatrixTest, IsZeroUntilItIsSet)
{
    Matrix matrix;
    EXPECT_TRUE(std::all_of(&matrix.m[0][0], &matrix.m[0][0] + 16, [](float x) { return x == 0.0F; }));
    EXPECT_EQ(matrix.applyPoint({1.0F, 2.0F, 3.0F}), Vector3::ZERO);

    matrix.setIdentity();
    EXPECT_EQ(matrix, Matrix::IDENTITY);
    EXPECT_EQ(matrix.applyPoint({1.0F, 2.0F, 3.0F}), Vector3(1.0F, 2.0F, 3.0F));
    matrix.setZero();
    EXPECT_EQ(matrix, Matrix());
}

TEST(MatrixTest, SetTranslateMakesAPureTranslationOfAnything)
{
    const Vector3 offset(1.0F, -2.0F, 3.0F);
    Matrix expected = Matrix::IDENTITY;
    expected.m[3][0] = 1.0F;
    expected.m[3][1] = -2.0F;
    expected.m[3][2] = 3.0F;

    Matrix cleared;
    cleared.setZero();
    cleared.setTranslate(offset);
    Matrix turned = Matrix::constructTransformationMatrix(
        {7.0F, 8.0F, 9.0F}, Quaternion::fromAngleAxis(1.0F, {1.0F, 1.0F, 0.0F}), {2.0F, 0.0F, -1.0F});
    turned.setTranslate(offset);

    EXPECT_EQ(cleared, expected);
    EXPECT_EQ(turned, expected);
    EXPECT_EQ(cleared.translation(), offset);
}

TEST(MatrixTest, PostMultiplyAppliesTheOtherAfterwards)
{
    Matrix move;
    move.setTranslate({1.0F, 0.0F, 0.0F});
    const Matrix grow = Matrix::constructTransformationMatrix({}, {}, {3.0F, 3.0F, 3.0F});

    Matrix moveThenGrow = move;
    moveThenGrow.postMultiply(grow);
    Matrix growThenMove = move;
    growThenMove.preMultiply(grow);

    EXPECT_EQ(moveThenGrow.applyPoint({1.0F, 1.0F, 1.0F}), Vector3(6.0F, 3.0F, 3.0F));
    EXPECT_EQ(growThenMove.applyPoint({1.0F, 1.0F, 1.0F}), Vector3(4.0F, 3.0F, 3.0F));
    EXPECT_EQ(moveThenGrow.applyVector({1.0F, 1.0F, 1.0F}), Vector3(3.0F, 3.0F, 3.0F));
}

RC_GTEST_PROP(MatrixPropertyTest, ProductsAreRowsByColumns, ())
{
    const Matrix a = *anyMatrix();
    const Matrix b = *anyMatrix();
    Matrix post = a;
    post.postMultiply(b);
    Matrix pre = b;
    pre.preMultiply(a);
    Matrix squared = a;
    squared.postMultiply(squared);

    RC_ASSERT(post == pre);
    RC_ASSERT(isNearProduct(post, a, b));
    RC_ASSERT(isNearProduct(squared, a, a));
}

RC_GTEST_PROP(MatrixPropertyTest, ApplyingAProductIsApplyingOneAfterTheOther, ())
{
    const Matrix a = *transform(scaleBetween(0.1F, 10.0F));
    const Matrix b = *transform(scaleBetween(0.1F, 10.0F));
    const Vector3 point = *anyVector(100.0F);
    Matrix product = a;
    product.postMultiply(b);

    RC_ASSERT(almostEqual(product.applyPoint(point), b.applyPoint(a.applyPoint(point)), 0.5F));
    RC_ASSERT(almostEqual(product.applyVector(point), b.applyVector(a.applyVector(point)), 0.05F));
    RC_ASSERT(almostEqual(a.applyPoint(point), a.applyVector(point) + a.translation(), 0.01F));
}

RC_GTEST_PROP(MatrixPropertyTest, AConstructedMatrixScalesThenTurnsThenMoves, ())
{
    const Vector3 position = *anyVector(100.0F);
    const Quaternion rotation = *anyRotation();
    const Vector3 scale = *anyVector(10.0F);
    const Vector3 point = *anyVector(10.0F);

    const Matrix matrix = Matrix::constructTransformationMatrix(position, rotation, scale);
    const Exact turned =
        turnedBy(rotation, {Exact(point)[0] * scale.x, Exact(point)[1] * scale.y, Exact(point)[2] * scale.z});

    const Exact result(matrix.applyPoint(point));
    for (std::size_t i = 0; i < 3; ++i)
    {
        RC_ASSERT(std::fabs(result[i] - (turned[i] + Exact(position)[i])) < 1e-3);
    }
    RC_ASSERT(matrix.m[0][3] == 0.0F && matrix.m[1][3] == 0.0F && matrix.m[2][3] == 0.0F);
    RC_ASSERT(matrix.m[3][3] == 1.0F);
    RC_ASSERT(matrix.translation() == position);
}

RC_GTEST_PROP(MatrixInvertTest, AMatrixTimesItsInverseIsTheIdentity, ())
{
    const Matrix matrix = *transform(nonzeroScale());
    Matrix inverse = matrix;
    RC_ASSERT(inverse.invert());

    RC_ASSERT(isNearProduct(Matrix::IDENTITY, matrix, inverse));
    RC_ASSERT(isNearProduct(Matrix::IDENTITY, inverse, matrix));
    RC_ASSERT(inverse.m[0][3] == 0.0F && inverse.m[1][3] == 0.0F && inverse.m[2][3] == 0.0F);
    RC_ASSERT(inverse.m[3][3] == 1.0F);
}

RC_GTEST_PROP(MatrixInvertTest, ASingularMatrixStaysAsItIs, ())
{
    Matrix matrix = *transform(scaleBetween(0.1F, 10.0F));
    // One axis becomes a sum of the others with factors that floats hold exactly, or nothing.
    const int lost = *rc::gen::inRange(0, 3);
    const auto factor = rc::gen::element(0.0F, 1.0F, -2.0F, 0.5F);
    const float first = *factor;
    const float second = *rc::gen::element(0.0F, 1.0F, 4.0F);
    for (int column = 0; column < 3; ++column)
    {
        const auto shortened = [&matrix, column](int row) -> float&
        {
            float& element = matrix.m[row % 3][column];
            element = std::round(element * 256.0F) / 256.0F;
            return element;
        };
        const float a = shortened(lost + 1);
        const float b = shortened(lost + 2);
        matrix.m[lost][column] = first * a + second * b;
    }
    const Matrix before = matrix;

    RC_ASSERT(!matrix.invert());
    RC_ASSERT(matrix == before);
}

TEST(MatrixInvertTest, ScalesOfAnySizeHaveAnInverse)
{
    for (const float scale : {1e-37F, 1e-20F, 1e-4F, 1e10F, 1e37F})
    {
        Matrix matrix = Matrix::constructTransformationMatrix({}, {}, {scale, 1.0F, -scale});
        ASSERT_TRUE(matrix.invert()) << scale;
        EXPECT_FLOAT_EQ(matrix.m[0][0], 1.0F / scale);
        EXPECT_FLOAT_EQ(matrix.m[1][1], 1.0F);
        EXPECT_FLOAT_EQ(matrix.m[2][2], -1.0F / scale);
    }
    // Small and far away.
    Matrix far = Matrix::constructTransformationMatrix({1e6F, -1e6F, 1e6F}, {}, {1e-3F, 1e-3F, 1e-3F});
    ASSERT_TRUE(far.invert());
    EXPECT_FLOAT_EQ(far.m[3][0], -1e9F);
}

TEST(MatrixInvertTest, WhatHasNoInverseInFloatsStaysAsItIs)
{
    const auto isRefused = [](const Matrix& original)
    {
        Matrix matrix = original;
        return !matrix.invert() &&
               std::equal(&matrix.m[0][0], &matrix.m[0][0] + 16, &original.m[0][0],
                          [](float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); });
    };
    EXPECT_TRUE(isRefused(Matrix()));
    for (const float element : {INFINITE, NOT_A_NUMBER})
    {
        Matrix matrix = Matrix::IDENTITY;
        matrix.m[1][2] = element;
        EXPECT_TRUE(isRefused(matrix));
    }
    Matrix tooSmall = Matrix::IDENTITY;
    tooSmall.m[1][1] = 1e-45F; // its inverse is beyond the largest float
    EXPECT_TRUE(isRefused(tooSmall));
}

TEST(AlmostEqualTest, AllowsEachElementTheSameDifference)
{
    Matrix other = Matrix::IDENTITY;
    for (int i = 0; i < 16; ++i)
    {
        other = Matrix::IDENTITY;
        other.m[i / 4][i % 4] += 0.25F;
        EXPECT_TRUE(almostEqual(Matrix::IDENTITY, other, 0.25F));
        EXPECT_TRUE(almostEqual(other, Matrix::IDENTITY, 0.25F));
        EXPECT_FALSE(almostEqual(Matrix::IDENTITY, other, 0.2499F));
    }
    EXPECT_TRUE(almostEqual(Vector3(1.0F, 2.0F, 3.0F), Vector3(1.5F, 1.5F, 3.5F), 0.5F));
    EXPECT_FALSE(almostEqual(Vector3(1.0F, 2.0F, 3.0F), Vector3(1.0F, 2.0F, 3.75F), 0.5F));
}

TEST(AlmostEqualTest, IsNeverTrueOfWhatIsNotANumber)
{
    const Vector3 odd(0.0F, NOT_A_NUMBER, 0.0F);
    EXPECT_FALSE(almostEqual(odd, odd, INFINITE));
    EXPECT_FALSE(almostEqual(odd, Vector3::ZERO, 1.0F));
    EXPECT_TRUE(almostEqual(Vector3(INFINITE, 0.0F, 0.0F), Vector3(INFINITE, 0.0F, 0.0F), 0.0F));
    EXPECT_FALSE(almostEqual(Vector3(INFINITE, 0.0F, 0.0F), Vector3(LARGEST, 0.0F, 0.0F), LARGEST));
    EXPECT_FALSE(almostEqual(Vector3(LARGEST, 0.0F, 0.0F), Vector3(-LARGEST, 0.0F, 0.0F), LARGEST));
}

} // namespace
