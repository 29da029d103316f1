#pragma once

#include "LayerDistribution.h"
#include "SegmentationMask.h"
#include "VolumeLayer.h"
#include "kelpColorTransferFunction.h"
#include "kelpImage.h"

#include <QList>
#include <QString>

namespace kelp::oct {

/// Operations on surfaces over a whole scan: search ranges, moving, resampling, thickness. All
/// check their arguments first (kelp::Assertion) and then make one pass over the elements.
class LayerUtils
{
public:
    /// Each element plus the constant, at most maximum, then at least the element of minimumTop.
    static void addConstantToLayer(const VolumeLayerPtr& layer, int constant, int maximum,
                                   const VolumeLayerPtr& minimumTop);

    /// Brings the coarser of the two axes to the spacing of the finer. spacing = (x, z). Where they
    /// are equal returns the source itself and leaves outSpacing alone.
    static VolumeLayerPtr createIsometric(const VolumeLayerPtr& source, const double spacing[2],
                                          double* outSpacing);

    /// Moves the two ends of unmasked ranges apart that are at most minimumDistance high.
    static void fixMinDistanceTopToBottom(const VolumeLayerPtr& top, const VolumeLayerPtr& bottom,
                                          unsigned minimumDistance, const MaskMatrixPtr& mask);

    /// Search ranges of three inner surfaces from typical thicknesses t1 to t4 (micrometres) of the
    /// four layers between top and bottom. axialSpacing in mm.
    static void getInnerSearchRangesConstant(
        const VolumeLayerPtr& top, const VolumeLayerPtr& bottom, const VolumeLayerPtr& gclTop,
        const VolumeLayerPtr& inlTop, const VolumeLayerPtr& onlTop, const VolumeLayerPtr& gclBottom,
        const VolumeLayerPtr& inlBottom, const VolumeLayerPtr& onlBottom, float t1, float t2,
        float t3, float t4, float axialSpacing, float balance, const MaskMatrixPtr& mask);

    /// Throws kelp::Exception when the list has no such pair.
    static LayerDistributionPtr
    getLayerDistributionBetween(const QList<LayerDistributionPtr>& distributions,
                                const QString& upperName, const QString& lowerName);

    /// Narrows the search ranges of three inner surfaces with the trained model. spacing = (x,
    /// axial, z) and origin = fovea (z, x) in mm.
    static void getInnerSearchRangesDistribution(
        const QList<LayerDistributionPtr>& distributions, const VolumeLayerPtr& gclTop,
        const VolumeLayerPtr& inlTop, const VolumeLayerPtr& onlTop, const VolumeLayerPtr& gclBottom,
        const VolumeLayerPtr& inlBottom, const VolumeLayerPtr& onlBottom, const double spacing[3],
        const double origin[2], float k, const MaskMatrixPtr& mask);

    /// Rows from `above` over the middle (at least 0) to `below` under it (at most maxRow).
    static void getSearchRangeLayers(const VolumeLayerPtr& middle, const VolumeLayerPtr& targetTop,
                                     const VolumeLayerPtr& targetBottom, unsigned above,
                                     unsigned below, unsigned maxRow);

    /// Onto the target's grid and axial spacing. spacing = the source's (x, axial, z).
    static void resampleLayer(const VolumeLayerPtr& source, const double spacing[3],
                              const VolumeLayerPtr& target, double targetAxialSpacing);

    /// The absolute differences.
    static VolumeLayerPtr subtractLayers(const VolumeLayerPtr& top, const VolumeLayerPtr& bottom);

    /// 8-bit colour, one pixel an element; transparent where masked. The transfer function is asked
    /// for the thickness in rows.
    static kelp::ImagePtr RenderThicknessImage(const VolumeLayerPtr& top,
                                               const VolumeLayerPtr& bottom,
                                               const kelp::ColorTransferFunction& transferFunction,
                                               const MaskMatrixPtr& mask, double opacity);

    /// Widens every unmasked range of fewer than two rows upwards to two, since a graph column
    /// needs two; at the image's top downwards.
    static void ensureTwoRows(const VolumeLayerPtr& top, const VolumeLayerPtr& bottom,
                              const MaskMatrixPtr& mask);

    /// Between four neighbours, clamped to the matrix; each row's value is truncated to 16 bits
    /// before the rows are mixed.
    static float sampleBilinear(const VolumeLayer& matrix, float row, float column);
};

} // namespace kelp::oct
