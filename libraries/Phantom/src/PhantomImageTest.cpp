#include "Phantom.h"
#include "ScanGeometry.h"
#include "Speckle.h"
#include "VesselMap.h"

#include <QImage>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <map>

namespace kelp::phantom {

namespace {

struct Moments
{
    double mean = 0.0;
    double deviation = 0.0;
    double skewness = 0.0;
    double alongCorrelation = 0.0;
    double acrossCorrelation = 0.0;
};

Moments momentsOf(const std::vector<float>& image, int columns, int rows)
{
    const auto at = [&](int row, int column) {
        return static_cast<double>(
            image[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
                  static_cast<std::size_t>(column)]);
    };
    const double count = static_cast<double>(rows - 1) * (columns - 1);
    Moments m;
    for (int row = 0; row + 1 < rows; ++row) {
        for (int column = 0; column + 1 < columns; ++column) {
            m.mean += at(row, column) / count;
        }
    }
    double variance = 0.0;
    double cubes = 0.0;
    double along = 0.0;
    double across = 0.0;
    for (int row = 0; row + 1 < rows; ++row) {
        for (int column = 0; column + 1 < columns; ++column) {
            const double value = at(row, column) - m.mean;
            variance += value * value / count;
            cubes += value * value * value / count;
            along += value * (at(row, column + 1) - m.mean) / count;
            across += value * (at(row + 1, column) - m.mean) / count;
        }
    }
    m.deviation = std::sqrt(variance);
    m.skewness = cubes / (variance * m.deviation);
    m.alongCorrelation = along / variance;
    m.acrossCorrelation = across / variance;
    return m;
}

/// How far the strongest change of grey value around a surface, in the surface's direction, lies
/// from it. Of equal changes the closest counts.
int distanceToEdge(const QImage& image, int x, int surface, int direction)
{
    constexpr int reach = 3;
    int best = surface;
    int bestChange = -1000;
    for (int row = surface - reach; row <= surface + reach; ++row) {
        const int change =
            direction * (image.constScanLine(row + 1)[x] - image.constScanLine(row - 1)[x]);
        if (change > bestChange ||
            (change == bestChange && std::abs(row - surface) < std::abs(best - surface))) {
            bestChange = change;
            best = row;
        }
    }
    return std::abs(best - surface);
}

/// Columns whose edge lies at most one row from the surface, among all and among those without a
/// vessel.
struct EdgeCount
{
    int columns = 0;
    int close = 0;
    int clearColumns = 0;
    int clearClose = 0;

    void add(bool isClose, bool isClear)
    {
        ++columns;
        close += isClose ? 1 : 0;
        clearColumns += isClear ? 1 : 0;
        clearClose += isClose && isClear ? 1 : 0;
    }
    double share() const { return static_cast<double>(close) / columns; }
    double clearShare() const { return static_cast<double>(clearClose) / clearColumns; }
};

EdgeCount countEdges(const Options& options, const Export& written, const Surface& surface,
                     int direction)
{
    const ScanGeometry geometry = makeGeometry(options);
    const VesselMap vessels(options.seed);
    EdgeCount count;
    for (int z = 0; z < options.bScans; ++z) {
        const auto slice = static_cast<std::size_t>(z);
        const QImage image(written.imagePaths[z + 1]);
        for (int x = 0; x < options.aScans; ++x) {
            const auto column = static_cast<std::size_t>(x);
            const Vector2d position = geometry.toEye(geometry.paths[slice].positions[column]);
            count.add(distanceToEdge(image, x, surface.rows[slice][column], direction) <= 1,
                      vessels.halfHeightAt(position) <= 0.0);
        }
    }
    return count;
}

} // namespace

TEST(Speckle, IsSkewedCorrelatedAndGrowsWithTheBrightness)
{
    constexpr int size = 400;
    for (const float grey : {10.0F, 100.0F, 200.0F}) {
        std::vector<float> image(size * size, grey);
        addSpeckle(image, size, size, 1.0, 42);
        const Moments m = momentsOf(image, size, size);
        EXPECT_NEAR(m.mean, grey, 0.005 * grey + 0.05);
        const double expected = std::sqrt(0.01 * grey * grey + 25.0);
        EXPECT_NEAR(m.deviation, expected, 0.02 * expected);
        // 2 own neighbour / (own^2 + 2 neighbour^2), of the weights 0.6 and 0.2
        EXPECT_NEAR(m.alongCorrelation, 0.545, 0.02);
        EXPECT_NEAR(m.acrossCorrelation, 0.545, 0.02);
    }
    std::vector<float> image(size * size, 200.0F);
    addSpeckle(image, size, size, 3.0, 42);
    // A gamma distribution has twice its contrast as skewness, here diluted by the additive part.
    EXPECT_NEAR(momentsOf(image, size, size).skewness, 0.55, 0.1);
}

TEST(Speckle, OfStrengthZeroLeavesTheImageAlone)
{
    std::vector<float> image{1.0F, 2.0F, 3.0F, 4.0F};
    addSpeckle(image, 2, 2, 0.0, 42);
    EXPECT_THAT(image, testing::ElementsAre(1.0F, 2.0F, 3.0F, 4.0F));
}

TEST(PhantomImages, ShowEverySurfaceAsTheEdgeThatItIs)
{
    const std::map<QString, int> directions{{"ILM", 1}, {"GCL", -1}, {"INL", -1}, {"ONL", -1},
                                            {"ISe", 1}, {"IRPE", 1}, {"BM", -1}};
    for (const Kind kind : {Kind::Normal, Kind::Drusen, Kind::Mouse}) {
        Options options;
        options.kind = kind;
        options.noise = 0.0;
        options.bScans = 13;
        options.localizerSize = 16;
        const QTemporaryDir folder;
        const Export written = writeExport(folder.path(), options);
        for (const Surface& surface : written.surfaces) {
            const EdgeCount count =
                countEdges(options, written, surface, directions.at(surface.identifier));
            const std::string name =
                surface.identifier.toStdString() + "_kind" + std::to_string(static_cast<int>(kind));
            RecordProperty(name, std::to_string(count.share()));
            RecordProperty(name + "_without_vessels", std::to_string(count.clearShare()));
            EXPECT_GT(count.clearColumns, count.columns / 2);
            EXPECT_GE(count.clearShare(), 0.99) << name;
            // Vessels lie across the lower border of the nerve fibres and hide it.
            EXPECT_GE(count.share(), surface.identifier == "GCL" ? 0.96 : 0.99) << name;
        }
    }
}

TEST(PhantomImages, AreDarkInTheVitreousAndBrightestAtTheOuterBands)
{
    Options options;
    options.pattern = Pattern::Section;
    options.localizerSize = 16;
    const QTemporaryDir folder;
    const Export written = writeExport(folder.path(), options);
    const QImage image(written.imagePaths[1]);
    const auto meanBelow = [&](int surface, int offset) {
        double sum = 0.0;
        for (int x = 0; x < 512; ++x) {
            const int row = written.surfaces[surface].rows[0][static_cast<std::size_t>(x)] + offset;
            sum += image.constScanLine(row)[x];
        }
        return sum / 512.0;
    };
    const double vitreous = meanBelow(0, -20);
    const double nerveFibers = meanBelow(0, 1);
    const double outerNuclear = meanBelow(3, 6);
    const double ellipsoid = meanBelow(4, 2);
    const double epithelium = meanBelow(5, -2);
    const double choroid = meanBelow(5, 6);
    EXPECT_GT(vitreous, 5.0);
    EXPECT_LT(vitreous, 25.0);
    EXPECT_GT(nerveFibers, outerNuclear + 40.0);
    EXPECT_GT(ellipsoid, nerveFibers);
    EXPECT_GT(epithelium, nerveFibers);
    EXPECT_LT(choroid, 0.65 * epithelium);
    EXPECT_GT(choroid, outerNuclear);
}

} // namespace kelp::phantom
