#include "CommandFixture.h"
#include "CsvText.h"
#include "JsonWriter.h"
#include "Protocol.h"
#include "RunRecord.h"
#include "kelpException.h"

#include <QJsonDocument>

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
    write("run.json", record.toJson());
    const auto stored = StoredRecord::read(path("run.json"));
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->input, "/d/e.xml");
    EXPECT_EQ(stored->series, "5");
    EXPECT_TRUE(stored->settings == record.settings);
    EXPECT_EQ(stored->etdrs.means, record.etdrs.means);
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
