#include "GuiBench.h"
#include "ApplicationAssembly.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace kelp::bench;

namespace {

Sizes smallSizes()
{
    return {20, 64, 160, 5};
}

TEST(Figure, IsMissedByItsWorstValueAndWithoutAny)
{
    EXPECT_TRUE((Figure{QStringLiteral("nothing"), 10.0}.isMissed()));
    EXPECT_FALSE((Figure{QStringLiteral("fast"), 10.0, {1.0, 10.0, 2.0}}.isMissed()));
    const Figure slow{QStringLiteral("slow"), 10.0, {1.0, 10.5, 2.0}};
    EXPECT_TRUE(slow.isMissed());
    EXPECT_EQ(slow.median(), 2.0);
    EXPECT_EQ(slow.worst(), 10.5);
    const QStringList lines = toTable({slow}).split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 3);
    EXPECT_TRUE(lines[1].startsWith(QStringLiteral("slow")));
    EXPECT_TRUE(lines[1].endsWith(QStringLiteral("10.0       2.0      10.5  MISSED")))
        << lines[1].toStdString();
}

TEST(GuiBench, MeasuresTheViewsOfAScan)
{
    kelp::oct::registerFactories();
    const QTemporaryDir folder;
    const OCTScanSegPtr segmentation = makeSegmentedScan(folder.path(), smallSizes());
    EXPECT_EQ(segmentation->getAllLayerNames().size(), 9);
    EXPECT_EQ(measurePaging(segmentation).milliseconds.size(), 5);
    EXPECT_GT(measureEditing(segmentation).milliseconds.size(), 10);
    EXPECT_EQ(measureFoveaDrop(segmentation).milliseconds.size(), 15);
}

TEST(GuiBench, MeasuresTheRepaintsOfARun)
{
    kelp::oct::registerFactories();
    const QTemporaryDir folder;
    // Long enough for some repaints on a busy machine too.
    const OCTScanSegPtr segmentation = makeSegmentedScan(folder.path(), {20, 192, 240, 9});
    EXPECT_GT(measureRepaints(segmentation->getOCT()).milliseconds.size(), 3);
}

TEST(GuiBench, MeasuresTheOpeningOfAStore)
{
    kelp::oct::registerFactories();
    const QTemporaryDir folder;
    EXPECT_EQ(measureStore(folder.path(), smallSizes()).milliseconds.size(), 1);
    EXPECT_EQ(measureBatchTab(folder.path(), smallSizes()).milliseconds.size(), 3);
}

} // namespace
