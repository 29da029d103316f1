#include "Appearance.h"

#include "kelpSettings.h"

#include <QApplication>
#include <QToolTip>

namespace kelp {

namespace {

const QString appearanceKey = QStringLiteral("Gui/appearance");

struct Colours
{
    QColor window;
    QColor text;
    QColor base;
    QColor alternate;
    QColor button;
    QColor highlight;
    QColor highlightedText;
    QColor link;
    QColor visitedLink;
    QColor disabled;
    QColor toolTip;
    QColor bright;
};

QPalette makePalette(const Colours& colours)
{
    QPalette palette(colours.button, colours.window);
    palette.setColor(QPalette::Window, colours.window);
    palette.setColor(QPalette::WindowText, colours.text);
    palette.setColor(QPalette::Base, colours.base);
    palette.setColor(QPalette::AlternateBase, colours.alternate);
    palette.setColor(QPalette::Text, colours.text);
    palette.setColor(QPalette::Button, colours.button);
    palette.setColor(QPalette::ButtonText, colours.text);
    palette.setColor(QPalette::BrightText, colours.bright);
    palette.setColor(QPalette::Highlight, colours.highlight);
    palette.setColor(QPalette::HighlightedText, colours.highlightedText);
    palette.setColor(QPalette::Link, colours.link);
    palette.setColor(QPalette::LinkVisited, colours.visitedLink);
    palette.setColor(QPalette::ToolTipBase, colours.toolTip);
    palette.setColor(QPalette::ToolTipText, colours.text);
    palette.setColor(QPalette::PlaceholderText, colours.disabled);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, colours.disabled);
    }
    palette.setColor(QPalette::Disabled, QPalette::Highlight, colours.alternate);
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, colours.disabled);
    return palette;
}

// What calls for attention, on a light and on a dark window.
const QColor brightOnLight(176, 28, 28);
const QColor brightOnDark(255, 128, 118);

QPalette withReadableBrightText(QPalette palette)
{
    // Systems leave it white, for text on coloured buttons: on a light window nobody could read it.
    constexpr int middle = 128;
    const bool isLight = palette.color(QPalette::Window).lightness() >= middle;
    palette.setColor(QPalette::BrightText, isLight ? brightOnLight : brightOnDark);
    return palette;
}

/// The palette before any of ours was set.
const QPalette& systemPalette()
{
    static const QPalette palette = withReadableBrightText(QApplication::palette());
    return palette;
}

} // namespace

Appearance storedAppearance()
{
    const int stored = Settings::get(appearanceKey, static_cast<int>(Appearance::System));
    const bool isKnown = stored >= static_cast<int>(Appearance::System) &&
                         stored <= static_cast<int>(Appearance::Dark);
    return isKnown ? static_cast<Appearance>(stored) : Appearance::System;
}

void chooseAppearance(Appearance appearance)
{
    Settings::set(appearanceKey, static_cast<int>(appearance));
    applyAppearance(appearance);
}

void applyAppearance(Appearance appearance)
{
    QPalette palette = systemPalette();
    if (appearance == Appearance::Light) {
        palette = lightPalette();
    } else if (appearance == Appearance::Dark) {
        palette = darkPalette();
    }
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

QPalette lightPalette()
{
    return makePalette({.window = {240, 240, 241},
                        .text = {28, 30, 33},
                        .base = {255, 255, 255},
                        .alternate = {245, 246, 248},
                        .button = {234, 235, 237},
                        .highlight = {31, 102, 158},
                        .highlightedText = {255, 255, 255},
                        .link = {20, 90, 160},
                        .visitedLink = {105, 60, 145},
                        .disabled = {118, 120, 124},
                        .toolTip = {255, 253, 231},
                        .bright = brightOnLight});
}

QPalette darkPalette()
{
    return makePalette({.window = {43, 45, 49},
                        .text = {228, 230, 233},
                        .base = {30, 31, 34},
                        .alternate = {37, 39, 42},
                        .button = {56, 59, 64},
                        .highlight = {47, 116, 175},
                        .highlightedText = {255, 255, 255},
                        .link = {112, 178, 236},
                        .visitedLink = {190, 156, 230},
                        .disabled = {142, 145, 150},
                        .toolTip = {62, 65, 70},
                        .bright = brightOnDark});
}

} // namespace kelp
