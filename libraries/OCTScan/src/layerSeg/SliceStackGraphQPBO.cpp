#include "SliceStackGraphQPBO.h"

#include "ParallelFor.h"
#include "SliceStackBuilding.h"
#include "SliceStackCosts.h"
#include "kelpCheck.h"
#include "kelpTrace.h"

#include <QString>

#include <algorithm>
#include <atomic>
#include <limits>
#include <new>

namespace kelp::oct {

namespace {

constexpr kelp::Place placeConstructor{"libraries/OCTScan/src/layerSeg/SliceStackGraphQPBO",
                                       "kelp::oct::SliceStackGraphQPBO::SliceStackGraphQPBO"};
constexpr unsigned nodesWorthALine = 200;
constexpr int baseNodeCapacity = -1000;
/// B-scans are solved by themselves before the volume; this is how many parts the solver can tell.
constexpr unsigned partsOfGraph = 65536;

std::atomic<SliceStackGraphQPBO::SolveObserver> beforeSolve{nullptr};
std::atomic<SliceStackGraphQPBO::SolveObserver> afterSolve{nullptr};

void tell(SliceStackGraphQPBO::SolveObserver observer, const QpboGraph<int>& solver)
{
    if (observer) {
        observer(solver);
    }
}

void graphCutError(const char* text)
{
    throw kelp::Exception(QString("The Graph could not be built.\n") + QString::fromUtf8(text));
}

} // namespace

SliceStackGraphQPBO::SliceStackGraphQPBO(const QList<kelp::ImagePtr>& images,
                                         const SliceStackProperties& properties,
                                         const MaskMatrixPtr& mask,
                                         const QSharedPointer<SegWatcher>& segWatcher,
                                         double edgeFactor)
    : m_nrBScans(properties.getDimensions().first), m_nrAScans(properties.getDimensions().second),
      m_watcher(segWatcher)
{
    const BuildTimer timer(m_statistics);
    kelp::Trace() << "graph qpbo";
    kelp::check(!segWatcher.isNull(), placeConstructor, "Seg Watcher is null");
    kelp::check(!mask.isNull(), placeConstructor, "Segmentation Mask is null");
    m_images = images;
    m_properties = properties;
    m_mask = mask;
    m_watcher->setStepProgress(0.1F);
    const auto layers = static_cast<std::size_t>(m_properties.getNrOfLayers());
    m_expectedAngles.resize(layers * m_nrBScans * m_nrAScans);
    m_gridColNodeIds.resize(layers * m_nrBScans * m_nrAScans);
    m_hasRow.resize(m_gridColNodeIds.size());
    kelp::Trace() << "nLayers: " << layers;

    checkArguments();
    createSolver(estimateNodes(), edgeFactor);
    for (std::size_t i = 0; i < layers; ++i) {
        m_results.push_back(VolumeLayerPtr::create(m_nrBScans, m_nrAScans));
    }
    if (layers > 0 && m_nrAScans > 0 && m_nrBScans > 0) {
        try {
            constructGraph();
        } catch (const std::bad_alloc& failure) {
            throw kelp::Exception("QPBO failed to construct the graph.", failure.what());
        }
    } else {
        graphValid = false;
        const unsigned first = layers > 0 ? m_nrAScans : 0;
        kelp::Trace() << "could not construct graph. m_gridColNodeIds.front().size(): " << first
                      << ", m_gridColNodeIds.front().front().size(): "
                      << (first > 0 ? m_nrBScans : 0);
    }
    kelp::Trace() << "SliceStackGraphQPBO() finished";
}

SliceStackGraphQPBO::~SliceStackGraphQPBO() = default;

void SliceStackGraphQPBO::setSolveObservers(SolveObserver before, SolveObserver after)
{
    beforeSolve = before;
    afterSolve = after;
}

bool SliceStackGraphQPBO::leaveIfAborted() const
{
    if (!m_watcher->isAborted()) {
        return false;
    }
    m_watcher->setStatus("Aborting segmentation");
    return true;
}

/// What would otherwise be read past its end somewhere in the middle of the work.
void SliceStackGraphQPBO::checkArguments() const
{
    if (m_properties.getNrOfLayers() == 0 || m_nrAScans == 0 || m_nrBScans == 0) {
        return;
    }
    const auto fits = [this](const auto& matrix) {
        return !matrix.isNull() && matrix->rows == m_nrBScans && matrix->columns == m_nrAScans;
    };
    kelp::check(fits(m_mask), placeConstructor, "Segmentation mask does not match the graph.");
    kelp::check(static_cast<unsigned>(m_images.size()) == m_nrBScans, placeConstructor,
                "Number of images does not match the graph.");
    for (const kelp::ImagePtr& image : m_images) {
        kelp::check(!image.isNull() && image->getColumns() == static_cast<int>(m_nrAScans) &&
                        image->getRows() > 0,
                    placeConstructor, "Image does not match the graph.");
    }
    for (const LayerNamePtr& layer : m_properties.getLayerNames()) {
        kelp::check(!m_properties.getCostFunction(layer).isNull(), placeConstructor,
                    "Cost function is null");
        kelp::check(fits(m_properties.getSearchRangeTop(layer)) &&
                        fits(m_properties.getSearchRangeBottom(layer)),
                    placeConstructor, "Search range does not match the graph.");
    }
}

/// For the first allocation only; also counts the columns.
std::int64_t SliceStackGraphQPBO::estimateNodes()
{
    std::int64_t nodes = 2;
    for (int i = 0; i < m_properties.getNrOfLayers(); ++i) {
        const LayerNamePtr layer = m_properties.getLayerName(i);
        for (unsigned z = 0; z < m_nrBScans; ++z) {
            for (unsigned x = 0; x < m_nrAScans; ++x) {
                if (isMasked(x, z)) {
                    continue;
                }
                const unsigned count = m_properties.getNrOfNodesForColumn(layer, z, x);
                if (count > nodesWorthALine) {
                    kelp::Trace() << "i: " << i << " = " << layer->getIdentifier() << " z: " << z
                                  << ", x: " << x << " nodes: " << count;
                }
                nodes += count;
                ++m_statistics.columns;
            }
        }
    }
    return nodes;
}

void SliceStackGraphQPBO::createSolver(std::int64_t nodes, double edgeFactor)
{
    constexpr auto most = std::numeric_limits<int>::max();
    const double edges = edgeFactor * 1.1 * static_cast<double>(nodes);
    const int edgeNum = edges < most ? static_cast<int>(edges) : most;
    kelp::Trace() << "nEdges: " << edgeNum;
    try {
        m_solver = std::make_shared<QpboGraph<int>>(
            static_cast<int>(std::min<std::int64_t>(nodes, most)), edgeNum, graphCutError);
    } catch (const std::bad_alloc& failure) {
        throw kelp::Exception(QString("The Graph failed to allocate memory.\n") +
                              QString::fromUtf8(failure.what()));
    }
    m_solver->setAbortFlag(m_watcher->getAbortFlag());
}

void SliceStackGraphQPBO::constructGraph()
{
    if (leaveIfAborted()) {
        return;
    }
    m_watcher->setStatus("Constructing graph");
    m_watcher->setStepProgress(0.15F);
    kelp::Trace() << "preparing graph...";
    wrapFailure("Error resetting the graph.", [this] { m_solver->Reset(); });
    if (constructSubgraphs()) {
        connectAllSubgraphs();
    }
}

/// False on abort.
bool SliceStackGraphQPBO::constructSubgraphs()
{
    const int n = m_properties.getNrOfLayers();
    for (int i = 0; i < n; ++i) {
        if (leaveIfAborted()) {
            return false;
        }
        const QString name = m_properties.getLayerName(i)->getLongName();
        m_watcher->setStepProgress(0.15F + 0.2F * static_cast<float>(i) / static_cast<float>(n));
        m_watcher->setStatus(QString("Constructing subgraph %1").arg(name));
        kelp::Trace() << "subgraph " << i << " for layer " << name;
        graphValid = constructSubgraph(i);
        if (!graphValid) {
            return false;
        }
    }
    return true;
}

void SliceStackGraphQPBO::connectAllSubgraphs()
{
    if (leaveIfAborted()) {
        return;
    }
    m_watcher->setStatus("All subgraphs constructed");
    m_watcher->setStepProgress(0.35F);
    kelp::Trace() << "creating inter-surface edges...";
    const int n = m_properties.getNrOfLayers();
    const float pairs = static_cast<float>(n) * static_cast<float>(n - 1) / 2.0F;
    int pair = 0;
    for (int i = 0; i + 1 < n; ++i) {
        kelp::Trace() << "subgraph " << i;
        for (int j = i + 1; j < n; ++j) {
            if (leaveIfAborted()) {
                return;
            }
            ++pair;
            const LayerNamePtr top = m_properties.getLayerName(i);
            const LayerNamePtr bottom = m_properties.getLayerName(j);
            const VolumeLayerPtr minimum = m_properties.getInterSurfDistanceMin(top, bottom);
            const VolumeLayerPtr maximum = m_properties.getInterSurfDistanceMax(top, bottom);
            if (minimum.isNull()) {
                continue;
            }
            m_watcher->setStepProgress(0.35F + static_cast<float>(pair) * 0.15F / pairs);
            m_watcher->setStatus(QString("Connecting subgraphs %1 to %2")
                                     .arg(top->getLongName(), bottom->getLongName()));
            wrapFailure("Error connecting subgraphs.",
                        [&] { connectSubgraphs(top, bottom, minimum, maximum); });
            kelp::Trace() << "done connecting subgraphs";
        }
    }
    kelp::Trace() << "done constructing graph";
}

/// False on abort only.
bool SliceStackGraphQPBO::constructSubgraph(int layer)
{
    if (leaveIfAborted()) {
        return false;
    }
    kelp::Trace() << "constructing sub-graph...";
    kelp::Trace() << "adding node columns...";
    checkColumnHeights(layer);
    const LayerNamePtr name = m_properties.getLayerName(layer);
    const VolumeLayerPtr top = m_properties.getSearchRangeTop(name);
    const VolumeLayerPtr bottom = m_properties.getSearchRangeBottom(name);
    const CostFunctionPtr costFunction = m_properties.getCostFunction(name);
    std::vector<std::vector<int>> capacities(m_nrBScans);
    parallelFor(static_cast<int>(m_nrBScans), [&](int z) {
        if (!m_watcher->isAborted()) {
            // at(), since [] of a shared list detaches it, which two threads must not do at once.
            capacities[static_cast<std::size_t>(z)] = columnCapacities(
                *m_images.at(z), *costFunction, *top, *bottom, *m_mask, static_cast<unsigned>(z));
        }
    });
    for (unsigned z = 0; z < m_nrBScans; ++z) {
        if (leaveIfAborted()) {
            return false;
        }
        const int* next = capacities[z].data();
        for (unsigned x = 0; x < m_nrAScans; ++x) {
            if (!isMasked(x, z)) {
                const int count = (*bottom)(z, x) - (*top)(z, x);
                addColumn(layer, x, z, next, count);
                next += count - 1;
            }
        }
    }
    kelp::Trace() << "adding inter-column edges...";
    wrapFailure("Error adding inter-column edges.", [&] { addInterColumnEdges(layer); });
    kelp::Trace() << "finished constructing sub-graph...";
    kelp::Trace() << "regularizing subgraph " << name->getIdentifier();
    wrapFailure("Error regularizing layer with expected angle.",
                [&] { regularizeLayerWithExpectedAngle(name); });
    kelp::Trace() << "done regularizing subgraph";
    return true;
}

void SliceStackGraphQPBO::checkColumnHeights(int layer) const
{
    const LayerNamePtr name = m_properties.getLayerName(layer);
    const VolumeLayerPtr top = m_properties.getSearchRangeTop(name);
    const VolumeLayerPtr bottom = m_properties.getSearchRangeBottom(name);
    for (unsigned z = 0; z < m_nrBScans; ++z) {
        for (unsigned x = 0; x < m_nrAScans; ++x) {
            if (!isMasked(x, z) && (*bottom)(z, x) < (*top)(z, x) + 2) {
                throw kelp::Exception(
                    QString("The search range of layer %1 has fewer than two rows at B-scan %2, "
                            "A-scan %3: %4 to %5.")
                        .arg(name->getLongName())
                        .arg(z + 1)
                        .arg(x + 1)
                        .arg((*top)(z, x))
                        .arg((*bottom)(z, x)));
            }
        }
    }
}

/// One node per row. Label 1 on a node forces it on the next deeper one, so that the labels of a
/// column switch once, at the surface.
void SliceStackGraphQPBO::addColumn(int layer, unsigned x, unsigned z, const int* capacities,
                                    int count)
{
    ColumnNodeIds ids;
    wrapFailure("Error adding standard nodes to graph.", [&] {
        ids.first = static_cast<std::uint32_t>(m_solver->AddNode(count - 1));
        for (int k = 0; k + 1 < count; ++k) {
            m_solver->AddToUnaryCapacity(static_cast<int>(ids.first) + k, capacities[k]);
        }
    });
    wrapFailure("Error adding base nodes to graph.", [&] {
        ids.base = static_cast<std::uint32_t>(m_solver->AddNode());
        m_solver->AddToUnaryCapacity(static_cast<int>(ids.base), baseNodeCapacity);
    });
    wrapFailure("Error adding intra-column edges to graph.", [&] {
        for (auto id = static_cast<int>(ids.first); id < static_cast<int>(ids.base); ++id) {
            m_solver->AddPairwiseTerm(id, id + 1, 0, 0, hardWeight, 0);
        }
    });
    m_solver->SetPart(static_cast<int>(ids.first), count, static_cast<int>(z % partsOfGraph));
    m_gridColNodeIds[columnIndex(layer, x, z)] = ids;
}

void SliceStackGraphQPBO::segment()
{
    if (leaveIfAborted()) {
        return;
    }
    m_watcher->setStatus("Solving graph");
    m_watcher->setStepProgress(0.55F);
    if (!graphValid) {
        return;
    }
    tell(beforeSolve, *m_solver);
    m_statistics.nodes = static_cast<std::size_t>(m_solver->GetNodeNum());
    m_statistics.edges = static_cast<std::size_t>(m_solver->GetEdgeNum());
    solve();
    if (leaveIfAborted()) {
        return;
    }
    tell(afterSolve, *m_solver);
    wrapFailure("Error getting labels from graph.", [this] { readLabels(); });
    m_watcher->setStepProgress(0.85F);
    addRangeTops();
    m_watcher->setStepProgress(0.9F);
    m_watcher->setStatus("Graph solved");
    graphValid = true;
    m_watcher->addCutStatistics(m_statistics);
}

void SliceStackGraphQPBO::solve()
{
    const StopWatch watch;
    kelp::Trace() << "Graph Cut: Starting to solve...";
    try {
        m_solver->Solve();
    } catch (const std::bad_alloc&) {
        kelp::Trace() << "SliceStackGraphQPBO::segment: Graph cut failed to allocate memory.";
        throw kelp::Exception("Graph failed to allocate memory");
    }
    kelp::Trace() << "SliceStackGraphQPBO::segment: Graph cut solved.";
    kelp::Trace() << "Computing weak persistencies...";
    m_watcher->setStepProgress(0.8F);
    try {
        m_solver->ComputeWeakPersistencies();
    } catch (const std::exception&) {
        throw kelp::Exception("Error computing weak persistencies on graph.");
    }
    kelp::Trace() << "Graph Cut: Weak persistencies computed.";
    m_statistics.solveSeconds = watch.seconds();
}

/// The first node of a column with label 1 is the surface. A column without one keeps 0, and so
/// does a masked one.
void SliceStackGraphQPBO::readLabels()
{
    for (int layer = 0; layer < m_properties.getNrOfLayers(); ++layer) {
        VolumeLayer& result = *m_results[static_cast<std::size_t>(layer)];
        for (unsigned z = 0; z < m_nrBScans; ++z) {
            for (unsigned x = 0; x < m_nrAScans; ++x) {
                if (isMasked(x, z)) {
                    continue;
                }
                const ColumnNodeIds& ids = columnNodeIds(layer, x, z);
                for (std::uint32_t id = ids.first; id <= ids.base; ++id) {
                    if (m_solver->GetLabel(static_cast<int>(id)) == 1) {
                        result(z, x) = static_cast<unsigned short>(id - ids.first);
                        m_hasRow[columnIndex(layer, x, z)] = true;
                        break;
                    }
                }
            }
        }
    }
}

void SliceStackGraphQPBO::addRangeTops()
{
    for (int layer = 0; layer < m_properties.getNrOfLayers(); ++layer) {
        VolumeLayer& result = *m_results[static_cast<std::size_t>(layer)];
        const VolumeLayerPtr top = m_properties.getSearchRangeTop(m_properties.getLayerName(layer));
        std::transform(result.begin(), result.end(), top->begin(), result.begin(),
                       [](unsigned short offset, unsigned short first) {
                           return static_cast<unsigned short>(offset + first);
                       });
    }
}

} // namespace kelp::oct
