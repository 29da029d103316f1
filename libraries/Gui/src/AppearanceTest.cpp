#include "Appearance.h"

#include "kelpSettings.h"

#include <QApplication>
#include <QWidget>

#include <gtest/gtest.h>

#include <cmath>

using kelp::Appearance;

namespace {

/// Relative luminance and contrast as the guidelines for accessible web content define them.
double luminance(const QColor& colour)
{
    const auto linear = [](double channel) {
        return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

double contrast(const QColor& a, const QColor& b)
{
    const double brighter = std::max(luminance(a), luminance(b));
    const double darker = std::min(luminance(a), luminance(b));
    return (brighter + 0.05) / (darker + 0.05);
}

struct RolePair
{
    QPalette::ColorRole text;
    QPalette::ColorRole ground;
};

class AppearancePalette : public ::testing::TestWithParam<Appearance>
{
protected:
    void TearDown() override { kelp::chooseAppearance(Appearance::System); }
};

TEST_P(AppearancePalette, HasReadableTextOnEachGround)
{
    const QPalette palette =
        GetParam() == Appearance::Light ? kelp::lightPalette() : kelp::darkPalette();
    constexpr double readable = 4.5;
    for (const RolePair& pair : {RolePair{QPalette::WindowText, QPalette::Window},
                                 {QPalette::Text, QPalette::Base},
                                 {QPalette::Text, QPalette::AlternateBase},
                                 {QPalette::ButtonText, QPalette::Button},
                                 {QPalette::HighlightedText, QPalette::Highlight},
                                 {QPalette::Link, QPalette::Base},
                                 {QPalette::LinkVisited, QPalette::Base},
                                 {QPalette::ToolTipText, QPalette::ToolTipBase},
                                 {QPalette::BrightText, QPalette::Window}}) {
        EXPECT_GE(contrast(palette.color(pair.text), palette.color(pair.ground)), readable)
            << pair.text << " on " << pair.ground;
    }
    constexpr double readableHint = 3.0;
    for (const QPalette::ColorRole ground : {QPalette::Base, QPalette::Window}) {
        EXPECT_GE(contrast(palette.color(QPalette::PlaceholderText), palette.color(ground)),
                  readableHint);
    }
}

TEST_P(AppearancePalette, IsShownInOpenWindowsAndStored)
{
    QWidget open;
    kelp::chooseAppearance(GetParam());
    const QPalette wanted =
        GetParam() == Appearance::Light ? kelp::lightPalette() : kelp::darkPalette();
    EXPECT_EQ(open.palette().color(QPalette::Base), wanted.color(QPalette::Base));
    EXPECT_EQ(open.palette().color(QPalette::Text), wanted.color(QPalette::Text));
    EXPECT_EQ(kelp::storedAppearance(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Chosen, AppearancePalette,
                         ::testing::Values(Appearance::Light, Appearance::Dark));

TEST(Appearance, ThatOfTheSystemComesBack)
{
    kelp::applyAppearance(Appearance::System);
    const QPalette before = QApplication::palette();
    kelp::chooseAppearance(Appearance::Dark);
    ASSERT_NE(QApplication::palette().color(QPalette::Base), before.color(QPalette::Base));
    kelp::chooseAppearance(Appearance::System);
    EXPECT_EQ(QApplication::palette().color(QPalette::Base), before.color(QPalette::Base));
    EXPECT_EQ(kelp::storedAppearance(), Appearance::System);
}

TEST(Appearance, WhatCallsForAttentionIsReadableInThePaletteOfTheSystem)
{
    kelp::applyAppearance(Appearance::System);
    const QPalette palette = QApplication::palette();
    constexpr double readable = 4.5;
    EXPECT_GE(contrast(palette.color(QPalette::BrightText), palette.color(QPalette::Window)),
              readable);
}

TEST(Appearance, AStoredNumberThatMeansNothingIsThatOfTheSystem)
{
    kelp::Settings::set(QStringLiteral("Gui/appearance"), 17);
    EXPECT_EQ(kelp::storedAppearance(), Appearance::System);
    kelp::Settings::set(QStringLiteral("Gui/appearance"), 0);
}

} // namespace
