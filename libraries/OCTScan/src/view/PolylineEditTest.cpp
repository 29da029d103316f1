#include "PolylineEdit.h"

#include "kelpException.h"

#include <gmock/gmock.h>

#include <cmath>
#include <random>

using kelp::oct::PolylineChange;
using kelp::oct::PolylineEdit;
using kelp::oct::PolylineScale;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr float largest = 3.4028234663852886e38F;

/// Powers of two, so that figures can be compared exactly.
constexpr PolylineScale scale{0.25, 0.125, 4.0};

/// Points of a level line over so many A-scans from this one on.
PolylineEdit::Points levelLine(int count, double y, int firstAScan = 0,
                               const PolylineScale& resolution = scale)
{
    PolylineEdit::Points points;
    for (int i = 0; i < count; ++i) {
        points.append({(firstAScan + i + 0.5) * resolution.lateralResolution, y});
    }
    return points;
}

std::vector<PolylineChange> dragged(const PolylineEdit::Points& points, const QPointF& from,
                                    const QPointF& to)
{
    const auto changes = PolylineEdit(scale).drag(points, from, to);
    EXPECT_TRUE(changes.has_value());
    return changes.value_or(std::vector<PolylineChange>());
}

TEST(ClosestPoint, IsTheOneWithTheClosestX)
{
    const PolylineEdit::Points points = levelLine(8, 1.0); // x = 0.125, 0.375, ...
    EXPECT_EQ(PolylineEdit::closestIndex(points, 0.4), 1);
    EXPECT_EQ(PolylineEdit::closestIndex(points, -50.0), 0);
    EXPECT_EQ(PolylineEdit::closestIndex(points, 50.0), 7);
}

TEST(ClosestPoint, IsTheLaterOfTwoEquallyClose)
{
    const PolylineEdit::Points points = levelLine(8, 1.0);
    EXPECT_EQ(PolylineEdit::closestIndex(points, 0.25), 1);
    EXPECT_EQ(PolylineEdit::closestIndex(points, 1.0), 4);
}

TEST(ClosestPoint, IsTheFirstBeyondASquaredDistanceOf999999)
{
    const PolylineEdit::Points points{{0.0, 0.0}, {1.0, 0.0}};
    const double sight = std::sqrt(999999.0);
    EXPECT_EQ(PolylineEdit::closestIndex(points, sight + 0.5), 1);
    EXPECT_EQ(PolylineEdit::closestIndex(points, sight + 1.5), 0);
}

TEST(DistanceToAPolyline, CountsTheFirstPointSquared)
{
    const PolylineEdit::Points one{{0.0, 0.0}};
    EXPECT_DOUBLE_EQ(PolylineEdit::distance(one, {3.0, 4.0}), 25.0);
    // Nearer than 1 the first point seems nearer still and wins, beyond it further and loses.
    const PolylineEdit::Points two{{0.0, 0.0}, {1.0, 0.0}};
    EXPECT_DOUBLE_EQ(PolylineEdit::distance(two, {0.0, 0.5}), 0.25);
    EXPECT_DOUBLE_EQ(PolylineEdit::distance(two, {0.0, 3.0}), std::sqrt(10.0));
}

TEST(DistanceToAPolyline, IsTheLargestFloatWithoutPoints)
{
    EXPECT_EQ(PolylineEdit::distance({}, {3.0, 4.0}), static_cast<double>(largest));
}

TEST(AClick, MovesTheClosestPointToTheUpperEdgeOfItsRow)
{
    const PolylineChange change = PolylineEdit(scale).click(levelLine(8, 1.0), {0.9, 1.99});
    EXPECT_EQ(change, (PolylineChange{3, 15, 15 * 0.125})); // 1.99 / 0.125 = 15.92
}

TEST(AClick, IsClampedToTheImage)
{
    const PolylineEdit edit(scale);
    EXPECT_EQ(edit.click(levelLine(8, 1.0), {0.9, -7.0}), (PolylineChange{3, 0, 0.0}));
    // The image's height itself belongs to the row below the last.
    EXPECT_EQ(edit.click(levelLine(8, 1.0), {0.9, 7.0}), (PolylineChange{3, 32, 4.0}));
}

TEST(AClick, FailsWithoutPoints)
{
    try {
        PolylineEdit(scale).click({}, {0.0, 0.0});
        FAIL() << "a click into an empty polyline goes through";
    } catch (const kelp::Assertion& failure) {
        EXPECT_THAT(failure.what(),
                    HasSubstr("kelp::oct::LayerSegmentationGI::changeSegmentation: Index too "
                              "large."));
    }
}

TEST(ADrag, RoundsAndDrawsHalfARowLower)
{
    // A level drag at 1.99: row (1.99 - 0.0625) / 0.125 = 15.42.
    const auto changes = dragged(levelLine(8, 1.0), {0.5, 1.99}, {1.2, 1.99});
    ASSERT_EQ(changes.size(), 3U);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(changes[static_cast<std::size_t>(i)].index, i + 2);
        EXPECT_EQ(changes[static_cast<std::size_t>(i)].position, 15);
        EXPECT_DOUBLE_EQ(changes[static_cast<std::size_t>(i)].y, 1.99);
    }
}

TEST(ADrag, RoundsHalvesToEvenRows)
{
    // 0.125 * 2.5 + half a row, and 0.125 * 3.5 + half a row.
    EXPECT_EQ(dragged(levelLine(8, 1.0), {0.5, 0.375}, {0.7, 0.375}).front().position, 2);
    EXPECT_EQ(dragged(levelLine(8, 1.0), {0.5, 0.5}, {0.7, 0.5}).front().position, 4);
}

TEST(ADrag, GivesAnotherRowThanAClickAtTheSamePlace)
{
    const PolylineEdit::Points points = levelLine(8, 1.0);
    const int clicked = PolylineEdit(scale).click(points, {0.6, 2.0}).position;
    const int draggedTo = dragged(points, {0.5, 1.999}, {0.7, 1.999}).front().position;
    EXPECT_EQ(clicked, 16);
    EXPECT_EQ(draggedTo, 15);
}

TEST(ADrag, IsTheSameInBothDirections)
{
    const PolylineEdit::Points points = levelLine(20, 1.0);
    EXPECT_EQ(dragged(points, {0.6, 0.5}, {3.1, 3.0}), dragged(points, {3.1, 3.0}, {0.6, 0.5}));
}

TEST(ADrag, OfTheSameXChangesNothing)
{
    EXPECT_THAT(dragged(levelLine(8, 1.0), {0.6, 0.5}, {0.6, 3.0}), IsEmpty());
}

TEST(ADrag, AboveTheImageClampsAtTheFirstRow)
{
    for (const PolylineChange& change : dragged(levelLine(8, 1.0), {0.4, -3.0}, {1.6, -1.0})) {
        EXPECT_EQ(change.position, 0);
        EXPECT_EQ(change.y, 0.0625);
    }
}

TEST(ADrag, BelowTheImageClampsAtItsHeight)
{
    const auto changes = dragged(levelLine(8, 1.0), {0.4, 9.0}, {1.6, 5.0});
    ASSERT_FALSE(changes.empty());
    for (const PolylineChange& change : changes) {
        EXPECT_EQ(change.position, 32);
        EXPECT_EQ(change.y, 4.0625);
    }
}

TEST(ADrag, WhollyBesideThePolylineIsNone)
{
    const PolylineEdit edit(scale);
    const PolylineEdit::Points points = levelLine(8, 1.0, 4); // x from 1.125 to 2.875
    EXPECT_FALSE(edit.drag(points, {0.2, 1.0}, {1.1, 1.0}).has_value());
    EXPECT_FALSE(edit.drag(points, {3.5, 1.0}, {2.9, 1.0}).has_value());
    EXPECT_FALSE(edit.drag({}, {3.5, 1.0}, {2.9, 1.0}).has_value());
}

TEST(ADrag, FromTheLeftOfThePolylineStartsAtItsFirstPointByTheOldFormula)
{
    // From (1, 1) to (2, 1.5) over points from 1.125 on: the height there is 1.5 + 0.5 * -1 = 1.
    const auto changes = dragged(levelLine(8, 0.0, 4), {1.0, 1.0}, {2.0, 1.5});
    ASSERT_EQ(changes.size(), 5U); // 2.0 lies between points 3 and 4: the later
    const double slope = 0.5 / 0.875;
    for (int i = 0; i < 5; ++i) {
        const PolylineChange& change = changes[static_cast<std::size_t>(i)];
        EXPECT_EQ(change.index, i);
        EXPECT_NEAR(change.y, 1.0 + slope * 0.25 * i, 1e-12);
    }
}

TEST(ADrag, PastTheRightEndStopsAtTheLastPointByTheOldFormula)
{
    // To (4, 2) over points up to 2.875: the height there is 1 + 1 * (2.875 - 2) = 1.875.
    const auto changes = dragged(levelLine(8, 0.0, 4), {2.0, 1.0}, {4.0, 2.0});
    ASSERT_EQ(changes.size(), 4U);
    EXPECT_EQ(changes.front().index, 4);
    EXPECT_EQ(changes.back().index, 7);
    EXPECT_NEAR(changes.back().y, 1.875, 1e-12);
}

/// The same drag, told step by step on plain arrays and in long double.
struct ReferenceDrag
{
    std::vector<long double> xs;
    PolylineScale resolution;

    struct Step
    {
        std::size_t index;
        long double row; ///< before rounding
        long double y;
    };

    std::size_t nearest(long double x) const
    {
        std::size_t found = xs.size() - 1;
        for (std::size_t back = xs.size(); back-- > 0;) {
            if (std::fabs(xs[back] - x) < std::fabs(xs[found] - x)) {
                found = back;
            }
        }
        return found;
    }

    std::vector<Step> steps(long double leftX, long double leftY, long double rightX,
                            long double rightY) const
    {
        if (leftX < xs.front()) {
            leftY = rightY - (rightY - leftY) * leftX;
            leftX = xs.front();
        }
        if (rightX > xs.back()) {
            rightY = leftY + (rightY - leftY) * (xs.back() - leftX);
            rightX = xs.back();
        }
        std::vector<Step> result;
        const long double half = resolution.axialResolution / 2.0L;
        const long double bottom = resolution.maxY;
        for (std::size_t i = nearest(leftX); rightX > leftX && i <= nearest(rightX); ++i) {
            const long double share = (xs[i] - leftX) / (rightX - leftX);
            const long double line = leftY + share * (rightY - leftY) - half;
            const long double top = line < 0.0L ? 0.0L : (line > bottom ? bottom : line);
            result.push_back({i, top / resolution.axialResolution, top + half});
        }
        return result;
    }
};

TEST(ADrag, AgreesWithAnIndependentInterpolationForThousandsOfDrags)
{
    const PolylineScale fine{0.0114, 0.00387, 0.00387 * 496};
    const PolylineEdit edit(fine);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> anyX(-0.5, 3.5);
    std::uniform_real_distribution<double> anyY(-0.4, 2.4);
    int compared = 0;
    for (int round = 0; round < 3000; ++round) {
        const PolylineEdit::Points points = levelLine(200, 1.0, round % 50, fine);
        ReferenceDrag reference{{}, fine};
        for (const Vector2d& point : points) {
            reference.xs.push_back(static_cast<long double>(point.x));
        }
        QPointF left(anyX(random), anyY(random));
        QPointF right(anyX(random), anyY(random));
        const auto changes = edit.drag(points, left, right);
        if (left.x() > right.x()) {
            std::swap(left, right);
        }
        const bool beside = right.x() < points.first().x || left.x() > points.last().x;
        ASSERT_EQ(changes.has_value(), !beside);
        if (beside) {
            continue;
        }
        const auto steps = reference.steps(left.x(), left.y(), right.x(), right.y());
        ASSERT_EQ(changes->size(), steps.size());
        for (std::size_t i = 0; i < steps.size(); ++i) {
            const PolylineChange& change = (*changes)[i];
            ASSERT_EQ(static_cast<std::size_t>(change.index), steps[i].index);
            ASSERT_NEAR(change.y, static_cast<double>(steps[i].y), 1e-9);
            ASSERT_LE(std::fabs(change.position - static_cast<double>(steps[i].row)), 0.5 + 1e-6);
            ++compared;
        }
    }
    EXPECT_GT(compared, 50000);
}

} // namespace
