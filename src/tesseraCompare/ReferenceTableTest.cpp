#include "ReferenceTable.h"

#include "kelpException.h"

#include <gmock/gmock.h>

#include <cmath>

using kelp::ParsingError;
using kelp::compare::naturallyBefore;
using kelp::compare::ReferenceTable;
using testing::HasSubstr;

namespace {

void expectRefused(const QByteArray& content, const std::string& words)
{
    try {
        ReferenceTable::parse(content);
        ADD_FAILURE() << "taken: " << content.toStdString();
    } catch (const ParsingError& error) {
        EXPECT_THAT(error.what(), HasSubstr(words)) << content.toStdString();
    }
}

TEST(ReferenceTable, HoldsColumnsAndRowsWithGaps)
{
    const auto table = ReferenceTable::parse("col\tILM\tBM\n4\t10.5\t\n2\t\t200\n");
    EXPECT_EQ(table.columns, (QStringList{"ILM", "BM"}));
    ASSERT_EQ(table.lines.size(), 2U);
    EXPECT_EQ(table.lines[0].aScan, 4);
    EXPECT_DOUBLE_EQ(table.lines[0].rows[0], 10.5);
    EXPECT_TRUE(std::isnan(table.lines[0].rows[1]));
    EXPECT_EQ(table.lines[1].aScan, 2);
    EXPECT_TRUE(std::isnan(table.lines[1].rows[0]));
    EXPECT_DOUBLE_EQ(table.lines[1].rows[1], 200.0);
    EXPECT_EQ(table.nrAScans(), 5);
}

TEST(ReferenceTable, MayHaveWindowsLineEndsEmptyLinesAndNoLastLineFeed)
{
    const auto table = ReferenceTable::parse("col\tILM\r\n0\t1\r\n\r\n1\t2");
    ASSERT_EQ(table.lines.size(), 2U);
    EXPECT_EQ(table.columns, QStringList{"ILM"});
    EXPECT_DOUBLE_EQ(table.lines[1].rows[0], 2.0);
}

TEST(ReferenceTable, TakesNanForAnEmptyField)
{
    const auto table = ReferenceTable::parse("col\tILM\tBM\n0\tNaN\tnan\n");
    EXPECT_TRUE(std::isnan(table.lines[0].rows[0]));
    EXPECT_TRUE(std::isnan(table.lines[0].rows[1]));
}

TEST(ReferenceTable, SaysWhichLineIsBrokenAndHow)
{
    expectRefused("", "Line 1: It names no surface");
    expectRefused("col,ILM\n0,1\n", "Line 1: The columns are separated by commas, not by tabs.");
    expectRefused("0\t1\t2\n1\t1\t2\n", "Line 1: The columns' names are missing.");
    expectRefused("col\tILM\tILM\n0\t1\t2\n", "Line 1: Two columns have the name \"ILM\".");
    expectRefused("col\tILM\tBM\n0\t1\t2\n1\t3\n", "Line 3: It has 2 fields where the first line "
                                                   "has 3.");
    expectRefused("col\tILM\n0\t1\t2\n", "Line 2: It has 3 fields where the first line has 2.");
    expectRefused("col\tILM\n0\tten\n", "Line 2: \"ten\" is not an image row.");
    expectRefused("col\tILM\n0\t10,5\n", "Line 2: \"10,5\" is not an image row.");
    expectRefused("col\tILM\n0\tinf\n", "Line 2: \"inf\" is not an image row.");
    expectRefused("col\tILM\n0\t-1\n", "Line 2: The row -1 lies above the image");
    expectRefused("col\tILM\n0\t1e300\n", "Line 2: The row 1e300 lies below every image.");
    expectRefused("col\tILM\n1.5\t1\n", "Line 2: \"1.5\" is not the number of an A-scan.");
    expectRefused("col\tILM\n-1\t1\n", "Line 2: \"-1\" is not the number of an A-scan.");
    expectRefused("col\tILM\n70000\t1\n", "Line 2: \"70000\" is not the number of an A-scan.");
    expectRefused("col\tILM\n3\t1\n3\t2\n", "Line 3: A-scan 3 is there twice.");
    expectRefused("col\tILM\n", "It holds no A-scan.");
}

TEST(NaturalOrder, ReadsDigitsAsNumbers)
{
    EXPECT_TRUE(naturallyBefore("b2", "b10"));
    EXPECT_FALSE(naturallyBefore("b10", "b2"));
    EXPECT_TRUE(naturallyBefore("s08_b02.g1.tsv", "s08_b10.g1.tsv"));
    EXPECT_TRUE(naturallyBefore("b9.g2", "b10.g1"));
    EXPECT_TRUE(naturallyBefore("a", "a1"));
    EXPECT_TRUE(naturallyBefore("b01", "b1") != naturallyBefore("b1", "b01"));
    EXPECT_FALSE(naturallyBefore("b7", "b7"));
    EXPECT_TRUE(naturallyBefore("b99999999999999999998", "b99999999999999999999"));
}

} // namespace
