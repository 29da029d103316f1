#include "CompareOptions.h"
#include "CompareTestTools.h"
#include "ComparisonCsv.h"
#include "ComparisonText.h"
#include "TextTable.h"
#include "UsageError.h"

#include <QGuiApplication>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>

using namespace kelp::compare;
using namespace kelp::compare::test;
using kelp::command::UsageError;
using kelp::oct::EtdrsTable;

namespace {

Options parse(const QStringList& arguments)
{
    return parseCommandLine(QStringList{"tessera-compare"} + arguments);
}

TEST(CompareOptions, AreReadFromTheCommandLine)
{
    const Options options =
        parse({"x", "y", "--out", "d", "--map", "P=BM", "--map", "Q=ILM", "--tables-b", "*.g2.tsv",
               "--axial-micrometres", "3.9", "--fovea", "-1.5,2", "--same-places"});
    EXPECT_EQ(options.a, "x");
    EXPECT_EQ(options.b, "y");
    EXPECT_EQ(options.out, "d");
    EXPECT_EQ(options.columns.identifierOf("Q"), "ILM");
    EXPECT_EQ(options.tablesA, "*.tsv");
    EXPECT_EQ(options.tablesB, "*.g2.tsv");
    EXPECT_EQ(*options.axialMicrometres, 3.9);
    EXPECT_EQ(*options.fovea, CoordOnLocalizer(-1.5, 2.0));
    EXPECT_EQ(options.words(),
              (QStringList{"--map", "P=BM", "--map", "Q=ILM", "--tables-b", "*.g2.tsv",
                           "--axial-micrometres", "3.9", "--fovea", "-1.5,2", "--same-places"}));
    EXPECT_TRUE(options.samePlaces);
    EXPECT_FALSE(parse({"x", "y"}).samePlaces);
}

TEST(CompareOptions, ThatMakeNoSenseAreRefused)
{
    for (const QStringList& arguments : {QStringList{},
                                         {"x"},
                                         {"x", "y", "z"},
                                         {"x", ""},
                                         {"x", "y", "--out", ""},
                                         {"x", "y", "--axial-micrometres", "0"},
                                         {"x", "y", "--axial-micrometres", "-3"},
                                         {"x", "y", "--axial-micrometres", "nan"},
                                         {"x", "y", "--fovea", "1"},
                                         {"x", "y", "--fovea", "1,2,3"},
                                         {"x", "y", "--fovea", "a,b"},
                                         {"x", "y", "--map", "P"},
                                         {"x", "y", "--no-such-option"}}) {
        EXPECT_THROW(parse(arguments), UsageError) << arguments.join(' ').toStdString();
    }
    EXPECT_TRUE(parse({"--help"}).action == Options::Action::PrintHelp);
    EXPECT_TRUE(parse({"--version"}).action == Options::Action::PrintVersion);
}

TEST(CompareOptions, HelpFitsATerminal)
{
    for (const QString& line : helpText().split('\n')) {
        EXPECT_LE(line.size(), 90) << line.toStdString();
    }
}

TEST(TextTable, LinesColumnsUp)
{
    TextTable table({"name", "n", "mean"}, 1);
    table.addRow({"a", "10", "1.00"});
    table.addGap();
    table.addRow({"longer", "2", "-10.25"});
    EXPECT_EQ(table.text(), "name     n    mean\n"
                            "a       10    1.00\n"
                            "\n"
                            "longer   2  -10.25\n");
}

TEST(DecimalText, HasNoNegativeNothing)
{
    EXPECT_EQ(decimalText(-0.001), "0.00");
    EXPECT_EQ(decimalText(-0.006), "-0.01");
    EXPECT_EQ(decimalText(2.0, 4), "2.0000");
    EXPECT_EQ(decimalText(std::nullopt), "-");
}

ScanComparison flatComparison(double rowsApart)
{
    ScanSurfaces a = scanWithFacts(10, 50);
    ScanSurfaces b = a;
    a.surfaces["ILM"] =
        surfaceOf(10, 50, [=](int z, int) { return 20.0 + (z == 3 ? rowsApart : 0); });
    b.surfaces["ILM"] = surfaceOf(
        10, 50, [](int, int x) { return x < 5 ? std::numeric_limits<double>::quiet_NaN() : 20.0; });
    a.surfaces["BM"] = surfaceOf(10, 50, [](int, int) { return 60.0; });
    b.surfaces["BM"] = surfaceOf(10, 50, [](int, int) { return 58.0; });
    return compareScans("scan", a, b, {});
}

QString textOf(const QList<ScanComparison>& scans)
{
    ComparisonPool pool;
    ComparisonText text("a", "b");
    for (const ScanComparison& scan : scans) {
        pool.add(scan);
        text.add(scan);
    }
    return text.text(pool);
}

TEST(ComparisonText, CountsBScansFromOne)
{
    const QStringList lines = textOf({flatComparison(10.0)}).split('\n');
    const int header = lines.indexOf(QRegularExpression("^B-scan +ILM .*"));
    ASSERT_GE(header, 0);
    EXPECT_TRUE(lines[header + 1].simplified().startsWith("1 0.00 "));
    EXPECT_TRUE(lines[header + 4].simplified().startsWith("4 10.00 "));
    EXPECT_TRUE(lines[header + 10].simplified().startsWith("10 0.00 "));
}

TEST(ComparisonText, SaysWhoseTheLimitsAre)
{
    const ScanComparison scan = flatComparison(10.0);
    EXPECT_TRUE(textOf({scan}).contains("limits of agreement are those of the A-scans"));
    EXPECT_TRUE(textOf({scan, scan}).contains("limits of agreement are those of the sector means"));
    EXPECT_FALSE(textOf({scan, scan}).contains("SD of A-scans"));
}

TEST(ComparisonText, MarksSectorsThatTheBorderOfOneScanCuts)
{
    ScanComparison scan = flatComparison(10.0);
    ASSERT_GT(scan.sectors.size(), 1);
    EXPECT_FALSE(textOf({scan}).contains('*'));
    scan.sectors[1].cutB = true;
    const QString sector = EtdrsTable::columnLabel(scan.sectors[1].column);
    const QStringList starred = textOf({scan}).split('\n').filter("*");
    ASSERT_EQ(starred.size(), 2);
    EXPECT_TRUE(starred[0].startsWith("Complete Retina  " + sector + " *  "))
        << starred[0].toStdString();
    EXPECT_TRUE(starred[1].startsWith("* the border of the scan cuts this sector"));
}

TEST(ComparisonText, OfOneScanThatStayedAloneAmongSeveralIsThatOfOne)
{
    const QString text = textOf({flatComparison(10.0)});
    EXPECT_TRUE(text.startsWith("A: result\nB: result\n\nScan scan: ")) << text.toStdString();
    EXPECT_FALSE(text.contains("together"));
}

TEST(ComparisonText, FitsAHundredColumnsAlsoWithSevenSurfaces)
{
    ScanSurfaces a = scanWithFacts(12, 50);
    ScanSurfaces b = a;
    for (const QString& identifier : knownSurfaces()) {
        const double depth = 300.0 * (1 + knownSurfaces().indexOf(identifier));
        a.surfaces[identifier] =
            surfaceOf(12, 50, [=](int z, int x) { return depth + 20 * z * x; });
        b.surfaces[identifier] = surfaceOf(12, 50, [=](int z, int) { return depth - z; });
    }
    ScanComparison scan = compareScans("s", a, b, {});
    for (SectorComparison& sector : scan.sectors) {
        sector.cutA = true;
    }
    const QString one = textOf({scan});
    for (const QString& text : {one, textOf({scan, scan})}) {
        for (const QString& line : text.split('\n')) {
            EXPECT_LE(line.size(), 100) << line.toStdString();
        }
    }
    EXPECT_TRUE(one.contains("12 B-scans of 50 A-scans, a row is 4 \u00b5m"));
    EXPECT_TRUE(one.contains("lower limit"));
}

TEST(ComparisonCsv, HoldsWhatIsPrintedWithFourDecimals)
{
    const ScanComparison scan = flatComparison(10.0);
    EXPECT_TRUE(surfacesHeader().startsWith("scan,surface,A-scans compared,A-scans only in A,"));
    EXPECT_TRUE(surfacesHeader().contains("median absolute difference (rows)"));
    const QList<QByteArray> surfaces = surfaceLines("scan", surfacesOf(scan)).split('\n');
    ASSERT_EQ(surfaces.size(), 3);
    // 45 of 450 A-scans are 10 rows apart.
    EXPECT_TRUE(surfaces[0].startsWith("scan,ILM,450,50,0,1.0000,1.0000,"))
        << surfaces[0].toStdString();
    EXPECT_TRUE(surfaces[1].startsWith("scan,BM,500,0,0,2.0000,2.0000,0.0000,2.0000,2.0000,2.0000,"
                                       "0.0000,8.0000,8.0000,0.0000,"))
        << surfaces[1].toStdString();

    EXPECT_TRUE(bScansHeader().startsWith("scan,surface,B-scan (from 1),"));
    const QList<QByteArray> bScans = bScanLines(scan).split('\n');
    ASSERT_EQ(bScans.size(), 21);
    EXPECT_TRUE(bScans[0].startsWith("scan,ILM,1,45,5,0,0.0000,")) << bScans[0].toStdString();
    EXPECT_TRUE(bScans[3].startsWith("scan,ILM,4,45,5,0,10.0000,10.0000,0.0000,"))
        << bScans[3].toStdString();
}

TEST(ComparisonCsv, SaysWhoseTheLimitsAreAndWhichSectorsAreCut)
{
    ScanComparison scan = flatComparison(10.0);
    ASSERT_GT(scan.sectors.size(), 3);
    scan.sectors[0].cutA = true;
    scan.sectors[1].cutB = true;
    scan.sectors[2].cutA = true;
    scan.sectors[2].cutB = true;
    EXPECT_TRUE(
        sectorsHeader().endsWith(",standard deviation of the A-scans (micrometres),"
                                 "lower limit of agreement of the A-scans (micrometres),"
                                 "upper limit of agreement of the A-scans (micrometres),cut in\n"))
        << sectorsHeader().toStdString();
    const QList<QByteArray> sectors = sectorLines(scan).split('\n');
    EXPECT_TRUE(sectors[0].startsWith("scan,Complete Retina,ILM,BM,C,"));
    const auto lastCell = [&](int line) { return sectors[line].split(',').last(); };
    EXPECT_EQ(lastCell(0), "A");
    EXPECT_EQ(lastCell(1), "B");
    EXPECT_EQ(lastCell(2), "A B");
    EXPECT_EQ(lastCell(3), "");
    for (const QByteArray& line : sectors.mid(0, 4)) {
        EXPECT_EQ(line.count(','), sectorsHeader().count(',')) << line.toStdString();
    }

    ComparisonPool pool;
    pool.add(scan);
    pool.add(scan);
    const QByteArray agreement = agreementCsv(pool.agreements());
    EXPECT_TRUE(agreement.contains(",lower limit of agreement over scans (micrometres),"));
    EXPECT_TRUE(agreement.contains("\nComplete Retina,ILM,BM,C,2,"));
}

/// Rows that are not whole, and another height of a row in each scan.
TEST(ComparisonPool, AmountsToWhatTheDifferencesOfAllScansAmountTo)
{
    ComparisonPool pool;
    std::vector<double> rows;
    std::vector<double> micrometres;
    for (int scan = 1; scan <= 3; ++scan) {
        ScanSurfaces a = scanWithFacts(4, 50);
        a.facts->axialMillimetres = 0.001 * scan;
        ScanSurfaces b = a;
        a.surfaces["ILM"] =
            surfaceOf(4, 50, [=](int z, int x) { return 20.0 + (7 * x * scan + z) % 11 / 4.0; });
        b.surfaces["ILM"] = surfaceOf(4, 50, [=](int, int x) { return 21.0 + x % 3 / 10.0; });
        const ScanComparison compared = compareScans("scan", a, b, {});
        for (const SurfaceOverlap& overlap : compared.surfaces.first().bScans) {
            for (const double difference : overlap.differences) {
                rows.push_back(difference);
                micrometres.push_back(difference * *compared.axialMicrometres);
            }
        }
        pool.add(compared);
    }
    const SurfaceSummary pooled = pool.surfaces().first();
    for (const auto& [found, values] :
         {std::pair(pooled.rows, rows), std::pair(pooled.micrometres, micrometres)}) {
        std::vector<double> sorted = values;
        std::sort(sorted.begin(), sorted.end());
        double sum = 0.0;
        for (const double value : sorted) {
            sum += value;
        }
        const double mean = sum / 600.0;
        double squares = 0.0;
        for (const double value : sorted) {
            squares += (value - mean) * (value - mean);
        }
        EXPECT_EQ(found.count, 600);
        EXPECT_NEAR(*found.mean, mean, 1e-12);
        EXPECT_NEAR(*found.standardDeviation, std::sqrt(squares / 599.0), 1e-12);
        EXPECT_NEAR(*found.median, (sorted[299] + sorted[300]) / 2.0, 1e-12);
    }
}

/// The same scan again and again adds nothing to be kept.
TEST(ComparisonPool, CountsWholeRowsInsteadOfKeepingThem)
{
    ComparisonPool pool;
    const ScanComparison scan = flatComparison(10.0);
    for (int i = 0; i < 20; ++i) {
        pool.add(scan);
    }
    const auto& thicknesses = pool.thicknesses(EtdrsTable::nrRows - 1);
    EXPECT_EQ(thicknesses.total(), 20 * 450);
    EXPECT_EQ(thicknesses.entries().size(), 2U);
    EXPECT_EQ(pool.surfaces().first().rows.count, 20 * 450);
    EXPECT_DOUBLE_EQ(*pool.surfaces().first().rows.mean, 1.0);
}

} // namespace

int main(int argc, char** argv)
{
    const QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
