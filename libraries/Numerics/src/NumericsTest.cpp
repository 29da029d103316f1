#include "CoordOnLocalizer.h"
#include "Matrix2x2.h"
#include "Vector2d.h"
#include "Vector3d.h"
#include "kelpVector.h"

#include <gtest/gtest.h>

namespace {

TEST(Vector2d, IsScaledToALength)
{
    EXPECT_EQ((Vector2d{3.0, 4.0}.scaledTo(10.0)), (Vector2d{6.0, 8.0}));
}

TEST(Vector2d, StaysWhenItIsTooShortToHaveADirection)
{
    EXPECT_EQ((Vector2d{1e-9, 0.0}.scaledTo(1.0)), (Vector2d{1e-9, 0.0}));
    EXPECT_EQ((Vector2d{0.0, 0.0}.scaledTo(1.0)), (Vector2d{0.0, 0.0}));
}

TEST(Vector2d, TheLengthBelowWhichAVectorHasNoDirectionIsOneBillionth)
{
    EXPECT_EQ((Vector2d{1e-9, 0.0}.scaledTo(2.0)), (Vector2d{1e-9, 0.0}));
    EXPECT_DOUBLE_EQ((Vector2d{1.1e-9, 0.0}.scaledTo(2.0).x), 2.0);
}

TEST(Vector2d, AddsSubtractsScalesAndMeasures)
{
    const Vector2d a{1.0, 2.0};
    const Vector2d b{3.0, -5.0};
    EXPECT_EQ(a + b, (Vector2d{4.0, -3.0}));
    EXPECT_EQ(a - b, (Vector2d{-2.0, 7.0}));
    EXPECT_EQ(2.0 * a, (Vector2d{2.0, 4.0}));
    EXPECT_EQ(a * 2.0, (Vector2d{2.0, 4.0}));
    EXPECT_EQ(b / 2.0, (Vector2d{1.5, -2.5}));
    EXPECT_EQ(dot(a, b), -7.0);
    EXPECT_EQ(b.squaredLength(), 34.0);
    EXPECT_EQ((Vector2d{3.0, 4.0}.length()), 5.0);
}

TEST(CoordOnLocalizer, KeepsAVectorsComponents)
{
    EXPECT_EQ(CoordOnLocalizer(Vector2d{1.0, 2.0}), CoordOnLocalizer(1.0, 2.0));
    EXPECT_EQ(CoordOnLocalizer(1.0, 2.0).toVector(), (Vector2d{1.0, 2.0}));
}

TEST(Matrix2x2, IsGivenRowByRow)
{
    const Matrix2x2 matrix{1.0, 2.0, 3.0, 4.0};
    EXPECT_EQ((matrix * Vector2d{1.0, 10.0}), (Vector2d{21.0, 43.0}));
    EXPECT_EQ((Matrix2x2::identity() * Vector2d{5.0, 6.0}), (Vector2d{5.0, 6.0}));
}

TEST(Vectors, StartAtZero)
{
    EXPECT_EQ((kelp::Vector3<int>{}), (kelp::Vector3<int>{0, 0, 0}));
    EXPECT_EQ(Vector3d{}, (Vector3d{0.0, 0.0, 0.0}));
    EXPECT_EQ(CoordOnLocalizer(), CoordOnLocalizer(0.0, 0.0));
}

} // namespace
