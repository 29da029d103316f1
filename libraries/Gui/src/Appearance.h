#pragma once

#include <QPalette>

namespace kelp {

/// The colours of the program.
enum class Appearance
{
    System,
    Light,
    Dark
};

/// As the user chose it last.
Appearance storedAppearance();
/// Stores the choice and shows it in all windows.
void chooseAppearance(Appearance appearance);
/// Shows it in all windows.
void applyAppearance(Appearance appearance);

QPalette lightPalette();
QPalette darkPalette();

} // namespace kelp
