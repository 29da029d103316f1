#include "ThicknessMapSettings.h"

#include "kelpSettings.h"

#include <QSettings>

#include <gtest/gtest.h>

using namespace kelp::oct;
using kelp::Settings;

namespace {

void store(double lower, double upper, double alpha, int colorMap)
{
    Settings::set(QStringLiteral("Gui/thicknessMap/colorTransferMin"), lower);
    Settings::set(QStringLiteral("Gui/thicknessMap/colorTransferMax"), upper);
    Settings::set(QStringLiteral("Gui/thicknessMap/colorTransferAlpha"), alpha);
    Settings::set(QStringLiteral("Gui/thicknessMap/colorTransferMap"), colorMap);
}

class ThicknessMapSettingsTest : public ::testing::Test
{
protected:
    void TearDown() override
    {
        // Other tests of this program start from the defaults.
        QSettings settings(QSettings::IniFormat, QSettings::UserScope, "Tessera", "Tessera");
        settings.remove(QStringLiteral("Gui/thicknessMap"));
    }
};

TEST_F(ThicknessMapSettingsTest, BeginWithTheDefaults)
{
    TearDown();
    const ThicknessMapSettings settings = ThicknessMapSettings::read();
    EXPECT_EQ(settings.lower, 200);
    EXPECT_EQ(settings.upper, 400);
    EXPECT_EQ(settings.alpha, 0.5);
    EXPECT_EQ(static_cast<int>(settings.colorMap), 3);
}

TEST_F(ThicknessMapSettingsTest, AreWhatWasStored)
{
    store(120.0, 380.0, 0.25, 5);
    const ThicknessMapSettings settings = ThicknessMapSettings::read();
    EXPECT_EQ(settings.lower, 120);
    EXPECT_EQ(settings.upper, 380);
    EXPECT_EQ(settings.alpha, 0.25);
    EXPECT_EQ(settings.colorMap, kelp::ColorMaps::RainbowLight);
}

TEST_F(ThicknessMapSettingsTest, CanBeDrawnWhateverTheFileHolds)
{
    store(-50.0, 9000.0, 7.0, 99);
    ThicknessMapSettings settings = ThicknessMapSettings::read();
    EXPECT_EQ(settings.lower, 0);
    EXPECT_EQ(settings.upper, 500);
    EXPECT_EQ(settings.alpha, 1.0);
    EXPECT_EQ(settings.colorMap, kelp::ColorMaps::Rainbow);
    store(300.0, 300.0, -1.0, -1);
    settings = ThicknessMapSettings::read();
    EXPECT_EQ(settings.lower, 200);
    EXPECT_EQ(settings.upper, 400);
    EXPECT_EQ(settings.alpha, 0.0);
    Settings::set(QStringLiteral("Gui/thicknessMap/colorTransferAlpha"), QStringLiteral("nan"));
    EXPECT_EQ(ThicknessMapSettings::read().alpha, 0.5);
}

} // namespace
