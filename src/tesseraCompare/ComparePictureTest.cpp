#include "AgreementPicture.h"
#include "AxisTicks.h"
#include "CompareTestTools.h"
#include "DifferencePicture.h"
#include "DivergingColors.h"
#include "MapLayout.h"

#include <QRect>

#include <algorithm>
#include <cmath>
#include <numeric>

using namespace kelp::compare;
using namespace kelp::compare::test;
using testing::ElementsAre;

namespace {

TEST(AxisTicks, AreRoundNumbersInsideTheAxis)
{
    EXPECT_THAT(axisTicks(-1.0, 11.0, 6), ElementsAre(0.0, 2.0, 4.0, 6.0, 8.0, 10.0));
    EXPECT_THAT(
        axisTicks(0.0, 0.3, 3),
        ElementsAre(0.0, testing::DoubleEq(0.1), testing::DoubleEq(0.2), testing::DoubleEq(0.3)));
    EXPECT_THAT(axisTicks(-60.0, 60.0, 3), ElementsAre(-50.0, 0.0, 50.0));
    EXPECT_EQ(tickText(0.30000000000000004, 0.1), "0.3");
    EXPECT_EQ(tickText(200.0, 50.0), "200");
    EXPECT_DOUBLE_EQ(roundUp(3.872), 5.0);
    EXPECT_DOUBLE_EQ(roundUp(100.0), 100.0);
    EXPECT_DOUBLE_EQ(roundUp(51.0), 100.0);
    EXPECT_DOUBLE_EQ(roundUp(0.02), 0.02);
}

TEST(DivergingColors, AreBlueBelowRedAboveAndPaleAtNothing)
{
    const DivergingColors colors(20.0);
    EXPECT_EQ(colors.of(0.0).rgb(), 0xFFF7F7F7);
    EXPECT_EQ(colors.of(20.0).rgb(), 0xFFB2182B);
    EXPECT_EQ(colors.of(-20.0).rgb(), 0xFF2166AC);
    EXPECT_EQ(colors.of(-1e6).rgb(), 0xFF2166AC);
    EXPECT_EQ(colors.of(10.0).rgb(), 0xFFF4A582);
}

TEST(AgreementDensity, HoldsEveryPairOnceAndWholeRowsAlike)
{
    constexpr double axial = 3.872;
    std::vector<ThicknessPair> pairs;
    for (int a = 10; a < 30; ++a) {
        for (int b = 10; b < 30; ++b) {
            pairs.push_back({a * axial, b * axial});
        }
    }
    const auto density = AgreementDensity::of(Tally(pairs), axial);
    EXPECT_EQ(density.cell, axial);
    EXPECT_EQ(std::accumulate(density.counts.begin(), density.counts.end(), 0), 400);
    // One pair for each mean and difference: no cell holds two, and none inside the square is
    // left out.
    EXPECT_EQ(*std::max_element(density.counts.begin(), density.counts.end()), 1);
    EXPECT_EQ(density.nrRows, 39);
    EXPECT_EQ(density.nrColumns, 20);
}

TEST(AgreementDensity, HasLargerCellsForALongRange)
{
    std::vector<ThicknessPair> pairs;
    pairs.reserve(1000);
    for (int a = 0; a < 1000; ++a) {
        pairs.push_back({a * 2.0, 0.0});
    }
    const auto density = AgreementDensity::of(Tally(pairs), 2.0);
    EXPECT_EQ(density.cell, 2.0 * 9);
    EXPECT_EQ(std::accumulate(density.counts.begin(), density.counts.end(), 0), 1000);
}

// What follows looks at pixels, since a picture with a turned sign or without a line is a picture
// too. Where axes lie is written here once more, by hand: pixels of the plot, and values at its
// ends.

enum class Ink
{
    White,
    Red,  ///< mean and limits, and A above B in a map
    Blue, ///< dots and cells, and A below B in a map
    Dark, ///< a curve
    Other
};

Ink inkOf(const QColor& color)
{
    constexpr int clear = 40;
    if (color.red() > color.blue() + clear && color.red() > color.green() + clear) {
        return Ink::Red;
    }
    if (color.blue() > color.red() + clear) {
        return Ink::Blue;
    }
    const auto [least, most] = std::minmax({color.red(), color.green(), color.blue()});
    if (least > 240) {
        return Ink::White;
    }
    return most < 100 ? Ink::Dark : Ink::Other;
}

/// A plot in a picture, by the values at the ends of its axes.
struct Plot
{
    QImage picture;
    QRect pixels;
    double left = 0.0;
    double right = 1.0;
    double bottom = 0.0;
    double top = 1.0;

    double pixelX(double x) const
    {
        return pixels.x() + (x - left) / (right - left) * pixels.width();
    }
    double pixelY(double y) const
    {
        return pixels.y() + (top - y) / (top - bottom) * pixels.height();
    }
    Ink at(double x, double y) const
    {
        return inkOf(picture.pixelColor(static_cast<int>(pixelX(x)), static_cast<int>(pixelY(y))));
    }
};

/// A red line across a plot.
struct Level
{
    double y = 0.0; ///< value
    bool isDashed = false;
};

void PrintTo(const Level& level, std::ostream* stream)
{
    *stream << level.y << (level.isDashed ? " dashed" : "");
}

/// From the bottom to the top. A line of 1.5 pixels dyes two or three rows of pixels.
std::vector<Level> levelsOf(const Plot& plot)
{
    std::vector<Level> levels;
    int nrRows = 0;
    double sum = 0.0;
    double most = 0.0;
    for (int y = plot.pixels.bottom(); y >= plot.pixels.top() - 1; --y) {
        int nrRed = 0;
        for (int x = plot.pixels.left() + 2; x < plot.pixels.right() - 1; ++x) {
            nrRed += inkOf(plot.picture.pixelColor(x, y)) == Ink::Red ? 1 : 0;
        }
        const double share = static_cast<double>(nrRed) / (plot.pixels.width() - 3);
        if (share > 0.3) {
            ++nrRows;
            sum += y + 0.5;
            most = std::max(most, share);
        } else if (nrRows > 0) {
            const double part = (sum / nrRows - plot.pixels.y()) / plot.pixels.height();
            levels.push_back({plot.top - part * (plot.top - plot.bottom), most < 0.85});
            nrRows = 0;
            sum = most = 0.0;
        }
    }
    return levels;
}

/// A line within so much of the value, in the same style.
testing::Matcher<Level> isLevel(double y, bool isDashed, double tolerance)
{
    return testing::AllOf(testing::Field(&Level::y, testing::DoubleNear(y, tolerance)),
                          testing::Field(&Level::isDashed, isDashed));
}

constexpr bool dashed = true;
constexpr bool solid = false;

const QStringList title{"ONL", "A: a", "B: b"};

/// Of A-scans: a plot of 760 by 480 pixels below a title of three lines.
Plot aScanPlot(const std::vector<ThicknessPair>& pairs, double axial)
{
    return {agreementOfAScans(title, Tally(pairs), axial), QRect(84, 86, 760, 480)};
}

TEST(AgreementPicture, OfAScansHasMeanAndLimitsWhereTheyBelong)
{
    // Differences of -8 and 24 micrometres, A larger at the thicker place.
    constexpr double axial = 4.0;
    Plot plot = aScanPlot({{40.0, 48.0}, {144.0, 120.0}}, axial);
    // 0.5 to 0.75 rows round the lowest and highest pair, but as far as the limits; and a twentieth
    // to both sides.
    const double deviation = 32.0 / std::sqrt(2.0);
    const double lower = 8.0 - 1.96 * deviation;
    const double upper = 8.0 + 1.96 * deviation;
    plot.bottom = lower - 0.05 * (upper - lower);
    plot.top = upper + 0.05 * (upper - lower);
    plot.left = 43.0 - 0.05 * 92.0;
    plot.right = 135.0 + 0.05 * 92.0;
    constexpr double pixel = 0.3;
    EXPECT_THAT(levelsOf(plot),
                ElementsAre(isLevel(lower, dashed, pixel), isLevel(8.0, solid, pixel),
                            isLevel(upper, dashed, pixel)));

    EXPECT_EQ(plot.at(132.0, 24.0), Ink::Blue) << "A is larger: above";
    EXPECT_EQ(plot.at(44.0, -8.0), Ink::Blue) << "B is larger: below";
    EXPECT_EQ(plot.at(132.0, -24.0), Ink::White);
    EXPECT_EQ(plot.at(44.0, 24.0), Ink::White);
    EXPECT_EQ(plot.at(132.0, -8.0), Ink::White);
    EXPECT_EQ(plot.at(44.0, 12.0), Ink::White);
}

TEST(AgreementPicture, OfAScansThatAllAgreeHasOneCellOnTheLineAtNothing)
{
    Plot plot = aScanPlot(std::vector<ThicknessPair>(9, {8.0, 8.0}), 4.0);
    // Ten rows high and wide, and a twentieth to both sides.
    plot.bottom = -22.0;
    plot.top = 22.0;
    plot.left = 9.0 - 22.0;
    plot.right = 9.0 + 22.0;
    // The limits lie on the mean.
    EXPECT_THAT(levelsOf(plot), ElementsAre(isLevel(0.0, solid, 0.15)));
    for (const double x : {7.2, 8.0, 10.8}) {
        EXPECT_EQ(plot.at(x, 1.8), Ink::Blue) << x;
        EXPECT_EQ(plot.at(x, -1.8), Ink::Blue) << x;
    }
    EXPECT_EQ(plot.at(8.0, 2.2), Ink::White);
    EXPECT_EQ(plot.at(8.0, -2.2), Ink::White);
    EXPECT_EQ(plot.at(6.8, 1.0), Ink::White);
    EXPECT_EQ(plot.at(11.2, 1.0), Ink::White);
}

TEST(AgreementPicture, OfOneAScanHasItsCellAndMeanAndNoLimits)
{
    Plot plot = aScanPlot({{40.0, 28.0}}, 4.0);
    plot.bottom = -22.0;
    plot.top = 22.0;
    plot.left = 35.0 - 22.0;
    plot.right = 35.0 + 22.0;
    EXPECT_THAT(levelsOf(plot), ElementsAre(isLevel(12.0, solid, 0.15)));
    EXPECT_EQ(plot.at(34.0, 13.8), Ink::Blue);
    EXPECT_EQ(plot.at(34.0, 10.2), Ink::Blue);
    EXPECT_EQ(plot.at(34.0, -13.8), Ink::White);
    EXPECT_EQ(plot.at(34.0, -10.2), Ink::White);
}

/// A panel of a picture of sectors: a plot of 310 by 230 pixels in panels of 544 by 332 below a
/// title of three lines, three beside each other.
Plot sectorPlot(const QImage& picture, int panel)
{
    return {picture, QRect(84 + panel % 3 * 544, 86 + 46 + panel / 3 * 332, 310, 230)};
}

TEST(AgreementPicture, OfSectorsHasAPanelForEachLayerWithItsOwnMeanAndLimits)
{
    constexpr int inlOpl = 2;
    // Differences of 4 and 8, of -10 and -10, of 0 and 20 micrometres.
    const QImage picture = agreementOfSectors(title, {{0, {{24.0, 20.0}, {54.0, 46.0}}},
                                                      {1, {{60.0, 70.0}, {90.0, 100.0}}},
                                                      {inlOpl, {{30.0, 30.0}, {60.0, 40.0}}},
                                                      {3, {{100.0, 100.0}}}});
    std::vector<Plot> plots;
    for (int panel = 0; panel < 4; ++panel) {
        plots.push_back(sectorPlot(picture, panel));
        // The same for all: as far as the third one's limits.
        const double limit = 1.96 * 20.0 / std::sqrt(2.0);
        plots.back().bottom = 10.0 - 1.1 * limit;
        plots.back().top = 10.0 + 1.1 * limit;
    }
    constexpr double pixel = 0.3;
    const double limit = 1.96 * 4.0 / std::sqrt(2.0);
    EXPECT_THAT(levelsOf(plots[0]),
                ElementsAre(isLevel(6.0 - limit, dashed, pixel), isLevel(6.0, solid, pixel),
                            isLevel(6.0 + limit, dashed, pixel)));
    EXPECT_THAT(levelsOf(plots[1]), ElementsAre(isLevel(-10.0, solid, pixel)));
    EXPECT_THAT(levelsOf(plots[2]),
                ElementsAre(isLevel(10.0 - 5.0 * limit, dashed, pixel), isLevel(10.0, solid, pixel),
                            isLevel(10.0 + 5.0 * limit, dashed, pixel)));
    EXPECT_THAT(levelsOf(plots[3]), ElementsAre(isLevel(0.0, solid, pixel)));
}

TEST(AgreementPicture, OfSectorsHasADotAboveNothingWhereAIsThicker)
{
    Plot plot = sectorPlot(agreementOfSectors(title, {{0, {{24.0, 20.0}, {50.0, 54.0}}}}), 0);
    const double limit = 1.96 * 8.0 / std::sqrt(2.0);
    plot.bottom = -1.1 * limit;
    plot.top = 1.1 * limit;
    plot.left = 22.0 - 1.5;
    plot.right = 52.0 + 1.5;
    EXPECT_EQ(plot.at(22.0, 4.0), Ink::Blue);
    EXPECT_EQ(plot.at(52.0, -4.0), Ink::Blue);
    EXPECT_EQ(plot.at(22.0, -4.0), Ink::White);
    EXPECT_EQ(plot.at(52.0, 4.0), Ink::White);
}

TEST(AgreementPicture, OfSectorsThatAgreeHasDotsOnTheLineAtNothing)
{
    Plot plot = sectorPlot(agreementOfSectors(title, {{0, {{20.0, 20.0}, {28.0, 28.0}}}}), 0);
    // At least 5 micrometres to both sides, and a twentieth.
    plot.bottom = -5.5;
    plot.top = 5.5;
    plot.left = 24.0 - 5.5;
    plot.right = 24.0 + 5.5;
    EXPECT_THAT(levelsOf(plot), ElementsAre(isLevel(0.0, solid, 0.08)));
    EXPECT_EQ(plot.at(20.0, 0.0), Ink::Blue);
    EXPECT_EQ(plot.at(28.0, 0.0), Ink::Blue);
    EXPECT_EQ(plot.at(24.0, 0.5), Ink::White);
}

/// Lines along x from right to left or back, that follow each other upwards or downwards.
AScanPlaces linesAlongX(int nrBScans, bool leftwards, bool upwards)
{
    QList<AScanPlaces::Ends> ends;
    for (int bScan = 0; bScan < nrBScans; ++bScan) {
        const double y = 1.0 + 0.2 * (upwards ? nrBScans - 1 - bScan : bScan);
        ends.append({{leftwards ? 5.9 : 1.0, y}, {leftwards ? 1.0 : 5.9, y}});
    }
    return AScanPlaces(ends, 50);
}

AScanPlaces linesAlongY(int nrBScans, bool upwards, bool leftwards)
{
    QList<AScanPlaces::Ends> ends;
    for (int bScan = 0; bScan < nrBScans; ++bScan) {
        const double x = 1.0 + 0.2 * (leftwards ? nrBScans - 1 - bScan : bScan);
        ends.append({{x, upwards ? 5.9 : 1.0}, {x, upwards ? 1.0 : 5.9}});
    }
    return AScanPlaces(ends, 50);
}

TEST(MapLayout, PutsTheFirstAScanWhereTheLocalizerHasIt)
{
    const auto firstOf = [](const AScanPlaces& places) {
        return MapLayout(places, 10, 50).placeOf(0, 0);
    };
    EXPECT_EQ(firstOf(linesAlongX(10, false, false)), QPoint(0, 0));
    EXPECT_EQ(firstOf(linesAlongX(10, false, true)), QPoint(0, 9));
    EXPECT_EQ(firstOf(linesAlongX(10, true, false)), QPoint(49, 0));
    EXPECT_EQ(firstOf(linesAlongY(10, false, false)), QPoint(0, 0));
    EXPECT_EQ(firstOf(linesAlongY(10, true, false)), QPoint(0, 49));
    EXPECT_EQ(firstOf(linesAlongY(10, false, true)), QPoint(9, 0));

    const MapLayout upright(linesAlongY(10, true, true), 10, 50);
    EXPECT_EQ(upright.size(), QSize(10, 50));
    EXPECT_EQ(upright.placeOf(1, 0), QPoint(8, 49));
    EXPECT_EQ(upright.placeOf(0, 2), QPoint(9, 47));
}

TEST(MapLayout, HasTheFirstBScanOnTopWhereItsPlacesMakeNoMap)
{
    QList<AScanPlaces::Ends> star;
    for (int line = 0; line < 12; ++line) {
        const double angle = M_PI * line / 12.0;
        const double x = 3.0 * std::cos(angle);
        const double y = 3.0 * std::sin(angle);
        star.append({{4.0 - x, 4.0 + y}, {4.0 + x, 4.0 - y}});
    }
    for (const std::optional<AScanPlaces>& places :
         {std::optional<AScanPlaces>(), std::optional(AScanPlaces(star, 50))}) {
        const MapLayout layout(places, 12, 50);
        EXPECT_FALSE(layout.isKnown());
        EXPECT_EQ(layout.size(), QSize(50, 12));
        EXPECT_EQ(layout.placeOf(0, 0), QPoint(0, 0));
        EXPECT_EQ(layout.placeOf(11, 3), QPoint(3, 11));
    }
}

/// A lies deeper in the first A-scan of the first B-scan, B in the last of the last; the third
/// A-scan of each is in one of them only.
ScanComparison cornerComparison(const std::optional<AScanPlaces>& places)
{
    ScanSurfaces a = scanWithFacts(10, 50);
    a.facts->places = places;
    ScanSurfaces b = a;
    a.surfaces["ILM"] = surfaceOf(10, 50, [](int z, int x) {
        const double last = z == 9 && x == 49 ? -10.0 : 0.0;
        return 20.0 + (z == 0 && x == 0 ? 10.0 : last);
    });
    b.surfaces["ILM"] = surfaceOf(10, 50, [](int, int x) {
        return x == 2 ? std::numeric_limits<double>::quiet_NaN() : 20.0;
    });
    return compareScans("scan", a, b, {});
}

/// At true proportions: 5 mm by 2 mm are 800 by 320 pixels.
QRgb mapPixel(const QImage& picture, int column, int row)
{
    return picture.pixel(84 + 16 * column + 8, 86 + 32 * row + 16);
}

// Two of 490 differences do not widen the colours, which end at the least limit: a row of 4
// micrometres, rounded up.
const QRgb deeper = DivergingColors(5.0).of(40.0).rgb();
const QRgb higher = DivergingColors(5.0).of(-40.0).rgb();
const QRgb same = DivergingColors(5.0).of(0.0).rgb();
const QRgb missing = DivergingColors::none().rgb();

TEST(DifferencePicture, HasTheFirstBScanAtTheBottomWhereTheLocalizerHasItThere)
{
    const QImage picture = differencePicture(cornerComparison(linesAlongX(10, false, true)), "ILM");
    EXPECT_EQ(mapPixel(picture, 0, 9), deeper);
    EXPECT_EQ(mapPixel(picture, 49, 0), higher);
    EXPECT_EQ(mapPixel(picture, 0, 0), same);
    EXPECT_EQ(mapPixel(picture, 49, 9), same);
    EXPECT_EQ(mapPixel(picture, 2, 9), missing);
    EXPECT_EQ(mapPixel(picture, 2, 0), missing);
}

TEST(DifferencePicture, HasTheFirstBScanOnTopWhereTheLocalizerHasItThereOrNothingTells)
{
    for (const std::optional<AScanPlaces>& places :
         {std::optional(linesAlongX(10, false, false)), std::optional<AScanPlaces>()}) {
        const QImage picture = differencePicture(cornerComparison(places), "ILM");
        EXPECT_EQ(mapPixel(picture, 0, 0), deeper);
        EXPECT_EQ(mapPixel(picture, 49, 9), higher);
        EXPECT_EQ(mapPixel(picture, 0, 9), same);
        EXPECT_EQ(mapPixel(picture, 49, 0), same);
        EXPECT_EQ(mapPixel(picture, 2, 5), missing);
    }
}

TEST(DifferencePicture, StandsUprightForBScansThatDo)
{
    const QImage picture = differencePicture(cornerComparison(linesAlongY(10, true, false)), "ILM");
    // 2 mm by 5 mm.
    const auto at = [&](int column, int row) {
        return picture.pixel(84 + 32 * column + 16, 86 + 16 * row + 8);
    };
    EXPECT_EQ(at(0, 49), deeper);
    EXPECT_EQ(at(9, 0), higher);
    EXPECT_EQ(at(0, 0), same);
    EXPECT_EQ(at(9, 49), same);
    EXPECT_EQ(at(4, 47), missing);
}

TEST(DifferencePicture, ColoursWholeBScansByTheirDifference)
{
    ScanSurfaces a = scanWithFacts(10, 50);
    ScanSurfaces b = a;
    a.surfaces["ILM"] = surfaceOf(10, 50, [](int z, int) { return 20.0 + (z == 3 ? 10.0 : 0.0); });
    b.surfaces["ILM"] = surfaceOf(10, 50, [](int, int) { return 20.0; });
    const QImage picture = differencePicture(compareScans("scan", a, b, {}), "ILM");
    const DivergingColors colors(50.0);
    EXPECT_EQ(mapPixel(picture, 20, 2), colors.of(0.0).rgb());
    EXPECT_EQ(mapPixel(picture, 20, 3), colors.of(40.0).rgb());
    EXPECT_EQ(mapPixel(picture, 20, 4), colors.of(0.0).rgb());
}

/// Whether the axis at the left has a tick at the middle of each row of the map, from the top.
QList<bool> ticksAtRows(const QImage& picture, int nrRows, double rowHeight)
{
    QList<bool> ticks;
    for (int row = 0; row < nrRows; ++row) {
        bool isDark = false;
        for (const int y : {-1, 0}) {
            const QPoint beside(81, 86 + static_cast<int>((row + 0.5) * rowHeight) + y);
            isDark = isDark || picture.pixelColor(beside).lightness() < 160;
        }
        ticks.append(isDark);
    }
    return ticks;
}

TEST(DifferencePicture, CountsBScansFromOne)
{
    // B-scans 2, 4, 6, 8 and 10.
    const auto ticks = [](const AScanPlaces& places) {
        return ticksAtRows(differencePicture(cornerComparison(places), "ILM"), 10, 32.0);
    };
    EXPECT_THAT(ticks(linesAlongX(10, false, false)),
                ElementsAre(false, true, false, true, false, true, false, true, false, true));
    EXPECT_THAT(ticks(linesAlongX(10, false, true)),
                ElementsAre(true, false, true, false, true, false, true, false, true, false));
}

TEST(DifferencePicture, TellsTheFirstAndTheLastBScanOfALowMap)
{
    constexpr int nrBScans = 17;
    ScanSurfaces scan = scanWithFacts(nrBScans, 50);
    scan.facts->bScanMillimetres = 0.03;
    scan.surfaces["ILM"] = surfaceOf(nrBScans, 50, [](int, int) { return 20.0; });
    // 5 mm by 0.51 mm: 82 pixels high, in which round numbers would leave B-scan 10 alone.
    const QList<bool> ticks = ticksAtRows(
        differencePicture(compareScans("s", scan, scan, {}), "ILM"), nrBScans, 82.0 / nrBScans);
    EXPECT_TRUE(ticks.first());
    EXPECT_TRUE(ticks.last());
    EXPECT_EQ(ticks.count(true), 2);
}

/// The curve of a B-scan of 50 A-scans in rows of 4 micrometres.
Plot curveOf(const Row& rowOfA, const Row& rowOfB)
{
    ScanSurfaces a = scanWithFacts(1, 50);
    ScanSurfaces b = a;
    a.surfaces["BM"] = surfaceOf(1, 50, rowOfA);
    b.surfaces["BM"] = surfaceOf(1, 50, rowOfB);
    return {differencePicture(compareScans("s", a, b, {}), "BM"), QRect(84, 86, 800, 360), 0.0,
            49.0};
}

TEST(DifferencePicture, OfOneBScanIsACurveFromItsFirstAScanToItsLast)
{
    Plot plot = curveOf([](int, int x) { return x; }, [](int, int) { return 25.0; });
    plot.bottom = -100.0 - 0.05 * 196.0;
    plot.top = 96.0 + 0.05 * 196.0;
    constexpr double first = 0.15;
    constexpr double last = 48.85;
    EXPECT_EQ(plot.at(first, -99.4), Ink::Dark) << "-25 rows at the left";
    EXPECT_EQ(plot.at(last, 95.4), Ink::Dark) << "24 rows at the right";
    EXPECT_EQ(plot.at(first, -50.0), Ink::Blue) << "B lies deeper";
    EXPECT_EQ(plot.at(last, 50.0), Ink::Red) << "A lies deeper";
    EXPECT_EQ(plot.at(first, 50.0), Ink::White);
    EXPECT_EQ(plot.at(first, 95.4), Ink::White);
    EXPECT_EQ(plot.at(last, -50.0), Ink::White);
    EXPECT_EQ(plot.at(last, -99.4), Ink::White);
    EXPECT_EQ(plot.at(25.0, 50.0), Ink::White);
    EXPECT_EQ(plot.at(25.0, -50.0), Ink::White);
}

TEST(DifferencePicture, OfOneBScanIsAFlatCurveAtNothingWhereAllAgree)
{
    Plot plot = curveOf(
        [](int, int) { return 25.0; },
        [](int, int x) { return x < 10 ? std::numeric_limits<double>::quiet_NaN() : 25.0; });
    // A row to both sides.
    plot.bottom = -4.4;
    plot.top = 4.4;
    for (const double y : {-2.0, -0.1, 0.1, 2.0}) {
        EXPECT_EQ(plot.at(30.0, y), Ink::White) << y;
    }
    int nrDark = 0;
    for (double x = 0.5; x < 48.5; x += 0.1) {
        nrDark += plot.at(x, 0.0) == Ink::White ? 0 : 1;
        EXPECT_TRUE(x > 9.9 || plot.at(x, 0.0) != Ink::Dark) << x;
    }
    EXPECT_GT(nrDark, 380);
}

} // namespace
