#include "CompareInput.h"

#include "CompareTestTools.h"
#include "SegmentResult.h"
#include "UsageError.h"

using namespace kelp::compare;
using namespace kelp::compare::test;
using kelp::command::UsageError;
using kelp::oct::EtdrsTable;
using testing::HasSubstr;

namespace {

const QByteArray smallRecord = R"({
  "program": "tessera-segment", "version": "1.2", "chain": "normal",
  "warnings": ["INL: at the upper end of its search range"], "outcome": "segmented",
  "size": {"aScans": 3, "rows": 50, "bScans": 2},
  "spacingMillimetres": {"aScans": 0.01, "rows": 0.004, "bScans": 0.2},
  "layers": ["ILM"], "pixelDigest": "sha1:0a", "notFound": ["ONL"],
  "etdrsCoverage": {"C": {"cut": false}, "T2": {"cut": true}},
  "bScanEnds": [
    {"first": {"xMillimetres": 1, "yMillimetres": 2},
     "last": {"xMillimetres": 3, "yMillimetres": 2}},
    {"first": {"xMillimetres": 1, "yMillimetres": 4},
     "last": {"xMillimetres": 3, "yMillimetres": 5}}],
  "etdrsGrid": {"xMillimetres": 2.5, "yMillimetres": 3.5, "rightEye": true}
})";

class CompareInput : public FolderFixture
{
protected:
    void writeResult(const QString& folder, const QByteArray& record = smallRecord) const
    {
        write(folder + "/run.json", record);
        write(folder + "/layer_ILM.csv", "1\t-1\t3\t\n4\t5\t6\t\n");
    }
};

TEST_F(CompareInput, AResultHasItsPositionsSpacingsPlacesAndGrid)
{
    writeResult("r");
    const ScanSurfaces scan = readSegmentResult(path("r"));
    EXPECT_EQ(scan.nrBScans, 2);
    EXPECT_EQ(scan.nrAScans, 3);
    ASSERT_EQ(scan.surfaces.keys(), QStringList{"ILM"});
    EXPECT_FALSE(scan.surfaces["ILM"].has(0, 1));
    EXPECT_EQ(scan.surfaces["ILM"].at(0, 2), 3.0);
    EXPECT_EQ(scan.surfaces["ILM"].at(1, 0), 4.0);
    ASSERT_TRUE(scan.facts && scan.facts->places && scan.facts->grid);
    EXPECT_EQ(scan.facts->version, "1.2");
    EXPECT_EQ(scan.facts->chain, "normal");
    EXPECT_EQ(scan.facts->warnings, QStringList{"INL: at the upper end of its search range"});
    EXPECT_EQ(scan.facts->axialMillimetres, 0.004);
    EXPECT_EQ(scan.facts->places->at(1, 1), CoordOnLocalizer(2.0, 4.5));
    EXPECT_EQ(scan.facts->grid->center, CoordOnLocalizer(2.5, 3.5));
    EXPECT_TRUE(scan.facts->grid->rightEye);
    EXPECT_EQ(scan.facts->pixelDigest, "sha1:0a");
    for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
        EXPECT_EQ(scan.facts->cutSectors[static_cast<std::size_t>(column)],
                  EtdrsTable::columnLabel(column) == "T2");
    }
}

TEST_F(CompareInput, SurfacesThatTheRunDidNotFindAreNoResult)
{
    writeResult("r");
    write("r/layer_ONL.csv", "1\t1\t1\t\n1\t1\t1\t\n");
    const ScanSurfaces scan = readSegmentResult(path("r"));
    EXPECT_EQ(scan.surfaces.keys(), QStringList{"ILM"});
    EXPECT_EQ(scan.facts->notFound, QStringList{"ONL"});
    writeResult("r", QByteArray(smallRecord).replace("[\"ONL\"]", "[\"ILM\", \"ONL\"]"));
    expectFailure([this] { readSegmentResult(path("r")); }, "r: The run found no surface.");
}

TEST_F(CompareInput, AResultOfAnOlderVersionHasNoPlaces)
{
    QByteArray record = smallRecord;
    writeResult("r", record.replace("bScanEnds", "other").replace("etdrsGrid", "else"));
    const ScanSurfaces scan = readSegmentResult(path("r"));
    ASSERT_TRUE(scan.facts);
    EXPECT_FALSE(scan.facts->places);
    EXPECT_FALSE(scan.facts->grid);
}

TEST_F(CompareInput, PositionsThatTheApplicationExportedNeedNoRecord)
{
    write("r/layer_BM.csv", "7\t8\t\r\n");
    const ScanSurfaces scan = readSegmentResult(path("r"));
    EXPECT_FALSE(scan.facts);
    EXPECT_EQ(scan.nrBScans, 1);
    EXPECT_EQ(scan.nrAScans, 2);
    EXPECT_EQ(scan.surfaces["BM"].at(0, 1), 8.0);
}

TEST_F(CompareInput, ABrokenResultIsRefusedWithItsFileAndReason)
{
    const auto expectRefused = [this](const std::string& words) {
        expectFailure([this] { readSegmentResult(path("r")); }, words);
    };
    writeResult("r", "{\"outcome\": ");
    expectRefused("r/run.json: This is no readable record of a run");
    writeResult("r", "[]");
    expectRefused("r/run.json: This is no readable record of a run");
    writeResult("r", "{\"outcome\": \"failed\"}");
    expectRefused("r/run.json: This is no record of a scan that was segmented.");
    writeResult("r", QByteArray(smallRecord).replace("\"bScans\": 2", "\"bScans\": 0"));
    expectRefused("Its number of bScans is missing or below 1.");
    writeResult("r", QByteArray(smallRecord).replace("0.004", "0"));
    expectRefused("Its spacing of rows is missing or not from 0 to 100 mm.");
    writeResult("r", QByteArray(smallRecord).replace("\"bScans\": 2", "\"bScans\": 3"));
    expectRefused("It has 3 B-scans and the ends of 2.");
    writeResult("r", QByteArray(smallRecord).replace("\"aScans\": 3", "\"aScans\": 4"));
    expectRefused("layer_ILM.csv: It holds 2 B-scans of 3 A-scans where the scan has 2 of 4.");
    writeResult("r", QByteArray(smallRecord).replace("[\"ILM\"]", "[\"ILM\", \"BM\"]"));
    expectRefused("layer_BM.csv: The file is missing");
    writeResult("r");
    write("r/layer_ILM.csv", "1\t2\t3\t\n4\t5\t\n");
    expectRefused("layer_ILM.csv: Line 2: It has 2 positions where the first line has 3.");
    write("r/layer_ILM.csv", "1\t2\tx\t\n4\t5\t6\t\n");
    expectRefused("layer_ILM.csv: Line 1: \"x\" is not a position.");
    write("r/layer_ILM.csv", "1\t2\t-2\t\n4\t5\t6\t\n");
    expectRefused("Line 1: \"-2\" is not a position.");
    write("r/layer_ILM.csv", "");
    expectRefused("layer_ILM.csv: It holds no positions.");
}

TEST_F(CompareInput, TablesAreTakenInNaturalOrderWithTheirColumnsMapped)
{
    write("t/b2.tsv", "col\tRPE_MID\tBM\tOPL\n0\t20\t21\t1\n");
    write("t/b10.tsv", "col\tRPE_MID\tBM\tOPL\n1\t30.5\t\t1\n");
    const auto names = ColumnNames::fromTexts({"RPE_MID=IRPE"});
    const ScanSurfaces scan = readReferenceTables(path("t"), tableFiles(path("t"), "*.tsv"), names);
    EXPECT_EQ(scan.nrBScans, 2);
    EXPECT_EQ(scan.nrAScans, 2);
    EXPECT_EQ(scan.surfaces.keys(), (QStringList{"BM", "IRPE"}));
    EXPECT_EQ(scan.surfaces["IRPE"].at(0, 0), 20.0);
    EXPECT_FALSE(scan.surfaces["IRPE"].has(0, 1));
    EXPECT_EQ(scan.surfaces["IRPE"].at(1, 1), 30.5);
    EXPECT_FALSE(scan.surfaces["BM"].has(1, 1));
    ASSERT_EQ(scan.notes.size(), 1);
    EXPECT_THAT(scan.notes[0].toStdString(), HasSubstr("the columns OPL stand for no surface"));
}

TEST_F(CompareInput, TablesMustGoWithTheScan)
{
    write("t/b1.tsv", "col\tBM\n0\t20\n");
    write("t/b2.tsv", "col\tBM\n5\t20\n");
    const auto files = tableFiles(path("t"), "*.tsv");
    const auto read = [&](int nrBScans, int nrAScans) {
        return readReferenceTables(path("t"), files, {}, ScanSize{nrBScans, nrAScans});
    };
    expectFailure([&] { read(3, 6); }, "There are 2 tables for the 3 B-scans of the other side");
    expectFailure([&] { read(2, 5); },
                  "b2.tsv: It names A-scan 5, but the B-scan has only 5, counted from 0.");
    EXPECT_EQ(read(2, 9).nrAScans, 9);
    write("t/b2.tsv", "col\tBM\tCHOROID\n5\t20\t1\n");
    const auto names = ColumnNames::fromTexts({"CHOROID=BM"});
    expectFailure([&] { readReferenceTables(path("t"), files, names); },
                  "b2.tsv: Two columns stand for the surface BM.");
    write("t/b2.tsv", "col\tBM\n5\tx\n");
    expectFailure([&] { read(2, 9); }, "b2.tsv: Line 2: \"x\" is not an image row.");
}

TEST_F(CompareInput, AColumnThatNoTableHasIsTold)
{
    write("t/b1.tsv", "col\tBM\n0\t20\n");
    const ScanSurfaces scan = readReferenceTables(path("t"), tableFiles(path("t"), "*.tsv"),
                                                  ColumnNames::fromTexts({"RPE=IRPE"}));
    ASSERT_EQ(scan.notes.size(), 1);
    EXPECT_THAT(scan.notes[0].toStdString(), HasSubstr("no table has a column \"RPE\""));
}

TEST(ColumnNames, AreNamesOfKnownSurfaces)
{
    const auto names = ColumnNames::fromTexts({"ISM_ISE=ISe", " a=b = BM"});
    EXPECT_EQ(names.identifierOf("ISM_ISE"), "ISe");
    EXPECT_EQ(names.identifierOf("a=b"), "BM");
    EXPECT_EQ(names.identifierOf("GCL"), "GCL");
    EXPECT_EQ(names.identifierOf("ILMcoarse"), "");
    EXPECT_THROW(ColumnNames::fromTexts({"ILM"}), UsageError);
    EXPECT_THROW(ColumnNames::fromTexts({"=ILM"}), UsageError);
    EXPECT_THROW(ColumnNames::fromTexts({"X=ILMcoarse"}), UsageError);
    EXPECT_THROW(ColumnNames::fromTexts({"X=ILM", "X=BM"}), UsageError);
}

TEST_F(CompareInput, ScansArePairedByTheNamesOfTheirFolders)
{
    for (const char* name : {"a/x_1", "a/y_1", "a/z_1", "b/z_1", "b/x_1", "b/w_1", "b/v_1"}) {
        writeResult(name);
    }
    const auto pairing = pairScans(listScans(path("a"), "*.tsv"), listScans(path("b"), "*.tsv"));
    ASSERT_EQ(pairing.pairs.size(), 2);
    EXPECT_EQ(pairing.pairs[0].first.path, path("a/x_1"));
    EXPECT_EQ(pairing.pairs[0].second.path, path("b/x_1"));
    EXPECT_EQ(pairing.pairs[1].second.name, "z_1");
    EXPECT_EQ(pairing.notes,
              (QStringList{"Only A has the scan y_1.", "Only B has the scans v_1, w_1."}));
}

TEST_F(CompareInput, OneScanOnBothSidesIsAPairAndNoCommonNameIsAFailure)
{
    for (const char* name : {"a/x_1", "b/y_1", "c/u_1", "c/v_1"}) {
        writeResult(name);
    }
    EXPECT_EQ(pairScans(listScans(path("a"), "*"), listScans(path("b/y_1"), "*")).pairs.size(), 1);
    expectFailure([this] { pairScans(listScans(path("a"), "*"), listScans(path("c"), "*")); },
                  "No scan of A (x_1) has the name of one of B (u_1, v_1).");
}

TEST_F(CompareInput, AFolderThatHoldsNothingToCompareIsRefused)
{
    expectFailure([this] { listScans(path("missing"), "*.tsv"); }, "There is no such folder.");
    QDir().mkpath(path("empty/sub"));
    expectFailure([this] { listScans(path("empty"), "*.tsv"); },
                  "The folder holds no result of tessera-segment");
    write("empty/x.csv", "1");
    expectFailure([this] { listScans(path("empty"), "*.g1.tsv"); }, "no tables (*.g1.tsv)");
}

TEST_F(CompareInput, TheTablesOfTwoGradersAreChosenByTheirNames)
{
    for (const char* name : {"t/b1.g1.tsv", "t/b1.g2.tsv", "t/b2.g1.tsv", "t/b2.g2.tsv"}) {
        write(name, "col\tBM\n0\t20\n");
    }
    const auto sources = listScans(path("t"), "*.g2.tsv");
    ASSERT_EQ(sources.size(), 1);
    EXPECT_EQ(sources[0].tables, (QStringList{path("t/b1.g2.tsv"), path("t/b2.g2.tsv")}));
    EXPECT_EQ(listScans(path("t/b1.g1.tsv"), "*")[0].tables, QStringList{path("t/b1.g1.tsv")});
}

TEST_F(CompareInput, TwoGradersMayEndAtDifferentAScans)
{
    write("a/b1.tsv", "col\tBM\n0\t20\n1\t21\n");
    write("b/b1.tsv", "col\tBM\n0\t20\n5\t21\n");
    const auto pairing = pairScans(listScans(path("a"), "*.tsv"), listScans(path("b"), "*.tsv"));
    const auto [a, b] = readPair(pairing.pairs[0], {});
    EXPECT_EQ(a.nrAScans, 2);
    EXPECT_EQ(b.nrAScans, 6);
}

TEST_F(CompareInput, TablesInFrontOfAResultTakeItsSize)
{
    writeResult("r");
    write("t/b1.tsv", "col\tILM\n0\t20\n");
    write("t/b2.tsv", "col\tILM\n0\t20\n");
    const auto pairing = pairScans(listScans(path("t"), "*.tsv"), listScans(path("r"), "*.tsv"));
    const auto [a, b] = readPair(pairing.pairs[0], {});
    EXPECT_EQ(a.nrAScans, 3);
    EXPECT_FALSE(a.facts);
    EXPECT_TRUE(b.facts);
}

} // namespace
