#include "OCTScanChecks.h"

#include "ExpectFailure.h"
#include "TestExport.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace kelp::oct {

using namespace kelp::oct::test;

namespace {

QString refusal(const TestScan& contents)
{
    return failureText<Exception>([&] { checkReadyForSegmentation(*makeTestScan(contents)); });
}

TEST(ReadyForSegmentation, OrdinaryScansAre)
{
    checkReadyForSegmentation(*makeTestScan(lineScan(16, 8, 3)));
    TestScan single = lineScan(16, 8, 1);
    single.pattern = "Single BScan";
    checkReadyForSegmentation(*makeTestScan(single));
    single.pattern = "Circular BScan";
    checkReadyForSegmentation(*makeTestScan(single));
}

TEST(ReadyForSegmentation, TheSmallestScansAre)
{
    checkReadyForSegmentation(*makeTestScan(lineScan(2, 2, 2)));
    checkReadyForSegmentation(*makeTestScan(lineScan(3, 3, 3)));
}

TEST(ReadyForSegmentation, ScansAlongTheYAxisAre)
{
    TestScan contents = lineScan(8, 8, 3);
    for (auto& positions : contents.positions) {
        for (Vector2d& position : positions) {
            position = {position.y, position.x};
        }
    }
    checkReadyForSegmentation(*makeTestScan(contents));
}

TEST(ReadyForSegmentation, UnloadedScansStarsAndEmptyScansAreNot)
{
    const OCTScanPtr unloaded = makeUnloadedTestScan(lineScan(8, 8, 3));
    EXPECT_EQ(failureText<Exception>([&] { checkReadyForSegmentation(*unloaded); }),
              "The scan cannot be segmented: it is not loaded.");
    TestScan star = lineScan(8, 8, 3);
    star.pattern = "Star";
    EXPECT_EQ(refusal(star), "The scan cannot be segmented: scans of the pattern \"Star\" are not "
                             "segmented.");
    EXPECT_EQ(refusal(lineScan(8, 8, 0)), "The scan cannot be segmented: it has no B-scans.");
}

TEST(ReadyForSegmentation, TooSmallImagesAreNot)
{
    for (const int columns : {0, 1}) {
        EXPECT_EQ(
            refusal(lineScan(columns, 8, 2)),
            QString("B-scan 1 has %1 by 8 pixels, but at least 2 by 2 are needed.").arg(columns));
    }
    for (const int rows : {0, 1}) {
        EXPECT_EQ(
            refusal(lineScan(8, rows, 2)),
            QString("B-scan 1 has 8 by %1 pixels, but at least 2 by 2 are needed.").arg(rows));
    }
}

TEST(ReadyForSegmentation, BScanOfAnotherSizeIsNamed)
{
    TestScan contents = lineScan(8, 8, 3);
    const TestScan other = lineScan(8, 9, 3);
    contents.images[2] = other.images.at(2);
    EXPECT_EQ(refusal(contents), "B-scan 3 has 8 by 9 pixels, but B-scan 1 has 8 by 8 pixels.");
    contents = lineScan(8, 8, 3);
    contents.images[1] = lineScan(7, 8, 1).images.first();
    contents.positions[1].removeLast();
    EXPECT_EQ(refusal(contents), "B-scan 2 has 7 by 8 pixels, but B-scan 1 has 8 by 8 pixels.");
}

TEST(ReadyForSegmentation, SizeAgainstTheExportsOwnIsNamed)
{
    TestScan contents = lineScan(8, 6, 2);
    contents.metaInfos = {{{"Width", "8"}, {"Height", "6"}}, {{"Width", "9"}, {"Height", "6"}}};
    EXPECT_EQ(refusal(contents), "B-scan 2 has 8 columns, but its export says 9.");
    contents.metaInfos = {{{"Width", "8"}, {"Height", "7"}}};
    EXPECT_EQ(refusal(contents), "B-scan 1 has 6 rows, but its export says 7.");
    contents.metaInfos = {{{"Width", "unknown"}}};
    checkReadyForSegmentation(*makeTestScan(contents));
}

TEST(ReadyForSegmentation, StatedSpacingMustBeAPositiveNumber)
{
    for (const char* key : {"SpacingX", "SpacingY"}) {
        for (const char* bad : {"0", "-0.01", "wide", "", "nan", "inf"}) {
            TestScan contents = lineScan(8, 8, 2);
            contents.metaInfos = {{{key, bad}}};
            EXPECT_EQ(refusal(contents),
                      QString("B-scan 1 has \"%1\" as its %2, which is no positive number.")
                          .arg(bad, key));
        }
    }
}

TEST(ReadyForSegmentation, RowsMustBeOfASizeThatShowsTheRetina)
{
    for (const double bad : {1.0, 0.11, 1e-6, std::numeric_limits<double>::infinity()}) {
        TestScan contents = lineScan(8, 8, 2);
        contents.axialResolution = bad;
        EXPECT_EQ(refusal(contents),
                  QString("B-scan 1 has rows of %1 mm, which shows no retina.").arg(bad));
    }
}

TEST(ReadyForSegmentation, PositionsMustLieOnAnEye)
{
    for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity(), 1e200}) {
        TestScan contents = lineScan(8, 8, 3);
        contents.positions[2][7].y = bad;
        EXPECT_EQ(refusal(contents), "B-scan 3 has coordinates that lie on no eye.");
    }
    TestScan contents = lineScan(8, 8, 2);
    for (Vector2d& position : contents.positions[1]) {
        position = {1.0, 1.0};
    }
    EXPECT_EQ(refusal(contents), "B-scan 2 has all its A-scans at one place.");
}

TEST(ReadyForSegmentation, VolumesMustSpanAGrid)
{
    EXPECT_EQ(refusal(lineScan(8, 8, 1)),
              "The scan cannot be segmented: it is a volume of one B-scan, but at least two are "
              "needed.");
    EXPECT_EQ(refusal(lineScan(8, 8, 2, 0.0125, 0.0)),
              "The scan cannot be segmented: its first two B-scans lie at one place.");
    TestScan inLine = lineScan(8, 8, 2);
    for (Vector2d& position : inLine.positions[1]) {
        position = {position.x + 1.0, 0.0};
    }
    EXPECT_EQ(refusal(inLine),
              "The scan cannot be segmented: its first two B-scans lie on one line.");
    EXPECT_EQ(refusal(lineScan(8, 8, 2, 1e-7, 1.0)),
              "The scan cannot be segmented: its A-scans are 1e-07 mm apart and its B-scans 1 mm, "
              "which no device does.");
}

/// Scans of exports on disk, with what is wrong with one of their files.
class ScanOfAnExport : public testing::Test
{
protected:
    QString loadFailure(const QString& seriesId = "1")
    {
        const OCTScanPtr scan = makeTestExportScan(m_path, seriesId);
        return failureText<IOFailure>([&] { loadScan(*scan); });
    }
    QString checkFailure()
    {
        const OCTScanPtr scan = makeTestExportScan(m_path);
        loadScan(*scan);
        return failureText<Exception>([&] { checkReadyForSegmentation(*scan); });
    }
    QString unreadable(const QString& name, const QString& reason)
    {
        return QString("The image %1 cannot be read: %2.").arg(m_dir.filePath(name), reason);
    }

    QTemporaryDir m_dir;
    QString m_path = writeTestExport(m_dir.path());
};

TEST_F(ScanOfAnExport, IsReadyAfterLoading)
{
    const OCTScanPtr scan = makeTestExportScan(m_path);
    loadScan(*scan);
    checkReadyForSegmentation(*scan);
    EXPECT_EQ(scan->getLoadProblem(), "");
}

TEST_F(ScanOfAnExport, NamesAMissingEmptyOrDamagedImage)
{
    ASSERT_TRUE(QFile::resize(m_dir.filePath("b2.png"), 40));
    EXPECT_EQ(loadFailure(), unreadable("b2.png", "it is damaged or of an unknown kind"));
    ASSERT_TRUE(QFile::resize(m_dir.filePath("b2.png"), 0));
    EXPECT_EQ(loadFailure(), unreadable("b2.png", "it is empty"));
    ASSERT_TRUE(QFile::remove(m_dir.filePath("b2.png")));
    EXPECT_EQ(loadFailure(), unreadable("b2.png", "it does not exist"));
}

TEST_F(ScanOfAnExport, LoadsWithoutItsLocalizerAndSaysSo)
{
    ASSERT_TRUE(QFile::remove(m_dir.filePath("localizer.png")));
    const OCTScanPtr scan = makeTestExportScan(m_path);
    loadScan(*scan);
    checkReadyForSegmentation(*scan);
    EXPECT_TRUE(scan->getLocalizer().isNull());
    EXPECT_EQ(scan->getLoadProblem(), unreadable("localizer.png", "it does not exist"));
}

TEST_F(ScanOfAnExport, NamesAnUnknownSeriesAndAMissingFile)
{
    EXPECT_EQ(
        loadFailure("7"),
        QString("The file %1 holds no series \"7\" in the patient's first study.").arg(m_path));
    ASSERT_TRUE(QFile::remove(m_path));
    EXPECT_EQ(loadFailure(),
              QString("The file %1 cannot be opened: No such file or directory.").arg(m_path));
}

TEST_F(ScanOfAnExport, OfAnUnknownPatternKeepsTheLoadersWords)
{
    TestExportOptions options;
    options.type = "Spiral";
    m_path = writeTestExport(m_dir.path(), options);
    EXPECT_EQ(loadFailure(), "OCTScan/src/data/OCTScan::OCTScan::doBinLoad: OCT of type Unknown is "
                             "not supported");
}

TEST_F(ScanOfAnExport, NamesTheFileOfABScanOfAnotherSize)
{
    QImage other(8, 9, QImage::Format_Grayscale8);
    other.fill(1);
    ASSERT_TRUE(other.save(m_dir.filePath("b1.png")));
    EXPECT_EQ(
        checkFailure(),
        QString("B-scan 2 (%1) has 9 rows, but its export says 8.").arg(m_dir.filePath("b1.png")));
}

TEST_F(ScanOfAnExport, NamesTheFileOfABadSpacing)
{
    for (const char* bad : {"0", "-1", "text", "inf"}) {
        TestExportOptions options;
        options.scaleY = bad;
        m_path = writeTestExport(m_dir.path(), options);
        EXPECT_EQ(checkFailure(),
                  QString("B-scan 1 (%1) has \"%2\" as its SpacingY, which is no positive number.")
                      .arg(m_dir.filePath("b0.png"), bad));
    }
}

TEST_F(ScanOfAnExport, OfEverySmallSizeIsReadyOrRefusedInWords)
{
    for (int aScans = 1; aScans <= 3; ++aScans) {
        for (int rows = 1; rows <= 3; ++rows) {
            for (int bScans = 0; bScans <= 3; ++bScans) {
                TestExportOptions options;
                options.aScans = aScans;
                options.rows = rows;
                options.bScans = bScans;
                m_path = writeTestExport(m_dir.path(), options);
                const OCTScanPtr scan = makeTestExportScan(m_path);
                loadScan(*scan);
                if (aScans > 1 && rows > 1 && bScans > 1) {
                    checkReadyForSegmentation(*scan);
                } else {
                    EXPECT_THROW(checkReadyForSegmentation(*scan), Exception)
                        << aScans << " " << rows << " " << bScans;
                }
            }
        }
    }
}

} // namespace

} // namespace kelp::oct
