#include "CommandFixture.h"
#include "EtdrsGrid.h"
#include "SegmentResult.h"

#include <QDir>
#include <QDirIterator>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <csignal>

using kelp::command::test::CommandFixture;
using kelp::command::test::Finished;
using kelp::command::test::waitUntil;
using namespace kelp::compare;
using kelp::oct::EtdrsTable;
using testing::HasSubstr;
using testing::Not;

namespace {

/// The real programs on small phantoms.
class CompareCommand : public CommandFixture
{
protected:
    static Finished compare(const QStringList& arguments)
    {
        QProcess process;
        process.start(TESSERA_COMPARE_PROGRAM, arguments);
        EXPECT_TRUE(process.waitForFinished(300000));
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    /// An export in the folder of this name, segmented. Returns the results folder, which holds the
    /// folder "scan".
    QString segmented(const QString& name, const kelp::phantom::Options& options = smallScan())
    {
        return segmentedFrom(writeExport(name, options), "r-" + name, {});
    }

    QString segmentedFrom(const QString& xml, const QString& name, const QStringList& more)
    {
        const QString folder = path(name);
        const Finished run = CommandFixture::run(
            QStringList{"--chain", "mouse", "--formats", "positions,etdrs", "--out", folder, xml} +
            more);
        EXPECT_EQ(run.status, 0) << run.errors.toStdString();
        const QStringList scans = QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        EXPECT_EQ(scans.size(), 1);
        EXPECT_TRUE(QDir(folder).rename(scans.value(0), "scan"));
        return folder;
    }

    static std::unique_ptr<QProcess> startComparing(const QStringList& arguments)
    {
        auto process = std::make_unique<QProcess>();
        process->start(TESSERA_COMPARE_PROGRAM, arguments);
        EXPECT_TRUE(process->waitForStarted());
        return process;
    }

    /// A folder of scans with these names, each the one of the result. Returns its path.
    QString copies(const QString& result, const QStringList& names)
    {
        const QString folder = result + "-copies";
        for (const QString& name : names) {
            QDir().mkpath(folder + '/' + name);
            for (const QString& file : QDir(result + "/scan").entryList(QDir::Files)) {
                EXPECT_TRUE(
                    QFile::copy(result + "/scan/" + file, folder + '/' + name + '/' + file));
            }
        }
        return folder;
    }

    /// Whether a comparison that is to end in the folder has drawn something.
    static bool hasPicturesInTheMaking(const QString& folder)
    {
        QDirIterator pictures(folder, {"*.png"}, QDir::Files | QDir::Hidden,
                              QDirIterator::Subdirectories);
        while (pictures.hasNext()) {
            if (QDir(folder).relativeFilePath(pictures.next()).startsWith('.')) {
                return true;
            }
        }
        return false;
    }

    static void removeHidden(std::map<QString, QByteArray>& files)
    {
        std::erase_if(files, [](const auto& file) { return file.first.startsWith('.'); });
    }

    /// The true surfaces of a phantom as reference tables, a file a B-scan.
    QString truthTables(const QString& folder, const kelp::phantom::Options& options)
    {
        const auto phantom = kelp::phantom::describeExport(path(folder), options);
        QDir().mkpath(path("truth-" + folder));
        for (int bScan = 0; bScan < options.bScans; ++bScan) {
            QByteArray text = "col";
            for (const auto& surface : phantom.surfaces) {
                text += "\tT_" + surface.identifier.toUtf8();
            }
            for (int aScan = 0; aScan < options.aScans; ++aScan) {
                text += '\n' + QByteArray::number(aScan);
                for (const auto& surface : phantom.surfaces) {
                    const auto row =
                        surface
                            .rows[static_cast<std::size_t>(bScan)][static_cast<std::size_t>(aScan)];
                    text += '\t' + QByteArray::number(row);
                }
            }
            write(QString("truth-%1/b%2.tsv").arg(folder).arg(bScan), text + '\n');
        }
        return path("truth-" + folder);
    }

    /// Each mean that c/sectors.csv holds is the one in the etdrs.csv of its side, which has two
    /// decimals.
    void expectOwnSectorMeans(const QString& a, const QString& b) const
    {
        const auto ownMeans = [this](const QString& result) {
            std::map<QString, double> means;
            QStringList lines = QString::fromUtf8(read(result + "/scan/etdrs.csv")).split('\n');
            const QStringList sectors = lines.takeFirst().split('\t');
            for (const QString& line : lines.mid(0, EtdrsTable::nrRows)) {
                const QStringList cells = line.split('\t');
                for (int column = 1; column < cells.size(); ++column) {
                    if (cells[column] != "-") {
                        means[cells[0] + ' ' + sectors[column]] = cells[column].toDouble();
                    }
                }
            }
            return means;
        };
        const auto meansOfA = ownMeans(a);
        const auto meansOfB = ownMeans(b);
        QStringList lines =
            QString::fromUtf8(read("c/sectors.csv")).split('\n', Qt::SkipEmptyParts);
        const QStringList names = lines.takeFirst().split(',');
        int nrCompared = 0;
        for (const QString& line : lines) {
            const QStringList cells = line.split(',');
            const QString name =
                cells[names.indexOf("layer")] + ' ' + cells[names.indexOf("sector")];
            SCOPED_TRACE(name.toStdString());
            const double inA = cells[names.indexOf("thickness A (micrometres)")].toDouble();
            const double inB = cells[names.indexOf("thickness B (micrometres)")].toDouble();
            EXPECT_NEAR(inA, meansOfA.at(name), 0.00505);
            EXPECT_NEAR(inB, meansOfB.at(name), 0.00505);
            ++nrCompared;
        }
        EXPECT_GE(nrCompared, 2 * EtdrsTable::nrRows);
    }

    /// The cells of the line that begins with these, of a file in the results of a comparison.
    QStringList csvCells(const QString& file, const QString& start) const
    {
        for (const QString& line : QString::fromUtf8(read(file)).split('\n')) {
            if (line.startsWith(start)) {
                return line.split(',');
            }
        }
        ADD_FAILURE() << file.toStdString() << " has no line " << start.toStdString();
        return {};
    }
};

TEST_F(CompareCommand, SaysThatAResultDoesNotDifferFromItself)
{
    const QString result = segmented("one");
    const Finished run = compare({result, result, "--out", path("c")});
    EXPECT_EQ(run.status, 0);
    // What the run itself said is said again, and no more.
    for (const QString& line : run.errors.split('\n', Qt::SkipEmptyParts)) {
        EXPECT_TRUE(line.startsWith("tessera-compare: note: The runs of A and B warn: ") ||
                    line.startsWith("tessera-compare: note: The border of the scan cuts the "))
            << line.toStdString();
    }
    EXPECT_THAT(run.output.toStdString(), HasSubstr("Scan scan: 5 B-scans of 64 A-scans"));
    for (const QString& file : {path("c/surfaces.csv"), path("c/bscans.csv")}) {
        QStringList lines = QString::fromUtf8(read(file)).split('\n', Qt::SkipEmptyParts);
        const int nrPrefix = lines.takeFirst().startsWith("scan,surface,B-scan") ? 3 : 2;
        EXPECT_FALSE(lines.isEmpty());
        for (const QString& line : lines) {
            const QStringList cells = line.split(',');
            EXPECT_GT(cells[nrPrefix].toInt(), 0);
            for (const QString& cell : cells.mid(nrPrefix + 1)) {
                EXPECT_EQ(cell.toDouble(), 0.0) << line.toStdString();
            }
        }
    }
    for (const char* name : {"c/difference_ILM.png", "c/bland_altman_sectors.png"}) {
        EXPECT_FALSE(QImage(path(name)).isNull()) << name;
    }
    const QJsonObject record = QJsonDocument::fromJson(read("c/compare.json")).object();
    EXPECT_EQ(record.value("version").toString(), TESSERA_VERSION);
    EXPECT_EQ(record.value("a").toString(), result);
    // Each file that is there is named, so that the next run can replace it.
    QSet<QString> named{"compare.json"};
    for (const QJsonValue name : record.value("files").toArray()) {
        named.insert(name.toString());
    }
    for (const auto& [name, content] : filesBelow(path("c"))) {
        EXPECT_TRUE(named.contains(name)) << name.toStdString();
    }
    EXPECT_EQ(compare({result, result, "--out", path("c")}).status, 0);
    const Finished refused = compare({result, result, "--out", path("one")});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.errors.toStdString(), HasSubstr("The folder holds other files"));
}

TEST_F(CompareCommand, TellsHowFarAResultIsFromTheTruth)
{
    const auto options = smallScan();
    const QString result = segmented("one", options);
    const QString truth = truthTables("one", options);
    const Finished run =
        compare({result, truth, "--map", "T_ILM=ILM", "--map", "T_BM=BM", "--out", path("c")});
    EXPECT_EQ(run.status, 0) << run.errors.toStdString();
    EXPECT_THAT(run.errors.toStdString(), HasSubstr("stand for no surface"));

    // The same from the files themselves.
    const auto phantom = kelp::phantom::describeExport(path("one"), options);
    for (const auto& surface : phantom.surfaces) {
        if (surface.identifier != "ILM" && surface.identifier != "BM") {
            continue;
        }
        const QList<QByteArray> lines =
            read(result + "/scan/layer_" + surface.identifier + ".csv").split('\n');
        double sum = 0.0;
        double absolute = 0.0;
        int count = 0;
        for (int z = 0; z < options.bScans; ++z) {
            const QList<QByteArray> fields = lines[z].split('\t');
            for (int x = 0; x < options.aScans; ++x) {
                const double d =
                    fields[x].toInt() -
                    surface.rows[static_cast<std::size_t>(z)][static_cast<std::size_t>(x)];
                if (fields[x] != "-1") {
                    sum += d;
                    absolute += std::abs(d);
                    ++count;
                }
            }
        }
        const QStringList cells = csvCells("c/surfaces.csv", "scan," + surface.identifier);
        ASSERT_GT(cells.size(), 7);
        EXPECT_EQ(cells[2].toInt(), count);
        EXPECT_NEAR(cells[5].toDouble(), absolute / count, 5.1e-5);
        EXPECT_NEAR(cells[6].toDouble(), sum / count, 5.1e-5);
    }
}

TEST_F(CompareCommand, GivesTheSectorMeansOfTheResultAgain)
{
    auto options = smallScan();
    options.bScans = 9;
    const QString result = segmented("one", options);
    ASSERT_EQ(compare({result, result, "--out", path("c")}).status, 0);
    const QJsonObject record = QJsonDocument::fromJson(read(result + "/scan/run.json")).object();
    const QJsonObject means = record.value("etdrsMicrometres").toObject();
    int nrCompared = 0;
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
            const QString label = EtdrsTable::rowLabel(row);
            const QString sector = EtdrsTable::columnLabel(column);
            const QJsonValue mean = means.value(label + ' ' + sector);
            if (!mean.isDouble()) {
                continue;
            }
            const QStringList cells = csvCells(
                "c/sectors.csv", QString("scan,%1,%2,%3,%4,")
                                     .arg(label, EtdrsTable::topLayer(row)->getIdentifier(),
                                          EtdrsTable::bottomLayer(row)->getIdentifier(), sector));
            ASSERT_EQ(cells.size(), 14);
            EXPECT_NEAR(cells[7].toDouble(), mean.toDouble(), 5.1e-5);
            EXPECT_EQ(cells[9].toDouble(), 0.0);
            ++nrCompared;
        }
    }
    EXPECT_GT(nrCompared, 0);
}

TEST_F(CompareCommand, GivesTheOwnSectorMeansOfEitherEyeAgain)
{
    auto options = smallScan();
    options.bScans = 9;
    const QString right = segmented("right", options);
    options.rightEye = false;
    const QString left = segmented("left", options);
    const Finished run = compare({right, left, "--out", path("c")});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.errors.toStdString(), HasSubstr("One of A and B is a right eye"));
    expectOwnSectorMeans(right, left);
    EXPECT_EQ(compare({right, left, "--same-places"}).status, 1);
}

TEST_F(CompareCommand, GivesTheOwnSectorMeansOfTwoSessionsAgain)
{
    auto options = smallScan();
    options.bScans = 9;
    const QString first = segmented("first", options);
    options.seed = 2;
    const QString second = segmented("second", options);
    const Finished run = compare({first, second, "--out", path("c")});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.errors.toStdString(), HasSubstr("A and B are two acquisitions"));
    EXPECT_FALSE(QFileInfo::exists(path("c/difference_ILM.png")));
    expectOwnSectorMeans(first, second);

    ASSERT_EQ(compare({first, second, "--same-places", "--out", path("c")}).status, 0);
    EXPECT_TRUE(QFileInfo::exists(path("c/difference_ILM.png")));
}

TEST_F(CompareCommand, ComparesSegmentationsOfOneExportByPlace)
{
    auto options = smallScan();
    const QString first = segmented("first", options);
    options.imageFormat = "png";
    const QString xml = writeExport("second", options);
    const QString again = segmentedFrom(xml, "r-again", {});
    const QString otherChain = segmentedFrom(xml, "r-other", {"--chain", "normal"});
    for (const QString& other : {again, otherChain}) {
        const Finished run = compare({first, other, "--out", path("c")});
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(run.errors.toStdString(), Not(HasSubstr("acquisitions")));
        const QStringList cells = csvCells("c/surfaces.csv", "scan,ILM");
        ASSERT_GT(cells.size(), 5);
        EXPECT_EQ(cells[2].toInt(), 5 * 64);
        if (other == again) {
            EXPECT_EQ(cells[5].toDouble(), 0.0);
        }
    }
}

TEST_F(CompareCommand, LeavesMaskedAScansToTheSideThatHasThem)
{
    const QString whole = segmented("one");
    // All above the fovea.
    const double foveaY = kelp::phantom::describeExport(path("one"), smallScan()).foveaY;
    write("mask.txt", QString("-9,-9 99,-9 99,%1 -9,%1\n").arg(foveaY).toUtf8());
    const QString masked =
        segmentedFrom(path("one/export.xml"), "masked", {"--mask", path("mask.txt")});
    const int nrMasked = read(masked + "/scan/layer_ILM.csv").count("-1\t");
    const Finished run = compare({whole, masked, "--out", path("c")});
    EXPECT_EQ(run.status, 0) << run.errors.toStdString();
    const QStringList cells = csvCells("c/surfaces.csv", "scan,ILM");
    ASSERT_GT(cells.size(), 4);
    EXPECT_GT(nrMasked, 0);
    EXPECT_LT(nrMasked, 64 * 5);
    EXPECT_EQ(cells[2].toInt(), 64 * 5 - nrMasked);
    EXPECT_EQ(cells[3].toInt(), nrMasked);
    EXPECT_EQ(cells[4].toInt(), 0);
}

TEST_F(CompareCommand, ComparesSeveralScansTogetherAndNamesThoseWithoutAPartner)
{
    const QString a = segmented("one");
    QDir(a).rename("scan", "first_1");
    auto options = smallScan();
    options.seed = 2;
    const QString b = segmented("two", options);
    ASSERT_TRUE(QDir().rename(b + "/scan", a + "/second_1"));
    const QString copy = path("copy");
    for (const char* name : {"first_1", "second_1", "third_1"}) {
        const QString from = a + (QByteArray(name) == "second_1" ? "/second_1" : "/first_1");
        for (const QString& file : QDir(from).entryList(QDir::Files)) {
            QDir().mkpath(copy + '/' + name);
            ASSERT_TRUE(QFile::copy(from + '/' + file, copy + '/' + name + '/' + file));
        }
    }
    const Finished run = compare({a, copy, "--out", path("c")});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.errors.toStdString(),
                HasSubstr("tessera-compare: note: Only B has the scan third_1.\n"));
    EXPECT_THAT(run.output.toStdString(), HasSubstr("2 scans together"));
    EXPECT_THAT(run.output.toStdString(), HasSubstr("Scan second_1: 5 B-scans"));
    EXPECT_TRUE(QFileInfo::exists(path("c/first_1/difference_ILM.png")));
    EXPECT_TRUE(read("c/surfaces.csv").contains("all scans,ILM,640,0,0,0.0000"));
    EXPECT_TRUE(read("c/agreement.csv").contains(",2,0.0000,0.0000,0.0000,0.0000"));

    // A scan that cannot be read does not keep the other from being compared.
    write(copy + "/first_1/run.json", "{");
    const Finished broken = compare({a, copy});
    EXPECT_EQ(broken.status, 1);
    EXPECT_THAT(broken.errors.toStdString(), HasSubstr("tessera-compare: first_1: "));
    EXPECT_THAT(broken.output.toStdString(), HasSubstr("Scan second_1: 5 B-scans"));
}

TEST_F(CompareCommand, ComparesTwoSessionsOfDifferentSizesBySectors)
{
    auto options = smallScan();
    const QString a = segmented("one", options);
    options.bScans = 7;
    const QString b = segmented("two", options);
    const Finished run = compare({a, b, "--out", path("c")});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.errors.toStdString(), HasSubstr("so positions cannot be compared"));
    EXPECT_THAT(run.output.toStdString(), HasSubstr("each over its own A-scans"));
    EXPECT_FALSE(QFileInfo::exists(path("c/difference_ILM.png")));
    EXPECT_TRUE(QFileInfo::exists(path("c/bland_altman_sectors.png")));
}

TEST_F(CompareCommand, RefusesAFolderBeforeTheWork)
{
    const QString result = segmented("one");
    ASSERT_EQ(compare({result, result, "--out", path("c")}).status, 0);
    write("c/agreement.csv", "mine, and not in the way of a single scan");
    EXPECT_EQ(compare({result, result, "--out", path("c")}).status, 0);
    const auto before = filesBelow(path("c"));
    // It is compare.json that tells whose a file is.
    edit("c/compare.json", "\"surfaces.csv\"", "\"other.csv\"");
    const Finished foreign = compare({result, result, "--out", path("c")});
    EXPECT_EQ(foreign.status, 1);
    EXPECT_THAT(foreign.errors.toStdString(),
                HasSubstr("c/surfaces.csv: There is such a file already"));
    // Nothing was compared: not even the notes of the scan were told.
    EXPECT_EQ(foreign.output, "");
    EXPECT_EQ(foreign.errors.count('\n'), 1);
    edit("c/compare.json", "\"other.csv\"", "\"surfaces.csv\"");
    EXPECT_TRUE(filesBelow(path("c")) == before);
    const Finished unwritable = compare({result, result, "--out", "/proc/nowhere"});
    EXPECT_EQ(unwritable.status, 1);
    EXPECT_EQ(unwritable.output, "");
    EXPECT_EQ(unwritable.errors.count('\n'), 1);
}

TEST_F(CompareCommand, PrintsItsTablesAlsoWhereTheirFilesCannotBeWritten)
{
    const QString result = segmented("one");
    ASSERT_EQ(compare({result, result, "--out", path("c")}).status, 0);
    const auto before = filesBelow(path("c"));
    // The folder of the scan's pictures stands where the file would go.
    const QString scans = copies(result, {"scan", "agreement.csv"});
    const Finished run = compare({scans, scans, "--out", path("c")});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.errors.toStdString(), HasSubstr("agreement.csv: "));
    EXPECT_THAT(run.output.toStdString(), HasSubstr("2 scans together"));
    EXPECT_THAT(run.output.toStdString(), HasSubstr("Scan agreement.csv: 5 B-scans"));
    EXPECT_TRUE(filesBelow(path("c")) == before);
}

TEST_F(CompareCommand, LeavesTheFormerComparisonWholeWhenItIsEndedBefore)
{
    const QString result = segmented("one");
    QStringList names;
    for (int i = 0; i < 60; ++i) {
        names.append(QString("scan_%1").arg(i));
    }
    const QString scans = copies(result, names);
    for (const int signal : {SIGTERM, SIGINT, SIGKILL}) {
        ASSERT_EQ(compare({result, result, "--out", path("c")}).status, 0);
        const auto before = filesBelow(path("c"));
        const auto process = startComparing({scans, scans, "--out", path("c")});
        ASSERT_TRUE(waitUntil([this] { return hasPicturesInTheMaking(path("c")); }));
        kill(static_cast<pid_t>(process->processId()), signal);
        ASSERT_TRUE(process->waitForFinished(60000));
        EXPECT_EQ(process->readAllStandardOutput(), QByteArray());
        auto after = filesBelow(path("c"));
        if (signal == SIGKILL) {
            EXPECT_EQ(process->exitStatus(), QProcess::CrashExit);
            EXPECT_GT(after.size(), before.size());
            removeHidden(after);
        } else {
            EXPECT_EQ(process->exitCode(), 128 + signal);
        }
        EXPECT_TRUE(after == before);
    }
    ASSERT_EQ(compare({result, result, "--out", path("c")}).status, 0);
    EXPECT_FALSE(hasPicturesInTheMaking(path("c")));
    // A new folder of an ended comparison is none that holds other files.
    const auto process = startComparing({scans, scans, "--out", path("new")});
    ASSERT_TRUE(waitUntil([this] { return hasPicturesInTheMaking(path("new")); }));
    process->kill();
    ASSERT_TRUE(process->waitForFinished(60000));
    EXPECT_EQ(compare({result, result, "--out", path("new")}).status, 0);
    EXPECT_EQ(QDir(path("new")).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList());
}

TEST_F(CompareCommand, AnswersWrongUsageWithStatusTwo)
{
    const Finished run = compare({"one"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors.toStdString(),
                HasSubstr("tessera-compare: Two results are compared, A and B; 1 given.\nUsage: "));
    EXPECT_EQ(compare({"--help"}).output.left(22), "Usage: tessera-compare");
    EXPECT_EQ(compare({"--version"}).output, "tessera-compare " TESSERA_VERSION "\n");
    const Finished missing = compare({path("no"), path("nothing")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.errors.toStdString(), HasSubstr("/no: There is no such folder."));
}

} // namespace
