#include "CommandFixture.h"
#include "CsvText.h"
#include "Display.h"
#include "JsonWriter.h"
#include "Protocol.h"
#include "RunRecord.h"
#include "StoredRecord.h"
#include "Summary.h"
#include "kelpException.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <limits>

using namespace kelp::command;

namespace {

TEST(CsvText, QuotesOnlyWhatNeedsIt)
{
    EXPECT_EQ(csvLine({"a", "", "b c"}), "a,,b c\n");
    EXPECT_EQ(csvLine({"a,b", "say \"x\"", "two\nlines", " edge"}),
              "\"a,b\",\"say \"\"x\"\"\",\"two\nlines\",\" edge\"\n");
}

TEST(JsonText, KeepsTheOrderAndWritesPlainNumbers)
{
    JsonWriter json;
    json.beginObject();
    json.value("z", 1e-7);
    json.value("a", 123456789012.0);
    json.beginArray("list");
    json.value(QString(), 1);
    json.value(QString(), true);
    json.endArray();
    json.beginObject("empty");
    json.endObject();
    json.null("none");
    json.endObject();
    EXPECT_EQ(json.text(), "{\n  \"z\": 0.0000001,\n  \"a\": 123456789012,\n  \"list\": [\n    1,\n"
                           "    true\n  ],\n  \"empty\": {},\n  \"none\": null\n}\n");
}

TEST(JsonText, KeepsAListOfNumbersOnOneLine)
{
    JsonWriter json;
    json.beginObject();
    json.numbers("some", {0.25, 3.0, std::numeric_limits<double>::quiet_NaN()});
    json.numbers("none", {});
    json.endObject();
    EXPECT_EQ(json.text(), "{\n  \"some\": [0.25, 3, null],\n  \"none\": []\n}\n");
}

TEST(JsonText, NumbersReadBackExactly)
{
    for (const double number : {0.1, 1.0 / 3.0, 0.003872, 5e-324, 1.7976931348623157e308}) {
        EXPECT_EQ(plainNumber(number).toDouble(), number);
        EXPECT_FALSE(plainNumber(number).contains('e'));
    }
    EXPECT_EQ(plainNumber(std::numeric_limits<double>::quiet_NaN()), "null");
}

TEST(JsonText, TextsReadBackExactly)
{
    const QString text = QString::fromUtf8("quote \" slash \\ line \n tab \t bell \a ä € 😀");
    JsonWriter json;
    json.beginArray();
    json.value(QString(), text);
    json.endArray();
    EXPECT_EQ(QJsonDocument::fromJson(json.text())[0].toString(), text);
}

TEST(ScanMessages, KeepTheirTextOnOneLine)
{
    const ScanMessage message{ScanMessage::Kind::Failure, 7,
                              QString::fromUtf8("100 %\nof \"ä\"\r\n done")};
    const QByteArray line = message.toLine();
    EXPECT_EQ(line.count('\n'), 1);
    EXPECT_TRUE(line.endsWith('\n'));
    const auto read = ScanMessage::fromLine(line);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->kind, message.kind);
    EXPECT_EQ(read->percentage, 7);
    EXPECT_EQ(read->text, message.text);
}

TEST(ScanMessages, AreNotFoundInOtherLines)
{
    for (const char* line : {"", "\n", "P\n", "P x y\n", "X 1 y\n", "hello world\n", "P 5\n"}) {
        EXPECT_FALSE(ScanMessage::fromLine(line)) << line;
    }
}

TEST(ScanMessages, CarryTheWholeRequest)
{
    ScanRequest request;
    request.input = QString::fromUtf8("/d/ä \"x\".xml");
    request.series = "1";
    request.buildFolder = "/out";
    request.verbose = true;
    request.settings.chain = kelp::oct::SegmentationChain::Drusen;
    request.settings.centerMask = true;
    request.settings.formats = Formats::fromNames("raw");
    request.settings.maskPolygons = {QPolygonF({{0.1, 0.2}, {1.0 / 3.0, -4}, {5, 6}})};
    const ScanRequest read = ScanRequest::fromJson(request.toJson());
    EXPECT_EQ(read.input, request.input);
    EXPECT_EQ(read.series, "1");
    EXPECT_EQ(read.buildFolder, "/out");
    EXPECT_TRUE(read.verbose);
    EXPECT_TRUE(read.settings == request.settings);
    EXPECT_THROW(ScanRequest::fromJson("{}"), kelp::ParsingError);
}

TEST(RunRecords, TellWhereTheyDiffer)
{
    ScanSettings recorded;
    ScanSettings wanted;
    EXPECT_EQ(describeDifference(recorded, wanted), "");
    recorded.etdrsMask = true;
    wanted.chain = kelp::oct::SegmentationChain::Mouse;
    EXPECT_EQ(describeDifference(recorded, wanted), "chain normal, --etdrs-mask");
    EXPECT_EQ(describeDifference(wanted, recorded), "chain mouse, no mask");
}

TEST(SummaryText, CountsTheRowsByOutcomeAndThoseWithWarnings)
{
    StoredRecord clean;
    clean.warnings.emplace();
    StoredRecord warned;
    warned.warnings.emplace(QStringList{"ONL: no surface found", "BM: at its end"});
    using Kind = ScanOutcome::Kind;
    ScanPlan plan;
    EXPECT_EQ(summaryText(plan, {{Kind::Segmented, "", clean}}), "1 segmented");
    EXPECT_EQ(summaryText(plan, {{Kind::Segmented, "", warned},
                                 {Kind::Segmented, "", clean},
                                 {Kind::Skipped, "", StoredRecord()},
                                 {Kind::Skipped, "", warned}}),
              "2 segmented (1 with warnings), 2 skipped (1 with warnings)");
    plan.problems = {{"a.xml", "is no export"}};
    EXPECT_EQ(summaryText(plan, {{Kind::Failed, "", std::nullopt}}), "2 failed");
}

TEST(Words, FollowTheirNumber)
{
    EXPECT_EQ(counted(1, "B-scan"), "1 B-scan");
    EXPECT_EQ(counted(49, "B-scan"), "49 B-scans");
    EXPECT_EQ(withWarnings(0), "");
    EXPECT_EQ(withWarnings(1), " with 1 warning");
    EXPECT_EQ(withWarnings(2), " with 2 warnings");
}

class StoredRunRecord : public kelp::command::test::CommandFixture
{
};

TEST_F(StoredRunRecord, ReadsBackWhatWasWritten)
{
    RunRecord record;
    record.input = "/d/e.xml";
    record.series = "5";
    record.settings.etdrsMask = true;
    record.etdrs.means[2][3] = 41.0 / 3.0;
    record.etdrs.coverage[4] = {70, 80, 100};
    record.fill = {123456789012, 49};
    record.warnings = QStringList{"GCL, INL: no \"surface\"", "ONL: at its end"};
    record.notFound = QStringList{"GCL", "INL"};
    write("run.json", record.toJson());
    const auto stored = StoredRecord::read(path("run.json"));
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->input, "/d/e.xml");
    EXPECT_EQ(stored->series, "5");
    EXPECT_TRUE(stored->settings == record.settings);
    EXPECT_EQ(stored->etdrs.means, record.etdrs.means);
    EXPECT_EQ(stored->etdrs.coverage[4].counted, 70);
    EXPECT_EQ(stored->etdrs.coverage[4].inside, 80);
    EXPECT_EQ(stored->etdrs.coverage[4].expected, 100);
    EXPECT_EQ(stored->etdrs.cutSectors(), QStringList{kelp::oct::EtdrsTable::columnLabel(4)});
    EXPECT_EQ(stored->fill.pixels, 123456789012);
    EXPECT_EQ(stored->fill.bScans, 49);
    ASSERT_TRUE(stored->warnings);
    EXPECT_EQ(*stored->warnings, record.warnings);
    EXPECT_EQ(stored->notFound, record.notFound);
}

TEST_F(StoredRunRecord, TellsNoWarningsFromNoneRecorded)
{
    RunRecord record;
    record.input = "/d/e.xml";
    record.series = "5";
    const QByteArray whole = record.toJson();
    write("run.json", whole);
    EXPECT_EQ(StoredRecord::read(path("run.json"))->warnings, QStringList());
    write("run.json", QByteArray(whole).replace("\"warnings\"", "\"former\""));
    EXPECT_EQ(StoredRecord::read(path("run.json"))->warnings, std::nullopt);
}

TEST_F(StoredRunRecord, HoldsSharesWithFourDecimalsAndNoneWhereAllIsMasked)
{
    RunRecord record;
    kelp::oct::StepStatistics step;
    step.name = "segmentBMFine";
    step.surfaces = {{"BM", {{3, 1, 2, 0, 0}, {0, 0, 0, 0, 0}, {1, 0, 0, 1, 1}}}};
    record.steps = {step};
    const QJsonObject quality = QJsonDocument::fromJson(record.toJson())["quality"][0].toObject();
    EXPECT_EQ(quality["step"], "segmentBMFine");
    EXPECT_EQ(quality["surface"], "BM");
    EXPECT_EQ(quality["aScans"], 4);
    EXPECT_EQ(quality["atTop"], 0.25);
    EXPECT_EQ(quality["atBottom"], 0.5);
    EXPECT_EQ(quality["withoutRoom"], 0.25);
    EXPECT_EQ(quality["withoutRow"], 0.25);
    const QJsonObject byBScan = quality["byBScan"].toObject();
    EXPECT_EQ(byBScan["atTop"], QJsonArray({0.3333, QJsonValue::Null, 0}));
    EXPECT_EQ(byBScan["atBottom"], QJsonArray({0.6667, QJsonValue::Null, 0}));
    EXPECT_EQ(byBScan["withoutRoom"], QJsonArray({0, QJsonValue::Null, 1}));
    EXPECT_EQ(byBScan["withoutRow"], QJsonArray({0, QJsonValue::Null, 1}));
}

TEST_F(StoredRunRecord, IsNothingWhenItIsCut)
{
    RunRecord record;
    record.input = "/d/e.xml";
    record.series = "5";
    const QByteArray whole = record.toJson();
    for (int size = 0; size < whole.size() - 2; size += 7) {
        write("run.json", whole.left(size));
        EXPECT_FALSE(StoredRecord::read(path("run.json"))) << size;
    }
    EXPECT_FALSE(StoredRecord::read(path("missing.json")));
}

} // namespace
