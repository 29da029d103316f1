#include "HeidelbergExport.h"
#include "OCTDecoderHeidelbergXML.h"
#include "Phantom.h"
#include "SegInterface.h"
#include "SegmentationChains.h"
#include "TestRunRecorder.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <map>

namespace kelp::oct {
namespace {

using test::RunRecorder;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

/// A whole chain, from a synthetic export to its surfaces, on a real worker thread.
struct PhantomChains : testing::Test
{
    int argumentCount = 1;
    char program[5] = "test";
    char* arguments[2] = {program, nullptr};
    QCoreApplication application{argumentCount, arguments};
    QTemporaryDir folder;
    phantom::Export phantom;
    OCTScanSegPtr segmentation;

    void make(phantom::Options options)
    {
        options.localizerSize = 384;
        phantom = phantom::writeExport(folder.path(), options);
        createOCTDecoderHeidelbergXMLFactory();
        const OCTScanPtr scan = makeScan(phantom.xmlPath, phantom.seriesId, phantom.imagePaths);
        scan->ensureLoaded();
        segmentation = OCTScanSegPtr(new OCTScanSegmentation(scan));
    }
    /// Runs the chain until so many successes or a failure; gives the failures.
    std::vector<std::string> run(SegmentationChain chain, int successes = 1)
    {
        SegInterface segInterface;
        const RunRecorder recorder(segInterface);
        segInterface.resetSegmentation();
        queueChain(segInterface, segmentation, chain, false, false);
        QElapsedTimer timer;
        timer.start();
        while ((successes == 0 || recorder.count("success") < successes) &&
               recorder.failures().empty() && timer.elapsed() < 300000) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
        }
        EXPECT_EQ(recorder.count("success"), successes);
        return recorder.failures();
    }
    /// Mean absolute distance from the truth in rows, by surface.
    std::map<std::string, double> errors() const
    {
        QStringList stored;
        for (const LayerNamePtr& name : segmentation->getAllLayerNames()) {
            stored.append(name->getIdentifier());
        }
        std::map<std::string, double> means;
        for (const phantom::Surface& truth : phantom.surfaces) {
            const LayerNamePtr name = LayerName::fromIdentifier(truth.identifier);
            const VolumeLayerPtr found = stored.contains(truth.identifier)
                                             ? segmentation->getVolumeLayer(name)
                                             : VolumeLayerPtr();
            double sum = 0.0;
            for (unsigned z = 0; found && z < found->rows; ++z) {
                for (unsigned x = 0; x < found->columns; ++x) {
                    sum += std::abs((*found)(z, x) - truth.rows[z][x]);
                }
            }
            if (found) {
                means[truth.identifier.toStdString()] = sum / static_cast<double>(found->size());
            }
        }
        return means;
    }
};

phantom::Options small(phantom::Pattern pattern, phantom::Kind kind)
{
    phantom::Options options;
    options.pattern = pattern;
    options.kind = kind;
    options.aScans = 192;
    options.bScans = 7;
    return options;
}

struct EveryPattern : PhantomChains, testing::WithParamInterface<phantom::Pattern>
{
    void expectBelow(std::initializer_list<const char*> identifiers, double rows)
    {
        std::map<std::string, double> found = errors();
        for (const char* identifier : identifiers) {
            ASSERT_EQ(found.count(identifier), 1U) << identifier;
            EXPECT_LT(found[identifier], rows) << identifier;
        }
    }
};

TEST_P(EveryPattern, TheNormalChainFindsTheSurfacesOfAHealthyEye)
{
    make(small(GetParam(), phantom::Kind::Normal));
    // On a circular B-scan the RPE step holds a step of its own.
    const int successes = GetParam() == phantom::Pattern::Circle ? 3 : 1;
    EXPECT_THAT(run(SegmentationChain::Normal, successes), IsEmpty());
    expectBelow({"ILM", "ISe", "BM"}, 1.5);
    expectBelow({"GCL", "INL", "ONL"}, 3.0);
}

TEST_P(EveryPattern, TheDrusenChainFindsTheSurfacesOverDrusen)
{
    make(small(GetParam(), phantom::Kind::Drusen));
    EXPECT_THAT(run(SegmentationChain::Drusen), IsEmpty());
    expectBelow({"ILM"}, 1.5);
    expectBelow({"BM"}, 2.0);
    expectBelow({"GCL", "INL", "ONL", "ISe", "IRPE"}, 3.0);
}

TEST_P(EveryPattern, TheMouseChainFindsTheSurfacesOfAMouse)
{
    make(small(GetParam(), phantom::Kind::Mouse));
    EXPECT_THAT(run(SegmentationChain::Mouse), IsEmpty());
    expectBelow({"ILM", "ISe"}, 1.5);
    expectBelow({"GCL", "INL", "ONL"}, 3.0);
}

std::string patternName(const testing::TestParamInfo<phantom::Pattern>& pattern)
{
    const char* const names[] = {"Volume", "Section", "Circle"};
    return names[static_cast<int>(pattern.param)];
}

INSTANTIATE_TEST_SUITE_P(Phantom, EveryPattern,
                         testing::Values(phantom::Pattern::Volume, phantom::Pattern::Section,
                                         phantom::Pattern::Circle),
                         patternName);

TEST_F(PhantomChains, AStarFailsAtTheFirstStepWithItsText)
{
    make(small(phantom::Pattern::Star, phantom::Kind::Normal));
    for (const SegmentationChain chain :
         {SegmentationChain::Normal, SegmentationChain::Drusen, SegmentationChain::Mouse}) {
        const std::vector<std::string> failures = run(chain, 0);
        ASSERT_EQ(failures.size(), 1U);
        EXPECT_THAT(failures.front(), StartsWith("Could not segment coarse layers.\n"));
        EXPECT_THAT(failures.front(),
                    EndsWith("SegInterface::segmentILMCoarse: trying to segment Star OCT scan "
                             "pattern, but only volumes and straight and circular BScans can be "
                             "segmented"));
        EXPECT_TRUE(segmentation->getAllLayerNames().isEmpty());
    }
}

constexpr std::uint8_t whiteOfTheDevice = 255;

TEST_F(PhantomChains, TheDevicesFillDrawsNoSurfaceToIt)
{
    phantom::Options options = small(phantom::Pattern::Volume, phantom::Kind::Normal);
    options.aScans = 128;
    make(options);
    // White right below the retina, as in B-scans that were moved up: its edge is far stronger than
    // the retina's own.
    for (const unsigned bScan : {1U, 2U, 3U, 4U, 5U}) {
        const kelp::ImagePtr image = segmentation->getOCT()->getBScan(bScan)->getImage();
        auto* const pixels = image->pixels<std::uint8_t>();
        const int columns = image->getColumns();
        const int rows = image->getRows();
        for (int column = 0; column < columns; ++column) {
            const int below = phantom.surfaces.back().rows[bScan][column] + 20;
            for (int row = below; row < rows; ++row) {
                pixels[row * columns + column] = whiteOfTheDevice;
            }
        }
    }
    EXPECT_THAT(run(SegmentationChain::Normal), IsEmpty());
    std::map<std::string, double> found = errors();
    for (const char* identifier : {"ILM", "ISe", "BM"}) {
        EXPECT_LT(found.at(identifier), 1.5) << identifier;
    }
}

} // namespace
} // namespace kelp::oct
