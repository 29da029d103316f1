#include "ModelPicture.h"

#include "SurfaceDistance.h"
#include "ValueScale.h"

#include <QGuiApplication>
#include <QSet>

#include <gtest/gtest.h>

#include <algorithm>

namespace macula {
namespace {

TEST(RoundSteps, CoverTheRangeWithRoundNumbers)
{
    const RoundSteps steps = roundSteps(13.4, 98.7, 14);
    EXPECT_DOUBLE_EQ(steps.first, 10.0);
    EXPECT_DOUBLE_EQ(steps.step, 10.0);
    EXPECT_DOUBLE_EQ(steps.last(), 100.0);
    for (const auto& [lowest, highest] :
         {std::pair{0.0, 5.33}, {225.8, 361.7}, {-3.0, 0.004}, {62.0, 62.0}, {0.0, 1.0e6}}) {
        const RoundSteps covering = roundSteps(lowest, highest, 14);
        EXPECT_LE(covering.first, lowest);
        EXPECT_GE(covering.last(), highest - 1e-6);
        EXPECT_LE(covering.count, 14);
        EXPECT_GE(covering.count, 4);
    }
}

TEST(ValueScale, GrowsBrighterStepByStepAndEndsWithItsSteps)
{
    for (const auto colours :
         {ValueScale::Colours::BlueToYellow, ValueScale::Colours::BlackToPink}) {
        const ValueScale scale(colours, {0.0, 2.0, 10});
        for (int index = 1; index < 10; ++index) {
            EXPECT_GT(qGray(scale.colourOf(2.0 * index).rgb()),
                      qGray(scale.colourOf(2.0 * index - 0.01).rgb()));
        }
        EXPECT_EQ(scale.colourOf(-5.0), scale.colourOf(0.5));
        EXPECT_EQ(scale.colourOf(500.0), scale.colourOf(19.9));
    }
}

TEST(SurfaceDistance, AddsTheLayersAndRunsThroughTheFovea)
{
    const MacularModel model;
    const SurfaceDistance retina(model, 0, 5);
    EXPECT_NEAR(valueAtFovea(retina.means()), 228.9, 0.01);
    const auto [thinnest, thickest] = rangeOf(retina.means());
    EXPECT_NEAR(thinnest, 225.8, 0.01);
    EXPECT_NEAR(thickest, 361.7, 0.01);
    EXPECT_NEAR(valueAtFovea(SurfaceDistance(model, 4, 5).deviations()), 16.0 / 3.0, 1e-9);
    for (const Profile& profile : {retina.horizontalProfile(), retina.verticalProfile()}) {
        EXPECT_TRUE(std::is_sorted(profile.places.begin(), profile.places.end()));
        const auto fovea = std::find(profile.places.begin(), profile.places.end(), 0.0);
        ASSERT_NE(fovea, profile.places.end());
        EXPECT_DOUBLE_EQ(profile.means[static_cast<std::size_t>(fovea - profile.places.begin())],
                         valueAtFovea(retina.means()));
    }
    // The disc's fibres are nasal, and the lower end of the grid is closer.
    EXPECT_GT(retina.horizontalProfile().means.back(), retina.horizontalProfile().means.front());
    EXPECT_LT(-retina.verticalProfile().places.front(), retina.verticalProfile().places.back());
}

TEST(ModelPicture, HasManyColoursInTheRowOfTheWholeRetina)
{
    int argumentCount = 1;
    char program[] = "test";
    char* arguments[] = {program, nullptr};
    const QGuiApplication application(argumentCount, arguments);
    const QImage picture = drawModel(MacularModel());
    EXPECT_GT(picture.width(), 1000);
    EXPECT_GT(picture.height(), 1500);
    QSet<QRgb> colours;
    for (int x = 0; x < picture.width(); ++x) {
        colours.insert(picture.pixel(x, picture.height() - 150));
    }
    EXPECT_GT(colours.size(), 15);
}

} // namespace
} // namespace macula
