#include "OCTScanUtils.h"

#include "SegmentationTestTools.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace kelp::oct;
using namespace kelp::oct::test;
using kelp::Assertion;
using kelp::IOFailure;
using testing::HasSubstr;

namespace {

constexpr char prefix[] = "OCTScan/src/data/OCTScanUtils::kelp::oct::OCTScanUtils::";

constexpr int nrAScans = 4;
constexpr int nrRows = 6;
constexpr int nrBScans = 2;

VolumeLayerPtr flat(int position)
{
    return makeFlatSurface(nrBScans, nrAScans, position);
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
}

class Export : public testing::Test
{
protected:
    QString folder() const { return m_folder.path(); }
    QString path(const QString& name) const { return m_folder.filePath(name); }
    QByteArray content(const QString& name) const { return contentOf(path(name)); }
    QStringList files() const { return QDir(folder()).entryList(QDir::Files, QDir::Name); }

    void set(const LayerNamePtr& name, const VolumeLayerPtr& surface)
    {
        m_segmentation->setVolumeLayer(surface, name);
    }
    void setFlat(const LayerNamePtr& name, int position) { set(name, flat(position)); }
    /// A-scan 1 of B-scan 0.
    void maskOneAScan()
    {
        m_segmentation->getMask()->addPolygon(makeRectangle(0.01, -0.05, 0.02, 0.05));
    }

    OCTScanPtr m_scan = makeTestScan(lineScan(nrAScans, nrRows, nrBScans));
    OCTScanSegPtr m_segmentation = new OCTScanSegmentation(m_scan);
    QTemporaryDir m_folder;
};

TEST_F(Export, ImageVolumeHoldsTheBScansAsSlices)
{
    const kelp::ImagePtr volume = OCTScanUtils::getImageVolume(m_scan);
    EXPECT_EQ(volume->getPixelTypeId(), kelp::MonoUInt8);
    EXPECT_EQ(volume->getDimensions(), (kelp::Vector3<int>{nrAScans, nrRows, nrBScans}));
    EXPECT_EQ(volume->getSpacing(), (kelp::Vector3<double>{0.0125, 0.003872, 0.1}));
    const auto* const bytes = volume->pixels<unsigned char>();
    for (int z = 0; z < nrBScans; ++z) {
        for (int y = 0; y < nrRows; ++y) {
            for (int x = 0; x < nrAScans; ++x) {
                EXPECT_EQ(bytes[(z * nrRows + y) * nrAScans + x], rampPixel(z, y, x));
            }
        }
    }
}

TEST_F(Export, ImageVolumeTakesDeeperPixelsAsBytes)
{
    TestScan contents = lineScan(nrAScans, nrRows, nrBScans);
    contents.images[1] = contents.images[1]->convertTo(kelp::MonoUInt16);
    const kelp::ImagePtr volume = OCTScanUtils::getImageVolume(makeTestScan(contents));
    EXPECT_EQ(volume->pixels<unsigned char>()[nrRows * nrAScans + 3], rampPixel(1, 0, 3));
}

TEST_F(Export, ImageVolumeRefusesUnequalBScans)
{
    EXPECT_EQ(messageOf<Assertion>([] { OCTScanUtils::getImageVolume(OCTScanPtr()); }),
              QString(prefix) + "getImageVolume: OCT scan is null.");
    TestScan contents = lineScan(nrAScans, nrRows, nrBScans);
    contents.images[1] = lineScan(nrAScans, nrRows + 1, 1).images[0];
    EXPECT_EQ(messageOf<Assertion>([&] { OCTScanUtils::getImageVolume(makeTestScan(contents)); }),
              QString(prefix) + "getImageVolume: BScan row dimension mismatch.");
    contents.images[1] = lineScan(nrAScans + 1, nrRows, 1).images[0];
    contents.positions[1] = lineScan(nrAScans + 1, nrRows, 1).positions[0];
    EXPECT_EQ(messageOf<Assertion>([&] { OCTScanUtils::getImageVolume(makeTestScan(contents)); }),
              QString(prefix) + "getImageVolume: BScan column dimension mismatch.");
    EXPECT_EQ(messageOf<Assertion>([] {
                  OCTScanUtils::getImageVolume(makeTestScan(lineScan(nrAScans, 0, nrBScans)));
              }),
              QString(prefix) + "getImageVolume: No voxels in oct volume.");
}

std::vector<int> columnOf(const kelp::ImagePtr& volume, int z, int x)
{
    std::vector<int> column;
    column.reserve(nrRows);
    for (int y = 0; y < nrRows; ++y) {
        column.push_back(volume->pixels<unsigned char>()[(z * nrRows + y) * nrAScans + x]);
    }
    return column;
}

TEST_F(Export, LabelIsOneAndTheNumberOfFinalSurfacesAtOrAbove)
{
    setFlat(LayerNameBM::create(), 4);
    set(LayerNameILM::create(), makeSurface(nrBScans, nrAScans, [](unsigned r, unsigned c) {
            return static_cast<int>(r + c);
        }));
    setFlat(LayerNameILMCoarse::create(), 0);
    const TraceCapture trace;
    const kelp::ImagePtr labels = OCTScanUtils::getLabelVolume(m_segmentation);
    EXPECT_THAT(columnOf(labels, 0, 0), testing::ElementsAre(2, 2, 2, 2, 3, 3));
    EXPECT_THAT(columnOf(labels, 0, 2), testing::ElementsAre(1, 1, 2, 2, 3, 3));
    EXPECT_THAT(columnOf(labels, 1, 3), testing::ElementsAre(1, 1, 1, 1, 3, 3));
    EXPECT_EQ(trace.text(), "get label volume\nget label volume done\n");
}

TEST_F(Export, LabelOfASurfaceAtTheImageHeightStaysOne)
{
    setFlat(LayerNameILM::create(), nrRows);
    EXPECT_THAT(columnOf(OCTScanUtils::getLabelVolume(m_segmentation), 1, 1), testing::Each(1));
    setFlat(LayerNameILM::create(), 65535);
    EXPECT_THAT(columnOf(OCTScanUtils::getLabelVolume(m_segmentation), 1, 1), testing::Each(1));
}

TEST_F(Export, LabelOfAMaskedAScanIsZeroThroughTheWholeDepth)
{
    setFlat(LayerNameILM::create(), 2);
    maskOneAScan();
    const kelp::ImagePtr labels = OCTScanUtils::getLabelVolume(m_segmentation);
    EXPECT_THAT(columnOf(labels, 0, 1), testing::Each(0));
    EXPECT_THAT(columnOf(labels, 0, 2), testing::ElementsAre(1, 1, 2, 2, 2, 2));
    EXPECT_THAT(columnOf(labels, 1, 1), testing::ElementsAre(1, 1, 2, 2, 2, 2));
}

TEST_F(Export, LabelVolumeRefusesNulls)
{
    EXPECT_EQ(messageOf<Assertion>([] { OCTScanUtils::getLabelVolume(OCTScanSegPtr()); }),
              QString(prefix) + "getLabelVolume: OCT segmentation is null.");
    EXPECT_EQ(messageOf<Assertion>(
                  [] { OCTScanUtils::getLabelVolume(OCTScanSegPtr(new OCTScanSegmentation)); }),
              QString(prefix) + "getLabelVolume: OCT scan is null.");
}

TEST_F(Export, MetaImagesHoldTheVolumes)
{
    setFlat(LayerNameILM::create(), 2);
    OCTScanUtils::writeMetaImage(m_scan, path("oct.mha"));
    OCTScanUtils::writeMetaImage(m_segmentation, path("segmentation.mha"));
    const kelp::ImagePtr image = OCTScanUtils::getImageVolume(m_scan);
    const kelp::ImagePtr labels = OCTScanUtils::getLabelVolume(m_segmentation);
    const auto pixelsOf = [](const kelp::ImagePtr& volume) {
        return QByteArray(volume->pixels<char>(), static_cast<int>(volume->getNumberOfPixels()));
    };
    EXPECT_TRUE(content("oct.mha").endsWith(pixelsOf(image)));
    EXPECT_TRUE(content("segmentation.mha").endsWith(pixelsOf(labels)));
    EXPECT_THAT(content("oct.mha").toStdString(), HasSubstr("DimSize = 4 6 2"));
    EXPECT_EQ(messageOf<Assertion>([&] { OCTScanUtils::writeMetaImage(OCTScanPtr(), path("x")); }),
              QString(prefix) + "writeMetaImage: OCT scan is null.");
    EXPECT_EQ(
        messageOf<Assertion>([&] { OCTScanUtils::writeMetaImage(OCTScanSegPtr(), path("x")); }),
        QString(prefix) + "writeMetaImage: OCT scan is null.");
    EXPECT_THROW(OCTScanUtils::writeMetaImage(m_scan, path("missing/oct.mha")), IOFailure);
}

TEST_F(Export, LayersAreTabEndedNumbersWithoutHeader)
{
    set(LayerNameILM::create(), makeSurface(nrBScans, nrAScans, [](unsigned r, unsigned c) {
            return static_cast<int>(300 * r + c);
        }));
    setFlat(LayerNameILMCoarse::create(), 1);
    maskOneAScan();
    OCTScanUtils::writeLayersCSV(m_segmentation, folder());
    EXPECT_EQ(files(), QStringList({"layer_ILM.csv"}));
    EXPECT_EQ(content("layer_ILM.csv"), "0\t-1\t2\t3\t\n300\t301\t302\t303\t\n");
}

TEST_F(Export, RawLayersTakeTheLowByteOfAPosition)
{
    set(LayerNameILM::create(), makeSurface(nrBScans, nrAScans, [](unsigned r, unsigned c) {
            return static_cast<int>(300 * r + c);
        }));
    setFlat(LayerNameISeCoarse::create(), 1);
    maskOneAScan();
    OCTScanUtils::writeLayersRawUInt16(m_segmentation, folder());
    EXPECT_EQ(files(), QStringList({"layer_ILM.raw"}));
    EXPECT_EQ(content("layer_ILM.raw"), QByteArray("\x00\xFF\x02\x03\x2C\x2D\x2E\x2F", 8));
}

TEST_F(Export, UnmaskedPosition300Reads300InTextAnd44InRawForm)
{
    setFlat(LayerNameBM::create(), 300);
    OCTScanUtils::writeLayersCSV(m_segmentation, folder());
    OCTScanUtils::writeLayersRawUInt16(m_segmentation, folder());
    EXPECT_TRUE(content("layer_BM.csv").startsWith("300\t"));
    EXPECT_EQ(content("layer_BM.raw"), QByteArray(nrAScans * nrBScans, 44));
}

TEST_F(Export, ThicknessIsMicrometresInSixDigits)
{
    setFlat(LayerNameBM::create(), 5);
    set(LayerNameILM::create(), makeSurface(nrBScans, nrAScans, [](unsigned r, unsigned c) {
            return r == 1 ? 5 + 100 * static_cast<int>(c) : static_cast<int>(c);
        }));
    maskOneAScan();
    OCTScanUtils::writeThicknessCSV(m_segmentation, folder());
    EXPECT_EQ(files(), QStringList({"thickness_ILM_BM.csv"}));
    // 3.872 um a row; zero and masked stay apart.
    EXPECT_EQ(content("thickness_ILM_BM.csv"),
              "19.36\t-1\t11.616\t7.744\t\n0\t387.2\t774.4\t1161.6\t\n");
}

TEST_F(Export, ThicknessIsRoundedAsASinglePrecisionNumber)
{
    TestScan contents = lineScan(nrAScans, nrRows, nrBScans);
    contents.axialResolution = 0.00387167;
    m_segmentation = new OCTScanSegmentation(makeTestScan(contents));
    setFlat(LayerNameILM::create(), 3);
    setFlat(LayerNameBM::create(), 18);
    OCTScanUtils::writeThicknessCSV(m_segmentation, folder());
    // In double precision it would read 58.075.
    EXPECT_EQ(content("thickness_ILM_BM.csv").split('\t').first(), "58.0751");
}

TEST_F(Export, ThicknessPairsNeighbouringFinalLayersFromTheInnerToTheOuterRetina)
{
    const LayerNamePtr names[] = {LayerNameBM::create(),  LayerNameISe::create(),
                                  LayerNameONL::create(), LayerNameILMCoarse::create(),
                                  LayerNameINL::create(), LayerNameISeCoarse::create(),
                                  LayerNameGCL::create(), LayerNameILM::create()};
    for (const LayerNamePtr& name : names) {
        setFlat(name, static_cast<int>(name->getOrder()));
    }
    OCTScanUtils::writeThicknessCSV(m_segmentation, folder());
    EXPECT_EQ(files(), QStringList({"thickness_GCL_INL.csv", "thickness_ILM_GCL.csv",
                                    "thickness_INL_ONL.csv", "thickness_ISe_BM.csv",
                                    "thickness_ONL_ISe.csv"}));
}

TEST_F(Export, ThicknessPairsLayersOfEqualOrderAsTheyAreListed)
{
    const QString other = path("other");
    QDir().mkdir(other);
    setFlat(LayerNameIRPE::create(), 3);
    setFlat(LayerNameISe::create(), 2);
    setFlat(LayerNameONL::create(), 1);
    OCTScanUtils::writeThicknessCSV(m_segmentation, folder());
    EXPECT_EQ(files(), QStringList({"thickness_IRPE_ISe.csv", "thickness_ONL_IRPE.csv"}));
    setFlat(LayerNameIRPE::create(), 3);
    OCTScanUtils::writeThicknessCSV(m_segmentation, other);
    EXPECT_EQ(QDir(other).entryList(QDir::Files, QDir::Name),
              QStringList({"thickness_ISe_IRPE.csv", "thickness_ONL_ISe.csv"}));
}

TEST_F(Export, NothingIsWrittenWithoutLayersOrPairs)
{
    OCTScanUtils::writeLayersCSV(m_segmentation, folder());
    OCTScanUtils::writeThicknessCSV(m_segmentation, folder());
    OCTScanUtils::writeLayersRawUInt16(m_segmentation, folder());
    EXPECT_TRUE(files().isEmpty());
    setFlat(LayerNameILM::create(), 1);
    setFlat(LayerNameILMCoarse::create(), 1);
    OCTScanUtils::writeThicknessCSV(m_segmentation, folder());
    EXPECT_TRUE(files().isEmpty());
}

struct Writer
{
    void (*write)(const OCTScanSegPtr&, const QString&, QStringList*);
    const char* name;
};

const Writer writers[] = {{OCTScanUtils::writeLayersCSV, "writeLayersCSV"},
                          {OCTScanUtils::writeThicknessCSV, "writeThicknessCSV"},
                          {OCTScanUtils::writeLayersRawUInt16, "writeLayersRawUInt16"}};

TEST_F(Export, ArgumentsAreCheckedBeforeTheDirectory)
{
    for (const Writer& writer : writers) {
        const QString place = QString(prefix) + writer.name + ": ";
        EXPECT_EQ(
            messageOf<Assertion>([&] { writer.write(OCTScanSegPtr(), path("none"), nullptr); }),
            place + "OCT scan segmentation is null.");
        EXPECT_EQ(messageOf<Assertion>(
                      [&] { writer.write(new OCTScanSegmentation, path("none"), nullptr); }),
                  place + "OCT scan is null.");
        EXPECT_EQ(
            messageOf<IOFailure>([&] { writer.write(m_segmentation, path("none"), nullptr); }),
            "Directory does not exist.");
        EXPECT_EQ(messageOf<IOFailure>([&] { writer.write(m_segmentation, QString(), nullptr); }),
                  "Directory does not exist.");
    }
}

TEST_F(Export, AFileThatCannotBeOpenedIsSkipped)
{
    setFlat(LayerNameILM::create(), 1);
    setFlat(LayerNameGCL::create(), 2);
    setFlat(LayerNameBM::create(), 3);
    // A folder stands where the file should.
    for (const char* const taken : {"layer_ILM.csv", "thickness_ILM_GCL.csv", "layer_ILM.raw"}) {
        ASSERT_TRUE(QDir().mkdir(path(taken)));
    }
    QStringList failed;
    for (const Writer& writer : writers) {
        writer.write(m_segmentation, folder(), nullptr);
        writer.write(m_segmentation, folder(), &failed);
    }
    EXPECT_EQ(failed, QStringList({path("layer_ILM.csv"), path("thickness_ILM_GCL.csv"),
                                   path("layer_ILM.raw")}));
    EXPECT_EQ(files(), QStringList({"layer_BM.csv", "layer_BM.raw", "layer_GCL.csv",
                                    "layer_GCL.raw", "thickness_GCL_BM.csv"}));
}

TEST_F(Export, AFullDiskIsNoticed)
{
    if (!QFile::exists("/dev/full")) {
        GTEST_SKIP() << "needs /dev/full";
    }
    setFlat(LayerNameILM::create(), 1);
    setFlat(LayerNameBM::create(), 3);
    for (const char* const full : {"layer_BM.csv", "thickness_ILM_BM.csv", "layer_BM.raw"}) {
        ASSERT_TRUE(QFile::link("/dev/full", path(full)));
    }
    QStringList failed;
    for (const Writer& writer : writers) {
        EXPECT_NO_THROW(writer.write(m_segmentation, folder(), nullptr)) << writer.name;
        writer.write(m_segmentation, folder(), &failed);
    }
    EXPECT_EQ(failed, QStringList({path("layer_BM.csv"), path("thickness_ILM_BM.csv"),
                                   path("layer_BM.raw")}));
}

TEST_F(Export, AnExistingFileIsOverwritten)
{
    QFile file(path("layer_ILM.raw"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(100, 'x'));
    file.close();
    setFlat(LayerNameILM::create(), 7);
    OCTScanUtils::writeLayersRawUInt16(m_segmentation, folder());
    EXPECT_EQ(content("layer_ILM.raw"), QByteArray(nrAScans * nrBScans, 7));
}

TEST_F(Export, ALayerMissingOnOneBScanEndsTheExportWithTheFilesSoFar)
{
    setFlat(LayerNameILM::create(), 7);
    m_segmentation->getBScanSegmentation(0)->addLayer(
        QSharedPointer<BScanSegmentationLayer>::create(BScanSegmentationLayer::LayerData(nrAScans),
                                                       LayerNameBM::create()));
    EXPECT_THAT(messageOf<Assertion>([&] {
                    OCTScanUtils::writeLayersCSV(m_segmentation, folder());
                }).toStdString(),
                HasSubstr("Coult not find layer with name BM"));
    EXPECT_EQ(files(), QStringList({"layer_ILM.csv"}));
}

TEST_F(Export, AMaskNarrowerThanTheSurfacesIsRefused)
{
    TestScan contents = lineScan(nrAScans, nrRows, nrBScans);
    const TestScan narrow = lineScan(nrAScans - 1, nrRows, nrBScans);
    contents.images[1] = narrow.images[1];
    contents.positions[1] = narrow.positions[1];
    m_segmentation = new OCTScanSegmentation(makeTestScan(contents));
    setFlat(LayerNameILM::create(), 1);
    for (const Writer& writer : writers) {
        EXPECT_EQ(messageOf<Assertion>([&] { writer.write(m_segmentation, folder(), nullptr); }),
                  QString(prefix) + writer.name +
                      ": Mismatch between mask (2 x 3) and scan (2 x 4).");
    }
    EXPECT_EQ(messageOf<Assertion>([&] { OCTScanUtils::getLabelVolume(m_segmentation); }),
              QString(prefix) + "getLabelVolume: Mismatch between mask (2 x 3) and scan (2 x 4).");
}

TEST(SegmentationsOfAScan, AreFoundInTheirStudy)
{
    const TraceCapture trace;
    const OCTScanPtr scan = makeTestScan(lineScan(3, 4, 2));
    const OCTScanPtr otherScan = makeTestScan(lineScan(3, 4, 2));
    const OCTScanSegPtr first = new OCTScanSegmentation(scan);
    const OCTScanSegPtr second = new OCTScanSegmentation(otherScan);
    const OCTScanSegPtr third = new OCTScanSegmentation(scan);
    const OCTScanSegPtr scanless = new OCTScanSegmentation;
    const DataPointer<Study> study = new Study;
    study->addProcessData(first.data(), "a", false);
    study->addProcessData(second.data(), "b", false);
    study->addProcessData(new ProcessData, "c", false);
    study->addProcessData(third.data(), "d", false);
    study->addProcessData(scanless.data(), "e", false);
    EXPECT_EQ(OCTScanUtils::getAllSegmentationsOf(study, scan),
              QList<OCTScanSegPtr>({first, third}));
    EXPECT_EQ(OCTScanUtils::getAllSegmentationsOf(study, OCTScanPtr()),
              QList<OCTScanSegPtr>({first, second, third, scanless}));
    EXPECT_TRUE(OCTScanUtils::getAllSegmentationsOf(DataPointer<Study>(), scan).isEmpty());
    EXPECT_THAT(trace.text(), HasSubstr("OCTScanUtils::getAllSegmentationsOf\n"));
}

} // namespace
