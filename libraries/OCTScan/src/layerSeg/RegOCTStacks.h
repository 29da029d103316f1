#pragma once

#include "CoordOnLocalizer.h"
#include "OCTScan.h"
#include "SegmentationMask.h"
#include "VolumeLayer.h"

namespace kelp::oct {

/// What reaches the objective of the fovea search. Lengths in index units of the layer.
struct FoveaCostData
{
    VolumeLayerPtr layer;
    double sigma = 0.0;
    double stepSize = 0.0;
    int evaluations = 0;
};

/// Places the fovea on a scan and draws the automatic masks around it.
class RegOCTStacks
{
public:
    struct FoveaSearchResult
    {
        double x = 0.0;
        double height = 0.0;
        double z = 0.0;
    };

    /// The deepest spot of the ILM near the scan's centre.
    static CoordOnLocalizer findFovea(const OCTScanPtr& scan, const VolumeLayerPtr& ilmLayer);
    /// In index units of an isometric layer; isotropicSpacing in mm.
    static FoveaSearchResult searchFovea(const VolumeLayerPtr& ilmLayer, const OCTScanPtr& scan,
                                         double isotropicSpacing);
    /// The objective: x is (X, Z), data a FoveaCostData.
    static double computeCostGaussionFoveaMin(unsigned n, const double* x, double* gradient,
                                              void* data);
    /// As LayerUtils::sampleBilinear in double precision.
    static double sampleLayer(const VolumeLayer& layer, double row, double column);

    /// Excludes a disc of 0.5 mm radius.
    static void maskCenter(const SegmentationMaskPtr& mask, const CoordOnLocalizer& position);
    /// Excludes what lies outside 3.3 mm.
    static void maskETDRSSectors(const SegmentationMaskPtr& mask, const CoordOnLocalizer& position);
};

} // namespace kelp::oct
