#pragma once

#include "InnerDistProps.h"
#include "LayerDistribution.h"
#include "OCTScan.h"
#include "SegParams.h"
#include "SliceStackProperties.h"

#include <QList>

#include <array>

/// What the steps ask of their graph cuts, as plain descriptions: nothing here solves anything.
namespace kelp::oct {

/// The surfaces of one cut, and how many edges a node of it is expected to need.
struct CutPlan
{
    SliceStackProperties properties;
    double edgeFactor = 5.0;
};

/// A soft distance between two surfaces, of which one may stand outside of the cut.
struct SoftDistance
{
    LayerNamePtr top;
    LayerNamePtr bottom;
    /// Expresses the surface outside of the cut; otherwise without effect.
    VolumeLayerPtr offsets;
    float weight = 0.0F;
    /// The trained distance; null where the distance is constant.
    LayerDistributionPtr distribution;
    unsigned rows = 0;
};

/// Where the trained distances stand on the scan.
struct ModelFrame
{
    std::array<double, 3> spacing{};
    std::array<double, 2> origin{};
};

/// Toward zero; what int cannot hold ends at its limits, and what is no number at 0.
int truncatedToInt(double value);

// Surfaces as matrices.

VolumeLayerPtr copyOf(const VolumeLayerPtr& layer);

/// The grid of a cut.
struct CutSize
{
    CutSize(unsigned aScanCount, unsigned rowCount, unsigned bScanCount);
    /// Of a scan as OCTScan::getVolumeSize gives it.
    explicit CutSize(const kelp::Vector3<int>& volumeSize);

    unsigned aScans;
    unsigned rows; ///< of the B-scan images
    unsigned bScans;
};

VolumeLayerPtr constantLayer(const CutSize& size, unsigned short value);

// Building blocks of the plans.

/// Edges that a node of a plain surface is expected to need.
constexpr double plainEdgeFactor = 5.0;
/// More for the first kind of soft term and for each further one.
double edgeFactorOf(bool firstTermOn, bool secondTermOn, bool thirdTermOn = false);

/// Every range of every step passes through here: a graph column needs two rows at least, which a
/// surface at the edge of the image, or between two surfaces that touch, does not leave. Widens in
/// place.
void setRange(SliceStackProperties& properties, const LayerNamePtr& name, const VolumeLayerPtr& top,
              const VolumeLayerPtr& bottom, const MaskMatrixPtr& mask);

/// A range of so many rows above and below a known surface, never past the image's last row.
void setRangeAround(SliceStackProperties& properties, const LayerNamePtr& name,
                    const VolumeLayerPtr& middle, unsigned above, unsigned below,
                    const CutSize& size, const MaskMatrixPtr& mask);

// The coarse cut. All in coarse rows.

struct CoarseNames
{
    LayerNamePtr ilm;
    LayerNamePtr ise;
};

CutPlan planCoarse(const CoarseNames& names, const CutSize& size, int minDist, int maxDist,
                   const MaskMatrixPtr& mask);

// The fine cuts.

CutPlan planILM(const LayerNamePtr& ilm, const VolumeLayerPtr& ilmCoarse, const CutSize& size,
                const ILMSegParams& params);

struct OuterNames
{
    LayerNamePtr ise;
    LayerNamePtr bm;
};

/// ISe and BM together around the coarse ISe, with or without the trained model.
CutPlan planOuter(const OuterNames& names, const VolumeLayerPtr& iseCoarse, const CutSize& size,
                  const OuterSegParams& params);

/// The terms of planOuter's cut without the model: ILM to ISe, ISe to BM. Distances in rows.
QList<SoftDistance> constantOuterDistances(const OuterNames& names, const CutPlan& plan,
                                           const VolumeLayerPtr& ilm, const OuterSegParams& params,
                                           int ilm2isosRows, float ilm2isosDistVarWeight,
                                           int rpeRows);

CutPlan planBM(const LayerNamePtr& bm, const VolumeLayerPtr& iseCoarse, const CutSize& size,
               const OuterSegParams& params);

struct DrusenNames
{
    LayerNamePtr ise;
    LayerNamePtr irpe;
};

CutPlan planDrusen(const DrusenNames& names, const VolumeLayerPtr& ilm, const VolumeLayerPtr& bm,
                   const CutSize& size, const OuterSegParams& params);

/// A soft distance and the words that announce it.
struct DrusenDistance
{
    const char* between;
    SoftDistance distance;
};

QList<DrusenDistance> drusenDistances(const DrusenNames& names, const CutPlan& plan,
                                      const OuterSegParams& params);

struct InnerNames
{
    LayerNamePtr gcl;
    LayerNamePtr inl;
    LayerNamePtr onl;
};

/// Where the inner surfaces are sought; at first all between ILM and ISe.
struct InnerRanges
{
    InnerRanges(const VolumeLayerPtr& ilm, const VolumeLayerPtr& ise);

    VolumeLayerPtr gclTop, inlTop, onlTop;
    VolumeLayerPtr gclBottom, inlBottom, onlBottom;
};

/// The hard distances between the inner surfaces, in rows at every A-scan.
struct InnerDistances
{
    VolumeLayerPtr gclInlMinimum, gclInlMaximum;
    VolumeLayerPtr inlOnlMinimum, inlOnlMaximum;
};

/// shapeStepZ: between which B-scans the shapes are tied.
CutPlan planInner(const InnerNames& names, const CutSize& size, const InnerRanges& ranges,
                  const InnerDistances& distances, unsigned shapeStepZ,
                  const InnerSegParams& params);

/// The four records of the trained model between ILM and ISe.
struct InnerDistributions
{
    LayerDistributionPtr ilmGcl, gclInl, inlOnl, onlIse;
};

QList<SoftDistance> trainedInnerDistances(const InnerNames& names, const VolumeLayerPtr& ilm,
                                          const InnerRanges& ranges,
                                          const InnerDistributions& distributions,
                                          const InnerSegParams& params);

/// Typical thicknesses and hard limits without the model, in micrometres.
struct InnerThicknesses
{
    float ilm2gclDistMean = 0.0F;
    float gcl2inlDistMean = 0.0F;
    float inl2onlDistMean = 0.0F;
    float onl2isosDistMean = 0.0F;
    float gcl2inlDistMin = 0.0F;
    float gcl2inlDistMax = 0.0F;
    float inl2onlDistMin = 0.0F;
    float inl2onlDistMax = 0.0F;
};

/// axial in millimetres a row.
InnerDistances constantHardDistances(const InnerThicknesses& thicknesses, float axial,
                                     const CutSize& size);
QList<SoftDistance> constantInnerDistances(const InnerNames& names, const VolumeLayerPtr& ilm,
                                           const InnerRanges& ranges,
                                           const InnerThicknesses& thicknesses,
                                           const InnerSegParams& params);

/// Micrometres to rows, to the nearest, ties to even. axial in millimetres a row.
int micrometresToRows(float micrometres, double axial);

/// The spacing that the trained distances are looked up with.
std::array<double, 3> modelSpacing(const OCTScanPtr& scan);

} // namespace kelp::oct
