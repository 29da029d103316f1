#include "CoverageTestTools.h"

#include <gmock/gmock.h>

#include <limits>

using namespace kelp::oct;
using namespace kelp::oct::test;
using testing::Each;

namespace {

void expectEnumeratedVolume(const Lattice& lattice, const CoordOnLocalizer& fovea)
{
    const Enumerated counts = enumerate(lattice, -200, 200, [&](int b, int a) {
        return columnByAngle(lattice.position(b, a) - fovea.toVector(), lattice.rightEye);
    });
    const EtdrsTable table = measure(lattice, fovea);
    EXPECT_EQ(insideOf(table), counts.inside);
    EXPECT_EQ(countedOf(table), counts.inside);
    EXPECT_EQ(expectedOf(table), counts.expected);
}

TEST(EtdrsCoverage, CountsAVolumeContinuedBeyondItsBorders)
{
    expectEnumeratedVolume({}, {3.137, 2.953});
}

TEST(EtdrsCoverage, CountsForBothEyes)
{
    // Far to the side, so that nasal and temporal have different numbers.
    Lattice lattice;
    const CoordOnLocalizer fovea{4.937, 2.053};
    expectEnumeratedVolume(lattice, fovea);
    const Counts right = insideOf(measure(lattice, fovea));
    lattice.rightEye = false;
    expectEnumeratedVolume(lattice, fovea);
    const Counts left = insideOf(measure(lattice, fovea));
    EXPECT_EQ(left[2], right[6]);
    EXPECT_NE(left[2], right[2]);
}

TEST(EtdrsCoverage, CountsRotatedSkewedAndMirroredVolumes)
{
    for (const double degrees : {7.0, 33.0, 90.0, 135.2, 181.0, 270.5}) {
        Lattice lattice;
        lattice.rotate(degrees);
        lattice.center(12.3, 31.7);
        expectEnumeratedVolume(lattice, {0.111, -0.273});
    }
    Lattice skewed;
    skewed.bScanStep = {0.08, 0.21};
    expectEnumeratedVolume(skewed, {3.011, 1.777});
    Lattice upwards;
    upwards.bScanStep = {0.0, -0.25};
    expectEnumeratedVolume(upwards, {3.137, -2.953});
}

TEST(EtdrsCoverage, CountsAVolumeFarFromTheFovea)
{
    expectEnumeratedVolume({}, {-4.03, 9.06});
    Lattice lattice;
    const EtdrsTable table = measure(lattice, {-20.017, 30.013});
    EXPECT_THAT(insideOf(table), Each(0));
    for (const SectorCoverage& sector : table.coverage) {
        EXPECT_GT(sector.expected, 0);
        EXPECT_TRUE(sector.isCut());
    }
}

/// Whole numbers of eighths of a millimetre from the fovea: circles and diagonals are exact.
int columnInEighths(int x, int y)
{
    const int squared = x * x + y * y;
    if (squared <= 4 * 4) {
        return 0;
    }
    if (squared > 24 * 24) {
        return -1;
    }
    const int quadrant = std::abs(y) > std::abs(x) ? (y > 0 ? 7 : 3) : (x > 0 ? 1 : 5);
    return quadrant + (squared > 12 * 12 ? 1 : 0);
}

TEST(EtdrsCoverage, GivesPlacesOnCirclesAndDiagonalsToTheSectorsThatHoldThem)
{
    Lattice straight;
    straight.aScanStep = {0.125, 0.0};
    straight.bScanStep = {0.0, 0.125};
    straight.center(10, 30);
    Enumerated counts =
        enumerate(straight, -40, 60, [](int b, int a) { return columnInEighths(a - 30, b - 10); });
    EtdrsTable table = measure(straight);
    EXPECT_EQ(insideOf(table), counts.inside);
    EXPECT_EQ(expectedOf(table), counts.expected);

    // B-scans along a diagonal of the grid, one of them on it.
    Lattice diagonal;
    diagonal.aScanStep = {0.125, 0.125};
    diagonal.bScanStep = {-0.125, 0.125};
    diagonal.center(10, 30);
    counts = enumerate(diagonal, -40, 60, [](int b, int a) {
        return columnInEighths((a - 30) - (b - 10), (a - 30) + (b - 10));
    });
    table = measure(diagonal);
    EXPECT_EQ(insideOf(table), counts.inside);
    EXPECT_EQ(expectedOf(table), counts.expected);
}

TEST(EtdrsCoverage, FollowsTheRuleOfThePointWhereRoundingDecides)
{
    // No step is exact in binary, so that places on a diagonal fall to either side of it.
    for (const double degrees : {45.0, 135.0, 225.0}) {
        Lattice lattice;
        lattice.rotate(degrees);
        lattice.center(12, 30);
        const OCTScanSegPtr segmentation = lattice.makeSegmentation();
        std::array<int, nrSectors + 1> bySector{};
        for (int b = -60; b < 90; ++b) {
            for (int a = -100; a < 150; ++a) {
                const EtdrsSector sector = etdrsSector(
                    segmentation->getOCT()->volumeIndexToLocalizerCoords(b, a), {}, true);
                ++bySector[static_cast<std::size_t>(sector)];
            }
        }
        const EtdrsTable table = measureEtdrs(segmentation, {}, false);
        for (int column = 0; column < nrSectors; ++column) {
            const auto sector = static_cast<std::size_t>(EtdrsTable::columnSector(column));
            EXPECT_EQ(table.coverage[static_cast<std::size_t>(column)].expected, bySector[sector])
                << degrees << " " << EtdrsTable::columnLabel(column).toStdString();
        }
    }
}

void expectAreas(const EtdrsTable& table, double areaOfAScan, double tolerance)
{
    const auto areas = sectorAreas();
    for (std::size_t column = 0; column < areas.size(); ++column) {
        const double expected = areas[column] / areaOfAScan;
        EXPECT_NEAR(table.coverage[column].expected, expected, tolerance * expected) << column;
    }
}

TEST(EtdrsCoverage, ExpectsOfAFineScanWhatTheSectorsAreasHold)
{
    Lattice lattice;
    lattice.aScanStep = {0.011, 0.0};
    lattice.bScanStep = {0.0, 0.013};
    lattice.rotate(20.0);
    expectAreas(measure(lattice), 0.011 * 0.013, 0.01);
}

TEST(EtdrsCoverage, CountsMillionsOfAScansHalfAMicrometreApart)
{
    Lattice lattice;
    lattice.aScanStep = {0.0005, 0.0};
    lattice.bScanStep = {0.0, 0.0005};
    lattice.rotate(3.0);
    expectAreas(measure(lattice, {0.01, 0.02}), 0.00025 * 0.001, 1e-4);
}

TEST(EtdrsCoverage, ExpectsNoMoreWhereAScansStandOnOnePlace)
{
    Lattice lattice;
    lattice.aScanStep = {};
    const EtdrsTable table = measure(lattice, {0.0, 2.953});
    EXPECT_GT(table.coverage[0].inside, 0);
    EXPECT_EQ(expectedOf(table), insideOf(table));
    EXPECT_TRUE(table.cutSectors().isEmpty());
}

TEST(EtdrsCoverage, GoesOnAlongBScansThatStandOnOneLine)
{
    for (const Vector2d step : {Vector2d{0.0, 0.0}, Vector2d{0.03, 0.0}, Vector2d{0.1, 1e-9}}) {
        Lattice lattice;
        lattice.aScans = 20;
        lattice.bScans = 3;
        lattice.bScanStep = step;
        const EtdrsTable table = measure(lattice, {0.95, 0.0});
        // Three lines with ten A-scans a millimetre.
        EXPECT_NEAR(table.coverage[0].expected, 30, 3);
        EXPECT_NEAR(table.coverage[2].expected, 45, 3);
        EXPECT_EQ(table.coverage[4].expected, 0);
        EXPECT_EQ(table.cutSectors(), QStringList({"N1", "N2", "T1", "T2"}));
    }
}

TEST(EtdrsCoverage, EndsForAFoveaThatIsNowhere)
{
    for (const double place : {1e12, -1e300, std::numeric_limits<double>::infinity()}) {
        EXPECT_THAT(expectedOf(measure({}, {place, place})), Each(0)) << place;
    }
}

TEST(EtdrsCoverage, LowersOnlyTheNumberCountedForAMask)
{
    const Lattice lattice;
    const CoordOnLocalizer fovea{3.137, 2.953};
    const OCTScanSegPtr segmentation = lattice.makeSegmentation();
    const EtdrsTable before = measureEtdrs(segmentation, fovea, false);
    segmentation->getMask()->addPolygon(makeRectangle(-1.0, -1.0, 9.0, fovea.y - 0.6));
    const EtdrsTable after = measureEtdrs(segmentation, fovea, false);
    EXPECT_EQ(insideOf(after), insideOf(before));
    EXPECT_EQ(expectedOf(after), expectedOf(before));
    EXPECT_EQ(after.cutSectors(), before.cutSectors());
    EXPECT_EQ(after.coverage[0].counted, before.coverage[0].counted);
    EXPECT_LT(after.coverage[3].counted, before.coverage[3].counted);
    EXPECT_EQ(after.coverage[4].counted, 0);
    const Enumerated unmasked = enumerate(lattice, 0, lattice.bScans - 1, [&](int b, int a) {
        const Vector2d offset = lattice.position(b, a) - fovea.toVector();
        return offset.y > -0.6 ? columnByAngle(offset, true) : -1;
    });
    EXPECT_EQ(countedOf(after), unmasked.inside);
}

} // namespace
