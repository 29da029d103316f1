#include "ChainBench.h"

#include "BoostCut.h"
#include "DeviceFill.h"
#include "SliceStackGraphQPBO.h"
#include "StopWatch.h"
#include "kelpCheck.h"
#include "kelpException.h"

#include <cstdio>
#include <vector>

namespace kelp::oct::bench {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/bench/ChainBench";
constexpr double bytesPerMegabyte = 1e6;

/// What the observers of the cuts have seen; plain functions, so this is no member.
std::vector<BoostCut> boostCuts;
std::size_t differences = 0;

void solveFirst(const QpboGraph<int>& graph)
{
    boostCuts.push_back(solveWithBoost(graph, BoostMethod::BoykovKolmogorov));
}

void compareLabels(const QpboGraph<int>& graph)
{
    std::vector<signed char>& labels = boostCuts.back().labels;
    for (int i = 0; i < graph.GetNodeNum(); ++i) {
        differences += graph.GetLabel(i) != labels[static_cast<std::size_t>(i)];
    }
    labels = {};
}

} // namespace

ChainBench::ChainBench(bool withBoost)
{
    if (withBoost) {
        SliceStackGraphQPBO::setSolveObservers(solveFirst, compareLabels);
    }
    KELP_CONNECT(sourcePath, connect(&m_segInterface, SIGNAL(segmentationSuccess()), this,
                                     SLOT(segmentationSuccess())));
    KELP_CONNECT(sourcePath, connect(&m_segInterface, SIGNAL(segmentationFailure(QString)), this,
                                     SLOT(segmentationFailure(QString))));
}

ChainBench::~ChainBench()
{
    SliceStackGraphQPBO::setSolveObservers(nullptr, nullptr);
}

void ChainBench::run(const OCTScanPtr& scan, SegmentationChain chain)
{
    const OCTScanSegPtr segmentation(new OCTScanSegmentation(scan));
    segmentation->setEmptySegmentation();
    const StopWatch chainWatch;
    m_segInterface.resetSegmentation();
    queueChain(m_segInterface, segmentation, chain, false, false);
    m_loop.exec();
    m_seconds = chainWatch.seconds();
    const StopWatch fillWatch;
    segmentationImages(*scan);
    m_fillSeconds = fillWatch.seconds();
    if (!m_failure.isEmpty()) {
        print();
        throw RuntimeException(m_failure);
    }
}

void ChainBench::segmentationSuccess()
{
    m_loop.quit();
}

void ChainBench::segmentationFailure(QString message)
{
    m_failure = message;
    m_loop.quit();
}

bool ChainBench::isEqualToBoost() const
{
    return differences == 0;
}

void ChainBench::print() const
{
    std::printf("%-26s %8s %9s %10s %8s %8s %8s %8s", "step", "columns", "nodes", "edges",
                "build s", "solve s", "step s", "peak MB");
    std::printf(boostCuts.empty() ? "\n" : " %8s %6s\n", "Boost s", "ratio");
    std::size_t cutIndex = 0;
    double solveSeconds = 0.0;
    double boostSeconds = 0.0;
    double checkSeconds = 0.0;
    for (const StepStatistics& step : m_segInterface.getStatistics()) {
        checkSeconds += step.qualitySeconds + m_fillSeconds * step.cuts.size();
        for (const CutStatistics& cut : step.cuts) {
            std::printf("%-26s %8zu %9zu %10zu %8.2f %8.2f %8.2f %8.0f", qPrintable(step.name),
                        cut.columns, cut.nodes, cut.edges, cut.buildSeconds, cut.solveSeconds,
                        step.seconds, static_cast<double>(step.peakMemoryBytes) / bytesPerMegabyte);
            solveSeconds += cut.solveSeconds;
            if (cutIndex < boostCuts.size()) {
                const double seconds = boostCuts[cutIndex++].seconds;
                boostSeconds += seconds;
                std::printf(" %8.2f %6.1f", seconds, seconds / cut.solveSeconds);
            }
            std::printf("\n");
        }
    }
    std::printf("all solves %.2f s", solveSeconds);
    if (!boostCuts.empty()) {
        std::printf(", Boost.Graph %.2f s, ratio %.1f, %zu labels differ", boostSeconds,
                    boostSeconds / solveSeconds, differences);
    }
    std::printf("; whole chain %.2f s, peak %.0f MB\n", m_seconds,
                static_cast<double>(peakResidentBytes()) / bytesPerMegabyte);
    std::printf("fill search and quality figures: %.3f s, %.1f %% of the chain\n", checkSeconds,
                100.0 * checkSeconds / m_seconds);
}

} // namespace kelp::oct::bench
