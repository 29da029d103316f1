#include "HeidelbergExport.h"

#include "ExpectFailure.h"
#include "OCTDecoderHeidelbergXML.h"
#include "TestExport.h"
#include "TraceCapture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kelp::oct {

using namespace kelp::oct::test;

namespace {

QString writeXml(const QTemporaryDir& dir, const QString& xml)
{
    QFile file(dir.filePath("export.xml"));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(xml.toUtf8());
    return file.fileName();
}

/// A second series behind the one of the export.
QString withSecondSeries(QString xml, const QString& series)
{
    return xml.replace("</Study>", series + "</Study>");
}

TEST(HeidelbergExport, SeriesAreReadWithoutTheirImages)
{
    const QTemporaryDir dir;
    const QString path = writeXml(dir, testExportXml());
    const QList<ExportSeries> all = readExportSeries(path);
    ASSERT_EQ(all.size(), 1);
    const ExportSeries& series = all.first();
    EXPECT_EQ(series.id, "1");
    EXPECT_EQ(series.modality, "OCT");
    EXPECT_EQ(series.type, "Volume");
    EXPECT_EQ(series.patternText, "Volume");
    EXPECT_EQ(series.acquisitionTime, "10:5:12");
    EXPECT_EQ(series.imageFileNames, (QStringList{"localizer.png", "b0.png", "b1.png", "b2.png"}));
    EXPECT_EQ(series.bScanFileNames, (QStringList{"b0.png", "b1.png", "b2.png"}));
    EXPECT_TRUE(series.complete);
    EXPECT_TRUE(series.decodable);
    EXPECT_TRUE(series.isOCT());
    EXPECT_TRUE(series.canBeSegmented());
}

TEST(HeidelbergExport, AllPatternsButStarsCanBeSegmented)
{
    const QTemporaryDir dir;
    const std::pair<const char*, bool> cases[] = {{"Volume", true},  {"Fast Volume", true},
                                                  {"Section", true}, {"Circle", true},
                                                  {"Star", false},   {"Spiral", false}};
    for (const auto& [type, expected] : cases) {
        TestExportOptions options;
        options.type = type;
        EXPECT_EQ(readExportSeries(writeXml(dir, testExportXml(options))).first().canBeSegmented(),
                  expected)
            << type;
    }
    EXPECT_TRUE(canBeSegmented(OCTScanPatternVolume()));
    EXPECT_TRUE(canBeSegmented(OCTScanPatternSingleBScan()));
    EXPECT_TRUE(canBeSegmented(OCTScanPatternCircularBScan()));
    EXPECT_FALSE(canBeSegmented(OCTScanPatternStar()));
    EXPECT_FALSE(canBeSegmented(OCTScanPatternUnknown()));
    EXPECT_FALSE(canBeSegmented(OCTScanPattern()));
}

TEST(HeidelbergExport, OnlyCompleteSeriesOfTheModalityAreOCT)
{
    const QTemporaryDir dir;
    TestExportOptions options;
    options.modality = "OP";
    EXPECT_FALSE(readExportSeries(writeXml(dir, testExportXml(options))).first().isOCT());

    QString xml = testExportXml();
    xml.replace("<ID>1</ID>\n     <ReferenceSeries>", "<ReferenceSeries>");
    const ExportSeries series = readExportSeries(writeXml(dir, xml)).first();
    EXPECT_FALSE(series.complete);
    EXPECT_FALSE(series.isOCT());
}

TEST(HeidelbergExport, SeriesOutsideTheFirstStudyAreListedButNotDecodable)
{
    const QTemporaryDir dir;
    QString xml = testExportXml();
    xml.replace("</Study>", "</Study><Study><Series><ID>2</ID><Modality>OCT</Modality>"
                            "<Type>Section</Type></Series></Study>");
    const QList<ExportSeries> all = readExportSeries(writeXml(dir, xml));
    ASSERT_EQ(all.size(), 2);
    EXPECT_TRUE(all.at(0).decodable);
    EXPECT_EQ(all.at(1).id, "2");
    EXPECT_TRUE(all.at(1).canBeSegmented());
    EXPECT_FALSE(all.at(1).decodable);
}

TEST(HeidelbergExport, OfTwoSeriesWithOneIdOnlyTheFirstIsDecodable)
{
    const QTemporaryDir dir;
    const QString xml = withSecondSeries(
        testExportXml(), "<Series><ID>1</ID><Modality>OCT</Modality><Type>Section</Type></Series>");
    const QList<ExportSeries> all = readExportSeries(writeXml(dir, xml));
    ASSERT_EQ(all.size(), 2);
    EXPECT_TRUE(all.at(0).decodable);
    EXPECT_FALSE(all.at(1).decodable);
}

TEST(HeidelbergExport, WithoutSeriesGivesNone)
{
    const QTemporaryDir dir;
    EXPECT_TRUE(readExportSeries(writeXml(dir, "<anything/>")).isEmpty());
}

TEST(HeidelbergExport, ThatCannotBeReadNamesFileAndReason)
{
    const QTemporaryDir dir;
    EXPECT_EQ(failureText<IOFailure>([&] { readExportSeries(dir.filePath("no.xml")); }),
              QString("The file %1 cannot be opened: No such file or directory.")
                  .arg(dir.filePath("no.xml")));
    const QString path = writeXml(dir, "");
    EXPECT_EQ(failureText<ParsingError>([&] { readExportSeries(path); }),
              QString("The file %1 is no usable XML: it is empty.").arg(path));
}

TEST(HeidelbergExport, ImageProblemsNameEachFileAndTheReason)
{
    const QTemporaryDir dir;
    const QString path = writeTestExport(dir.path());
    const ExportSeries series = readExportSeries(path).first();
    EXPECT_EQ(findImageProblems(path, series), QStringList());
    ASSERT_TRUE(QFile::remove(dir.filePath("localizer.png")));
    ASSERT_TRUE(QFile::resize(dir.filePath("b0.png"), 0));
    ASSERT_TRUE(QFile::resize(dir.filePath("b1.png"), 30));
    ASSERT_TRUE(QFile::remove(dir.filePath("b2.png")));
    ASSERT_TRUE(QDir(dir.path()).mkdir("b2.png"));
    const auto sentence = [&](const QString& name, const QString& reason) {
        return QString("The image %1 cannot be read: %2.").arg(dir.filePath(name), reason);
    };
    const QStringList wanted{sentence("localizer.png", "it does not exist"),
                             sentence("b0.png", "it is empty"),
                             sentence("b1.png", "it is damaged or of an unknown kind"),
                             sentence("b2.png", "it is not a file")};
    EXPECT_EQ(findImageProblems(path, series), wanted);
}

TEST(HeidelbergExport, ScanCarriesItsUris)
{
    const OCTScanPtr scan = makeScan("/abs/path.xml", "5", {"/abs/a.tif", "/abs/b.tif"});
    EXPECT_EQ(scan->getId(), "5");
    EXPECT_EQ(scan->getUri("OCTScanURI").toString(), "file++hra:/abs/path.xml?seriesId=5");
    EXPECT_EQ(scan->getUri("SliceImage0").toString(), "file++dummy:/abs/a.tif");
    EXPECT_EQ(scan->getUri("SliceImage1").toString(), "file++dummy:/abs/b.tif");
    EXPECT_EQ(scan->getUriKeys().size(), 3);
    EXPECT_FALSE(scan->isLoaded());
}

TEST(HeidelbergExport, ScanOfARelativePathNamesTheAbsoluteOne)
{
    const OCTScanPtr scan = makeScan("some.xml", "1", {});
    EXPECT_EQ(scan->getUri("OCTScanURI").path(), QDir::currentPath() + "/some.xml");
}

TEST(HeidelbergExport, ScanOfManyImagesStillLoadsFromItsXml)
{
    createOCTDecoderHeidelbergXMLFactory();
    const QTemporaryDir dir;
    const QString path = writeTestExport(dir.path());
    QStringList images;
    for (int i = 0; i < 12; ++i) {
        images.append(dir.filePath(QString("%1.tif").arg(i)));
    }
    const OCTScanPtr scan = makeScan(path, "1", images);
    scan->ensureLoaded();
    EXPECT_EQ(scan->getVolumeSize(), (Vector3<int>{8, 8, 3}));
}

/// What is imported from the export of the fixture's folder.
class ImportScans : public testing::Test
{
protected:
    QList<OCTScanPtr> import(const QString& xmlPath)
    {
        return importScans(xmlPath, m_target.path(),
                           [this](const QString& text) { m_problems.append(text); });
    }
    QStringList folders() const
    {
        return QDir(m_target.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    }

    QTemporaryDir m_source;
    QTemporaryDir m_target;
    QStringList m_problems;
};

TEST_F(ImportScans, CopiesEachSeriesIntoAFolderOfItsOwn)
{
    createOCTDecoderHeidelbergXMLFactory();
    TestExportOptions options;
    const QString path = writeTestExport(m_source.path(), options);
    QString second = testExportXml(options);
    second = second.mid(second.indexOf("<Series>"));
    second = second.left(second.indexOf("</Series>") + 9).replace("<ID>1</ID>", "<ID>2</ID>");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(withSecondSeries(testExportXml(options), second).toUtf8());
    file.close();

    const QList<OCTScanPtr> scans = import(path);
    ASSERT_EQ(scans.size(), 2);
    EXPECT_EQ(m_problems, QStringList());
    EXPECT_EQ(folders().size(), 2);
    for (int i = 0; i < 2; ++i) {
        const OCTScanPtr& scan = scans.at(i);
        EXPECT_EQ(scan->getId(), QString::number(i + 1));
        const QString xmlPath = scan->getUri("OCTScanURI").path();
        EXPECT_TRUE(xmlPath.startsWith(m_target.path() + "/HRA_XML_")) << xmlPath.toStdString();
        EXPECT_EQ(QFileInfo(xmlPath).fileName(), "export.xml");
        EXPECT_EQ(scan->getUri("SliceImage3").path(),
                  QFileInfo(xmlPath).absolutePath() + "/b2.png");
        EXPECT_EQ(scan->getUriKeys().size(), 5);
    }
    EXPECT_NE(scans.at(0)->getUri("OCTScanURI").path(), scans.at(1)->getUri("OCTScanURI").path());
    ASSERT_TRUE(QDir(m_source.path()).removeRecursively());
    scans.at(1)->ensureLoaded();
    EXPECT_EQ(scans.at(1)->getBScanCount(), 3);
}

TEST_F(ImportScans, TakesEveryTypeOfOCTSeriesAndNoOther)
{
    for (const char* type : {"Volume", "Fast Volume", "Section", "Circle", "Star", "Spiral"}) {
        TestExportOptions options;
        options.type = type;
        EXPECT_EQ(import(writeTestExport(m_source.path(), options)).size(), 1) << type;
    }
    TestExportOptions options;
    options.modality = "OP";
    EXPECT_TRUE(import(writeTestExport(m_source.path(), options)).isEmpty());
    // The copying comes before the question.
    EXPECT_EQ(folders().size(), 7);
}

TEST_F(ImportScans, OfTheSameExportTwiceGivesTwoFolders)
{
    const QString path = writeTestExport(m_source.path());
    const QString first = import(path).first()->getUri("OCTScanURI").path();
    const QString second = import(path).first()->getUri("OCTScanURI").path();
    EXPECT_NE(first, second);
    EXPECT_EQ(folders().size(), 2);
}

TEST_F(ImportScans, GoesOnWithTheSourceWhenCopyingFails)
{
    const QString path = writeTestExport(m_source.path());
    ASSERT_TRUE(QFile::remove(m_source.filePath("b1.png")));
    const QList<OCTScanPtr> scans = import(path);
    ASSERT_EQ(scans.size(), 1);
    EXPECT_EQ(scans.first()->getUri("OCTScanURI").path(), path);
    EXPECT_EQ(scans.first()->getUri("SliceImage1").path(), m_source.filePath("b0.png"));
    ASSERT_EQ(m_problems.size(), 1);
    EXPECT_TRUE(m_problems.first().startsWith("Error copying files: Could not copy file " +
                                              m_source.filePath("b1.png") + " to new location "));
    EXPECT_TRUE(m_problems.first().endsWith("\n"));
}

TEST_F(ImportScans, OfAFileThatIsNoExportGivesNothing)
{
    EXPECT_TRUE(import(m_source.filePath("missing.xml")).isEmpty());
    EXPECT_TRUE(import(writeXml(m_source, "no xml")).isEmpty());
    EXPECT_TRUE(import(writeXml(m_source, "<html/>")).isEmpty());
    EXPECT_EQ(m_problems, QStringList());
    EXPECT_TRUE(folders().isEmpty());
}

TEST_F(ImportScans, PrintsWhatItDoes)
{
    const QString path = writeTestExport(m_source.path());
    const TraceCapture trace;
    const QString newPath = import(path).first()->getUri("OCTScanURI").path();
    const QStringList lines = trace.lines();
    ASSERT_EQ(lines.size(), 8);
    EXPECT_EQ(lines.at(0), "xml file folder: " + m_source.path() + "/");
    EXPECT_EQ(lines.at(1), "got file list with 5");
    EXPECT_EQ(lines.at(6), "new file location: " + newPath);
    EXPECT_EQ(lines.at(7), "new xml file location: " + newPath);
}

} // namespace

} // namespace kelp::oct
