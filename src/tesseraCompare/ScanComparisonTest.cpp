#include "ScanComparison.h"

#include "CompareTestTools.h"
#include "ComparisonPool.h"

#include <cmath>
#include <map>

using namespace kelp::compare;
using namespace kelp::compare::test;
using kelp::oct::EtdrsSector;
using kelp::oct::EtdrsTable;
using testing::Contains;
using testing::HasSubstr;

namespace {

constexpr double nothing = std::numeric_limits<double>::quiet_NaN();

std::vector<std::string> texts(const QStringList& list)
{
    std::vector<std::string> result;
    for (const QString& text : list) {
        result.push_back(text.toStdString());
    }
    return result;
}

TEST(SurfaceComparison, CountsWhatOneSideAloneHas)
{
    const auto a = surfaceOf(1, 5, [](int, int x) { return x == 1 ? nothing : 10.0 + x; });
    const auto b = surfaceOf(1, 4, [](int, int x) { return x == 3 ? nothing : 8.5; });
    const auto overlap = compareSurfaces(a, b).front();
    EXPECT_EQ(overlap.differences, (std::vector<double>{1.5, 3.5}));
    EXPECT_EQ(overlap.onlyA, 2); // A-scans 3 and 4
    EXPECT_EQ(overlap.onlyB, 1);
    EXPECT_DOUBLE_EQ(*overlap.statistics(4.0).mean, 10.0);
}

TEST(SurfaceComparison, AddsBScansUp)
{
    const auto a = surfaceOf(3, 2, [](int z, int x) { return z == 2 && x == 0 ? nothing : z; });
    const auto b = surfaceOf(3, 2, [](int, int) { return 0.0; });
    const auto bScans = compareSurfaces(a, b);
    ASSERT_EQ(bScans.size(), 3U);
    EXPECT_DOUBLE_EQ(*bScans[1].statistics(1.0).mean, 1.0);
    const auto sum = sumOf(bScans);
    EXPECT_EQ(sum.differences.size(), 5U);
    EXPECT_EQ(sum.onlyB, 1);
    EXPECT_DOUBLE_EQ(*sum.statistics(1.0).mean, (0.0 + 0.0 + 1.0 + 1.0 + 2.0) / 5.0);
}

TEST(ScanComparison, OfAScanWithItselfIsNothingEverywhere)
{
    ScanSurfaces scan = scanWithFacts(9, 40);
    for (const QString& identifier : knownSurfaces()) {
        const double depth = 30.0 * (1 + knownSurfaces().indexOf(identifier));
        scan.surfaces[identifier] =
            surfaceOf(9, 40, [depth](int z, int x) { return depth + z + x % 3; });
    }
    const auto comparison = compareScans("s", scan, scan, {});
    EXPECT_TRUE(comparison.notes.isEmpty()) << comparison.notes.join(' ').toStdString();
    EXPECT_DOUBLE_EQ(*comparison.axialMicrometres, 4.0);
    ASSERT_EQ(comparison.surfaces.size(), 7);
    for (const ComparedSurface& surface : comparison.surfaces) {
        const auto statistics = sumOf(surface.bScans).statistics(1.0);
        EXPECT_EQ(statistics.count, 9 * 40);
        EXPECT_EQ(*statistics.meanAbsolute, 0.0);
        EXPECT_EQ(*statistics.percentile95, 0.0);
    }
    ASSERT_FALSE(comparison.sectors.isEmpty());
    for (const SectorComparison& sector : comparison.sectors) {
        EXPECT_EQ(sector.thickness.difference(), 0.0);
        EXPECT_EQ(*sector.aScans->standardDeviation, 0.0);
    }
}

/// Thicknesses of both sides that depend on the place, with gaps.
struct Wedge
{
    ScanSurfaces a = scanWithFacts(20, 60);
    ScanSurfaces b = scanWithFacts(20, 60);

    static double bottomOfA(int z, int x) { return x % 7 == 0 ? nothing : 50.0 + x + z; }
    static double bottomOfB(int z, int x) { return z % 6 == 0 ? nothing : 40.0 + 0.5 * x * z; }

    Wedge()
    {
        a.surfaces["ILM"] = surfaceOf(20, 60, [](int, int) { return 10.0; });
        b.surfaces["ILM"] = surfaceOf(20, 60, [](int, int) { return 12.0; });
        a.surfaces["BM"] = surfaceOf(20, 60, bottomOfA);
        b.surfaces["BM"] = surfaceOf(20, 60, bottomOfB);
    }
};

class ComparisonOfEye : public testing::TestWithParam<bool>
{
};

TEST_P(ComparisonOfEye, SectorsHoldTheAScansThatBothHave)
{
    const bool isRightEye = GetParam();
    Wedge wedge;
    wedge.a.facts->grid->rightEye = isRightEye;
    wedge.b.facts->grid->rightEye = isRightEye;
    const auto comparison = compareScans("s", wedge.a, wedge.b, {});

    // Each sector again by its definition, in polar coordinates around the nasal direction.
    std::map<int, std::vector<double>> expectedA;
    std::map<int, std::vector<double>> differences;
    for (int z = 0; z < 20; ++z) {
        for (int x = 0; x < 60; ++x) {
            if (x % 7 == 0 || z % 6 == 0) {
                continue;
            }
            const double dx = (isRightEye ? 0.1 : -0.1) * (x - 29.5);
            const double dy = 0.2 * (z - 9.5);
            const double radius = std::hypot(dx, dy);
            if (radius > 3.0) {
                continue;
            }
            // 0 nasal, 1 inferior, 2 temporal, 3 superior.
            const double degrees = std::atan2(dy, dx) * 180.0 / M_PI;
            const int quadrant = static_cast<int>(std::floor((degrees + 405.0) / 90.0)) % 4;
            constexpr int inner[] = {1, 7, 5, 3};
            const int column = radius <= 0.5 ? 0 : inner[quadrant] + (radius <= 1.5 ? 0 : 1);
            const double inA = (Wedge::bottomOfA(z, x) - 10.0) * 4.0;
            expectedA[column].push_back(inA);
            differences[column].push_back(inA - (Wedge::bottomOfB(z, x) - 12.0) * 4.0);
        }
    }

    ASSERT_EQ(comparison.sectors.size(), static_cast<int>(expectedA.size()));
    ASSERT_EQ(expectedA.size(), 9U);
    for (const SectorComparison& sector : comparison.sectors) {
        SCOPED_TRACE(sector.column);
        EXPECT_EQ(EtdrsTable::rowLabel(sector.row), "Complete Retina");
        const auto& values = expectedA[sector.column];
        EXPECT_EQ(sector.nrA, static_cast<int>(values.size()));
        double sum = 0.0;
        for (const double value : values) {
            sum += value;
        }
        EXPECT_NEAR(sector.thickness.a, sum / static_cast<double>(values.size()), 1e-9);
        const auto expected = DifferenceStatistics::of(differences[sector.column]);
        EXPECT_NEAR(sector.thickness.difference(), *expected.mean, 1e-9);
        EXPECT_NEAR(*sector.aScans->standardDeviation, *expected.standardDeviation, 1e-9);
        EXPECT_NEAR(*sector.aScans->lowerLimit(),
                    *expected.mean - 1.96 * *expected.standardDeviation, 1e-9);
    }
    // All of the scan, not the sectors alone: 51 A-scans of 16 B-scans.
    const std::size_t lastRow = EtdrsTable::nrRows - 1;
    EXPECT_EQ(comparison.thicknesses[lastRow].size(), 51U * 16U);
}

INSTANTIATE_TEST_SUITE_P(Eyes, ComparisonOfEye, testing::Bool());

/// Thickness of the retina in micrometres at a place, in mm.
using Thickness = std::function<double(double x, double y)>;

void setRetina(ScanSurfaces& scan, const Thickness& thickness)
{
    const double row = 1000.0 * scan.facts->axialMillimetres;
    scan.surfaces["ILM"] = surfaceOf(scan.nrBScans, scan.nrAScans, [](int, int) { return 10.0; });
    scan.surfaces["BM"] = surfaceOf(scan.nrBScans, scan.nrAScans, [&](int z, int x) {
        const CoordOnLocalizer place = scan.facts->places->at(z, x);
        return 10.0 + thickness(place.x, place.y) / row;
    });
}

TEST(ScanComparison, OfTheTwoEyesHoldsNasalAgainstNasal)
{
    ScanSurfaces right = scanWithFacts(30, 60);
    ScanSurfaces left = right;
    const double middle = right.facts->grid->center.x;
    setRetina(right, [=](double x, double y) { return 300.0 + 10.0 * (x - middle) + y; });
    // The mirror image, and 5 micrometres thinner.
    left.facts->grid->rightEye = false;
    setRetina(left, [=](double x, double y) { return 295.0 - 10.0 * (x - middle) + y; });
    const auto comparison = compareScans("s", right, left, {});
    EXPECT_FALSE(comparison.byPlace);
    EXPECT_TRUE(comparison.surfaces.isEmpty());
    EXPECT_EQ(texts(comparison.notes),
              std::vector<std::string>{
                  "One of A and B is a right eye, the other a left one, so positions cannot be "
                  "compared, only sector means, each around its own fovea."});
    ASSERT_EQ(comparison.sectors.size(), 9);
    for (const SectorComparison& sector : comparison.sectors) {
        EXPECT_NEAR(sector.thickness.difference(), 5.0, 1e-9) << sector.column;
    }
    const auto thicknessOf = [&](EtdrsSector wanted) {
        for (const SectorComparison& sector : comparison.sectors) {
            if (EtdrsTable::columnSector(sector.column) == wanted) {
                return sector.thickness.a;
            }
        }
        return nothing;
    };
    EXPECT_GT(thicknessOf(EtdrsSector::N2), thicknessOf(EtdrsSector::T2) + 30.0);

    ComparisonChoices choices;
    choices.samePlaces = true;
    expectFailure(
        [&] { compareScans("s", right, left, choices); },
        "One of A and B is a right eye, the other a left one: their A-scans cannot lie at "
        "the same places (--same-places).");
}

/// One eye twice, the second time with all of it 0.4 mm further along the B-scans.
struct TwoSessions
{
    ScanSurfaces a = scanWithFacts(30, 60);
    ScanSurfaces b = a;

    TwoSessions()
    {
        a.facts->pixelDigest = "sha1:12";
        b.facts->pixelDigest = "sha1:34";
        b.facts->grid->center.x += 0.4;
        for (ScanSurfaces* scan : {&a, &b}) {
            const double fovea = scan->facts->grid->center.x;
            setRetina(*scan, [=](double x, double) { return 300.0 + 20.0 * std::abs(x - fovea); });
        }
    }
};

TEST(ScanComparison, OfTwoSessionsIsThatOfTheirSectorMeans)
{
    const TwoSessions sessions;
    const auto comparison = compareScans("s", sessions.a, sessions.b, {});
    EXPECT_FALSE(comparison.byPlace);
    EXPECT_TRUE(comparison.surfaces.isEmpty());
    ASSERT_EQ(comparison.notes.size(), 1);
    EXPECT_THAT(comparison.notes[0].toStdString(),
                testing::AllOf(HasSubstr("A and B are two acquisitions"), HasSubstr("only sector"),
                               HasSubstr("--same-places")));
    ASSERT_EQ(comparison.sectors.size(), 9);
    for (const SectorComparison& sector : comparison.sectors) {
        EXPECT_FALSE(sector.aScans);
        const EtdrsSector where = EtdrsTable::columnSector(sector.column);
        // The outer ring reaches beyond the scan on one side.
        if (where != EtdrsSector::N2 && where != EtdrsSector::T2) {
            EXPECT_NEAR(sector.thickness.difference(), 0.0, 1e-9) << sector.column;
        }
    }
}

TEST(ScanComparison, OfTwoSessionsIsByPlaceWhereTheUserSaysSo)
{
    const TwoSessions sessions;
    ComparisonChoices choices;
    choices.samePlaces = true;
    const auto comparison = compareScans("s", sessions.a, sessions.b, choices);
    EXPECT_TRUE(comparison.byPlace);
    EXPECT_EQ(comparison.surfaces.size(), 2);
    ASSERT_FALSE(comparison.sectors.isEmpty());
    // The center of A, where B has its fovea 0.4 mm to the side: thicker by 20 micrometres a mm.
    EXPECT_NEAR(comparison.sectors.first().thickness.difference(), -3.9, 1.0);
    EXPECT_EQ(sumOf(comparison.surfaces[0].bScans).differences.size(), 30U * 60U);
    EXPECT_THAT(texts(comparison.notes), testing::ElementsAre(HasSubstr("The fovea of A is at")));
}

TEST(ScanComparison, OfTheSameBScansIsByPlaceWhateverTheirRecordsSayElse)
{
    TwoSessions sessions;
    sessions.b.facts->pixelDigest = sessions.a.facts->pixelDigest;
    EXPECT_TRUE(compareScans("s", sessions.a, sessions.b, {}).byPlace);
    sessions.b.facts->places = gridPlaces(30, 60, 0.1, 0.21);
    EXPECT_TRUE(compareScans("s", sessions.a, sessions.b, {}).byPlace);
}

TEST(ScanComparison, TakesResultsThatDoNotTellTheirBScansForOneAcquisition)
{
    TwoSessions sessions;
    for (const char* untold : {"", "md5:12"}) {
        sessions.b.facts->pixelDigest = untold;
        EXPECT_TRUE(compareScans("s", sessions.a, sessions.b, {}).byPlace) << untold;
    }
    sessions.b.facts.reset();
    EXPECT_TRUE(compareScans("s", sessions.a, sessions.b, {}).byPlace);
}

TEST(ScanComparison, SaysThatAFoveaIsNotUsedForTwoAcquisitions)
{
    const TwoSessions sessions;
    ComparisonChoices choices;
    choices.fovea = CoordOnLocalizer(0.5, 0.5);
    const auto given = compareScans("s", sessions.a, sessions.b, choices);
    EXPECT_THAT(texts(given.notes), Contains(HasSubstr("--fovea is not used")));
    const auto own = compareScans("s", sessions.a, sessions.b, {});
    ASSERT_EQ(given.sectors.size(), own.sectors.size());
    for (int i = 0; i < own.sectors.size(); ++i) {
        EXPECT_EQ(given.sectors[i].thickness.a, own.sectors[i].thickness.a);
        EXPECT_EQ(given.sectors[i].thickness.b, own.sectors[i].thickness.b);
    }
}

void cut(ScanSurfaces& scan, std::initializer_list<EtdrsSector> sectors)
{
    for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
        scan.facts->cutSectors[static_cast<std::size_t>(column)] =
            std::find(sectors.begin(), sectors.end(), EtdrsTable::columnSector(column)) !=
            sectors.end();
    }
}

TEST(ScanComparison, MarksTheSectorsThatTheBorderCutsOnEitherSide)
{
    TwoSessions sessions;
    cut(sessions.a, {EtdrsSector::N1, EtdrsSector::N2});
    cut(sessions.b, {EtdrsSector::T2});
    const auto comparison = compareScans("s", sessions.a, sessions.b, {});
    for (const SectorComparison& sector : comparison.sectors) {
        const EtdrsSector where = EtdrsTable::columnSector(sector.column);
        EXPECT_EQ(sector.cutA, where == EtdrsSector::N1 || where == EtdrsSector::N2);
        EXPECT_EQ(sector.cutB, where == EtdrsSector::T2);
    }
    EXPECT_THAT(texts(comparison.notes),
                Contains("The border of the scan cuts the sectors N1, N2 of A and the sector T2 of "
                         "B: these means stand on what is left, and do not compare with those of "
                         "whole sectors."));
}

TEST(ScanComparison, ByPlaceCutsTheSectorsOfBothAlike)
{
    Wedge wedge;
    cut(wedge.a, {EtdrsSector::T2});
    const auto comparison = compareScans("s", wedge.a, wedge.b, {});
    for (const SectorComparison& sector : comparison.sectors) {
        const bool isCut = EtdrsTable::columnSector(sector.column) == EtdrsSector::T2;
        EXPECT_EQ(sector.cutA, isCut);
        EXPECT_EQ(sector.cutB, isCut);
    }
    EXPECT_EQ(texts(comparison.notes),
              std::vector<std::string>{"The border of the scan cuts the sector T2; A and B are "
                                       "compared on what is left."});

    ComparisonChoices choices;
    choices.fovea = CoordOnLocalizer(1.0, 1.0);
    const auto moved = compareScans("s", wedge.a, wedge.b, choices);
    EXPECT_FALSE(moved.sectors.first().cutA);
    EXPECT_THAT(texts(moved.notes), Contains(HasSubstr("the sectors around --fovea is not known")));
}

TEST(ScanComparison, NamesTheSurfacesThatARunDidNotFind)
{
    Wedge wedge;
    wedge.b.surfaces["ONL"] = wedge.b.surfaces["BM"];
    wedge.b.surfaces["GCL"] = wedge.b.surfaces["ILM"];
    wedge.a.facts->notFound = QStringList{"ONL"};
    const auto ofOne = texts(compareScans("s", wedge.a, wedge.b, {}).notes);
    EXPECT_THAT(ofOne, Contains("The run of A found no surface for ONL, so it and the layers that "
                                "need it are left out."));
    EXPECT_THAT(ofOne, Contains("Only B has GCL."));
    wedge.b.surfaces.remove("ONL");
    wedge.a.facts->notFound = QStringList{"INL", "ONL"};
    wedge.b.facts->notFound = wedge.a.facts->notFound;
    EXPECT_THAT(
        texts(compareScans("s", wedge.a, wedge.b, {}).notes),
        Contains("The runs of A and B found no surface for INL, ONL, so they and the layers "
                 "that need them are left out."));
}

TEST(ScanComparison, TheFoveaOfAIsForBothUnlessAnotherIsGiven)
{
    Wedge wedge;
    wedge.b.facts->grid->center.x += 0.06;
    const auto moved = compareScans("s", wedge.a, wedge.b, {});
    EXPECT_THAT(texts(moved.notes), Contains(HasSubstr("The fovea of A is at (2.950, 1.900) mm")));
    const auto same = compareScans("s", wedge.a, wedge.a, {});
    ASSERT_EQ(moved.sectors.size(), same.sectors.size());
    wedge.b.facts->grid->center.x -= 0.02;
    EXPECT_TRUE(compareScans("s", wedge.a, wedge.b, {}).notes.isEmpty());

    ComparisonChoices choices;
    choices.fovea = CoordOnLocalizer(0.0, 0.0);
    const auto corner = compareScans("s", wedge.a, wedge.b, choices);
    for (const SectorComparison& sector : corner.sectors) {
        const EtdrsSector where = EtdrsTable::columnSector(sector.column);
        EXPECT_TRUE(where != EtdrsSector::S1 && where != EtdrsSector::T1);
    }
}

TEST(ScanComparison, DifferentHeightsOfARowAreRefused)
{
    Wedge wedge;
    wedge.b.facts->axialMillimetres = 0.0039;
    expectFailure([&] { compareScans("s", wedge.a, wedge.b, {}); },
                  "A row is 4 micrometres high by A, but 3.9 by B");
    wedge.b.facts.reset();
    ComparisonChoices choices;
    choices.axialMicrometres = 5.0;
    expectFailure([&] { compareScans("s", wedge.a, wedge.b, choices); },
                  "A row is 5 micrometres high by --axial-micrometres, but 4 by A");
}

TEST(ScanComparison, OfTablesAloneIsInRowsUntilTheHeightIsGiven)
{
    Wedge wedge;
    wedge.a.facts.reset();
    wedge.b.facts.reset();
    const auto rows = compareScans("s", wedge.a, wedge.b, {});
    EXPECT_FALSE(rows.axialMicrometres);
    EXPECT_THAT(texts(rows.notes), Contains(HasSubstr("--axial-micrometres")));
    EXPECT_THAT(texts(rows.notes), Contains(HasSubstr("Neither A nor B tells where")));
    EXPECT_EQ(rows.surfaces.size(), 2);
    EXPECT_TRUE(rows.sectors.isEmpty());

    ComparisonChoices choices;
    choices.axialMicrometres = 3.0;
    const auto lengths = compareScans("s", wedge.a, wedge.b, choices);
    const auto pooled = surfacesOf(lengths);
    ASSERT_EQ(pooled.size(), 2);
    EXPECT_EQ(pooled[0].identifier, "ILM");
    EXPECT_DOUBLE_EQ(*pooled[0].rows.mean, -2.0);
    EXPECT_DOUBLE_EQ(*pooled[0].micrometres.mean, -6.0);
}

TEST(ScanComparison, TablesAgainstAResultUseItsPlaces)
{
    Wedge wedge;
    const auto both = compareScans("s", wedge.a, wedge.b, {});
    wedge.a.facts.reset();
    const auto one = compareScans("s", wedge.a, wedge.b, {});
    ASSERT_EQ(one.sectors.size(), both.sectors.size());
    EXPECT_EQ(one.sectors[3].thickness.a, both.sectors[3].thickness.a);
    EXPECT_EQ(one.facts(), &*one.b.facts);
}

/// A-scans of such a scan not further than 3 mm from its middle.
int nrInsideGrid(int nrBScans, int nrAScans)
{
    int count = 0;
    for (int z = 0; z < nrBScans; ++z) {
        for (int x = 0; x < nrAScans; ++x) {
            const double distance =
                std::hypot(0.1 * (x - (nrAScans - 1) / 2.0), 0.2 * (z - (nrBScans - 1) / 2.0));
            count += distance <= 3.0 ? 1 : 0;
        }
    }
    return count;
}

TEST(ScanComparison, ScansOfDifferentSizesAreComparedByTheirSectorMeans)
{
    ScanSurfaces a = scanWithFacts(20, 60);
    ScanSurfaces b = scanWithFacts(16, 70);
    b.facts->axialMillimetres = 0.005;
    for (ScanSurfaces* scan : {&a, &b}) {
        const int rows = scan == &a ? 25 : 18;
        scan->surfaces["ILM"] =
            surfaceOf(scan->nrBScans, scan->nrAScans, [](int, int x) { return 5.0 + x; });
        scan->surfaces["BM"] = surfaceOf(scan->nrBScans, scan->nrAScans,
                                         [rows](int, int x) { return 5.0 + x + rows; });
    }
    const auto comparison = compareScans("s", a, b, {});
    EXPECT_TRUE(comparison.surfaces.isEmpty());
    EXPECT_THAT(texts(comparison.notes),
                Contains("A has 20 B-scans of 60 A-scans and B 16 B-scans of 70 A-scans, so "
                         "positions cannot be compared, only sector means, each around its own "
                         "fovea."));
    ASSERT_FALSE(comparison.sectors.isEmpty());
    int nrInA = 0;
    int nrInB = 0;
    for (const SectorComparison& sector : comparison.sectors) {
        EXPECT_NEAR(sector.thickness.a, 25 * 4.0, 1e-9);
        EXPECT_NEAR(sector.thickness.b, 18 * 5.0, 1e-9);
        EXPECT_FALSE(sector.aScans);
        nrInA += sector.nrA;
        nrInB += sector.nrB;
    }
    EXPECT_EQ(nrInA, nrInsideGrid(20, 60));
    EXPECT_EQ(nrInB, nrInsideGrid(16, 70));

    ComparisonChoices choices;
    choices.samePlaces = true;
    EXPECT_THAT(texts(compareScans("s", a, b, choices).notes),
                Contains(HasSubstr("16 B-scans of 70 A-scans in spite of --same-places, so ")));
}

TEST(ScanComparison, DifferentSizesWithoutPlacesLeaveNothingToCompare)
{
    Wedge wedge;
    wedge.b.facts.reset();
    wedge.b.nrAScans = 59;
    expectFailure([&] { compareScans("s", wedge.a, wedge.b, {}); },
                  "There is nothing to compare. A has 20 B-scans of 60 A-scans and B 20 B-scans of "
                  "59 A-scans");
    wedge.b.mayEndEarly = true;
    EXPECT_EQ(compareScans("s", wedge.a, wedge.b, {}).surfaces.size(), 2);
}

TEST(ScanComparison, AScansThatLieElsewhereAreComparedByTheirSectorMeans)
{
    Wedge wedge;
    wedge.b.facts->places = gridPlaces(20, 60, 0.1, 0.21);
    const auto comparison = compareScans("s", wedge.a, wedge.b, {});
    EXPECT_TRUE(comparison.surfaces.isEmpty());
    EXPECT_THAT(texts(comparison.notes),
                Contains(HasSubstr("lie up to 0.190 mm apart on the localizer")));
    ASSERT_FALSE(comparison.sectors.isEmpty());
    EXPECT_FALSE(comparison.sectors.first().aScans);

    ComparisonChoices choices;
    choices.samePlaces = true;
    EXPECT_EQ(compareScans("s", wedge.a, wedge.b, choices).surfaces.size(), 2);
}

TEST(ScanComparison, ResultsOfOlderVersionsHaveNoSectors)
{
    Wedge wedge;
    wedge.a.facts->places.reset();
    wedge.b.facts->places.reset();
    const auto comparison = compareScans("s", wedge.a, wedge.b, {});
    EXPECT_EQ(comparison.surfaces.size(), 2);
    EXPECT_TRUE(comparison.sectors.isEmpty());
    EXPECT_THAT(texts(comparison.notes),
                Contains(HasSubstr("run.json does not tell where the A-scans lie")));
}

TEST(ScanComparison, SaysWhatOneSideAloneHas)
{
    Wedge wedge;
    wedge.a.surfaces["GCL"] = wedge.a.surfaces["ILM"];
    wedge.b.facts->version = "2";
    wedge.b.facts->chain = "drusen";
    wedge.a.facts->warnings = QStringList{"GCL: at the upper end"};
    wedge.b.facts->warnings = QStringList{"ONL: no surface found", "GCL: at the upper end"};
    const auto notes = texts(compareScans("s", wedge.a, wedge.b, {}).notes);
    EXPECT_THAT(notes, Contains("Only A has GCL."));
    EXPECT_THAT(notes, Contains("A was made by version 1 of tessera-segment and B by 2."));
    EXPECT_THAT(notes, Contains("A was segmented with the chain normal and B with drusen."));
    EXPECT_THAT(notes, Contains("The run of B warns: ONL: no surface found"));
    EXPECT_THAT(notes, Contains("The runs of A and B warn: GCL: at the upper end"));
    wedge.b.surfaces.clear();
    expectFailure([&] { compareScans("s", wedge.a, wedge.b, {}); },
                  "A and B have no surface in common");
}

TEST(Agreement, IsThatOfTheSectorMeansOfTheScans)
{
    ScanSurfaces base = scanWithFacts(20, 60);
    base.surfaces["ILM"] = surfaceOf(20, 60, [](int, int) { return 10.0; });
    QList<ScanComparison> scans;
    for (const int thicker : {1, 2, 6}) {
        ScanSurfaces a = base;
        ScanSurfaces b = base;
        a.surfaces["BM"] = surfaceOf(20, 60, [=](int, int) { return 40.0 + thicker; });
        b.surfaces["BM"] = surfaceOf(20, 60, [](int, int) { return 40.0; });
        scans.append(compareScans("s", a, b, {}));
    }
    ComparisonPool pool;
    for (const ScanComparison& scan : scans) {
        pool.add(scan);
    }
    const auto agreements = pool.agreements();
    ASSERT_EQ(agreements.size(), 10); // nine sectors and all of them
    const auto& center = agreements.first();
    EXPECT_EQ(center.column, 0);
    EXPECT_EQ(center.statistics.count, 3);
    // 4, 8 and 24 micrometres: mean 12, variance (64 + 16 + 144) / 2.
    EXPECT_NEAR(*center.statistics.mean, 12.0, 1e-9);
    EXPECT_NEAR(*center.statistics.standardDeviation, std::sqrt(112.0), 1e-9);
    EXPECT_FALSE(agreements.last().column);
    EXPECT_EQ(agreements.last().statistics.count, 27);
    EXPECT_NEAR(*agreements.last().statistics.mean, 12.0, 1e-9);

    const auto pooled = pool.surfaces();
    ASSERT_EQ(pooled.size(), 2);
    EXPECT_EQ(pooled[1].rows.count, 3 * 1200);
    EXPECT_NEAR(*pooled[1].rows.mean, 3.0, 1e-9);
    EXPECT_NEAR(*pooled[1].micrometres.meanAbsoluteAboutMean, (2.0 + 1.0 + 3.0) / 3.0 * 4.0, 1e-9);
}

} // namespace
