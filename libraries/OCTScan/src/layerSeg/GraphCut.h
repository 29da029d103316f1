#pragma once

#include "CutPlans.h"
#include "SegWatcher.h"
#include "SliceStackGraphQPBO.h"
#include "kelpCheck.h"

#include <QList>
#include <QSharedPointer>

#include <initializer_list>

namespace kelp::oct {

/// The common end of all cuts: build the graph of a plan, add its soft distances, solve, and copy
/// the surfaces out. Each part says whether the run goes on; false means that it is to stop.
class GraphCut
{
public:
    GraphCut(const QList<kelp::ImagePtr>& images, const CutPlan& plan, const MaskMatrixPtr& mask,
             const QSharedPointer<SegWatcher>& watcher);

    bool goesOn() const;
    bool isValid() const { return m_graph->isGraphValid(); }
    bool add(const SoftDistance& distance, const ModelFrame& frame = {});
    bool add(const QList<SoftDistance>& distances, const ModelFrame& frame = {});

    /// A surface of the cut and the layer that is to receive it.
    struct Target
    {
        LayerNamePtr name;
        VolumeLayerPtr layer;
    };

    /// Throws Assertion with the text if the graph could not be built.
    bool solve(const Place& place, const char* notBuilt, std::initializer_list<Target> targets);

private:
    void measureQuality();

    SliceStackProperties m_properties;
    MaskMatrixPtr m_mask;
    QSharedPointer<SegWatcher> m_watcher;
    QSharedPointer<SliceStackGraphQPBO> m_graph;
};

/// Element by element. Throws Assertion for layers of different sizes.
void copyLayer(const VolumeLayerPtr& source, const VolumeLayerPtr& target);

} // namespace kelp::oct
