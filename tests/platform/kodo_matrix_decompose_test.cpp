#include "kodo/math/matrix.hpp"
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

struct Parts
{
    Vector3 position{-1.0F, -1.0F, -1.0F};
    Quaternion rotation{-1.0F, -1.0F, -1.0F, -1.0F};
    Vector3 scale{-1.0F, -1.0F, -1.0F};
    bool isWhole = false;

    explicit Parts(const Matrix& matrix) : isWhole(Matrix::decomposeMatrix(matrix, position, rotation, scale))
    {
    }

    Matrix composed() const { return Matrix::constructTransformationMatrix(position, rotation, scale); }
    double rotationLength() const
    {
        return std::hypot(std::hypot(rotation.x, rotation.y), std::hypot(rotation.z, rotation.w));
    }
};

/// Whether the axes agree within a part of their lengths, and all else to the bit.
bool isSameTransform(const Matrix& a, const Matrix& b)
{
    bool isSame = a.translation() == b.translation();
    for (int i = 0; i < 3; ++i)
    {
        const double difference =
            std::hypot(static_cast<double>(a.m[i][0]) - b.m[i][0], static_cast<double>(a.m[i][1]) - b.m[i][1],
                       static_cast<double>(a.m[i][2]) - b.m[i][2]);
        isSame = isSame && difference <= 2e-6 * lengthOf(a.row(i)) + 1e-44;
    }
    return isSame;
}

bool isCloseTo(float value, float expected)
{
    return std::fabs(static_cast<double>(value) - expected) <= 1e-6 * std::fabs(expected);
}

rc::Gen<float> anyScale()
{
    return rc::gen::oneOf(nonzeroScale(), rc::gen::just(0.0F), rc::gen::just(1.0F), rc::gen::just(1e-37F),
                          rc::gen::just(-3e38F));
}

RC_GTEST_PROP(MatrixDecomposeTest, ThePartsMakeUpTheMatrixAgain, ())
{
    const Vector3 position = *anyVector(1e6F);
    const Quaternion rotation = *anyRotation();
    const Vector3 scale(*anyScale(), *anyScale(), *anyScale());
    const Matrix matrix = Matrix::constructTransformationMatrix(position, rotation, scale);

    const Parts parts(matrix);

    RC_ASSERT(parts.isWhole);
    RC_ASSERT(parts.position == position);
    RC_ASSERT(std::fabs(parts.rotationLength() - 1.0) < 1e-6);
    RC_ASSERT(isCloseTo(std::fabs(parts.scale.x), std::fabs(scale.x)));
    RC_ASSERT(isCloseTo(parts.scale.y, std::fabs(scale.y)));
    RC_ASSERT(isCloseTo(parts.scale.z, std::fabs(scale.z)));
    const bool mirrors =
        std::copysign(1.0F, scale.x) * std::copysign(1.0F, scale.y) * std::copysign(1.0F, scale.z) < 0.0F &&
        scale.x != 0.0F && scale.y != 0.0F && scale.z != 0.0F;
    RC_ASSERT(mirrors == (parts.scale.x < 0.0F));
    RC_ASSERT(isSameTransform(matrix, parts.composed()));
}

RC_GTEST_PROP(MatrixDecomposeTest, PositiveScalesKeepTheirRotation, ())
{
    const Quaternion rotation = *anyRotation();
    const auto positive = rc::gen::map(nonzeroScale(), [](float scale) { return std::fabs(scale); });
    const Matrix matrix =
        Matrix::constructTransformationMatrix({}, rotation, {*positive, *positive, *positive});

    const Parts parts(matrix);

    const double alignment = static_cast<double>(rotation.x) * parts.rotation.x +
                             static_cast<double>(rotation.y) * parts.rotation.y +
                             static_cast<double>(rotation.z) * parts.rotation.z +
                             static_cast<double>(rotation.w) * parts.rotation.w;
    RC_ASSERT(std::fabs(std::fabs(alignment) - 1.0) < 1e-6); // q and -q are one rotation
}

RC_GTEST_PROP(MatrixDecomposeTest, AnythingFiniteGivesAUnitRotationAndTheLengthsOfTheAxes, ())
{
    Matrix matrix = *anyMatrix();
    const int copied = *rc::gen::inRange(0, 4); // 3 for none
    for (int column = 0; copied < 3 && column < 3; ++column)
    {
        matrix.m[copied][column] = 2.0F * matrix.m[(copied + 1) % 3][column];
    }

    const Parts parts(matrix);

    RC_ASSERT(parts.isWhole);
    RC_ASSERT(std::fabs(parts.rotationLength() - 1.0) < 1e-6);
    RC_ASSERT(isCloseTo(std::fabs(parts.scale.x), matrix.row(0).length()));
    RC_ASSERT(isCloseTo(parts.scale.y, matrix.row(1).length()));
    RC_ASSERT(isCloseTo(parts.scale.z, matrix.row(2).length()));
}

TEST(MatrixDecomposeTest, WithoutAxesTheRotationIsTheIdentity)
{
    const Parts zero((Matrix()));
    EXPECT_TRUE(zero.isWhole);
    EXPECT_EQ(zero.position, Vector3::ZERO);
    EXPECT_EQ(zero.rotation, Quaternion::IDENTITY);
    EXPECT_EQ(zero.scale, Vector3::ZERO);

    Matrix moved;
    moved.setTranslate({4.0F, 5.0F, 6.0F});
    const Parts pure(moved);
    EXPECT_EQ(pure.position, Vector3(4.0F, 5.0F, 6.0F));
    EXPECT_EQ(pure.rotation, Quaternion::IDENTITY);
    EXPECT_EQ(pure.scale, Vector3(1.0F, 1.0F, 1.0F));
}

TEST(MatrixDecomposeTest, AMissingAxisStandsWhereTheOthersPutIt)
{
    for (int missing = 1; missing < 8; ++missing)
    {
        const Vector3 scale((missing & 1) != 0 ? 0.0F : 2.0F, (missing & 2) != 0 ? 0.0F : 3.0F,
                            (missing & 4) != 0 ? 0.0F : 4.0F);
        const Parts parts(Matrix::constructTransformationMatrix({}, {}, scale));
        EXPECT_EQ(parts.rotation, Quaternion::IDENTITY) << missing;
        EXPECT_EQ(parts.scale, scale) << missing;
    }
    const Quaternion turn = Quaternion::fromAngleAxis(2.0F, {1.0F, 2.0F, 3.0F});
    for (const Vector3& scale :
         {Vector3(0.0F, 1.0F, 2.0F), Vector3(1.0F, 0.0F, 2.0F), Vector3(1.0F, 2.0F, 0.0F)})
    {
        const Parts parts(Matrix::constructTransformationMatrix({}, turn, scale));
        EXPECT_TRUE(almostEqual(Vector3(parts.rotation.x, parts.rotation.y, parts.rotation.z),
                                Vector3(turn.x, turn.y, turn.z), 1e-6F));
    }
}

TEST(MatrixDecomposeTest, AMirrorIsANegativeScaleOfTheFirstAxis)
{
    const Parts oneAxis(Matrix::constructTransformationMatrix({}, {}, {-2.0F, 3.0F, 4.0F}));
    EXPECT_EQ(oneAxis.scale, Vector3(-2.0F, 3.0F, 4.0F));
    EXPECT_EQ(oneAxis.rotation, Quaternion::IDENTITY);

    // Two negative scales are a half turn.
    const Parts twoAxes(Matrix::constructTransformationMatrix({}, {}, {-2.0F, -3.0F, 4.0F}));
    EXPECT_EQ(twoAxes.scale, Vector3(2.0F, 3.0F, 4.0F));
    EXPECT_EQ(std::fabs(twoAxes.rotation.z), 1.0F);
}

TEST(MatrixDecomposeTest, ALengthBeyondTheFloatsIsTheLargestOfThem)
{
    constexpr float LARGEST = std::numeric_limits<float>::max();
    Matrix matrix = Matrix::IDENTITY;
    matrix.m[1][0] = LARGEST;
    matrix.m[1][1] = LARGEST;
    EXPECT_EQ(Parts(matrix).scale.y, LARGEST);
}

TEST(MatrixDecomposeTest, TheFourthColumnDoesNotCount)
{
    Matrix matrix = Matrix::constructTransformationMatrix({1.0F, 2.0F, 3.0F}, {}, {4.0F, 5.0F, 6.0F});
    matrix.m[0][3] = 9.0F;
    matrix.m[3][3] = std::numeric_limits<float>::quiet_NaN();

    const Parts parts(matrix);

    EXPECT_TRUE(parts.isWhole);
    EXPECT_EQ(parts.position, Vector3(1.0F, 2.0F, 3.0F));
    EXPECT_EQ(parts.rotation, Quaternion::IDENTITY);
    EXPECT_EQ(parts.scale, Vector3(4.0F, 5.0F, 6.0F));
}

TEST(MatrixDecomposeTest, WhatIsNotFiniteIsRefusedWithTheIdentityRotation)
{
    for (const float odd : {std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
                            std::numeric_limits<float>::quiet_NaN()})
    {
        for (int i = 0; i < 12; ++i)
        {
            Matrix matrix = Matrix::IDENTITY;
            matrix.m[i / 3][i % 3] = odd;
            const Parts parts(matrix);
            EXPECT_FALSE(parts.isWhole);
            EXPECT_EQ(parts.rotation, Quaternion::IDENTITY);
            EXPECT_EQ(parts.scale, Vector3(1.0F, 1.0F, 1.0F));
        }
    }
}

} // namespace
