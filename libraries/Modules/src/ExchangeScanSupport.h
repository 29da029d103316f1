#pragma once

#include "DataIOManager.h"
#include "HeidelbergExport.h"
#include "OCTDecoderHeidelbergXML.h"
#include "OCTScanSegmentation.h"
#include "SegmentationTestTools.h"
#include "TestExport.h"

#include <QDir>

#include <gtest/gtest.h>

/// Real scans with all that can be made of them, small.
namespace exchangetest {

using namespace kelp::oct;

constexpr unsigned bScans = 3;
constexpr unsigned aScans = 16;

inline void registerScans()
{
    createOCTScanFactory();
    createOCTScanSegmentationFactory();
    createOCTDecoderHeidelbergXMLFactory();
}

/// As the batch import adds it: the files copied below the store, images named by number.
inline OCTScanPtr importScan(const QString& folder)
{
    QDir().mkpath(folder);
    test::TestExportOptions options;
    options.aScans = aScans;
    options.rows = 24;
    options.bScans = bScans;
    const QString xml = test::writeTestExport(folder, options);
    const QList<OCTScanPtr> scans =
        importScans(xml, DataIOManager::storeFolder() + "/binary",
                    [](const QString& problem) { ADD_FAILURE() << problem.toStdString(); });
    EXPECT_EQ(scans.size(), 1);
    return scans.value(0);
}

inline OCTScanSegPtr makeSegmentation(const OCTScanPtr& scan)
{
    OCTScanSegPtr segmentation(new OCTScanSegmentation(scan));
    segmentation->setVolumeLayer(
        test::makeSurface(bScans, aScans,
                          [](unsigned z, unsigned x) { return static_cast<int>(3 * z + x / 2); }),
        LayerNameILM::create());
    segmentation->setVolumeLayer(test::makeFlatSurface(bScans, aScans, 20), LayerNameBM::create());
    segmentation->getMask()->addPolygon(test::makeRectangle(1.02, 1.95, 1.05, 2.15));
    FoveaPosition fovea;
    fovea.position.x = 1.04;
    fovea.position.y = 2.11;
    fovea.isSet = true;
    segmentation->setFoveaPosition(fovea);
    return segmentation;
}

/// All pixels of all B-scans and of the localizer.
inline QByteArray pixelsOf(OCTScan& scan)
{
    scan.ensureLoaded();
    QByteArray pixels;
    auto images = scan.getBScanImages();
    EXPECT_EQ(images.size(), static_cast<int>(bScans));
    images.append(scan.getLocalizer()->getImage());
    for (const auto& image : qAsConst(images)) {
        pixels.append(image->pixels<char>(), static_cast<int>(image->getNumberOfPixels()));
    }
    return pixels;
}

} // namespace exchangetest
