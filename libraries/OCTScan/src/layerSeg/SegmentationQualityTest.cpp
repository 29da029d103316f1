#include "SegmentationQuality.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelp::oct {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int aScans = 100;

/// A surface whose B-scans of 100 A-scans have these counts.
SurfaceQuality surface(const char* identifier, int QualityCounts::*count,
                       std::initializer_list<int> numbers)
{
    SurfaceQuality quality{identifier, {}};
    for (const int number : numbers) {
        QualityCounts counts;
        counts.aScans = aScans;
        counts.*count = number;
        quality.bScans.push_back(counts);
    }
    return quality;
}

StepStatistics step(const std::vector<SurfaceQuality>& surfaces)
{
    StepStatistics statistics;
    statistics.surfaces = surfaces;
    return statistics;
}

std::vector<std::string> warnings(const std::vector<StepStatistics>& steps)
{
    std::vector<std::string> texts;
    for (const QString& text : qualityWarnings(steps)) {
        texts.push_back(text.toStdString());
    }
    return texts;
}

std::vector<std::string> warnings(const SurfaceQuality& quality)
{
    return warnings(std::vector<StepStatistics>{step({quality})});
}

constexpr auto atTop = &QualityCounts::atTop;
constexpr auto atBottom = &QualityCounts::atBottom;
constexpr auto withoutRoom = &QualityCounts::withoutRoom;
constexpr auto withoutRow = &QualityCounts::withoutRow;

TEST(QualityWarnings, AreNoneWhereNothingIsToBeSaid)
{
    EXPECT_THAT(qualityWarnings({}), IsEmpty());
    EXPECT_THAT(qualityWarnings({StepStatistics()}), IsEmpty());
    EXPECT_THAT(warnings(surface("ILM", atTop, {0, 0})), IsEmpty());
    EXPECT_THAT(warnings(SurfaceQuality{"ILM", {QualityCounts()}}), IsEmpty()) << "all masked";
}

TEST(QualityWarnings, TellOfSurfacesOfOneCutThatAreNotThereInOneSentence)
{
    EXPECT_THAT(warnings({step({surface("GCL", withoutRow, {100, 100}),
                                surface("INL", withoutRow, {100, 100}),
                                surface("ONL", withoutRow, {100, 100})})}),
                ElementsAre("GCL, INL, ONL: no surface found in 100 % of the A-scans, the result "
                            "is not a segmentation"));
}

TEST(QualityWarnings, DoNotMixTheSurfacesOfDifferentSteps)
{
    EXPECT_THAT(warnings({step({surface("ISe", withoutRow, {100})}),
                          step({surface("GCL", withoutRow, {100})})}),
                ElementsAre("ISe: no surface found in 100 % of the A-scans, the result is not a "
                            "segmentation",
                            "GCL: no surface found in 100 % of the A-scans, the result is not a "
                            "segmentation"));
}

TEST(QualityWarnings, TellOfASingleAScanWithoutRow)
{
    EXPECT_THAT(warnings(surface("BM", withoutRow, {0, 1, 0})),
                ElementsAre("BM: no surface found in 1 % of the A-scans of B-scan 2, the result "
                            "there is not a segmentation"));
}

TEST(QualityWarnings, NameTheBScansFromOne)
{
    EXPECT_THAT(warnings(surface("BM", withoutRow, {100, 100, 100, 0, 100, 100, 0, 100})),
                ElementsAre("BM: no surface found in 100 % of the A-scans of B-scans 1 to 3, 5, 6, "
                            "8, the result there is not a segmentation"));
}

TEST(QualityWarnings, LeaveMaskedBScansOutOfTheWhole)
{
    SurfaceQuality quality = surface("BM", withoutRow, {100, 100});
    quality.bScans.push_back(QualityCounts());
    EXPECT_THAT(warnings(quality), ElementsAre("BM: no surface found in 100 % of the A-scans, the "
                                               "result is not a segmentation"));
}

TEST(QualityWarnings, KeepHundredPercentForAllAndNameWhatIsAlmostNothing)
{
    SurfaceQuality quality{"BM", {{1000, 0, 0, 0, 999}}};
    EXPECT_THAT(warnings(quality), ElementsAre("BM: no surface found in 99 % of the A-scans, the "
                                               "result there is not a segmentation"));
    quality.bScans[0].withoutRow = 4;
    EXPECT_THAT(warnings(quality),
                ElementsAre("BM: no surface found in less than 1 % of the A-scans, the result "
                            "there is not a segmentation"));
}

TEST(QualityWarnings, TellWhereDistancesLeaveNoRoom)
{
    EXPECT_THAT(warnings({step({surface("GCL", withoutRoom, {7, 0, 21}),
                                surface("INL", withoutRoom, {7, 0, 21})})}),
                ElementsAre("GCL, INL: the distances that are allowed between the surfaces leave "
                            "no room in 14 % of the A-scans of B-scans 1, 3"));
}

TEST(QualityWarnings, TellOfEndsOfTheRangeFromHalfOfASurfaceOn)
{
    EXPECT_THAT(warnings(surface("ILM", atTop, {49, 50})), IsEmpty());
    EXPECT_THAT(warnings(surface("ILM", atTop, {30, 70})),
                ElementsAre("ILM: at the upper end of its search range in 50 % of the A-scans, the "
                            "surface may lie above it"));
    EXPECT_THAT(warnings({step({surface("ISe", atBottom, {60}), surface("BM", atBottom, {60})})}),
                ElementsAre("ISe, BM: at the lower ends of their search ranges in 60 % of the "
                            "A-scans, the surfaces may lie below them"));
}

TEST(QualityWarnings, TellOfEndsOfTheRangeFromFourFifthsOfABScanOn)
{
    EXPECT_THAT(warnings(surface("BM", atBottom, {0, 79, 0, 0})), IsEmpty());
    EXPECT_THAT(warnings(surface("BM", atBottom, {10, 80, 0, 0})),
                ElementsAre("BM: at the lower end of its search range in 80 % of the A-scans of "
                            "B-scan 2, the surface may lie below it"));
}

TEST(QualityWarnings, AllowTheInnerBorderOfTheRPEToLieOnTheEndTowardsTheBM)
{
    EXPECT_THAT(warnings(surface("IRPE", atBottom, {100})), IsEmpty());
    EXPECT_THAT(warnings(surface("IRPE", atTop, {100})),
                ElementsAre("IRPE: at the upper end of its search range in 100 % of the A-scans, "
                            "the surface may lie above it"));
}

TEST(QualityWarnings, PutTheWorstFirst)
{
    const auto texts =
        warnings({step({surface("ILMcoarse", atTop, {60})}),
                  step({surface("ILM", atBottom, {90}), surface("GCL", withoutRoom, {3})}),
                  step({surface("BM", withoutRow, {2}), surface("ISe", withoutRow, {100})})});
    std::vector<std::string> beginnings;
    beginnings.reserve(texts.size());
    for (const std::string& text : texts) {
        beginnings.push_back(text.substr(0, text.find(" of ")));
    }
    EXPECT_THAT(beginnings,
                ElementsAre("ISe: no surface found in 100 %", "BM: no surface found in 2 %",
                            "GCL: the distances that are allowed between the surfaces leave no "
                            "room in 3 %",
                            "ILM: at the lower end", "ILM coarse: at the upper end"));
}

std::vector<std::string> notFound(const std::vector<StepStatistics>& steps)
{
    std::vector<std::string> identifiers;
    for (const QString& identifier : surfacesNotFound(steps)) {
        identifiers.push_back(identifier.toStdString());
    }
    return identifiers;
}

TEST(SurfacesNotFound, AreThoseWithoutRowInHalfOfTheirAScans)
{
    EXPECT_THAT(
        notFound({step({surface("ILM", withoutRow, {0, 99}), surface("INL", withoutRow, {0, 100}),
                        surface("ONL", withoutRow, {100, 100})})}),
        ElementsAre("INL", "ONL"));
    EXPECT_THAT(notFound({step({surface("GCL", withoutRoom, {100}), surface("BM", atTop, {100}),
                                surface("ISeCoarse", withoutRow, {100})})}),
                IsEmpty());
    EXPECT_THAT(notFound({step({SurfaceQuality{"ILM", {QualityCounts()}}})}), IsEmpty())
        << "all masked";
}

TEST(SurfacesNotFound, AreJudgedByTheLastStepThatMadeThem)
{
    const auto lost = step({surface("BM", withoutRow, {100})});
    const auto found = step({surface("BM", withoutRow, {0})});
    EXPECT_THAT(notFound({lost, found}), IsEmpty());
    EXPECT_THAT(notFound({found, lost}), ElementsAre("BM"));
}

} // namespace
} // namespace kelp::oct
