#include "RegOCTStacks.h"

#include "LayerSampling.h"
#include "LayerUtils.h"
#include "kelpCheck.h"
#include "kelpTrace.h"

#include <QPolygonF>

#include <nlopt.hpp>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/layerSeg/RegOCTStacks";

/// The window over which the surface must be deep.
constexpr double windowSigmaMillimetres = 0.05;
/// The search stays this part of the layer's extent from its centre.
constexpr double searchedPart = 0.1;

constexpr int circlePoints = 32;
constexpr double circleStep = 1.0 / circlePoints;
constexpr double centreRadius = 0.5;
/// The outer ring of the sectors ends at 3 mm; the rest is margin.
constexpr double sectorsRadius = 3.3;
constexpr double outsideReach = 10.0;

void checkArguments(const Place& place, const OCTScanPtr& scan, const VolumeLayerPtr& layer)
{
    check(!scan.isNull(), place, "OCT scan is null.");
    check(!layer.isNull(), place, "ILM layer is null.");
}

void tracePair(const char* text, const std::vector<double>& pair)
{
    Trace() << text << pair[0] << ", " << pair[1] << ")";
}

QPointF pointOnCircle(const CoordOnLocalizer& centre, double radius, int index)
{
    const double angle = index * circleStep * 2.0 * std::numbers::pi;
    return {centre.x + std::sin(angle) * radius, centre.y + std::cos(angle) * radius};
}

} // namespace

CoordOnLocalizer RegOCTStacks::findFovea(const OCTScanPtr& scan, const VolumeLayerPtr& ilmLayer)
{
    constexpr Place place{sourcePath, "kelp::oct::RegOCTStacks::findFovea"};
    checkArguments(place, scan, ilmLayer);

    const Vector3d spacing = scan->getVolumeSpacing();
    VolumeLayerPtr layer = ilmLayer;
    // Also what holds where both spacings are equal already.
    double isotropicSpacing = spacing.x;
    if (ilmLayer->rows < 2) {
        isotropicSpacing = scan->getSliceSpacing().x;
    } else {
        const double inPlane[2] = {spacing.x, spacing.z};
        layer = LayerUtils::createIsometric(ilmLayer, inPlane, &isotropicSpacing);
    }
    const FoveaSearchResult found = searchFovea(layer, scan, isotropicSpacing);
    Trace() << "searchFovea returned " << found.x << "x" << found.height << "x" << found.z;
    const VolumeCoords coords{found.z * isotropicSpacing, found.x * isotropicSpacing};
    Trace() << "--> in volume coords " << coords.z << "x" << coords.x;
    const CoordOnLocalizer position = scan->volumeCoordsToLocalizerCoord(coords);
    Trace() << "--> in localizer coords " << position.x << "x" << position.y;
    const VolumeIndex index = scan->localizerCoordToVolumeIndex(position);
    Trace() << "--> in volume index " << index.bScan << "x" << index.aScan;
    return position;
}

RegOCTStacks::FoveaSearchResult RegOCTStacks::searchFovea(const VolumeLayerPtr& ilmLayer,
                                                          const OCTScanPtr& scan,
                                                          double isotropicSpacing)
{
    constexpr Place place{sourcePath, "kelp::oct::RegOCTStacks::searchFovea"};
    checkArguments(place, scan, ilmLayer);

    const double width = ilmLayer->columns - 1.0;
    const double depth = ilmLayer->rows - 1.0;
    std::vector<double> position{width * 0.5, depth * 0.5};
    const std::vector<double> lower{position[0] - searchedPart * width,
                                    position[1] - searchedPart * depth};
    const std::vector<double> upper{position[0] + searchedPart * width,
                                    position[1] + searchedPart * depth};
    tracePair("center (X,Z) = (", position);
    tracePair("lower bounds (X,Z) = (", lower);
    tracePair("upper bounds (X,Z) = (", upper);

    nlopt::opt optimizer(nlopt::LN_BOBYQA, 2);
    optimizer.set_lower_bounds(lower);
    optimizer.set_upper_bounds(upper);
    FoveaCostData data{ilmLayer, windowSigmaMillimetres / isotropicSpacing, 2.0, 0};
    optimizer.set_xtol_rel(1e-5);
    optimizer.set_min_objective(&RegOCTStacks::computeCostGaussionFoveaMin, &data);
    double value = 0.0;
    try {
        optimizer.optimize(position, value);
    } catch (const nlopt::roundoff_limited&) {
        Trace() << "caught nlopt roundoff exception, trying to continue...";
        Trace() << "params are " << position[0] << "," << position[1];
    }
    return {position[0], sampleLayer(*ilmLayer, position[1], position[0]), position[1]};
}

double RegOCTStacks::computeCostGaussionFoveaMin(unsigned, const double* x, double*, void* data)
{
    constexpr Place place{sourcePath, "kelp::oct::RegOCTStacks::computeCostGaussionFoveaMin"};
    check(data != nullptr, place, "Function data is null.");
    check(x != nullptr, place, "Params is null.");
    auto& fData = *static_cast<FoveaCostData*>(data);
    check(!fData.layer.isNull(), place, "fData is null.");

    ++fData.evaluations;
    const VolumeLayer& layer = *fData.layer;
    const double centreX = x[0];
    const double centreZ = x[1];
    const double radius = 3.0 * fData.sigma;
    const double firstX = std::max(centreX - radius, 0.0);
    const double lastX = std::min(centreX + radius, layer.columns - 1.0);
    const double firstZ = std::max(centreZ - radius, 0.0);
    const double lastZ = std::min(centreZ + radius, layer.rows - 1.0);
    const double doubleVariance = 2.0 * (fData.sigma * fData.sigma);
    const double norm = 1.0 / (2.0 * std::numbers::pi * (fData.sigma * fData.sigma));
    double sum = 0.0;
    int count = 0;
    // The samples start at the clipped corner, so they move with the position.
    for (double sampleZ = firstZ; sampleZ <= lastZ; sampleZ += fData.stepSize) {
        for (double sampleX = firstX; sampleX <= lastX; sampleX += fData.stepSize) {
            const auto dx = static_cast<float>(sampleX - centreX);
            const auto dz = static_cast<float>(sampleZ - centreZ);
            if (std::sqrt(dz * dz + dx * dx) > radius || sampleX > layer.columns ||
                sampleZ > layer.rows) {
                continue;
            }
            sum -= sampleLayer(layer, sampleZ, sampleX) * norm *
                   std::exp(-(dx * dx) / doubleVariance) * std::exp(-(dz * dz) / doubleVariance);
            ++count;
        }
    }
    // Where A-scans are so far apart that no sample falls into the window, every position is equal:
    // the search then stays at the centre instead of running on values that are no numbers.
    const double cost = count > 0 ? sum / count : 0.0;
    Trace() << "cost function evaluation. pos( " << centreX << ", " << centreZ << ") = " << cost;
    return cost;
}

double RegOCTStacks::sampleLayer(const VolumeLayer& layer, double row, double column)
{
    return sampleLayerBilinear(layer, row, column);
}

void RegOCTStacks::maskCenter(const SegmentationMaskPtr& mask, const CoordOnLocalizer& position)
{
    constexpr Place place{sourcePath, "kelp::oct::RegOCTStacks::maskCenter"};
    check(!mask.isNull(), place, "Segmentation mask is null");

    QPolygonF polygon;
    polygon.reserve(circlePoints);
    for (int i = 0; i < circlePoints; ++i) {
        polygon << pointOnCircle(position, centreRadius, i);
    }
    mask->addPolygon(polygon);
}

void RegOCTStacks::maskETDRSSectors(const SegmentationMaskPtr& mask,
                                    const CoordOnLocalizer& position)
{
    constexpr Place place{sourcePath, "kelp::oct::RegOCTStacks::maskETDRSSectors"};
    check(!mask.isNull(), place, "Segmentation mask is null");

    QPolygonF polygon;
    polygon.reserve(circlePoints + 8);
    for (int i = 0; i < circlePoints; ++i) {
        const QPointF point = pointOnCircle(position, sectorsRadius, i);
        Trace() << "masking point " << i * circleStep << ": (" << point.x() << ", " << point.y()
                << ")";
        polygon << point;
    }
    // A square around the circle, joined to it by a slit without width: odd-even filling then
    // excludes what lies between the two.
    const double x = position.x;
    const double y = position.y;
    polygon << QPointF(x, y + sectorsRadius) << QPointF(x, y + outsideReach)
            << QPointF(x - outsideReach, y + outsideReach)
            << QPointF(x - outsideReach, y - outsideReach)
            << QPointF(x + outsideReach, y - outsideReach)
            << QPointF(x + outsideReach, y + outsideReach) << QPointF(x, y + outsideReach)
            << QPointF(x, y + sectorsRadius);
    mask->addPolygon(polygon);
}

} // namespace kelp::oct
