#include "CommandFixture.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

using kelp::command::test::CommandFixture;
using kelp::command::test::Finished;
using ::testing::HasSubstr;

namespace {

/// Every case ends in status 1 and one line that names the file and the reason, and leaves nothing
/// but the summary.
class BadInput : public CommandFixture
{
protected:
    void expectFailure(const QString& input, const QString& named, const QString& reason) const
    {
        const Finished run = segment({input});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.errors.count('\n'), 1) << run.errors.toStdString();
        EXPECT_TRUE(run.errors.startsWith("tessera-segment: ")) << run.errors.toStdString();
        EXPECT_TRUE(run.errors.contains(named)) << run.errors.toStdString();
        EXPECT_TRUE(run.errors.contains(reason)) << run.errors.toStdString();
        EXPECT_EQ(resultNames(), QStringList({"summary.csv"}));
        EXPECT_TRUE(read(results("summary.csv")).contains(",failed,"));
    }

    QString xmlOf(const QByteArray& content) const
    {
        write("e.xml", content);
        return path("e.xml");
    }

    void reduceImage(const QString& name, int width, int height) const
    {
        const QImage image(path(name));
        ASSERT_FALSE(image.isNull());
        ASSERT_TRUE(image.copy(0, 0, width, height).save(path(name)));
    }

    /// A scan whose files and declared sizes agree.
    QString scanOfSize(int aScans, int rows, int bScans)
    {
        const QString xml = writeExport("in");
        QByteArray text = read(xml);
        text.replace("<Width>64</Width>", "<Width>" + QByteArray::number(aScans) + "</Width>");
        text.replace("<Height>200</Height>", "<Height>" + QByteArray::number(rows) + "</Height>");
        for (int i = 0; i < 5; ++i) {
            reduceImage(QString("in/E1B09000%1.tif").arg(i + 1), aScans, rows);
        }
        int end = text.indexOf("</Image>") + 8; // behind the localizer
        for (int i = 0; i < bScans; ++i) {
            end = text.indexOf("</Image>", end) + 8;
        }
        const int close = text.lastIndexOf("</Image>") + 8;
        text.remove(end, close - end);
        write(xml, text);
        return xml;
    }
};

TEST_F(BadInput, MissingFile)
{
    expectFailure(path("nothing.xml"), path("nothing.xml"), "no such file");
}

TEST_F(BadInput, EmptyFile)
{
    expectFailure(xmlOf(""), path("e.xml"), "empty");
}

TEST_F(BadInput, TruncatedXml)
{
    const QByteArray whole = read(writeExport("in"));
    expectFailure(xmlOf(whole.left(whole.size() / 2)), path("e.xml"), "no usable XML");
}

TEST_F(BadInput, FileThatIsNoXml)
{
    expectFailure(xmlOf(QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16)), path("e.xml"),
                  "no usable XML");
}

TEST_F(BadInput, EntityBomb)
{
    QByteArray bomb = "<?xml version=\"1.0\"?><!DOCTYPE x [<!ENTITY a0 \"ha\">";
    for (int i = 1; i < 30; ++i) {
        const QByteArray before = "&a" + QByteArray::number(i - 1) + ";";
        bomb += "<!ENTITY a" + QByteArray::number(i) + " \"" + before.repeated(10) + "\">";
    }
    expectFailure(xmlOf(bomb + "]><x>&a29;</x>"), path("e.xml"), "entities");
}

TEST_F(BadInput, WebPage)
{
    expectFailure(xmlOf("<html><head><title>x</title></head><body><p>Not found</p></body></html>"),
                  path("e.xml"), "no series");
}

TEST_F(BadInput, ExportWithoutOctSeries)
{
    const QString xml = writeExport("in");
    edit(xml, "<Modality>OCT</Modality>", "<Modality>OP</Modality>");
    expectFailure(xml, xml, "no OCT series");
}

TEST_F(BadInput, UnknownSeries)
{
    const Finished run = segment({"--series", "77", writeExport("in")});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.errors.toStdString(), HasSubstr("77"));
    EXPECT_EQ(resultNames(), QStringList({"summary.csv"}));
}

TEST_F(BadInput, MissingImage)
{
    const QString xml = writeExport("in");
    QFile::remove(path("in/E1B090003.tif"));
    expectFailure(xml, path("in/E1B090003.tif"), "does not exist");
}

TEST_F(BadInput, MissingLocalizerImage)
{
    const QString xml = writeExport("in");
    QFile::remove(path("in/E1B090000.tif"));
    expectFailure(xml, path("in/E1B090000.tif"), "does not exist");
}

TEST_F(BadInput, ImageOfNoBytes)
{
    const QString xml = writeExport("in");
    write("in/E1B090002.tif", "");
    expectFailure(xml, path("in/E1B090002.tif"), "empty");
}

TEST_F(BadInput, TruncatedImageOfEachFormat)
{
    for (const char* format : {"tif", "bmp", "png", "jpg"}) {
        auto options = smallScan();
        options.imageFormat = format;
        const QString folder = QString("in_") + format;
        const QString xml = writeExport(folder, options);
        const QString image = path(folder + "/E1B090004." + format);
        const QByteArray whole = read(image);
        write(image, whole.left(whole.size() * 2 / 3));
        SCOPED_TRACE(format);
        expectFailure(xml, image, "cannot be read");
    }
}

TEST_F(BadInput, ImageOfAnotherSizeThanItsNeighbours)
{
    const QString xml = writeExport("in");
    QByteArray text = read(xml);
    text.replace("<Width>64</Width>", "").replace("<Height>200</Height>", "");
    write(xml, text);
    reduceImage("in/E1B090004.tif", 60, 200);
    expectFailure(xml, path("in/E1B090004.tif"), "60 by 200");
}

TEST_F(BadInput, ImageOfAnotherSizeThanTheExportSays)
{
    const QString xml = writeExport("in");
    for (int i = 1; i <= 5; ++i) {
        reduceImage(QString("in/E1B09000%1.tif").arg(i), 64, 150);
    }
    expectFailure(xml, path("in/E1B090001.tif"), "150 rows, but its export says 200");
}

TEST_F(BadInput, TooFewAScansRowsOrBScans)
{
    for (int few = 1; few <= 3; ++few) {
        SCOPED_TRACE(few);
        const QString number = QString::number(few);
        expectFailure(scanOfSize(few, 200, 5), path("in/export.xml"), number);
        expectFailure(scanOfSize(64, few, 5), path("in/export.xml"), number);
        expectFailure(scanOfSize(64, 200, few), path("in/export.xml"), "B-scan");
    }
    expectFailure(scanOfSize(64, 200, 0), path("in/export.xml"), "B-scan");
}

TEST_F(BadInput, SpacingThatIsNoPositiveNumber)
{
    for (const char* element : {"ScaleX", "ScaleY"}) {
        for (const char* spacing : {"0", "-0.01", "wide", "nan", "inf", ""}) {
            const QString xml = writeExport("in");
            const QByteArray text = read(xml);
            const QByteArray open = QByteArray("<") + element + ">";
            const int context = text.indexOf("<Type>OCT</Type>");
            const int begin = text.indexOf(open, context) + open.size();
            const int end = text.indexOf("</", begin);
            write(xml, QByteArray(text).replace(begin, end - begin, spacing));
            SCOPED_TRACE(QString("%1 \"%2\"").arg(element, spacing).toStdString());
            expectFailure(xml, xml, "B-scan 1");
        }
    }
}

TEST_F(BadInput, FolderWithoutRights)
{
    if (geteuid() == 0) {
        // The administrator may read everything; programs started from here on may not.
        ASSERT_EQ(prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE), 0);
        ASSERT_EQ(prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH), 0);
    }
    writeExport("in/below");
    QFile::setPermissions(path("in/below"), QFileDevice::Permissions());
    expectFailure(path("in"), path("in/below"), "permission denied");
    QFile::setPermissions(path("in/below"),
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

TEST_F(BadInput, FolderWithoutExports)
{
    ASSERT_TRUE(QDir().mkpath(path("in/below")));
    expectFailure(path("in"), path("in"), "no XML");
}

TEST_F(BadInput, ResultsFolderThatCannotBeMade)
{
    const QString xml = writeExport("in");
    write("file", "x");
    for (const QString& out : {path("file"), path("file/below")}) {
        const Finished run = CommandFixture::run({"--chain", "mouse", "--out", out, xml});
        EXPECT_EQ(run.status, 1);
        EXPECT_TRUE(run.errors.contains(out)) << run.errors.toStdString();
    }
    EXPECT_EQ(read("file"), "x");
}

TEST_F(BadInput, MaskFileThatDoesNotFit)
{
    const QString xml = writeExport("in");
    write("mask.txt", "1,1 2,1 2,2\n\n1,1 2,1 2;2\n");
    const Finished run = segment({"--mask", path("mask.txt"), xml});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.errors.contains(path("mask.txt") + ", line 3: ")) << run.errors.toStdString();
}

TEST_F(BadInput, OneBadScanDoesNotKeepTheOthersFromTheirResults)
{
    writeExport("in/a");
    writeExport("in/b");
    writeExport("in/c");
    QFile::remove(path("in/b/E1B090003.tif"));
    QFile::rename(path("in/a/export.xml"), path("in/a/a.xml"));
    QFile::rename(path("in/b/export.xml"), path("in/b/b.xml"));
    QFile::rename(path("in/c/export.xml"), path("in/c/c.xml"));
    const Finished run = segment({"--jobs", "2", path("in")});
    EXPECT_EQ(run.status, 1);
    const QStringList problems = run.errors.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(problems.size(), 1);
    EXPECT_TRUE(problems[0].contains(path("in/b/b.xml") + ", series 100001: "));
    EXPECT_EQ(resultNames(), QStringList({"a_100001", "c_100001", "summary.csv"}));
}

TEST_F(BadInput, DiskThatIsFullLeavesNothing)
{
    const QString xml = writeExport("in");
    // A limit on the size of files stands for the full disk: writes beyond it fail.
    for (const int kilobytes : {1, 4, 20, 60, 100}) {
        QProcess process;
        process.start("/bin/sh",
                      {"-c", QString("trap '' XFSZ; ulimit -f %1; exec \"$@\"").arg(kilobytes * 2),
                       "sh", TESSERA_SEGMENT_PROGRAM, "--chain", "mouse", "--out", results(), xml});
        ASSERT_TRUE(process.waitForFinished(300000));
        SCOPED_TRACE(kilobytes);
        EXPECT_EQ(process.exitCode(), 1);
        const QString errors = QString::fromUtf8(process.readAllStandardError());
        EXPECT_TRUE(errors.contains(results())) << errors.toStdString();
        QStringList names = resultNames();
        names.removeAll("summary.csv");
        EXPECT_EQ(names, QStringList());
    }
}

} // namespace
