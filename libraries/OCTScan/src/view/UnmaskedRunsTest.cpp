#include "UnmaskedRuns.h"

#include <gmock/gmock.h>

#include <string>

using kelp::oct::AScanRun;
using kelp::oct::runsWithin;
using kelp::oct::unmaskedRuns;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// 'x' is excluded.
QList<bool> maskRow(const std::string& pattern)
{
    QList<bool> row;
    for (const char letter : pattern) {
        row.append(letter == 'x');
    }
    return row;
}

/// Every maximal stretch of unmasked A-scans, cut short afterwards: another way to the same runs.
std::vector<AScanRun> shortenedStretches(const std::string& pattern)
{
    std::vector<AScanRun> runs;
    const std::size_t length = pattern.size();
    std::size_t from = pattern.find('.');
    while (from != std::string::npos) {
        const std::size_t to = std::min(pattern.find('x', from), length);
        const std::size_t lost = to == length ? 2 : 1;
        const std::size_t left = to - from > lost ? to - from - lost : 0;
        if (left > 0) {
            runs.push_back({static_cast<int>(from), static_cast<int>(from + left)});
        }
        from = pattern.find('.', to);
    }
    return runs;
}

TEST(UnmaskedRuns, AnEmptyRowHasNone)
{
    EXPECT_THAT(unmaskedRuns({}), IsEmpty());
}

TEST(UnmaskedRuns, AMaskOverTheWholeRowLeavesNone)
{
    EXPECT_THAT(unmaskedRuns(maskRow("xxxxxx")), IsEmpty());
}

TEST(UnmaskedRuns, ARowWithoutMaskLosesItsLastTwoAScans)
{
    EXPECT_THAT(unmaskedRuns(maskRow("..........")), ElementsAre(AScanRun{0, 8}));
}

TEST(UnmaskedRuns, ARunBeforeAMaskLosesItsLastAScan)
{
    EXPECT_THAT(unmaskedRuns(maskRow(".....xxx")), ElementsAre(AScanRun{0, 4}));
}

TEST(UnmaskedRuns, AGapOfOneAScanSplitsTheRow)
{
    EXPECT_THAT(unmaskedRuns(maskRow(".....x......")),
                ElementsAre(AScanRun{0, 4}, AScanRun{6, 10}));
}

TEST(UnmaskedRuns, ARunOfOneAScanIsNotDrawn)
{
    EXPECT_THAT(unmaskedRuns(maskRow("xx.xx")), IsEmpty());
}

TEST(UnmaskedRuns, ARunOfTwoAScansKeepsOneBeforeAMaskAndNoneAtTheEnd)
{
    EXPECT_THAT(unmaskedRuns(maskRow("xx..xx")), ElementsAre(AScanRun{2, 3}));
    EXPECT_THAT(unmaskedRuns(maskRow("xxxx..")), IsEmpty());
}

TEST(UnmaskedRuns, AreTheShortenedStretchesOfEveryRowUpToTwelveAScans)
{
    constexpr int longest = 12;
    for (int length = 0; length <= longest; ++length) {
        for (int bits = 0; bits < (1 << length); ++bits) {
            std::string pattern;
            for (int k = 0; k < length; ++k) {
                pattern.push_back((bits >> k) & 1 ? 'x' : '.');
            }
            ASSERT_EQ(unmaskedRuns(maskRow(pattern)), shortenedStretches(pattern)) << pattern;
        }
    }
}

TEST(RunsWithin, ChangesNothingForALayerAsLongAsTheRow)
{
    const std::vector<AScanRun> runs = unmaskedRuns(maskRow("....x......"));
    EXPECT_EQ(runsWithin(runs, 11), runs);
}

TEST(RunsWithin, CutsOffWhatAShortLayerDoesNotHave)
{
    const std::vector<AScanRun> runs{{0, 4}, {6, 10}, {12, 20}};
    EXPECT_THAT(runsWithin(runs, 9), ElementsAre(AScanRun{0, 4}, AScanRun{6, 8}));
    EXPECT_THAT(runsWithin(runs, 7), ElementsAre(AScanRun{0, 4}));
    EXPECT_THAT(runsWithin(runs, 1), IsEmpty());
    EXPECT_THAT(runsWithin(runs, 0), IsEmpty());
}

} // namespace
