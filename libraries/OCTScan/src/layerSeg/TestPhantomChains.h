#pragma once

#include "HeidelbergExport.h"
#include "OCTDecoderHeidelbergXML.h"
#include "Phantom.h"
#include "SegInterface.h"
#include "SegmentationChains.h"
#include "TestRunRecorder.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <map>

namespace kelp::oct::test {

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
    std::vector<StepStatistics> statistics; ///< of the last run

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
        statistics = segInterface.getStatistics();
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

inline phantom::Options smallPhantom(phantom::Pattern pattern, phantom::Kind kind)
{
    phantom::Options options;
    options.pattern = pattern;
    options.kind = kind;
    options.aScans = 192;
    options.bScans = 7;
    return options;
}

} // namespace kelp::oct::test
