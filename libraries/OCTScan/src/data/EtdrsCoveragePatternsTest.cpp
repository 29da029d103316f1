#include "CoverageTestTools.h"

#include <gmock/gmock.h>

using namespace kelp::oct;
using namespace kelp::oct::test;
using kelp::Assertion;
using testing::Each;

namespace {

Lattice foveaLine(double length, int aScans)
{
    Lattice line;
    line.pattern = OCTScanPatternSingleBScan().toString();
    line.bScans = 1;
    line.aScans = aScans;
    line.aScanStep = {length / aScans, 0.0};
    line.center(0, aScans / 2.0);
    return line;
}

TEST(EtdrsCoverageOfPatterns, ExpectsOfALineOnlyWhatItPasses)
{
    Lattice line = foveaLine(4.5, 450);
    // The fovea lies between two of a hundred A-scans a millimetre.
    line.center(0, 224.5);
    const EtdrsTable table = measure(line);
    EXPECT_EQ(expectedOf(table), (Counts{100, 100, 150, 0, 0, 100, 150, 0, 0}));
    EXPECT_EQ(insideOf(table), (Counts{100, 100, 75, 0, 0, 100, 75, 0, 0}));
}

TEST(EtdrsCoverageOfPatterns, FindsAFovealLineShorterThanTheGridCutAtItsEnds)
{
    const EtdrsTable table = measure(foveaLine(5.5, 512));
    EXPECT_EQ(table.cutSectors(), QStringList({"N2", "T2"}));
    EXPECT_EQ(table.coverageWarning(), "Sectors N2, T2 are cut by the border of the scan");
    for (const int aScans : {512, 768, 1024, 1536}) {
        EXPECT_EQ(measure(foveaLine(6.0, aScans)).coverageWarning(), "") << aScans;
        EXPECT_EQ(measure(foveaLine(9.0, aScans)).coverageWarning(), "") << aScans;
    }
}

TEST(EtdrsCoverageOfPatterns, CountsALineThatPassesTheFoveaAtADistance)
{
    Lattice line = foveaLine(4.5, 450);
    line.rotate(30.0);
    line.center(0, 170);
    line.origin = line.origin + Vector2d{-0.37, 0.82};
    const Enumerated counts = enumerate(
        line, 0, 0, [&](int b, int a) { return columnByAngle(line.position(b, a), true); });
    const EtdrsTable table = measure(line);
    EXPECT_EQ(insideOf(table), counts.inside);
    EXPECT_EQ(expectedOf(table), counts.expected);

    line.origin = line.origin + Vector2d{-9.0, 9.0};
    EXPECT_THAT(expectedOf(measure(line)), Each(0));
    EXPECT_TRUE(measure(line).cutSectors().isEmpty());
}

TEST(EtdrsCoverageOfPatterns, ExpectsOfACircleWhatItHolds)
{
    TestScan contents = lineScan(360, 4, 1);
    contents.pattern = OCTScanPatternCircularBScan().toString();
    for (int a = 0; a < 360; ++a) {
        const double radians = (a + 0.5) * M_PI / 180.0;
        contents.positions[0][a] = {1.7 * std::cos(radians), 1.7 * std::sin(radians)};
    }
    const OCTScanSegPtr segmentation(new OCTScanSegmentation(makeTestScan(contents)));
    const EtdrsTable table = measureEtdrs(segmentation, {}, false);
    EXPECT_EQ(insideOf(table), (Counts{0, 0, 90, 0, 90, 0, 90, 0, 90}));
    EXPECT_EQ(expectedOf(table), insideOf(table));
    EXPECT_TRUE(measureEtdrs(segmentation, {2.0, 2.0}, false).cutSectors().isEmpty());
}

TEST(EtdrsCoverageOfPatterns, GoesOnAlongEveryLineOfAStar)
{
    TestScan contents = lineScan(200, 4, 2);
    contents.pattern = OCTScanPatternStar().toString();
    for (int a = 0; a < 200; ++a) {
        const double along = (a - 100 + 0.5) * 0.02;
        contents.positions[0][a] = {along, 0.0};
        contents.positions[1][a] = {0.0, along};
    }
    const OCTScanSegPtr segmentation(new OCTScanSegmentation(makeTestScan(contents)));
    const EtdrsTable table = measureEtdrs(segmentation, {}, false);
    // Fifty A-scans a millimetre; each line ends 2 mm from the fovea.
    EXPECT_EQ(insideOf(table), (Counts{100, 50, 25, 50, 25, 50, 25, 50, 25}));
    EXPECT_EQ(expectedOf(table), (Counts{100, 50, 75, 50, 75, 50, 75, 50, 75}));
    EXPECT_EQ(table.cutSectors(), QStringList({"N2", "S2", "T2", "I2"}));
}

TEST(EtdrsCoverageOfPatterns, IsNotToldOfAScanOfUnknownPattern)
{
    Lattice lattice;
    lattice.pattern = "Spiral";
    lattice.bScans = 0;
    EXPECT_THROW(measure(lattice), Assertion);
}

Lattice squareScan(double side, int aScans, int bScans)
{
    Lattice lattice;
    lattice.aScans = aScans;
    lattice.bScans = bScans;
    lattice.aScanStep = {side / aScans, 0.0};
    lattice.bScanStep = {0.0, side / bScans};
    lattice.center(bScans / 2.0, aScans / 2.0);
    return lattice;
}

TEST(EtdrsCoverageOfPatterns, CallsNoSectorCutOfAScanAsLargeAsTheGrid)
{
    for (const int bScans : {24, 25, 48, 49, 97}) {
        EXPECT_EQ(measure(squareScan(6.0, 128, bScans)).coverageWarning(), "") << bScans;
    }
}

TEST(EtdrsCoverageOfPatterns, CallsTheOuterRingCutOfAScanThatIsHalfAMillimetreTooSmall)
{
    const EtdrsTable table = measure(squareScan(5.5, 256, 256));
    EXPECT_EQ(table.cutSectors(), QStringList({"N2", "S2", "T2", "I2"}));
    EXPECT_EQ(table.coverageWarning(), "Sectors N2, S2, T2, I2 are cut by the border of the scan");
    // What is missing beyond a border is a segment of the circle.
    const double missing = 9.0 * std::acos(2.75 / 3.0) - 2.75 * std::sqrt(9.0 - 2.75 * 2.75);
    const SectorCoverage& superior = table.coverage[4];
    EXPECT_NEAR(1.0 - superior.inside / static_cast<double>(superior.expected),
                missing / sectorAreas()[4], 0.005);
}

TEST(EtdrsCoverageOfPatterns, TellsWhichSectorOneBorderCuts)
{
    Lattice lattice = squareScan(8.0, 128, 65);
    EXPECT_EQ(measure(lattice).coverageWarning(), "");
    EXPECT_EQ(measure(lattice, {-1.6, 0.0}).coverageWarning(),
              "Sector T2 is cut by the border of the scan");
    lattice.rightEye = false;
    EXPECT_EQ(measure(lattice, {-1.6, 0.0}).coverageWarning(),
              "Sector N2 is cut by the border of the scan");
    EXPECT_EQ(measure(lattice, {-1.6, 1.6}).coverageWarning(),
              "Sectors N2, I2 are cut by the border of the scan");
}

TEST(SectorCoverage, IsCutWhenAPartIsMissingThatMovesTheMean)
{
    const auto isCut = [](int inside, int expected) {
        return SectorCoverage{inside, inside, expected}.isCut();
    };
    EXPECT_FALSE(isCut(0, 0)) << "a line that does not pass the sector";
    EXPECT_FALSE(isCut(1000, 1000));
    EXPECT_FALSE(isCut(980, 1000)) << "two hundredths";
    EXPECT_TRUE(isCut(979, 1000));
    EXPECT_FALSE(isCut(11, 12)) << "the one on the rim";
    EXPECT_TRUE(isCut(10, 12));
    EXPECT_TRUE(isCut(1, 2));
    EXPECT_TRUE(isCut(0, 1));
    EXPECT_FALSE((SectorCoverage{0, 1000, 1000}.isCut())) << "all masked";
}

} // namespace
