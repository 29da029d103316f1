#include "RegOCTStacks.h"
#include "ExpectFailure.h"
#include "TestExport.h"
#include "TraceCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

namespace {

using namespace kelp::oct;
using test::failure;
using test::lineScan;
using test::makeTestScan;
using test::TraceCapture;

std::string inFunction(const std::string& function, const std::string& text)
{
    return "OCTScan/src/layerSeg/RegOCTStacks::kelp::oct::RegOCTStacks::" + function + ": " + text;
}

VolumeLayerPtr surface(unsigned rows, unsigned columns,
                       const std::function<double(double, double)>& height)
{
    const VolumeLayerPtr layer(new VolumeLayer(rows, columns));
    for (unsigned z = 0; z < rows; ++z) {
        for (unsigned x = 0; x < columns; ++x) {
            (*layer)(z, x) = static_cast<unsigned short>(std::lround(height(x, z)));
        }
    }
    return layer;
}

/// A pit of 60 rows, in index units.
VolumeLayerPtr pit(unsigned rows, unsigned columns, double pitX, double pitZ, double widthX,
                   double widthZ)
{
    return surface(rows, columns, [=](double x, double z) {
        const double dx = (x - pitX) / widthX;
        const double dz = (z - pitZ) / widthZ;
        return 100.0 + 60.0 * std::exp(-0.5 * (dx * dx + dz * dz));
    });
}

/// The objective once more, from its formula.
double literalCost(const VolumeLayer& layer, double sigma, double step, double X, double Z)
{
    const double r = 3.0 * sigma;
    const double norm = 1.0 / (2.0 * M_PI * sigma * sigma);
    const double maxX = std::min(X + r, static_cast<double>(layer.columns) - 1.0);
    const double maxZ = std::min(Z + r, static_cast<double>(layer.rows) - 1.0);
    double sum = 0.0;
    int count = 0;
    for (double z = std::max(Z - r, 0.0); z <= maxZ; z += step) {
        for (double x = std::max(X - r, 0.0); x <= maxX; x += step) {
            const float dx = static_cast<float>(x - X);
            const float dz = static_cast<float>(z - Z);
            if (sqrtf(dz * dz + dx * dx) <= r) {
                const double v = RegOCTStacks::sampleLayer(layer, z, x);
                sum -= v * norm * std::exp(-dx * dx / (2.0 * sigma * sigma)) *
                       std::exp(-dz * dz / (2.0 * sigma * sigma));
                ++count;
            }
        }
    }
    return sum / count;
}

double cost(const VolumeLayerPtr& layer, double sigma, double X, double Z)
{
    FoveaCostData data{layer, sigma, 2.0, 0};
    const double position[2] = {X, Z};
    return RegOCTStacks::computeCostGaussionFoveaMin(2, position, nullptr, &data);
}

const OCTScanPtr& anyScan()
{
    static const OCTScanPtr scan = makeTestScan(lineScan(4, 4, 3));
    return scan;
}

TEST(FoveaCost, IsTheFormulaAnywhereOnTheLayer)
{
    TraceCapture trace;
    std::mt19937 random(1);
    std::uniform_real_distribution<double> share(0.0, 1.0);
    const VolumeLayerPtr layer = pit(70, 90, 40.0, 30.0, 15.0, 12.0);
    for (int round = 0; round < 200; ++round) {
        const double X = share(random) * 89.0;
        const double Z = share(random) * 69.0;
        const double sigma = 2.0 + share(random) * 5.0;
        ASSERT_DOUBLE_EQ(cost(layer, sigma, X, Z), literalCost(*layer, sigma, 2.0, X, Z));
    }
}

TEST(FoveaCost, StaysComparableWhereTheEdgeCutsTheWindow)
{
    TraceCapture trace;
    const VolumeLayerPtr flat = surface(80, 80, [](double, double) { return 100.0; });
    const double inside = cost(flat, 5.0, 40.0, 40.0);
    const double atEdge = cost(flat, 5.0, 40.0, 0.0);
    // Half of the window's points, each counted: not half of the cost.
    EXPECT_LT(atEdge, 0.9 * inside);
    EXPECT_GT(atEdge, 1.3 * inside);
}

TEST(FoveaCost, CountsAndTracesItsEvaluations)
{
    TraceCapture trace;
    FoveaCostData data{surface(9, 9, [](double, double) { return 7.0; }), 1.0, 2.0, 0};
    const double position[2] = {4.0, 3.0};
    const double value = RegOCTStacks::computeCostGaussionFoveaMin(2, position, nullptr, &data);
    RegOCTStacks::computeCostGaussionFoveaMin(2, position, nullptr, &data);
    EXPECT_EQ(data.evaluations, 2);
    ASSERT_EQ(trace.lines().size(), 2);
    EXPECT_EQ(trace.lines()[0],
              QString("cost function evaluation. pos( 4, 3) = %1").arg(value, 0, 'g', 6));
}

TEST(FoveaCost, IsNeutralWhereNoSampleFallsIntoTheWindow)
{
    TraceCapture trace;
    const VolumeLayerPtr flat = surface(9, 9, [](double, double) { return 7.0; });
    EXPECT_EQ(cost(flat, 0.1, 4.0, 4.0), 0.0);
}

TEST(FoveaCost, ChecksItsArguments)
{
    FoveaCostData data;
    const double position[2] = {0.0, 0.0};
    const auto fails = [](const double* x, void* pointer) {
        return failure<kelp::Assertion>(
            [&] { RegOCTStacks::computeCostGaussionFoveaMin(2, x, nullptr, pointer); });
    };
    const auto text = [](const char* words) {
        return inFunction("computeCostGaussionFoveaMin", words);
    };
    EXPECT_EQ(fails(position, nullptr), text("Function data is null."));
    EXPECT_EQ(fails(nullptr, &data), text("Params is null."));
    EXPECT_EQ(fails(position, &data), text("fData is null."));
}

TEST(SampleLayer, TruncatesWithinRowsInDoublePrecision)
{
    const VolumeLayerPtr layer =
        surface(2, 2, [](double x, double z) { return 10 + 3 * x + 10 * z; });
    EXPECT_EQ(RegOCTStacks::sampleLayer(*layer, 0.0, 0.5), 11.0);
    EXPECT_EQ(RegOCTStacks::sampleLayer(*layer, 0.5, 0.5), 16.0);
    EXPECT_EQ(RegOCTStacks::sampleLayer(*layer, 0.25, 0.0), 12.5);
    EXPECT_EQ(RegOCTStacks::sampleLayer(*layer, 7.0, -7.0), 20.0);
}

TEST(SearchFovea, FindsThePitAsWellAsAnEvaluationOfEveryPosition)
{
    TraceCapture trace;
    for (const auto& [dx, dz] : {std::pair(0.0, 0.0), {6.0, -4.0}, {-9.0, 7.0}, {12.0, 12.0}}) {
        const double pitX = 99.5 + dx;
        const double pitZ = 99.5 + dz;
        const VolumeLayerPtr layer = pit(200, 200, pitX, pitZ, 20.0, 20.0);
        const auto found = RegOCTStacks::searchFovea(layer, anyScan(), 0.01);
        EXPECT_NEAR(found.x, pitX, 1.0);
        EXPECT_NEAR(found.z, pitZ, 1.0);
        EXPECT_EQ(found.height, RegOCTStacks::sampleLayer(*layer, found.z, found.x));
        double best = 0.0;
        for (double z = 99.5 - 19.9; z <= 99.5 + 19.9; z += 0.5) {
            for (double x = 99.5 - 19.9; x <= 99.5 + 19.9; x += 0.5) {
                best = std::min(best, literalCost(*layer, 5.0, 2.0, x, z));
            }
        }
        EXPECT_LE(literalCost(*layer, 5.0, 2.0, found.x, found.z), best * 0.995);
    }
}

TEST(SearchFovea, StaysInTheMiddleFifth)
{
    TraceCapture trace;
    const VolumeLayerPtr layer = pit(100, 200, 180.0, 90.0, 80.0, 60.0);
    const auto found = RegOCTStacks::searchFovea(layer, anyScan(), 0.01);
    EXPECT_LE(found.x, 99.5 + 19.9 + 1e-9);
    EXPECT_LE(found.z, 49.5 + 9.9 + 1e-9);
    EXPECT_GT(found.x, 115.0);
    EXPECT_GT(found.z, 55.0);
    EXPECT_EQ(trace.lines()[0], "center (X,Z) = (99.5, 49.5)");
    EXPECT_EQ(trace.lines()[1], "lower bounds (X,Z) = (79.6, 39.6)");
    EXPECT_EQ(trace.lines()[2], "upper bounds (X,Z) = (119.4, 59.4)");
}

TEST(SearchFovea, StaysNearTheCentreOfAFlatSurface)
{
    TraceCapture trace;
    const VolumeLayerPtr flat = surface(100, 100, [](double, double) { return 200.0; });
    const auto found = RegOCTStacks::searchFovea(flat, anyScan(), 0.01);
    EXPECT_NEAR(found.x, 49.5, 9.9);
    EXPECT_NEAR(found.z, 49.5, 9.9);
    EXPECT_EQ(found.height, 200.0);
}

TEST(SearchFovea, StaysAtTheCentreWhereAScansAreTooFarApartForTheWindow)
{
    TraceCapture trace;
    const VolumeLayerPtr flat = surface(20, 20, [](double, double) { return 200.0; });
    const auto found = RegOCTStacks::searchFovea(flat, anyScan(), 0.5);
    EXPECT_NEAR(found.x, 9.5, 1.9);
    EXPECT_NEAR(found.z, 9.5, 1.9);
}

TEST(SearchFovea, SearchesAlongTheOnlyRow)
{
    TraceCapture trace;
    const VolumeLayerPtr layer = pit(1, 200, 105.0, 0.0, 20.0, 1.0);
    const auto found = RegOCTStacks::searchFovea(layer, anyScan(), 0.01);
    EXPECT_NEAR(found.x, 105.0, 1.5);
    EXPECT_EQ(found.z, 0.0);
    EXPECT_EQ(trace.lines()[1], "lower bounds (X,Z) = (79.6, 0)");
    EXPECT_EQ(trace.lines()[2], "upper bounds (X,Z) = (119.4, 0)");
}

TEST(SearchFovea, StaysAtTheOnlyPlace)
{
    TraceCapture trace;
    const VolumeLayerPtr layer = surface(1, 1, [](double, double) { return 50.0; });
    const auto found = RegOCTStacks::searchFovea(layer, anyScan(), 0.01);
    EXPECT_EQ(found.x, 0.0);
    EXPECT_EQ(found.z, 0.0);
    EXPECT_EQ(found.height, 50.0);
}

TEST(FindFovea, GivesThePitsPlaceOnTheLocalizer)
{
    TraceCapture trace;
    // 2 mm by 2 mm; the pit at 1.05 and 0.95 mm.
    const OCTScanPtr scan = makeTestScan(lineScan(200, 4, 41, 0.01, 0.05));
    const VolumeLayerPtr layer = pit(41, 200, 105.0, 19.0, 20.0, 4.0);
    const CoordOnLocalizer fovea = RegOCTStacks::findFovea(scan, layer);
    EXPECT_NEAR(fovea.x, 1.05, 0.02);
    // The last B-scan lies half a step nearer on the finer grid, which stretches it a little.
    EXPECT_NEAR(fovea.y, 0.95, 0.04);
    const QStringList lines = trace.lines();
    EXPECT_EQ(lines.filter("searchFovea returned ").size(), 1);
    EXPECT_EQ(lines.filter("--> in volume coords ").size(), 1);
    EXPECT_EQ(lines.filter("--> in localizer coords ").size(), 1);
    EXPECT_TRUE(lines.last().startsWith("--> in volume index ")) << qPrintable(lines.last());
}

TEST(FindFovea, TakesTheLayerAsItStandsWhereBothSpacingsAreEqual)
{
    TraceCapture trace;
    const OCTScanPtr scan = makeTestScan(lineScan(120, 4, 120, 0.015625, 0.015625));
    const VolumeLayerPtr layer = pit(120, 120, 62.0, 57.0, 15.0, 15.0);
    const CoordOnLocalizer fovea = RegOCTStacks::findFovea(scan, layer);
    EXPECT_NEAR(fovea.x, 62.0 * 0.015625, 0.03);
    EXPECT_NEAR(fovea.y, 57.0 * 0.015625, 0.03);
}

TEST(FindFovea, ChecksItsArguments)
{
    const VolumeLayerPtr layer(new VolumeLayer(2, 2));
    EXPECT_EQ(failure<kelp::Assertion>([&] { RegOCTStacks::findFovea(nullptr, layer); }),
              inFunction("findFovea", "OCT scan is null."));
    EXPECT_EQ(failure<kelp::Assertion>([&] { RegOCTStacks::findFovea(anyScan(), nullptr); }),
              inFunction("findFovea", "ILM layer is null."));
    EXPECT_EQ(failure<kelp::Assertion>([&] { RegOCTStacks::searchFovea(layer, nullptr, 1.0); }),
              inFunction("searchFovea", "OCT scan is null."));
    EXPECT_EQ(failure<kelp::Assertion>([&] { RegOCTStacks::searchFovea(nullptr, anyScan(), 1.0); }),
              inFunction("searchFovea", "ILM layer is null."));
}

/// 8 mm by 8 mm in steps of 0.1 mm.
SegmentationMaskPtr wideMask()
{
    return SegmentationMaskPtr(new SegmentationMask(makeTestScan(lineScan(81, 4, 81, 0.1, 0.1))));
}

double distanceOf(unsigned bScan, unsigned aScan)
{
    return std::hypot(aScan * 0.1 - 4.0, bScan * 0.1 - 4.0);
}

TEST(Masks, CentreExcludesADiscOfHalfAMillimetre)
{
    TraceCapture trace;
    const SegmentationMaskPtr mask = wideMask();
    RegOCTStacks::maskCenter(mask, {4.0, 4.0});
    ASSERT_EQ(mask->getPolygons().size(), 1);
    const QPolygonF polygon = mask->getPolygons().front();
    ASSERT_GE(polygon.size(), 32);
    EXPECT_EQ(polygon[0], QPointF(4.0, 4.5));
    EXPECT_NEAR(polygon[8].x(), 4.5, 1e-12);
    EXPECT_NEAR(polygon[8].y(), 4.0, 1e-12);
    for (unsigned z = 0; z < 81; ++z) {
        for (unsigned x = 0; x < 81; ++x) {
            const double distance = distanceOf(z, x);
            if (std::abs(distance - 0.5) > 0.02) {
                EXPECT_EQ((*mask->getMaskMatrix())(z, x) != 0, distance < 0.5);
            }
        }
    }
}

TEST(Masks, SectorsExcludeWhatLiesOutsideTheirMargin)
{
    TraceCapture trace;
    const SegmentationMaskPtr mask = wideMask();
    RegOCTStacks::maskETDRSSectors(mask, {4.0, 4.0});
    ASSERT_EQ(mask->getPolygons().size(), 1);
    const QPolygonF polygon = mask->getPolygons().front();
    ASSERT_GE(polygon.size(), 40);
    EXPECT_EQ(QPolygonF(polygon.mid(32, 8)), QPolygonF({{4.0, 4.0 + 3.3},
                                                        {4.0, 14.0},
                                                        {-6.0, 14.0},
                                                        {-6.0, -6.0},
                                                        {14.0, -6.0},
                                                        {14.0, 14.0},
                                                        {4.0, 14.0},
                                                        {4.0, 4.0 + 3.3}}));
    const QStringList points = trace.lines().filter("masking point ");
    ASSERT_EQ(points.size(), 32);
    EXPECT_EQ(points[0].toStdString(), "masking point 0: (4, 7.3)");
    EXPECT_TRUE(points[1].startsWith("masking point 0.03125: ("));
    for (unsigned z = 0; z < 81; ++z) {
        for (unsigned x = 0; x < 81; ++x) {
            const double distance = distanceOf(z, x);
            if (std::abs(distance - 3.3) > 0.05) {
                EXPECT_EQ((*mask->getMaskMatrix())(z, x) != 0, distance > 3.3);
            }
        }
    }
}

TEST(Masks, BothMayBeAppliedToOneMask)
{
    TraceCapture trace;
    const SegmentationMaskPtr mask = wideMask();
    RegOCTStacks::maskETDRSSectors(mask, {4.0, 4.0});
    RegOCTStacks::maskCenter(mask, {4.0, 4.0});
    EXPECT_EQ(mask->getPolygons().size(), 2);
    EXPECT_NE((*mask->getMaskMatrix())(40, 40), 0);
    EXPECT_EQ((*mask->getMaskMatrix())(40, 50), 0);
    EXPECT_NE((*mask->getMaskMatrix())(2, 2), 0);
}

TEST(Masks, NeedAMask)
{
    EXPECT_EQ(failure<kelp::Assertion>([] { RegOCTStacks::maskCenter(nullptr, {}); }),
              inFunction("maskCenter", "Segmentation mask is null"));
    EXPECT_EQ(failure<kelp::Assertion>([] { RegOCTStacks::maskETDRSSectors(nullptr, {}); }),
              inFunction("maskETDRSSectors", "Segmentation mask is null"));
}

} // namespace
