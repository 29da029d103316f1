#pragma once

#include "InnerDistProps.h"
#include "LayerDistribution.h"
#include "OCTScanSegmentation.h"
#include "SegParams.h"
#include "SegWatcher.h"

#include <QList>
#include <QObject>
#include <QSharedPointer>

namespace kelp::oct {

class SegStep;

/// The steps of the segmentation chains, as slots that run on the worker thread one after the
/// other. No kelp::Exception leaves a slot: each failure ends in SegWatcher::fail. The slots read
/// layers of the segmentation and store theirs in it when they have succeeded.
class SegWorker : public QObject
{
    Q_OBJECT

public:
    /// Throws Assertion for a null watcher.
    explicit SegWorker(const QSharedPointer<SegWatcher>& watcher);

public slots:
    void segmentCoarse(OCTScanSegPtr octSeg);
    void segmentCoarseMinMax(OCTScanSegPtr octSeg, float minDist, float maxDist);
    void segmentILMFine(OCTScanSegPtr octSeg, bool maskETDRSSectors, bool maskCenter);
    void segmentRPEHumanHealthy(OCTScanSegPtr octSeg);
    void segmentBMFine(OCTScanSegPtr octSeg);
    void segmentISeIRPEFineDrusen(OCTScanSegPtr octSeg);
    void segmentPEFineConstant(OCTScanSegPtr octSeg, float rpeThicknessMean,
                               float rpeThicknessVarWeight, float ilm2isosDistMean,
                               float ilm2isosDistVarWeight);
    void segmentInnerHumanHealthy(OCTScanSegPtr octSeg);
    void segmentInnerFineConstant(OCTScanSegPtr octSeg, InnerDistProps distProps);

public:
    using Distributions = QList<LayerDistributionPtr>;

    // The functions behind the slots. Targets are filled, and are to have the size of the scan.
    // They throw kelp::Exception or kelp::Assertion, and return early when the run is to stop.

    /// Distances in coarse rows; the results have the full size.
    void segmentILMCoarse(const OCTScanPtr& scan, const MaskMatrixPtr& mask,
                          const VolumeLayerPtr& ilmCoarse, const VolumeLayerPtr& iseCoarse,
                          int minDist, int maxDist);
    void segmentILMFineRegularizedPrivate(const VolumeLayerPtr& ilm,
                                          const VolumeLayerPtr& ilmCoarse, const OCTScanPtr& scan,
                                          const ILMSegParams& params);
    void segmentPEFineConstrainedPrivate(const VolumeLayerPtr& iseCoarse, const VolumeLayerPtr& ilm,
                                         const VolumeLayerPtr& ise, const VolumeLayerPtr& bm,
                                         const OCTScanPtr& scan, const Distributions& distributions,
                                         const OuterSegParams& params);
    void segmentInnerFineConstrainedPrivate(const VolumeLayerPtr& ilm, const VolumeLayerPtr& ise,
                                            const VolumeLayerPtr& gcl, const VolumeLayerPtr& inl,
                                            const VolumeLayerPtr& onl, const OCTScanPtr& scan,
                                            const Distributions& distributions,
                                            const InnerSegParams& params);
    void segmentBMFinePrivate(const VolumeLayerPtr& iseCoarse, const VolumeLayerPtr& ilm,
                              const VolumeLayerPtr& bm, const OCTScanPtr& scan,
                              const OuterSegParams& params);
    void segmentISeIRPEFinePrivate(const VolumeLayerPtr& ilm, const VolumeLayerPtr& bm,
                                   const VolumeLayerPtr& ise, const VolumeLayerPtr& irpe,
                                   const OCTScanPtr& scan, const OuterSegParams& params);
    void segmentPEFineConstantPrivate(const VolumeLayerPtr& iseCoarse, const VolumeLayerPtr& ilm,
                                      const VolumeLayerPtr& ise, const VolumeLayerPtr& bm,
                                      const OCTScanPtr& scan, const OuterSegParams& params,
                                      float rpeThicknessMean, float ilm2isosDistMean,
                                      float ilm2isosDistVarWeight);
    void segmentInnerFineConstantPrivate(const VolumeLayerPtr& ilm, const VolumeLayerPtr& ise,
                                         const VolumeLayerPtr& gcl, const VolumeLayerPtr& inl,
                                         const VolumeLayerPtr& onl, const OCTScanPtr& scan,
                                         const InnerSegParams& params, float ilm2gclDistMean,
                                         float gcl2inlDistMean, float inl2onlDistMean,
                                         float onl2isosDistMean, float gcl2inlDistMin,
                                         float gcl2inlDistMax, float inl2onlDistMin,
                                         float inl2onlDistMax);

    /// Puts layers of the coarse size in place of the two targets. A voxel is (x spacing, axial
    /// spacing, distance of the B-scans) in mm.
    void segmentILMCoarsePrivate(VolumeLayerPtr& ilmCoarse, double ilmVoxel[3],
                                 VolumeLayerPtr& iseCoarse, double iseVoxel[3],
                                 const OCTScanPtr& scan, const MaskMatrixPtr& mask, int minDist,
                                 int maxDist);

private:
    /// Whether the run is to stop; then says so in the status.
    bool stopped();
    /// segmentCoarse and segmentCoarseMinMax. Distances in coarse rows.
    void runCoarseStep(const char* slot, const OCTScanSegPtr& octSeg, int minDist, int maxDist);

    /// segmentRPEHumanHealthy on what the model fits; false if the step has ended.
    bool segmentRPEWithModel(SegStep& step, const OCTScanSegPtr& octSeg);

    QSharedPointer<SegWatcher> m_watcher;
};

} // namespace kelp::oct
