#include "GraphCut.h"

#include "SegStep.h"
#include "StopWatch.h"

#include <algorithm>

namespace kelp::oct {

namespace {

/// Every A-scan of every B-scan takes part in a soft distance.
constexpr double everyColumn[2] = {1.0, 1.0};

} // namespace

void copyLayer(const VolumeLayerPtr& source, const VolumeLayerPtr& target)
{
    constexpr Place place{"libraries/OCTScan/src/layerSeg/GraphCut", "kelp::oct::copyLayer"};
    check(!source.isNull() && !target.isNull(), place, "Layer is null.");
    check(source->rows == target->rows && source->columns == target->columns, place,
          "Layers have different sizes.");
    std::copy(source->begin(), source->end(), target->begin());
}

GraphCut::GraphCut(const QList<kelp::ImagePtr>& images, const CutPlan& plan,
                   const MaskMatrixPtr& mask, const QSharedPointer<SegWatcher>& watcher)
    : m_properties(plan.properties), m_mask(mask), m_watcher(watcher),
      m_graph(new SliceStackGraphQPBO(images, plan.properties, mask, watcher, plan.edgeFactor))
{
}

bool GraphCut::goesOn() const
{
    return !abortSeen(*m_watcher);
}

bool GraphCut::add(const SoftDistance& distance, const ModelFrame& frame)
{
    if (distance.distribution) {
        m_graph->addStatisticalInterSurfaceRegularization(
            distance.top, distance.bottom, distance.offsets, distance.distribution, distance.weight,
            everyColumn, frame.spacing.data(), frame.origin.data());
    } else {
        m_graph->addConstantInterSurfaceRegularization(distance.top, distance.bottom,
                                                       distance.offsets, distance.rows,
                                                       distance.weight, everyColumn);
    }
    return goesOn();
}

bool GraphCut::add(const QList<SoftDistance>& distances, const ModelFrame& frame)
{
    return std::all_of(distances.begin(), distances.end(),
                       [&](const SoftDistance& distance) { return add(distance, frame); });
}

bool GraphCut::solve(const Place& place, const char* notBuilt,
                     std::initializer_list<Target> targets)
{
    check(isValid(), place, notBuilt);
    m_graph->segment();
    if (!goesOn()) {
        return false;
    }
    measureQuality();
    m_watcher->setStatus("Setting layers");
    for (const Target& target : targets) {
        copyLayer(m_graph->getLayer(target.name), target.layer);
    }
    return true;
}

void GraphCut::measureQuality()
{
    const StopWatch watch;
    QList<VolumeLayerPtr> layers;
    for (const LayerNamePtr& name : m_properties.getLayerNames()) {
        layers.append(m_graph->getLayer(name));
    }
    const std::vector<SurfaceQuality> quality =
        measureCutQuality(m_properties, *m_mask, layers, [this](int layer, unsigned z, unsigned x) {
            return !m_graph->hasRow(layer, x, z);
        });
    m_watcher->addCutQuality(quality, watch.seconds());
}

} // namespace kelp::oct
