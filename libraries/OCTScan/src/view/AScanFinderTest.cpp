#include "AScanFinder.h"

#include "AScanPositions.h"
#include "TestExport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace kelp::oct;
using namespace kelp::oct::test;

namespace {

/// By comparing all stored positions.
AScanPlace closestByHand(const OCTScan& scan, const QPointF& point)
{
    AScanPlace closest;
    double shortest = 1e300;
    for (int i = 0; i < scan.getBScanCount(); ++i) {
        const auto positions = scan.getBScan(static_cast<unsigned>(i))->getAScanPositions();
        for (int j = 0; j < positions.size(); ++j) {
            const double distance =
                std::hypot(positions[j].x - point.x(), positions[j].y - point.y());
            if (distance < shortest) {
                shortest = distance;
                closest = {i, j};
            }
        }
    }
    return closest;
}

TestScan withPattern(TestScan scan, const OCTScanPattern& pattern)
{
    scan.pattern = pattern.toString();
    return scan;
}

/// The B-scans turned about (1, 1).
TestScan turned(TestScan scan, double angle)
{
    for (auto& positions : scan.positions) {
        for (Vector2d& position : positions) {
            const Vector2d way = position - Vector2d{1.0, 1.0};
            position = Vector2d{1.0 + std::cos(angle) * way.x - std::sin(angle) * way.y,
                                1.0 + std::sin(angle) * way.x + std::cos(angle) * way.y};
        }
    }
    return scan;
}

void expectClosestEverywhere(const OCTScanPtr& scan)
{
    const AScanFinder finder(scan);
    for (double x = -1.03; x < 3.0; x += 0.37) {
        for (double y = -1.01; y < 3.0; y += 0.29) {
            const auto place = finder.closestTo({x, y});
            ASSERT_TRUE(place) << x << ", " << y;
            EXPECT_EQ(*place, closestByHand(*scan, {x, y})) << x << ", " << y;
        }
    }
}

} // namespace

TEST(AScanFinder, FindsTheClosestAScanOfAVolumeInsideAndOutsideIt)
{
    expectClosestEverywhere(makeTestScan(lineScan(160, 2, 20)));
}

TEST(AScanFinder, FindsTheClosestAScanOfATurnedVolume)
{
    expectClosestEverywhere(makeTestScan(turned(lineScan(160, 2, 20), 0.3)));
}

TEST(AScanFinder, FindsTheClosestAScanOfAVolumeAlongTheLocalizersYAxis)
{
    expectClosestEverywhere(makeTestScan(turned(lineScan(160, 2, 20), std::numbers::pi / 2)));
}

TEST(AScanFinder, FindsTheClosestAScanOfASingleBScan)
{
    expectClosestEverywhere(
        makeTestScan(withPattern(lineScan(160, 2, 1), OCTScanPatternSingleBScan())));
}

TEST(AScanFinder, FindsTheClosestAScanOfACircle)
{
    TestScan scan = withPattern(lineScan(96, 2, 1), OCTScanPatternCircularBScan());
    scan.positions[0] = positionsOnCircle({1.8, 1.0}, {1.0, 1.0}, 96, true);
    expectClosestEverywhere(makeTestScan(scan));
}

TEST(AScanFinder, FindsTheClosestAScanOfAStar)
{
    TestScan scan = withPattern(lineScan(81, 2, 6), OCTScanPatternStar());
    for (int i = 0; i < 6; ++i) {
        const double angle = 0.1 + i * std::numbers::pi / 6;
        const Vector2d arm{std::cos(angle), std::sin(angle)};
        scan.positions[i] = positionsOnLine(Vector2d{1.0, 1.0} - arm, Vector2d{1.0, 1.0} + arm, 81);
    }
    expectClosestEverywhere(makeTestScan(scan));
}

TEST(AScanFinder, AVolumeOfOneBScanHasNoGridAndComparesItsPositions)
{
    const OCTScanPtr scan = makeTestScan(lineScan(160, 2, 1));
    EXPECT_EQ(AScanFinder(scan).closestTo({1.0, 5.0}), (AScanPlace{0, 80}));
}

TEST(AScanFinder, KeepsWithinAShorterBScan)
{
    TestScan contents = lineScan(160, 2, 3);
    const TestScan narrow = lineScan(40, 2, 1);
    contents.images[2] = narrow.images[0];
    contents.positions[2] = contents.positions[2].mid(0, 40);
    EXPECT_EQ(AScanFinder(makeTestScan(contents)).closestTo({1.5, 0.2}), (AScanPlace{2, 39}));
}

TEST(AScanFinder, FindsNothingWithoutAScanOrWithBScansAtOnePlace)
{
    EXPECT_FALSE(AScanFinder().closestTo({0.0, 0.0}));
    EXPECT_FALSE(AScanFinder(makeTestScan(lineScan(8, 2, 3, 0.0125, 0.0))).closestTo({1.0, 1.0}));
}
