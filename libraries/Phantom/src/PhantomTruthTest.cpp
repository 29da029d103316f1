#include "Phantom.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <map>
#include <stdexcept>

namespace kelp::phantom {

namespace {

constexpr double micrometresPerRow = 3.872;

Export makeExport(const Options& options)
{
    return describeExport(".", options);
}

const Surface& surface(const Export& written, const QString& identifier)
{
    const auto found = std::find_if(written.surfaces.begin(), written.surfaces.end(),
                                    [&](const Surface& s) { return s.identifier == identifier; });
    if (found == written.surfaces.end()) {
        throw std::runtime_error("no such surface: " + identifier.toStdString());
    }
    return *found;
}

int largestStepAlong(const Surface& s)
{
    int largest = 0;
    for (const auto& row : s.rows) {
        for (std::size_t x = 1; x < row.size(); ++x) {
            largest = std::max(largest, std::abs(row[x] - row[x - 1]));
        }
    }
    return largest;
}

int largestStepAcross(const Surface& s)
{
    int largest = 0;
    for (std::size_t z = 1; z < s.rows.size(); ++z) {
        for (std::size_t x = 0; x < s.rows[z].size(); ++x) {
            largest = std::max(largest, std::abs(s.rows[z][x] - s.rows[z - 1][x]));
        }
    }
    return largest;
}

/// The smallest and largest distance in rows between two surfaces.
std::pair<int, int> distances(const Surface& top, const Surface& bottom)
{
    std::pair<int, int> result{1 << 20, -(1 << 20)};
    for (std::size_t z = 0; z < top.rows.size(); ++z) {
        for (std::size_t x = 0; x < top.rows[z].size(); ++x) {
            const int distance = bottom.rows[z][x] - top.rows[z][x];
            result.first = std::min(result.first, distance);
            result.second = std::max(result.second, distance);
        }
    }
    return result;
}

double meanDistance(const Surface& top, const Surface& bottom)
{
    double sum = 0.0;
    double count = 0.0;
    for (std::size_t z = 0; z < top.rows.size(); ++z) {
        for (std::size_t x = 0; x < top.rows[z].size(); ++x) {
            sum += bottom.rows[z][x] - top.rows[z][x];
            count += 1.0;
        }
    }
    return sum / count * micrometresPerRow;
}

} // namespace

class PhantomOfKind : public testing::TestWithParam<Kind>
{
protected:
    static Options options(std::uint64_t seed)
    {
        Options result;
        result.kind = GetParam();
        result.seed = seed;
        return result;
    }
    static constexpr std::uint64_t nrSeeds = 25;
};

TEST_P(PhantomOfKind, HasItsSurfacesInOrderAtEveryAScan)
{
    for (std::uint64_t seed = 0; seed < nrSeeds; ++seed) {
        const Export written = makeExport(options(seed));
        ASSERT_EQ(written.surfaces.size(), GetParam() == Kind::Drusen ? 7 : 6);
        for (int i = 1; i < written.surfaces.size(); ++i) {
            EXPECT_GE(distances(written.surfaces[i - 1], written.surfaces[i]).first, 1)
                << written.surfaces[i].identifier.toStdString() << " of seed " << seed;
        }
    }
}

TEST_P(PhantomOfKind, KeepsTheRetinaAwayFromTheBordersOfTheImage)
{
    for (std::uint64_t seed = 0; seed < nrSeeds; ++seed) {
        const Export written = makeExport(options(seed));
        for (const auto& row : surface(written, "ILM").rows) {
            EXPECT_GT(*std::min_element(row.begin(), row.end()), 60) << seed;
        }
        for (const auto& row : surface(written, "BM").rows) {
            EXPECT_LT(*std::max_element(row.begin(), row.end()), 400) << seed;
        }
    }
}

TEST_P(PhantomOfKind, StaysInsideTheHardSlopeLimitsOfTheSegmentation)
{
    const bool drusen = GetParam() == Kind::Drusen;
    const std::map<QString, std::pair<int, int>> limits{
        {"ILM", {2, 15}},
        {"GCL", {1, 10}},
        {"INL", {1, 10}},
        {"ONL", {1, 10}},
        {"ISe", drusen ? std::pair{3, 15} : std::pair{1, 2}},
        {"IRPE", {3, 15}},
        {"BM", {1, 2}}};
    for (std::uint64_t seed = 0; seed < nrSeeds; ++seed) {
        const Export written = makeExport(options(seed));
        for (const Surface& s : written.surfaces) {
            EXPECT_LE(largestStepAlong(s), limits.at(s.identifier).first)
                << s.identifier.toStdString() << " of seed " << seed;
            EXPECT_LE(largestStepAcross(s), limits.at(s.identifier).second)
                << s.identifier.toStdString() << " of seed " << seed;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, PhantomOfKind,
                         testing::Values(Kind::Normal, Kind::Drusen, Kind::Mouse));

TEST(HealthyPhantom, KeepsTheOuterSurfacesWithinTwoRowsHoweverFarTheBScansAre)
{
    for (const int bScans : {2, 3, 7, 19, 25, 97}) {
        for (std::uint64_t seed = 0; seed < 10; ++seed) {
            Options options;
            options.bScans = bScans;
            options.seed = seed;
            const Export written = makeExport(options);
            EXPECT_LE(largestStepAcross(surface(written, "ISe")), 2) << bScans;
            EXPECT_LE(largestStepAcross(surface(written, "BM")), 2) << bScans;
        }
    }
}

TEST(DrusenPhantom, KeepsDistancesThatTheDrusenChainAllowsAndReachesTallDrusen)
{
    for (std::uint64_t seed = 0; seed < 25; ++seed) {
        Options options;
        options.kind = Kind::Drusen;
        options.seed = seed;
        const Export written = makeExport(options);
        const auto irpeToBm = distances(surface(written, "IRPE"), surface(written, "BM"));
        EXPECT_GE(irpeToBm.first, 9);
        EXPECT_LE(irpeToBm.second, 54);
        // 120 micrometres are 31 rows; the B-scans may miss the crest by a little.
        EXPECT_GE(irpeToBm.second, 10 + 27);
        const auto iseToIrpe = distances(surface(written, "ISe"), surface(written, "IRPE"));
        EXPECT_GE(iseToIrpe.first, 6);
        EXPECT_LE(iseToIrpe.second, 16);
    }
}

TEST(MousePhantom, HasTheThicknessesOfMiceAndNoPit)
{
    Options options;
    options.kind = Kind::Mouse;
    const Export written = makeExport(options);
    EXPECT_NEAR(meanDistance(surface(written, "ILM"), surface(written, "GCL")), 19.5, 2.0);
    EXPECT_NEAR(meanDistance(surface(written, "GCL"), surface(written, "INL")), 50.7, 3.0);
    EXPECT_NEAR(meanDistance(surface(written, "INL"), surface(written, "ONL")), 39.0, 3.0);
    EXPECT_NEAR(meanDistance(surface(written, "ONL"), surface(written, "ISe")), 85.8, 5.0);
    EXPECT_NEAR(meanDistance(surface(written, "ISe"), surface(written, "BM")), 78.0, 3.0);
    const auto total = distances(surface(written, "ILM"), surface(written, "BM"));
    EXPECT_LE(total.second - total.first, 8);
}

namespace {

enum Sector
{
    C,
    S1,
    N1,
    I1,
    T1,
    S2,
    N2,
    I2,
    T2,
    nrSectors
};

/// Circles of 1, 3 and 6 mm, cut by the diagonals; nothing outside.
int sectorOf(double nasal, double superior)
{
    const double radius = std::hypot(nasal, superior);
    if (radius > 3.0) {
        return -1;
    }
    if (radius <= 0.5) {
        return C;
    }
    const bool horizontal = std::abs(nasal) >= std::abs(superior);
    const int quadrant = horizontal ? (nasal > 0 ? N1 : T1) : (superior > 0 ? S1 : I1);
    return radius <= 1.5 ? quadrant : quadrant + (S2 - S1);
}

struct Published
{
    const char* top;
    const char* bottom;
    double offset; ///< added to the distance of the surfaces
    std::array<double, nrSectors> means;
    std::array<double, nrSectors> deviations;
};

// Xu and others 2018, Table 6; for sums of layers the smaller deviation, that of independent
// layers. The limiting membrane lies about 28 micrometres above the ellipsoid surface.
const std::vector<Published> publishedFigures{
    {"ILM",
     "BM",
     0.0,
     {257.0, 339.4, 339.6, 335.1, 324.9, 300.4, 317.4, 287.2, 283.8},
     {18.9, 17.6, 17.2, 17.0, 15.8, 15.8, 22.0, 15.3, 15.4}},
    {"ILM",
     "GCL",
     0.0,
     {10.8, 23.4, 20.1, 24.5, 16.8, 37.5, 46.1, 38.9, 19.2},
     {2.2, 3.7, 2.3, 3.1, 1.3, 5.1, 6.9, 5.7, 8.4}},
    {"GCL",
     "INL",
     0.0,
     {30.6, 93.2, 92.5, 92.2, 87.7, 66.2, 71.7, 61.8, 69.5},
     {4.3, 6.9, 7.2, 6.5, 6.6, 4.9, 5.3, 4.8, 5.6}},
    {"INL",
     "ONL",
     0.0,
     {38.8, 72.6, 70.3, 76.6, 67.6, 58.5, 63.3, 59.1, 60.3},
     {7.6, 9.6, 9.2, 10.8, 7.1, 4.3, 4.6, 4.6, 3.7}},
    {"ONL",
     "ISe",
     -28.0,
     {88.4, 67.5, 72.5, 60.5, 70.0, 58.2, 55.9, 49.6, 55.8},
     {11.4, 12.7, 11.5, 12.7, 9.3, 7.7, 7.6, 7.2, 6.3}},
    {"ISe",
     "BM",
     28.0,
     {90.2, 82.7, 83.9, 81.3, 82.6, 79.8, 79.8, 77.8, 79.8},
     {4.4, 3.2, 3.3, 3.3, 3.1, 3.2, 2.7, 2.8, 2.7}},
};

std::array<double, nrSectors> sectorMeans(const Export& written, const Published& figures,
                                          bool rightEye)
{
    const Surface& top = surface(written, figures.top);
    const Surface& bottom = surface(written, figures.bottom);
    std::array<double, nrSectors> sums{};
    std::array<double, nrSectors> counts{};
    // 20 degrees, 5.888 mm, around the middle of a localizer of 9.0624 mm; B-scans from below.
    const std::size_t rows = top.rows.size();
    const std::size_t columns = top.rows[0].size();
    for (std::size_t z = 0; z < rows; ++z) {
        const double y = 4.5312 + 5.888 * (0.5 - static_cast<double>(z) / (rows - 1.0));
        for (std::size_t x = 0; x < columns; ++x) {
            const double column = 4.5312 + 5.888 * (static_cast<double>(x) / (columns - 1.0) - 0.5);
            const double nasal = (column - written.foveaX) * (rightEye ? 1.0 : -1.0);
            const int sector = sectorOf(nasal, written.foveaY - y);
            if (sector >= 0) {
                const auto index = static_cast<std::size_t>(sector);
                sums[index] += bottom.rows[z][x] - top.rows[z][x];
                counts[index] += 1.0;
            }
        }
    }
    for (std::size_t i = 0; i < nrSectors; ++i) {
        sums[i] = sums[i] / counts[i] * micrometresPerRow + figures.offset;
    }
    return sums;
}

} // namespace

TEST(HealthyPhantom, LiesWithinTwoDeviationsOfPublishedThicknessesInEverySector)
{
    for (const bool rightEye : {true, false}) {
        for (std::uint64_t seed = 0; seed < 25; ++seed) {
            Options options;
            options.rightEye = rightEye;
            options.seed = seed;
            const Export written = makeExport(options);
            for (const Published& figures : publishedFigures) {
                const auto means = sectorMeans(written, figures, rightEye);
                for (std::size_t sector = 0; sector < nrSectors; ++sector) {
                    EXPECT_NEAR(means[sector], figures.means[sector],
                                2.0 * figures.deviations[sector])
                        << figures.top << " to " << figures.bottom << " in sector " << sector
                        << " of seed " << seed;
                }
            }
        }
    }
}

TEST(HealthyPhantom, IsThinnestInAPitOffTheCentreOfTheScan)
{
    Options options;
    const Export written = makeExport(options);
    const Surface& top = surface(written, "ILM");
    const Surface& bottom = surface(written, "BM");
    int thinnest = 1 << 20;
    double sumX = 0.0;
    double sumZ = 0.0;
    double count = 0.0;
    for (std::size_t z = 0; z < top.rows.size(); ++z) {
        for (std::size_t x = 0; x < top.rows[z].size(); ++x) {
            const int thickness = bottom.rows[z][x] - top.rows[z][x];
            if (thickness < thinnest) {
                thinnest = thickness;
                sumX = sumZ = count = 0.0;
            }
            if (thickness == thinnest) {
                sumX += static_cast<double>(x);
                sumZ += static_cast<double>(z);
                count += 1.0;
            }
        }
    }
    EXPECT_NEAR(thinnest * micrometresPerRow, 227.3, 23.2);
    const double pitX = 4.5312 + 5.888 * (sumX / count / 511.0 - 0.5);
    const double pitY = 4.5312 + 5.888 * (0.5 - sumZ / count / 48.0);
    EXPECT_NEAR(pitX, written.foveaX, 0.08);
    EXPECT_NEAR(pitY, written.foveaY, 0.08);
    const double offCentre = std::hypot(written.foveaX - 4.5312, written.foveaY - 4.5312);
    EXPECT_GE(offCentre, 0.2);
    EXPECT_LE(offCentre, 0.3);
}

TEST(CirclePhantom, ShowsTheTwoHumpsOfTheNerveFibresAboveAndBelowTheDisc)
{
    for (const bool rightEye : {true, false}) {
        Options options;
        options.pattern = Pattern::Circle;
        options.aScans = 768;
        options.rightEye = rightEye;
        const Export written = makeExport(options);
        ASSERT_EQ(written.surfaces[0].rows.size(), 1U);
        const auto thickness = [&](double share) {
            const auto x = static_cast<std::size_t>(share * 768.0);
            return (surface(written, "GCL").rows[0][x] - surface(written, "ILM").rows[0][x]) *
                   micrometresPerRow;
        };
        // Temporal, superior, nasal, inferior in both eyes.
        EXPECT_LT(thickness(0.01), 90.0);
        EXPECT_GT(thickness(0.22), 105.0);
        EXPECT_LT(thickness(0.5), 90.0);
        EXPECT_GT(thickness(0.78), 105.0);
    }
}

} // namespace kelp::phantom
