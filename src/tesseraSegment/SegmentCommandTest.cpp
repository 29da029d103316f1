#include "CommandFixture.h"
#include "LayerDistributionUtils.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using kelp::command::test::CommandFixture;
using kelp::command::test::Finished;

namespace {

const QStringList surfaces{"ILM", "GCL", "INL", "ONL", "ISe", "BM"};

class SegmentCommand : public CommandFixture
{
protected:
    QJsonObject record(const QString& folder) const
    {
        return QJsonDocument::fromJson(read(results(folder + "/run.json"))).object();
    }

    QStringList filesOf(const QString& folder) const
    {
        return QDir(results(folder)).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    /// The lines of summary.csv, the first with the column names.
    QList<QStringList> summary() const
    {
        QList<QStringList> lines;
        for (const QString& line : QString::fromUtf8(read(results("summary.csv"))).split('\n')) {
            if (!line.isEmpty()) {
                lines.append(csvCells(line));
            }
        }
        return lines;
    }
};

TEST_F(SegmentCommand, WritesEveryFileOfAVolume)
{
    const QString xml = writeExport("in");
    const Finished run = segment({xml});
    EXPECT_EQ(run.status, 0) << run.errors.toStdString();
    EXPECT_EQ(run.errors, "");
    EXPECT_TRUE(
        run.output.endsWith("export_100001: the border of the scan cuts the ETDRS sectors N1, N2, "
                            "S1, S2, T1, T2, I1, I2, their means are those of the rest\n"))
        << run.output.toStdString();

    QStringList expected{"etdrs.csv",        "oct.mha",          "run.json",
                         "segmentation.b64", "segmentation.mha", "trace.log"};
    for (int i = 0; i < surfaces.size(); ++i) {
        expected.append("layer_" + surfaces[i] + ".csv");
        if (i > 0) {
            expected.append("thickness_" + surfaces[i - 1] + "_" + surfaces[i] + ".csv");
        }
    }
    expected.sort();
    EXPECT_EQ(filesOf("export_100001"), expected);
    EXPECT_EQ(QDir(results("export_100001/pictures")).entryList(QDir::Files, QDir::Name),
              QStringList({"bscan_001.png", "bscan_002.png", "bscan_003.png", "bscan_004.png",
                           "bscan_005.png", "enface.png"}));
    EXPECT_EQ(resultNames(), QStringList({"export_100001", "summary.csv"}));
}

TEST_F(SegmentCommand, WritesOneNumberAnAScanAndOneLineABScan)
{
    segment({writeExport("in")});
    for (const QString& surface : surfaces) {
        const QStringList lines =
            QString::fromUtf8(read(results("export_100001/layer_" + surface + ".csv"))).split('\n');
        ASSERT_EQ(lines.size(), 6);
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(lines[i].split('\t', Qt::SkipEmptyParts).size(), 64);
        }
    }
}

TEST_F(SegmentCommand, KeepsTheSegmentationAsOneLine)
{
    segment({writeExport("in")});
    const QByteArray text = read(results("export_100001/segmentation.b64"));
    EXPECT_EQ(text.count('\n'), 1);
    EXPECT_TRUE(text.endsWith('\n'));
    EXPECT_GT(QByteArray::fromBase64(text).size(), 6 * 5 * 64 * 2);
}

TEST_F(SegmentCommand, RecordsHowTheResultWasMade)
{
    const QString xml = writeExport("in");
    segment({"--etdrs-mask", xml});
    const QJsonObject run = record("export_100001");
    EXPECT_EQ(run["outcome"].toString(), "segmented");
    EXPECT_EQ(run["input"].toString(), QFileInfo(xml).canonicalFilePath());
    EXPECT_EQ(run["series"].toString(), "100001");
    EXPECT_EQ(run["pattern"].toString(), "Volume");
    EXPECT_EQ(run["chain"].toString(), "mouse");
    EXPECT_TRUE(run["masks"].toObject()["etdrs"].toBool());
    EXPECT_FALSE(run["masks"].toObject()["center"].toBool());
    EXPECT_EQ(run["size"].toObject()["aScans"].toInt(), 64);
    EXPECT_EQ(run["size"].toObject()["rows"].toInt(), 200);
    EXPECT_EQ(run["size"].toObject()["bScans"].toInt(), 5);
    EXPECT_GT(run["spacingMillimetres"].toObject()["rows"].toDouble(), 0.0);
    EXPECT_TRUE(run["fovea"].toObject()["found"].isBool());
    EXPECT_GT(run["peakMemoryBytes"].toDouble(), 1e6);
    EXPECT_FALSE(run["version"].toString().isEmpty());

    const QJsonArray steps = run["steps"].toArray();
    QStringList names;
    for (const QJsonValue& value : steps) {
        const QJsonObject step = value.toObject();
        names.append(step["name"].toString());
        EXPECT_GT(step["columns"].toInt(), 0);
        EXPECT_GT(step["nodes"].toInt(), step["columns"].toInt());
        EXPECT_GT(step["edges"].toInt(), 0);
        EXPECT_GE(step["seconds"].toDouble(),
                  step["buildSeconds"].toDouble() + step["solverSeconds"].toDouble() - 0.002);
    }
    EXPECT_EQ(names, QStringList({"segmentCoarse", "segmentILMFine", "segmentPEFineConstant",
                                  "segmentInnerFineConstant"}));
}

TEST_F(SegmentCommand, WritesThePlainLineOfEachStep)
{
    const Finished run = segment({writeExport("in")});
    EXPECT_FALSE(run.output.contains('\r'));
    for (const char* line : {"export_100001: step 1 of 4: coarse layers\n",
                             "export_100001: step 2 of 4: ILM, fovea and masks\n",
                             "export_100001: step 3 of 4: ISe and BM\n",
                             "export_100001: step 4 of 4: inner layers\n"}) {
        EXPECT_EQ(run.output.count(line), 1) << line;
    }
}

TEST_F(SegmentCommand, IsSilentWhenQuietAndTracesWhenVerbose)
{
    const QString xml = writeExport("in");
    EXPECT_EQ(segment({"--quiet", xml}).output, "");
    const QByteArray log = read(results("export_100001/trace.log"));
    EXPECT_THAT(log.toStdString(), ::testing::HasSubstr("detected VOLUME scan pattern\n"));

    const Finished run = segment({"--verbose", "--force", xml});
    EXPECT_THAT(run.output.toStdString(), ::testing::HasSubstr("detected VOLUME scan pattern\n"));
    EXPECT_FALSE(QFileInfo::exists(results("export_100001/trace.log")));
}

TEST_F(SegmentCommand, GivesTheSameBytesTwice)
{
    const QString xml = writeExport("in");
    segment({xml});
    auto first = filesBelow(results("export_100001"));
    segment({"--force", "--quiet", xml});
    auto second = filesBelow(results("export_100001"));
    // These hold times.
    first.erase("run.json");
    second.erase("run.json");
    EXPECT_GT(first.size(), 10U);
    EXPECT_TRUE(first == second);
}

TEST_F(SegmentCommand, SkipsWhatIsWhole)
{
    const QString xml = writeExport("in");
    segment({xml});
    const auto before = filesBelow(results("export_100001"));
    const Finished run = segment({xml});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.output.toStdString(), ::testing::HasSubstr("export_100001: skipped"));
    EXPECT_TRUE(filesBelow(results("export_100001")) == before);
}

TEST_F(SegmentCommand, SaysThatSkippedResultsWereMadeOtherwise)
{
    const QString xml = writeExport("in");
    segment({"--center-mask", xml});
    const Finished run = segment({"--formats", "etdrs", xml});
    EXPECT_THAT(
        run.output.toStdString(),
        ::testing::HasSubstr("made with other settings: --center-mask, formats positions,"));
}

TEST_F(SegmentCommand, RedoesWithForceAndReplacesAtOnce)
{
    const QString xml = writeExport("in");
    segment({xml});
    write(results("export_100001/stray"), "x");
    EXPECT_EQ(segment({"--force", "--formats", "raw", xml}).status, 0);
    EXPECT_FALSE(QFileInfo::exists(results("export_100001/stray")));
    EXPECT_FALSE(QFileInfo::exists(results("export_100001/etdrs.csv")));
    EXPECT_EQ(resultNames(), QStringList({"export_100001", "summary.csv"}));
}

TEST_F(SegmentCommand, KeepsTheFormerResultsWhenRedoingFails)
{
    const QString xml = writeExport("in");
    segment({xml});
    const auto before = filesBelow(results("export_100001"));
    QFile::remove(path("in/E1B090001.tif"));
    QFile::remove(path("in/E1B090002.tif"));
    EXPECT_EQ(segment({"--force", xml}).status, 1);
    EXPECT_TRUE(filesBelow(results("export_100001")) == before);
}

TEST_F(SegmentCommand, WritesTheChosenFormatsOnly)
{
    const QString xml = writeExport("in");
    segment({"--formats", "raw,etdrs", xml});
    QStringList expected{"etdrs.csv", "run.json", "segmentation.b64", "trace.log"};
    for (const QString& surface : surfaces) {
        expected.append("layer_" + surface + ".raw");
        EXPECT_EQ(read(results("export_100001/layer_" + surface + ".raw")).size(), 5 * 64);
    }
    expected.sort();
    EXPECT_EQ(filesOf("export_100001"), expected);
    EXPECT_FALSE(QFileInfo::exists(results("export_100001/pictures")));
}

TEST_F(SegmentCommand, TakesAFolderWithAllItsExports)
{
    writeExport("in/b");
    writeExport("in/a");
    QFile::rename(path("in/a/export.xml"), path("in/a/first.XML"));
    QFile::rename(path("in/b/export.xml"), path("in/b/second.xml"));
    EXPECT_EQ(segment({path("in"), path("in/b/second.xml")}).status, 0);
    EXPECT_EQ(resultNames(), QStringList({"first_100001", "second_100001", "summary.csv"}));
    const auto lines = summary();
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[1][2], "first_100001");
    EXPECT_EQ(lines[2][2], "second_100001");
}

TEST_F(SegmentCommand, GivesTwoInputsOfOneNameFoldersOfTheirOwn)
{
    const QString first = writeExport("a");
    const QString second = writeExport("b");
    ASSERT_EQ(segment({first}).status, 0);
    const auto before = filesBelow(results("export_100001"));
    ASSERT_EQ(segment({second, first}).status, 0);
    EXPECT_TRUE(filesBelow(results("export_100001")) == before);
    const QStringList names = resultNames();
    ASSERT_EQ(names.size(), 3);
    EXPECT_TRUE(names[1].startsWith("export_100001-")) << names[1].toStdString();
    EXPECT_EQ(record(names[1])["input"].toString(), QFileInfo(second).canonicalFilePath());

    const Finished again = segment({first, second});
    EXPECT_EQ(again.output.count(": skipped, "), 2);
    EXPECT_EQ(resultNames(), names);
}

TEST_F(SegmentCommand, SegmentsSeveralScansAtOnceWithTheSameResults)
{
    const QStringList exports{writeExport("a"), writeExport("b"), writeExport("c")};
    ASSERT_EQ(segment(QStringList{"--jobs", "3", "--formats", "raw"} + exports).status, 0);
    auto parallel = filesBelow(results());
    QDir(results()).removeRecursively();
    ASSERT_EQ(segment(QStringList{"--jobs", "1", "--formats", "raw"} + exports).status, 0);
    auto serial = filesBelow(results());
    const auto isTimed = [](const auto& file) { return file.first.endsWith("run.json"); };
    EXPECT_EQ(std::erase_if(parallel, isTimed), 3U);
    EXPECT_EQ(std::erase_if(serial, isTimed), 3U);
    EXPECT_TRUE(parallel == serial);
}

TEST_F(SegmentCommand, SummarisesEveryScanWithItsSectorMeans)
{
    const QString xml = writeExport("in");
    segment({xml});
    const auto segmented = summary();
    ASSERT_EQ(segmented.size(), 2);
    EXPECT_EQ(segmented[0].mid(0, 10),
              QStringList({"input", "series", "folder", "outcome", "reason", "warnings",
                           "cut sectors", "no surface found", "NFL C", "NFL N1"}));
    EXPECT_EQ(segmented[0].size(), 8 + 6 * 9);
    EXPECT_EQ(segmented[0].last(), "Complete Retina I2");
    EXPECT_EQ(segmented[1].mid(1, 7), QStringList({"100001", "export_100001", "segmented", "", "",
                                                   "N1 N2 S1 S2 T1 T2 I1 I2", ""}));

    const QList<QByteArray> table = read(results("export_100001/etdrs.csv")).split('\n');
    ASSERT_EQ(table.size(), 10);
    EXPECT_TRUE(table[7].startsWith("A-scans\t"));
    EXPECT_TRUE(table[8].startsWith("A-scans expected\t"));
    for (int row = 0; row < 6; ++row) {
        const QList<QByteArray> cells = table[row + 1].split('\t');
        ASSERT_EQ(cells.size(), 10);
        for (int column = 0; column < 9; ++column) {
            const QString cell = QString::fromUtf8(cells[column + 1]);
            EXPECT_EQ(segmented[1][8 + 9 * row + column], cell == "-" ? QString() : cell);
        }
    }

    const QList<QByteArray> counted = table[7].split('\t');
    const QList<QByteArray> expected = table[8].split('\t');
    const QJsonObject coverage = record("export_100001")["etdrsCoverage"].toObject();
    ASSERT_EQ(coverage.size(), 9);
    for (int column = 1; column <= 9; ++column) {
        const QJsonObject sector =
            coverage[QString::fromUtf8(table[0].split('\t')[column])].toObject();
        EXPECT_EQ(sector["counted"].toInt(-1), counted[column].toInt());
        EXPECT_EQ(sector["expected"].toInt(-1), expected[column].toInt());
        EXPECT_LE(sector["counted"].toInt(), sector["inside"].toInt());
        EXPECT_LE(sector["inside"].toInt(), sector["expected"].toInt());
    }
    EXPECT_GT(coverage["C"].toObject()["counted"].toInt(), 0);
    EXPECT_LT(coverage["N2"].toObject()["inside"].toInt(), expected[2].toInt())
        << "the scan is smaller than the grid";
    EXPECT_TRUE(coverage["N2"].toObject()["cut"].toBool());
    EXPECT_TRUE(coverage["C"].toObject().contains("cut"));
    EXPECT_FALSE(coverage["C"].toObject()["cut"].toBool());

    segment({xml, path("missing.xml")});
    const auto skipped = summary();
    ASSERT_EQ(skipped.size(), 3);
    EXPECT_EQ(skipped[1][3], "skipped");
    EXPECT_EQ(skipped[1].mid(5), segmented[1].mid(5));
    EXPECT_EQ(skipped[2][0], path("missing.xml"));
    EXPECT_EQ(skipped[2][3], "failed");
}

TEST_F(SegmentCommand, EndsWithHowSeveralScansCameOut)
{
    const QString first = writeExport("a");
    segment({first});
    const QString second = writeExport("b");
    const QString ending = "\nIn all: 1 segmented, 1 skipped, 1 failed, see " +
                           QFileInfo(results("summary.csv")).canonicalFilePath() + '\n';
    const Finished run = segment({first, second, path("missing.xml")});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.output.endsWith(ending)) << run.output.toStdString();
    EXPECT_EQ(segment({"--quiet", first, second}).output, "");
}

TEST_F(SegmentCommand, LeavesOutThePolygonsOfAMaskFile)
{
    const QString xml = writeExport("in");
    ASSERT_EQ(segment({"--formats", "positions", xml}).status, 0);
    EXPECT_FALSE(read(results("export_100001/layer_ILM.csv")).contains("-1"));
    write("mask.txt", "# all of the eye\n-100,-100 100,-100 100,0.7 -100,0.7\n");
    const Finished run =
        segment({"--force", "--formats", "positions", "--mask", path("mask.txt"), xml});
    ASSERT_EQ(run.status, 0) << run.errors.toStdString();
    EXPECT_TRUE(read(results("export_100001/layer_ILM.csv")).contains("-1\t"));
    EXPECT_EQ(record("export_100001")["masks"].toObject()["polygons"].toArray().size(), 1);
}

TEST_F(SegmentCommand, ChoosesSeriesByTheirIds)
{
    const QString xml = writeExport("in");
    EXPECT_EQ(segment({"--series", "100001", xml}).status, 0);
    const Finished unknown = segment({"--series", "7", "--series", "100001", xml});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_THAT(unknown.errors.toStdString(),
                ::testing::HasSubstr("--series 7: No export has a series of this id."));
    EXPECT_THAT(unknown.output.toStdString(), ::testing::HasSubstr("export_100001: skipped"));
}

TEST_F(SegmentCommand, SegmentsALineAndACircle)
{
    auto options = smallScan();
    options.pattern = kelp::phantom::Pattern::Section;
    const QString section = writeExport("section", options);
    options.pattern = kelp::phantom::Pattern::Circle;
    options.kind = kelp::phantom::Kind::Normal;
    options.aScans = 256;
    options.rows = 496;
    const QString circle = writeExport("circle", options);
    const Finished line = segment({section});
    EXPECT_EQ(line.status, 0) << line.errors.toStdString();

    // Four steps, of which one calls another, so that the end is told three times.
    const Finished run = CommandFixture::run({"--out", path("circles"), circle});
    ASSERT_EQ(run.status, 0) << run.errors.toStdString();
    const QStringList folders = QDir(path("circles")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    ASSERT_EQ(folders.size(), 1);
    for (const QString& surface : surfaces) {
        EXPECT_TRUE(
            QFileInfo::exists(path("circles/" + folders[0] + "/layer_" + surface + ".csv")));
    }
    const QJsonObject record =
        QJsonDocument::fromJson(read("circles/" + folders[0] + "/run.json")).object();
    EXPECT_EQ(record["pattern"].toString(), "Circular BScan");
    EXPECT_FALSE(record["fovea"].toObject()["found"].toBool());
}

TEST_F(SegmentCommand, SaysThatAStarCannotBeSegmented)
{
    auto options = smallScan();
    options.pattern = kelp::phantom::Pattern::Star;
    const QString xml = writeExport("star", options);
    const Finished run = segment({xml});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.errors.toStdString(), ::testing::HasSubstr(xml.toStdString()));
    EXPECT_THAT(run.errors.toStdString(), ::testing::HasSubstr("is of type \"Star\""));
    EXPECT_EQ(resultNames(), QStringList({"summary.csv"}));
}

TEST_F(SegmentCommand, PrintsTheCompiledInModel)
{
    const Finished run = CommandFixture::run({"--print-model"});
    EXPECT_EQ(run.status, 0);
    const QByteArray model = kelp::oct::LayerDistributionUtils::modelXML();
    ASSERT_GT(model.size(), 1000);
    EXPECT_TRUE(run.output.toUtf8() == model);
}

TEST_F(SegmentCommand, PrintsVersionAndHelp)
{
    const Finished version = CommandFixture::run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, "tessera-segment " TESSERA_VERSION "\n");
    const Finished help = CommandFixture::run({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* option : {"--chain", "--series", "--etdrs-mask", "--center-mask", "--mask",
                               "--out", "--formats", "--store", "--jobs", "--force",
                               "--print-model", "--quiet", "--verbose", "--version", "--help"}) {
        EXPECT_TRUE(help.output.contains(option)) << option;
    }
}

TEST_F(SegmentCommand, RefusesWrongUsageWithAHint)
{
    for (const QStringList& arguments : QList<QStringList>{{},
                                                           {"--nonsense", "x"},
                                                           {"--chain", "cat", "x"},
                                                           {"--jobs", "0", "x"},
                                                           {"--series"}}) {
        const Finished run = CommandFixture::run(arguments);
        EXPECT_EQ(run.status, 2) << arguments.join(' ').toStdString();
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors.toStdString(), ::testing::StartsWith("tessera-segment: "));
        EXPECT_THAT(run.errors.toStdString(), ::testing::HasSubstr("\nUsage: tessera-segment"));
    }
}

} // namespace
