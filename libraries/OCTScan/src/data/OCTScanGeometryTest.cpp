#include "ExpectFailure.h"
#include "TestExport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using namespace kelp::oct;
using test::failure;
using test::lineScan;
using test::makeTestScan;
using test::TestScan;

const std::string place = "OCTScan/src/data/OCTScan::OCTScan::";

/// Positions origin + b * bStep + a * aStep, with the pattern's images.
OCTScanPtr gridScan(const QString& pattern, int aScans, int bScans, const Vector2d& origin,
                    const Vector2d& aStep, const Vector2d& bStep)
{
    TestScan contents = lineScan(aScans, 6, bScans);
    contents.pattern = pattern;
    for (int b = 0; b < bScans; ++b) {
        for (int a = 0; a < aScans; ++a) {
            contents.positions[b][a] = {origin.x + b * bStep.x + a * aStep.x,
                                        origin.y + b * bStep.y + a * aStep.y};
        }
    }
    return makeTestScan(contents);
}

/// Six A-scans on a circle of radius 2 about (5, 5).
OCTScanPtr circleScan()
{
    TestScan contents = lineScan(6, 4, 1);
    contents.pattern = "Circular BScan";
    for (int a = 0; a < 6; ++a) {
        const double angle = a * std::numbers::pi / 3.0;
        contents.positions[0][a] = {5.0 + 2.0 * std::cos(angle), 5.0 + 2.0 * std::sin(angle)};
    }
    return makeTestScan(contents);
}

OCTScanPtr emptyScan(const QString& pattern)
{
    TestScan contents;
    contents.pattern = pattern;
    return makeTestScan(contents);
}

const std::vector<Vector2d> someDirections = {{0.25, 0.0},  {-0.25, 0.0}, {0.0, 0.25},
                                              {0.0, -0.25}, {0.15, 0.2},  {-0.3, 0.4}};

TEST(OCTScanGeometry, OriginIsTheFirstAScan)
{
    EXPECT_EQ(gridScan("Volume", 3, 2, {1.0, 2.0}, {0.5, 0.0}, {0.0, 0.25})->getVolumeOrigin(),
              (Vector2d{1.0, 2.0}));
    EXPECT_EQ(failure<kelp::Assertion>([] { emptyScan("Volume")->getVolumeOrigin(); }),
              place + "getVolumeOrigin: there are no BScans");
}

TEST(OCTScanGeometry, OrientationHasTheAxesAsColumns)
{
    const OCTScanPtr scan = gridScan("Volume", 3, 2, {1.0, 2.0}, {0.3, 0.4}, {-0.8, 0.6});
    const Matrix2x2 m = scan->getOrientationOnLocalizer();
    EXPECT_DOUBLE_EQ(m.m00, 0.6);
    EXPECT_DOUBLE_EQ(m.m10, 0.8);
    EXPECT_DOUBLE_EQ(m.m01, -0.8);
    EXPECT_DOUBLE_EQ(m.m11, 0.6);
}

TEST(OCTScanGeometry, OrientationOfOneBScanTurnsItsDirection)
{
    for (const char* pattern : {"Volume", "Single BScan"}) {
        const OCTScanPtr scan = gridScan(pattern, 3, 1, {1.0, 2.0}, {0.0, 0.5}, {});
        EXPECT_EQ(scan->getOrientationOnLocalizer(), (Matrix2x2{0.0, 1.0, 1.0, -0.0}));
    }
}

TEST(OCTScanGeometry, OrientationWithoutABScanOrASecondAScanIsPlain)
{
    EXPECT_EQ(emptyScan("Volume")->getOrientationOnLocalizer(), Matrix2x2::identity());
    EXPECT_EQ(gridScan("Volume", 1, 1, {3.0, 3.0}, {}, {})->getOrientationOnLocalizer(),
              (Matrix2x2{1.0, 0.0, 0.0, -1.0}));
}

TEST(OCTScanGeometry, SpacingsAreDistancesOfTheFirstNeighbours)
{
    const OCTScanPtr scan = gridScan("Volume", 3, 3, {}, {0.3, 0.4}, {0.0, 0.25});
    EXPECT_EQ(scan->getSliceSpacing(), (Vector2d{0.5, 0.003872}));
    EXPECT_EQ(scan->getVolumeSpacing(), (Vector3d{0.5, 0.003872, 0.25}));
}

TEST(OCTScanGeometry, DepthSpacingIsOneForAllButVolumesOfSeveralBScans)
{
    EXPECT_EQ(gridScan("Volume", 3, 1, {}, {0.5, 0.0}, {})->getVolumeSpacing().z, 1.0);
    EXPECT_EQ(gridScan("Star", 3, 2, {}, {0.5, 0.0}, {0.0, 3.0})->getVolumeSpacing().z, 1.0);
}

TEST(OCTScanGeometry, SpacingsNeedAKnownPatternAndABScan)
{
    EXPECT_EQ(failure<kelp::Assertion>([] { emptyScan("Spiral")->getSliceSpacing(); }),
              place + "getSliceSpacing: not implemented for OCT scan pattern Unknown.");
    for (const char* pattern : {"Single BScan", "Volume", "Circular BScan", "Star"}) {
        EXPECT_EQ(failure<kelp::Assertion>([&] { emptyScan(pattern)->getSliceSpacing(); }),
                  place + "getSliceSpacing: there are no BScans.");
    }
}

TEST(OCTScanGeometry, SizeIsAScansRowsBScans)
{
    const OCTScanPtr scan = gridScan("Volume", 3, 2, {}, {0.5, 0.0}, {0.0, 0.25});
    EXPECT_EQ(scan->getVolumeSize(), (kelp::Vector3<int>{3, 6, 2}));
    EXPECT_EQ(gridScan("Single BScan", 3, 1, {}, {1.0, 0.0}, {})->getVolumeSize(),
              (kelp::Vector3<int>{3, 6, 1}));
    // Without B-scans it does not get to ask for the pattern.
    EXPECT_EQ(failure<kelp::Assertion>([] { emptyScan("Spiral")->getVolumeSize(); }),
              place + "getVolumeSize: there are no BScans.");
}

TEST(OCTScanGeometry, CenterOfAVolumeCountsWholeSteps)
{
    const OCTScanPtr scan = gridScan("Volume", 4, 3, {1.0, 2.0}, {0.5, 0.0}, {0.0, 0.25});
    EXPECT_EQ(scan->getCenter(), (Vector2d{1.0 + 4 * 0.5 * 0.5, 2.0 + 3 * 0.25 * 0.5}));
}

TEST(OCTScanGeometry, CenterOfOtherPatternsIsThatOfTheFirstBScan)
{
    for (const char* pattern : {"Single BScan", "Star"}) {
        const OCTScanPtr scan = gridScan(pattern, 5, 2, {1.0, 2.0}, {0.5, 0.0}, {0.0, 1.0});
        EXPECT_EQ(scan->getCenter(), (Vector2d{2.0, 2.0}));
        EXPECT_EQ(failure<kelp::Assertion>([&] { emptyScan(pattern)->getCenter(); }),
                  place + "getCenter: There are no BScans.");
    }
    EXPECT_EQ(failure<kelp::NotImplemented>([] { emptyScan("Spiral")->getCenter(); }),
              place + "getCenter: Not implemented for OCT scan pattern type Unknown");
}

TEST(OCTScanGeometry, CircleHasASizeAChordAndAMeanButNoInverse)
{
    const OCTScanPtr scan = circleScan();
    EXPECT_EQ(scan->getVolumeSize(), (kelp::Vector3<int>{6, 4, 1}));
    // The chord of a sixth of a circle is its radius.
    EXPECT_NEAR(scan->getSliceSpacing().x, 2.0, 1e-12);
    EXPECT_NEAR(scan->getCenter().x, 5.0, 1e-12);
    EXPECT_NEAR(scan->getCenter().y, 5.0, 1e-12);
    EXPECT_EQ(failure<kelp::NotImplemented>([&] { scan->localizerCoordToVolumeIndex({}); }),
              place + "localizerCoordToVolumeIndex: not implemented for OCT scan pattern "
                      "Circular BScan");
    EXPECT_EQ(
        failure<kelp::NotImplemented>([&] { scan->volumeIndexToLocalizerCoords(VolumeIndex{}); }),
        place + "volumeIndexToLocalizerCoords: not implemented for OCT scan pattern "
                "Circular BScan");
}

TEST(OCTScanGeometry, VolumeOfOneBScanHasSpacingAndAxesButNoInverse)
{
    const OCTScanPtr scan = gridScan("Volume", 3, 1, {1.0, 2.0}, {0.5, 0.0}, {});
    EXPECT_EQ(scan->getVolumeSpacing().z, 1.0);
    EXPECT_EQ(scan->getOrientationOnLocalizer(), (Matrix2x2{1.0, 0.0, 0.0, -1.0}));
    const std::string text = ": only have 1 BScans, but need at least two.";
    EXPECT_EQ(failure<kelp::Assertion>([&] { scan->localizerCoordToVolumeIndex({}); }),
              place + "localizerCoordToVolumeIndex" + text);
    EXPECT_EQ(failure<kelp::Assertion>([&] { scan->volumeIndexToLocalizerCoords(VolumeIndex{}); }),
              place + "volumeIndexToLocalizerCoords" + text);
    EXPECT_EQ(failure<kelp::Assertion>([&] { scan->volumeIndexToLocalizerCoords(0, 0); }),
              place + "volumeIndexToLocalizerCoords" + text);
}

TEST(OCTScanGeometry, StarHasACenterAndASpacingButNoSize)
{
    const OCTScanPtr scan = gridScan("Star", 3, 2, {1.0, 2.0}, {0.5, 0.0}, {0.0, 1.0});
    EXPECT_EQ(scan->getCenter(), (Vector2d{1.5, 2.0}));
    EXPECT_EQ(scan->getSliceSpacing(), (Vector2d{0.5, 0.003872}));
    EXPECT_EQ(failure<kelp::Assertion>([&] { scan->getVolumeSize(); }),
              place + "getVolumeSize: not implemented for OCT scan pattern Star.");
}

TEST(OCTScanGeometry, OneAScanHasNoSpacingAndNoConversions)
{
    const std::string text =
        "OCTScan/src/data/BScan::kelp::oct::BScan::getAScanPosition: index out of "
        "bounds";
    for (const char* pattern : {"Volume", "Single BScan"}) {
        const OCTScanPtr scan = gridScan(pattern, 1, 2, {}, {}, {0.0, 1.0});
        EXPECT_EQ(failure<kelp::Assertion>([&] { scan->getSliceSpacing(); }), text);
        EXPECT_EQ(failure<kelp::Assertion>([&] { scan->localizerCoordToVolumeIndex({}); }), text);
        EXPECT_EQ(
            failure<kelp::Assertion>([&] { scan->volumeIndexToLocalizerCoords(VolumeIndex{}); }),
            text);
        EXPECT_EQ(failure<kelp::Assertion>([&] { scan->volumeIndexToLocalizerCoords(0, 0); }),
                  text);
    }
}

TEST(OCTScanGeometry, ConversionsWithoutABScanAreRefused)
{
    for (const char* pattern : {"Volume", "Star"}) {
        EXPECT_EQ(
            failure<kelp::Assertion>([&] { emptyScan(pattern)->localizerCoordToVolumeIndex({}); }),
            place + "localizerCoordToVolumeIndex: There are no BScans.");
        EXPECT_THROW(emptyScan(pattern)->volumeIndexToLocalizerCoords(0, 0), kelp::Assertion);
        EXPECT_THROW(emptyScan(pattern)->volumeIndexToLocalizerCoords(VolumeIndex{}),
                     kelp::Assertion);
    }
}

TEST(OCTScanGeometry, IntegersExtrapolateOnAVolume)
{
    const OCTScanPtr scan = gridScan("Volume", 3, 2, {1.0, 2.0}, {0.5, 0.0}, {0.0, 0.25});
    EXPECT_EQ(scan->volumeIndexToLocalizerCoords(-2, -4), (CoordOnLocalizer{-1.0, 1.5}));
    EXPECT_EQ(scan->volumeIndexToLocalizerCoords(10, 10), (CoordOnLocalizer{6.0, 4.5}));
    const OCTScanPtr single = gridScan("Single BScan", 3, 1, {1.0, 2.0}, {0.5, 0.0}, {});
    EXPECT_EQ(single->volumeIndexToLocalizerCoords(7, -1), (CoordOnLocalizer{0.5, 2.0}));
}

TEST(OCTScanGeometry, IntegersGiveStoredPositionsOnCirclesAndStars)
{
    const OCTScanPtr circle = circleScan();
    EXPECT_EQ(circle->volumeIndexToLocalizerCoords(0, 3),
              CoordOnLocalizer(circle->getBScan(0)->getAScanPosition(3)));
    EXPECT_THROW(circle->volumeIndexToLocalizerCoords(0, 6), kelp::Assertion);

    TestScan contents = lineScan(2, 4, 2);
    contents.pattern = "Star";
    contents.positions = {{{1.0, 2.0}, {3.0, 4.0}}, {{5.0, 6.0}, {7.0, 8.5}}};
    const OCTScanPtr star = makeTestScan(contents);
    EXPECT_EQ(star->volumeIndexToLocalizerCoords(1, 1), (CoordOnLocalizer{7.0, 8.5}));
    const std::string name = place + "volumeIndexToLocalizerCoords: ";
    for (const auto& [bScan, aScan] : {std::pair{-1, 0}, std::pair{0, -1}}) {
        EXPECT_EQ(failure<kelp::Assertion>(
                      [&, b = bScan, a = aScan] { star->volumeIndexToLocalizerCoords(b, a); }),
                  name + "Cannot handle negative volume index coordinates.");
    }
    EXPECT_EQ(failure<kelp::Assertion>([&] { star->volumeIndexToLocalizerCoords(2, 0); }),
              name + "Tried to access BScan Nr 2, but only have 2.");
}

TEST(OCTScanGeometry, UnknownPatternsAreNotConverted)
{
    // Only a scan without B-scans can be of an unknown pattern.
    EXPECT_THROW(emptyScan("Spiral")->volumeIndexToLocalizerCoords(0, 0), kelp::Assertion);
    EXPECT_THROW(emptyScan("Spiral")->localizerCoordToVolumeCoords({}), kelp::Assertion);
}

TEST(OCTScanGeometry, GridOfAVolumeComesFromItsFirstTwoBScans)
{
    TestScan contents = lineScan(3, 4, 3);
    contents.positions[2][0] = {70.0, 70.0};
    const OCTScanPtr scan = makeTestScan(contents);
    EXPECT_EQ(scan->volumeIndexToLocalizerCoords(2, 1), (CoordOnLocalizer{0.0125, 0.2}));
}

TEST(OCTScanGeometry, InverseTakesEveryPointOfAVolumeBack)
{
    // Perpendicular and slanted B-scans in every direction, those along the y axis included.
    for (const Vector2d& a : someDirections) {
        for (const double slant : {0.0, 0.1}) {
            const Vector2d b{-a.y + slant * a.x, a.x + slant * a.y};
            const OCTScanPtr scan = gridScan("Volume", 4, 3, {1.0, 2.0}, a, 2.0 * b);
            for (const CoordOnLocalizer& p :
                 {CoordOnLocalizer{1.0, 2.0}, CoordOnLocalizer{-3.25, 7.5}}) {
                const CoordOnLocalizer back =
                    scan->volumeIndexToLocalizerCoords(scan->localizerCoordToVolumeIndex(p));
                EXPECT_NEAR(back.x, p.x, 1e-9) << a.x << ", " << a.y;
                EXPECT_NEAR(back.y, p.y, 1e-9) << a.x << ", " << a.y;
            }
        }
    }
}

TEST(OCTScanGeometry, InverseFindsTheIndexThatAPointWasMadeFrom)
{
    for (const Vector2d& a : someDirections) {
        const OCTScanPtr scan = gridScan("Volume", 4, 3, {1.0, 2.0}, a, {-3.0 * a.y, 3.0 * a.x});
        const VolumeIndex index = scan->localizerCoordToVolumeIndex(
            CoordOnLocalizer{1.0 + 1.5 * a.x - 3.0 * 0.25 * a.y, 2.0 + 1.5 * a.y + 0.75 * a.x});
        EXPECT_NEAR(index.aScan, 1.5, 1e-12);
        EXPECT_NEAR(index.bScan, 0.25, 1e-12);
    }
}

TEST(OCTScanGeometry, InverseOfASingleBScanProjectsOntoIt)
{
    for (const Vector2d& a : someDirections) {
        const OCTScanPtr scan = gridScan("Single BScan", 4, 1, {1.0, 2.0}, a, {});
        // 2.5 steps along the B-scan and 7 steps beside it.
        const VolumeIndex index = scan->localizerCoordToVolumeIndex(
            CoordOnLocalizer{1.0 + 2.5 * a.x - 7.0 * a.y, 2.0 + 2.5 * a.y + 7.0 * a.x});
        EXPECT_EQ(index.bScan, 0.0);
        EXPECT_NEAR(index.aScan, 2.5, 1e-12);
    }
}

TEST(OCTScanGeometry, CoordsAreIndicesTimesTheSpacing)
{
    const OCTScanPtr scan = gridScan("Volume", 4, 3, {1.0, 2.0}, {0.0, 0.5}, {0.25, 0.0});
    const VolumeCoords coords = scan->localizerCoordToVolumeCoords({1.5, 3.0});
    EXPECT_DOUBLE_EQ(coords.z, 0.5);
    EXPECT_DOUBLE_EQ(coords.x, 1.0);
    EXPECT_EQ(scan->volumeCoordsToLocalizerCoord(coords), (CoordOnLocalizer{1.5, 3.0}));
}

} // namespace
