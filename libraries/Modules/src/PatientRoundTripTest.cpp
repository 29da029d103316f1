#include "ExchangeTestSupport.h"
#include "HeidelbergExport.h"
#include "OCTDecoderHeidelbergXML.h"
#include "OCTScanSegmentation.h"
#include "SegmentationTestTools.h"
#include "TestExport.h"

namespace {

using namespace exchangetest;
using namespace kelp::oct;

constexpr unsigned bScans = 3;
constexpr unsigned aScans = 16;

/// Real scans with all that can be made of them.
class RoundTrip : public ExchangeFixture
{
protected:
    void SetUp() override
    {
        ExchangeFixture::SetUp();
        createOCTScanFactory();
        createOCTScanSegmentationFactory();
        createOCTDecoderHeidelbergXMLFactory();
    }

    /// As the batch import adds it: the files copied below the store, images named by number.
    static OCTScanPtr importScan(const QString& folder)
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

    static OCTScanSegPtr makeSegmentation(const OCTScanPtr& scan)
    {
        OCTScanSegPtr segmentation(new OCTScanSegmentation(scan));
        segmentation->setVolumeLayer(test::makeSurface(bScans, aScans,
                                                       [](unsigned z, unsigned x) {
                                                           return static_cast<int>(3 * z + x / 2);
                                                       }),
                                     LayerNameILM::create());
        segmentation->setVolumeLayer(test::makeFlatSurface(bScans, aScans, 20),
                                     LayerNameBM::create());
        segmentation->getMask()->addPolygon(test::makeRectangle(1.02, 1.95, 1.05, 2.15));
        FoveaPosition fovea;
        fovea.position.x = 1.04;
        fovea.position.y = 2.11;
        fovea.isSet = true;
        segmentation->setFoveaPosition(fovea);
        return segmentation;
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

    /// All pixels of all B-scans and of the localizer.
    static QByteArray pixelsOf(OCTScan& scan)
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
