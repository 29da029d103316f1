#include "CostFunctionBM.h"
#include "CostFunctionILM.h"
#include "CostFunctionISe.h"
#include "CostFunctionInner.h"
#include "ReferenceCut.h"
#include "SliceStackGraphQPBO.h"
#include "kelpTrace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>

// Cuts of random small scans, each described once and found twice: by the graph, and by a second,
// plain statement of the same energy that Boost solves.

namespace {

using namespace kelp::oct;
using kelp::oct::test::ReferenceCut;

VolumeLayerPtr makeLayer(int nrBScans, int nrAScans, int value = 0)
{
    auto layer =
        VolumeLayerPtr::create(static_cast<unsigned>(nrBScans), static_cast<unsigned>(nrAScans));
    std::fill(layer->begin(), layer->end(), static_cast<unsigned short>(value));
    return layer;
}

/// A random scan with everything that describes a cut of it.
class RandomCut
{
public:
    explicit RandomCut(unsigned seed) : m_random(seed)
    {
        nrAScans = within(1, 7);
        nrBScans = within(1, 5);
        nrRows = within(24, 40);
        makeImages();
        makeMask();
        const QList<LayerNamePtr> all = {LayerNameGCL::create(), LayerNameINL::create(),
                                         LayerNameONL::create()};
        layers = all.mid(0, within(1, 3));
        properties = SliceStackProperties(layers, static_cast<unsigned>(nrAScans),
                                          static_cast<unsigned>(nrBScans));
        for (const LayerNamePtr& layer : qAsConst(layers)) {
            describe(layer);
        }
        for (int i = 0; i + 1 < layers.size(); ++i) {
            if (within(0, 3) != 0) {
                const VolumeLayerPtr minimum = randomLayer(0, 6);
                VolumeLayerPtr maximum = randomLayer(6, 18);
                properties.setInterSurfDistance(layers[i], layers[i + 1], minimum, maximum);
            }
        }
    }

    int within(int low, int high)
    {
        return low + static_cast<int>(m_random() % static_cast<unsigned>(high - low + 1));
    }

    float weight() { return static_cast<float>(within(0, 400)) / 1000.0F; }

    VolumeLayerPtr randomLayer(int low, int high)
    {
        VolumeLayerPtr layer = makeLayer(nrBScans, nrAScans);
        for (unsigned short& value : *layer) {
            value = static_cast<unsigned short>(within(low, high));
        }
        return layer;
    }

    LayerDistribution randomDistribution()
    {
        LayerDistribution::Matrix means(5, std::vector<double>(6));
        LayerDistribution::Matrix variances = means;
        for (std::size_t row = 0; row < means.size(); ++row) {
            for (std::size_t column = 0; column < means[row].size(); ++column) {
                means[row][column] = within(0, 90) / 1000.0;
                variances[row][column] = within(1, 1000) / 1e6;
            }
        }
        return LayerDistribution(means, variances, {0.02, 0.1, 0.1}, {0.25, 0.05}, "GCL", "INL");
    }

    int nrAScans = 0;
    int nrBScans = 0;
    int nrRows = 0;
    QList<kelp::ImagePtr> images;
    MaskMatrixPtr mask;
    QList<LayerNamePtr> layers;
    SliceStackProperties properties;

private:
    void makeImages()
    {
        for (int z = 0; z < nrBScans; ++z) {
            kelp::ImagePtr image = kelp::Image::create(kelp::MonoUInt8, {nrAScans, nrRows, 1});
            auto* const pixels = image->pixels<std::uint8_t>();
            const int edge = within(6, nrRows - 6);
            for (int i = 0; i < nrAScans * nrRows; ++i) {
                const int base = i / nrAScans < edge ? 180 : 40;
                pixels[i] = static_cast<std::uint8_t>(std::clamp(base + within(-60, 60), 0, 255));
            }
            images.append(image);
        }
    }

    void makeMask()
    {
        mask =
            MaskMatrixPtr::create(static_cast<unsigned>(nrBScans), static_cast<unsigned>(nrAScans));
        if (within(0, 1) == 0) {
            for (unsigned char& byte : *mask) {
                byte = within(0, 5) == 0 ? 1 : 0;
            }
        }
    }

    CostFunctionPtr randomCostFunction()
    {
        CostFunctionPtr function;
        switch (within(0, 5)) {
        case 0:
            function.reset(new CostFunctionGCL);
            break;
        case 1:
            function.reset(new CostFunctionINL);
            break;
        case 2:
            function.reset(new CostFunctionONL);
            break;
        case 3:
            function.reset(new CostFunctionBM);
            break;
        case 4:
            function.reset(new CostFunctionISePatho);
            break;
        default:
            function.reset(new CostFunctionILM);
        }
        return function;
    }

    void describe(const LayerNamePtr& layer)
    {
        properties.setCostFunction(layer, randomCostFunction());
        VolumeLayerPtr top = randomLayer(0, 8);
        VolumeLayerPtr bottom = makeLayer(nrBScans, nrAScans);
        for (std::size_t i = 0; i < top->size(); ++i) {
            bottom->data[i] = static_cast<unsigned short>(top->data[i] + within(2, 15));
        }
        properties.setSearchRange(layer, top, bottom);
        if (within(0, 4) != 0) {
            properties.setShapeRegularizaton(layer, within(0, 3) * 400.5, within(0, 3) * 1500.0,
                                             static_cast<unsigned>(within(1, 3)),
                                             static_cast<unsigned>(within(1, 3)));
        }
    }

    std::mt19937 m_random;
};

class RandomCuts : public testing::TestWithParam<unsigned>
{
protected:
    void SetUp() override { kelp::Trace::redirect(&m_trace); }
    void TearDown() override { kelp::Trace::redirect(nullptr); }

private:
    std::ostringstream m_trace;
};

TEST_P(RandomCuts, AreThoseOfTheSecondStatementOfTheEnergy)
{
    for (unsigned round = 0; round < 60; ++round) {
        RandomCut cut(GetParam() * 1000 + round);
        SliceStackGraphQPBO graph(cut.images, cut.properties, cut.mask,
                                  QSharedPointer<SegWatcher>::create(), 8.0);
        ReferenceCut reference(cut.images, cut.properties, cut.mask);

        const double step[2] = {static_cast<double>(cut.within(1, 2)),
                                static_cast<double>(cut.within(1, 2))};
        const double spacing[3] = {0.011, 0.0039, 0.12};
        const double origin[2] = {cut.within(-20, 20) / 100.0, cut.within(-20, 20) / 100.0};
        const LayerNamePtr absent = LayerNameISe::create();
        const VolumeLayerPtr offsets = cut.randomLayer(0, 12);
        for (int term = cut.within(0, 3); term > 0; --term) {
            const LayerNamePtr one = cut.layers[cut.within(0, cut.layers.size() - 1)];
            const bool first = cut.within(0, 1) == 0;
            LayerNamePtr top = first ? one : absent;
            LayerNamePtr bottom = first ? absent : one;
            if (cut.layers.size() > 1 && cut.within(0, 1) == 0) {
                top = cut.layers[0];
                bottom = cut.layers[cut.layers.size() - 1];
            }
            const float weight = cut.weight();
            if (cut.within(0, 1) == 0) {
                const auto distance = static_cast<unsigned>(cut.within(0, 14));
                ASSERT_TRUE(graph.addConstantInterSurfaceRegularization(top, bottom, offsets,
                                                                        distance, weight, step));
                reference.addConstant(top, bottom, offsets, distance, weight, step);
            } else {
                const LayerDistribution distribution = cut.randomDistribution();
                ASSERT_TRUE(graph.addStatisticalInterSurfaceRegularization(
                    top, bottom, offsets, LayerDistributionPtr::create(distribution), weight, step,
                    spacing, origin));
                reference.addStatistical(top, bottom, offsets, distribution, weight, step, spacing,
                                         origin);
            }
        }

        const std::size_t nodes = static_cast<std::size_t>(graph.solver().GetNodeNum());
        ASSERT_EQ(nodes, reference.nodeCount());
        graph.segment();
        const auto expected = reference.solve();
        const std::vector<int> labels = reference.solveLabels();
        for (std::size_t id = 0; id < nodes; ++id) {
            ASSERT_EQ(graph.solver().GetLabel(static_cast<int>(id)), labels[id])
                << "node " << id << " of round " << round;
        }
        for (int layer = 0; layer < cut.layers.size(); ++layer) {
            const VolumeLayerPtr found = graph.getLayer(cut.layers[layer]);
            for (int z = 0; z < cut.nrBScans; ++z) {
                for (int x = 0; x < cut.nrAScans; ++x) {
                    ASSERT_EQ((*found)(static_cast<std::size_t>(z), static_cast<std::size_t>(x)),
                              expected[static_cast<std::size_t>(layer)][static_cast<std::size_t>(z)]
                                      [static_cast<std::size_t>(x)])
                        << "layer " << layer << ", B-scan " << z << ", A-scan " << x << " of round "
                        << round;
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomCuts, testing::Range(1U, 11U));

} // namespace
