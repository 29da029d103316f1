#include "ExchangeScanSupport.h"
#include "ExchangeTestSupport.h"

namespace {

using namespace exchangetest;

/// Real scans with all that can be made of them.
class RoundTrip : public ExchangeFixture
{
protected:
    void SetUp() override
    {
        ExchangeFixture::SetUp();
        registerScans();
    }

    static OCTScanPtr scanOf(Patient& patient)
    {
        return dynamic_cast<OCTScan*>(&onlyScanOf(patient));
    }
    static OCTScanSegPtr segmentationOf(Patient& patient)
    {
        QList<Data*> results;
        patient.getStudy("DefaultStudy")->getAllProcessData(results);
        EXPECT_EQ(results.size(), 1);
        return dynamic_cast<OCTScanSegmentation*>(results.value(0));
    }
};

TEST_F(RoundTrip, ScansSegmentationsMasksAndFoveasArriveByteForByte)
{
    const DataPointer<Patient> source(new Patient);
    source->setName("Ann");
    source->setId("17");
    DataPointer<Study> study(new Study);
    study->setId("DefaultStudy");
    source->addStudy(study.data(), false);
    const OCTScanPtr scan = importScan(path("camera"));
    ASSERT_TRUE(scan);
    study->addData(scan.data(), "1", false);
    const OCTScanSegPtr segmentation = makeSegmentation(scan);
    study->addProcessData(segmentation.data(), "Segment_1", false);
    ASSERT_EQ(DataIOManager::storePatient(source), CaError::nullError);
    const QByteArray pixels = pixelsOf(*scan);
    const QString payload = segmentation->toBase64String();
    const QString scanGuid = scan->getGUID();
    const QString segmentationGuid = segmentation->getGUID();
    const Vector2d center = scan->getCenter();

    const QString folder = exportAll();
    open("there");
    ASSERT_TRUE(QDir(path("here")).removeRecursively());
    ASSERT_TRUE(QDir(path("camera")).removeRecursively());
    const Report report = importPatients(folder, {}, {});
    EXPECT_EQ(report.problems, QStringList());
    ASSERT_TRUE(QDir(folder).removeRecursively());

    ASSERT_EQ(allPatients().size(), 1);
    Patient& patient = *allPatients().front();
    EXPECT_EQ(patient.getId(), QString("17"));
    const OCTScanPtr arrived = scanOf(patient);
    ASSERT_TRUE(arrived);
    EXPECT_EQ(arrived->getGUID(), scanGuid);
    EXPECT_EQ(pixelsOf(*arrived), pixels);
    EXPECT_EQ(arrived->getCenter(), center);
    const OCTScanSegPtr result = segmentationOf(patient);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->getGUID(), segmentationGuid);
    EXPECT_EQ(result->getOCT(), arrived);
    EXPECT_EQ(result->toBase64String(), payload);
    result->ensureDecoded();
    EXPECT_EQ((*result->getVolumeLayer(LayerNameILM::create()))(2, 14), 13);
    EXPECT_EQ(result->getMask()->getPolygons(), segmentation->getMask()->getPolygons());
    EXPECT_EQ(*result->getMask()->getMaskRow(1), *segmentation->getMask()->getMaskRow(1));
    EXPECT_TRUE(result->getMask()->getMaskRow(1)->contains(true));
    EXPECT_TRUE(result->getFoveaPosition().isSet);
    EXPECT_EQ(result->getFoveaPosition().position.x, 1.04);
    EXPECT_EQ(result->getFoveaPosition().position.y, 2.11);
}

TEST_F(RoundTrip, AScanWhoseImagesAreGoneKeepsItsSegmentation)
{
    const DataPointer<Patient> source = storetest::makePatient("Ann");
    Study& study = *source->getStudy("DefaultStudy");
    study.removeProcessData("Segment_1");
    study.removeData("5");
    const OCTScanPtr scan = importScan(path("camera"));
    study.addData(scan.data(), "1", false);
    const OCTScanSegPtr segmentation = makeSegmentation(scan);
    study.addProcessData(segmentation.data(), "Segment_1", false);
    ASSERT_EQ(DataIOManager::storePatient(source), CaError::nullError);
    const QString payload = segmentation->toBase64String();
    ASSERT_TRUE(QDir(binary()).removeRecursively());

    const Report report = exportPatients(allPatients(), stick(), {});
    EXPECT_EQ(report.carried, QStringList("Ann"));
    // The XML file, the B-scans and the localizer.
    EXPECT_EQ(report.problems.size(), static_cast<int>(bScans) + 2);
    open("there");
    EXPECT_EQ(importPatients(report.folder, {}, {}).carried, QStringList("Ann"));
    EXPECT_EQ(segmentationOf(*allPatients().front())->toBase64String(), payload);
}

} // namespace
