#include "SegmentationNames.h"

#include "OCTScanSegmentation.h"

#include <gtest/gtest.h>

using kelp::oct::newSegmentationId;

namespace {

const QDateTime someTime(QDate(2026, 3, 9), QTime(7, 5));

TEST(SegmentationNames, TwoOfTheSameMinuteGetTheNumbersOneAndTwo)
{
    const DataPointer<Study> study(new Study);
    const QString first = newSegmentationId(*study, someTime);
    ASSERT_FALSE(study->addProcessData(new kelp::oct::OCTScanSegmentation, first, false) !=
                 CaError::nullError);
    const QString second = newSegmentationId(*study, someTime);
    EXPECT_TRUE(first.startsWith(QStringLiteral("Segment_2026")));
    EXPECT_TRUE(first.endsWith(QStringLiteral("_1")));
    EXPECT_TRUE(second.endsWith(QStringLiteral("_2")));
    EXPECT_EQ(first.chopped(1), second.chopped(1));
}

TEST(SegmentationNames, TheLastNumberStaysWhenAllAreTaken)
{
    const DataPointer<Study> study(new Study);
    for (int i = 0; i < 999; ++i) {
        ASSERT_FALSE(study->addProcessData(new kelp::oct::OCTScanSegmentation,
                                           newSegmentationId(*study, someTime),
                                           false) != CaError::nullError);
    }
    EXPECT_TRUE(newSegmentationId(*study, someTime).endsWith(QStringLiteral("_999")));
    EXPECT_TRUE(study->hasChild(newSegmentationId(*study, someTime)));
}

} // namespace
