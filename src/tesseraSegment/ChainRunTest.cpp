#include "ChainRun.h"

#include "TestPhantomChains.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include <gmock/gmock.h>

using kelp::command::ChainProgress;
using kelp::command::ChainRun;
using kelp::oct::SegmentationChain;
using ::testing::ElementsAre;

namespace {

struct ChainRunOnPhantom : kelp::oct::test::PhantomChains
{
    static constexpr auto longerThanTheChain = std::chrono::seconds(1);
};

TEST_F(ChainRunOnPhantom, TellsEachStepInItsOrderHoweverLateItIsHeard)
{
    make(kelp::oct::test::smallPhantom(kelp::phantom::Pattern::Section,
                                       kelp::phantom::Kind::Normal));
    std::vector<std::string> told;
    std::vector<int> percentages;
    ChainRun chain([&](const ChainProgress& progress) {
        if (told.empty()) {
            // The other steps begin and end while nobody listens, as on a busy machine.
            std::this_thread::sleep_for(longerThanTheChain);
        }
        if (told.empty() || told.back() != progress.stepName.toStdString()) {
            told.push_back(progress.stepName.toStdString());
        }
        percentages.push_back(progress.percentage);
    });
    statistics = chain.run(segmentation, SegmentationChain::Normal, false, false);
    EXPECT_THAT(told, ElementsAre("segmentCoarse", "segmentILMFine", "segmentRPEHumanHealthy",
                                  "segmentInnerHumanHealthy"));
    EXPECT_TRUE(std::is_sorted(percentages.begin(), percentages.end()));
    EXPECT_EQ(statistics.size(), 4U);
}

} // namespace
