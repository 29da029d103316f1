#include "DataDescription.h"
#include "SegmentationTestTools.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using namespace kelp::oct;

QString valueOf(const DataDescription& description, const QString& caption)
{
    for (const auto& fact : description.facts) {
        if (fact.first == caption) {
            return fact.second;
        }
    }
    return QStringLiteral("no such line");
}

TEST(OCTDescriptions, AScanTellsItsPatternEyeAndSizeOnceItIsLoaded)
{
    const QTemporaryDir folder;
    const OCTScanPtr scan = test::makeTestExportScan(test::writeTestExport(folder.path()));
    const DataDescription before = describeData(*scan);
    EXPECT_EQ(before.kind, QString("OCT scan"));
    EXPECT_EQ(valueOf(before, "Series"), QString("1"));
    EXPECT_EQ(valueOf(before, "Pattern"), QString("no such line"));
    EXPECT_FALSE(scan->isLoaded()) << "telling of a scan does not read its images";
    scan->ensureLoaded();
    const DataDescription after = describeData(*scan);
    EXPECT_EQ(valueOf(after, "Pattern"), QString("Volume"));
    EXPECT_EQ(valueOf(after, "Eye"), QString("OD"));
    EXPECT_EQ(valueOf(after, "B-scans"), QString("3"));
    EXPECT_TRUE(after.madeFrom.isNull());
}

TEST(OCTDescriptions, AScanThatCannotBeReadTellsWhy)
{
    const QTemporaryDir folder;
    const QString xml = test::writeTestExport(folder.path());
    const OCTScanPtr scan = test::makeTestExportScan(xml);
    ASSERT_TRUE(QFile::remove(xml));
    EXPECT_ANY_THROW(scan->ensureLoaded());
    const QString reason = valueOf(describeData(*scan), "Cannot be read");
    EXPECT_EQ(reason, scan->getLoadProblem());
    EXPECT_FALSE(reason.isEmpty());
}

TEST(OCTDescriptions, ASegmentationTellsItsLayersAndTheScanItIsMadeFrom)
{
    const OCTScanPtr scan = test::makeTestScan(test::lineScan(4, 8, 2));
    const OCTScanSegPtr segmentation(new OCTScanSegmentation(scan));
    const DataDescription empty = describeData(*segmentation);
    EXPECT_EQ(empty.kind, QString("Segmentation"));
    EXPECT_EQ(valueOf(empty, "Layers"), QString("none"));
    EXPECT_EQ(empty.madeFrom.data(), scan.data());
    segmentation->setVolumeLayer(test::makeFlatSurface(2, 4, 2), LayerNameILM::create());
    segmentation->setVolumeLayer(test::makeFlatSurface(2, 4, 6), LayerNameBM::create());
    const QString layers = valueOf(describeData(*segmentation), "Layers");
    EXPECT_TRUE(layers.startsWith("2 (")) << layers.toStdString();
    EXPECT_TRUE(layers.contains(LayerNameILM::create()->getIdentifier()));
    EXPECT_TRUE(layers.contains(LayerNameBM::create()->getIdentifier()));
}

TEST(OCTDescriptions, AStoredSegmentationIsNotDecodedToTellOfIt)
{
    const OCTScanSegPtr segmentation(new OCTScanSegmentation);
    ASSERT_FALSE(segmentation->isDecoded());
    EXPECT_EQ(valueOf(describeData(*segmentation), "Layers"), QString("no such line"));
    EXPECT_FALSE(segmentation->isDecoded());
}

} // namespace
