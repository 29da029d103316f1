#include "LayerName.h"
#include "LayerUtils.h"
#include "kelpCheck.h"
#include "kelpTrace.h"

#include <array>
#include <cmath>
#include <initializer_list>

namespace kelp::oct {

namespace {

/// A narrowed range keeps at least this many rows.
constexpr unsigned leastRangeRows = 8;

unsigned short nearestRow(double row)
{
    return static_cast<unsigned short>(static_cast<int>(std::floor(row + 0.5)));
}

bool haveSizeOf(const VolumeLayerPtr& model, std::initializer_list<VolumeLayerPtr> layers)
{
    for (const VolumeLayerPtr& layer : layers) {
        if (layer.isNull() || layer->rows != model->rows || layer->columns != model->columns) {
            return false;
        }
    }
    return true;
}

} // namespace

void LayerUtils::getInnerSearchRangesConstant(
    const VolumeLayerPtr& top, const VolumeLayerPtr& bottom, const VolumeLayerPtr& gclTop,
    const VolumeLayerPtr& inlTop, const VolumeLayerPtr& onlTop, const VolumeLayerPtr& gclBottom,
    const VolumeLayerPtr& inlBottom, const VolumeLayerPtr& onlBottom, float t1, float t2, float t3,
    float t4, float axialSpacing, float balance, const MaskMatrixPtr& mask)
{
    constexpr Place place{"libraries/OCTScan/src/layerSeg/LayerUtils",
                          "kelp::oct::LayerUtils::getInnerSearchRangesConstant"};
    check(!top.isNull(), place, "Top layer is null.");
    check(haveSizeOf(top, {bottom, gclTop, inlTop, onlTop, gclBottom, inlBottom, onlBottom}), place,
          "A layer is null or not of the size of the top layer.");

    const double micrometresPerRow = static_cast<double>(axialSpacing) * 1000.0;
    const double a1 = t1 / micrometresPerRow;
    const double a2 = t2 / micrometresPerRow;
    const double a3 = t3 / micrometresPerRow;
    const double a4 = t4 / micrometresPerRow;
    const double sum = a1 + a2 + a3 + a4;
    const double fromTop = balance;
    const double fromBottom = 1.0 - fromTop;
    for (std::size_t i = 0; i < top->size(); ++i) {
        const double t = top->data[i];
        const double b = bottom->data[i];
        const double d = (b - t) / sum;
        gclTop->data[i] = nearestRow(t + d * a1 * fromTop);
        inlTop->data[i] = nearestRow(t + (d * a2 + d * a1) * fromTop);
        onlTop->data[i] = nearestRow(t + (d * a2 + d * a1 + d * a3) * fromTop);
        gclBottom->data[i] = nearestRow(b - (d * a4 + d * a3 + d * a2) * fromBottom);
        inlBottom->data[i] = nearestRow(b - fromBottom * (d * a4 + d * a3));
        onlBottom->data[i] = nearestRow(b - fromBottom * (d * a4));
    }
    fixMinDistanceTopToBottom(gclTop, gclBottom, leastRangeRows, mask);
    fixMinDistanceTopToBottom(inlTop, inlBottom, leastRangeRows, mask);
    fixMinDistanceTopToBottom(onlTop, onlBottom, leastRangeRows, mask);
}

LayerDistributionPtr
LayerUtils::getLayerDistributionBetween(const QList<LayerDistributionPtr>& distributions,
                                        const QString& upperName, const QString& lowerName)
{
    Trace() << "upperLayerName: " << upperName;
    Trace() << "lowerLayerName: " << lowerName;
    for (const LayerDistributionPtr& distribution : distributions) {
        if (distribution->getUpperLayerName() == upperName &&
            distribution->getLowerLayerName() == lowerName) {
            return distribution;
        }
    }
    Trace() << "layer distribution not found!";
    throw Exception(QString("LayerUtils::getLayerDistributionBetween: the layer between %1 and %2 "
                            "does not exist")
                        .arg(upperName, lowerName));
}

void LayerUtils::getInnerSearchRangesDistribution(
    const QList<LayerDistributionPtr>& distributions, const VolumeLayerPtr& gclTop,
    const VolumeLayerPtr& inlTop, const VolumeLayerPtr& onlTop, const VolumeLayerPtr& gclBottom,
    const VolumeLayerPtr& inlBottom, const VolumeLayerPtr& onlBottom, const double spacing[3],
    const double origin[2], float k, const MaskMatrixPtr& mask)
{
    struct InnerSurface
    {
        LayerNamePtr name;
        VolumeLayerPtr top;
        VolumeLayerPtr bottom;
        LayerDistributionPtr fromIlm;
        LayerDistributionPtr toIse;
    };
    std::array<InnerSurface, 3> surfaces{
        InnerSurface{LayerNameGCL::create(), gclTop, gclBottom, nullptr, nullptr},
        InnerSurface{LayerNameINL::create(), inlTop, inlBottom, nullptr, nullptr},
        InnerSurface{LayerNameONL::create(), onlTop, onlBottom, nullptr, nullptr}};
    const QString ilm = LayerNameILM::create()->getIdentifier();
    const QString ise = LayerNameISe::create()->getIdentifier();
    // All before the first change, so that a model without a pair changes nothing.
    for (InnerSurface& surface : surfaces) {
        const QString name = surface.name->getIdentifier();
        surface.fromIlm = getLayerDistributionBetween(distributions, ilm, name);
        surface.toIse = getLayerDistributionBetween(distributions, name, ise);
    }
    for (const InnerSurface& surface : surfaces) {
        surface.fromIlm->addSubtractRelativeSearchRange(surface.top, surface.bottom, *surface.toIse,
                                                        spacing, origin, k);
        fixMinDistanceTopToBottom(surface.top, surface.bottom, leastRangeRows, mask);
    }
}

} // namespace kelp::oct
