#include "RetinaAnatomy.h"

#include "PhantomRandom.h"

#include <algorithm>
#include <cmath>

namespace kelp::phantom {

namespace {

// Means of healthy adults by sector after Xu and others, BMC Ophthalmology 2018;18:169, Table 6;
// the centre after Grover and others, Am J Ophthalmol 2009;148:266. The order is superior, nasal,
// inferior, temporal.
const ThicknessMap::Figures nerveFiberFigures{{{{0.0, 11.5}, {0.15, 11.5}, {0.4, 12.0}}},
                                              {23.4, 20.1, 24.5, 16.8},
                                              {37.5, 46.1, 38.9, 19.2},
                                              {44.0, 58.0, 46.0, 21.0}};
const ThicknessMap::Figures ganglionCellFigures{{{{0.0, 11.5}, {0.1, 12.5}, {0.4, 36.0}}},
                                                {93.2, 92.5, 92.2, 87.7},
                                                {66.2, 71.7, 61.8, 69.5},
                                                {46.0, 50.0, 44.0, 52.0}};
const ThicknessMap::Figures innerNuclearFigures{{{{0.0, 16.0}, {0.1, 17.0}, {0.4, 44.0}}},
                                                {72.6, 70.3, 76.6, 67.6},
                                                {58.5, 63.3, 59.1, 60.3},
                                                {54.0, 57.0, 54.0, 56.0}};
// To the ellipsoid band: the published layer to the external limiting membrane and the 28
// micrometres from there.
const ThicknessMap::Figures outerNuclearFigures{{{{0.0, 121.0}, {0.1, 120.5}, {0.4, 114.0}}},
                                                {95.5, 100.5, 88.5, 98.0},
                                                {86.2, 83.9, 77.6, 83.8},
                                                {80.0, 78.0, 74.0, 80.0}};

/// The ellipsoid surface bulges under the foveola, where the outer segments are longest.
constexpr double iseToBmPeriphery = 54.5;
constexpr double iseToBmBulge = 5.5;
constexpr double bulgeRadius = 1.0;

/// With drusen: the thickened complex of pigment epithelium and membrane between the drusen, and
/// the distance of the ellipsoid surface above it.
constexpr double irpeToBmBetweenDrusen = 38.7;
constexpr double iseToIrpe = 29.0;
/// The share of a druse's height that the outer nuclear layer gives way to; the rest lifts the
/// inner retina.
constexpr double outerNuclearYield = 0.55;

/// Nerve fibres at the disc: where they reach the figures of the peripapillary circle, and where
/// those of the macula hold alone.
constexpr double nearDisc = 1.75;
constexpr double farFromDisc = 2.8;

double smoothStep(double low, double high, double value)
{
    const double t = std::clamp((value - low) / (high - low), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

/// Thickness of the nerve fibre layer on the circle around the disc: two humps where the arcuate
/// bundles leave it, above and below, a little to the temporal side.
double peripapillaryNerveFibers(const Vector2d& fromDisc)
{
    const double distance = std::max(fromDisc.length(), 1e-6);
    const double x = fromDisc.x / distance;
    const double y = fromDisc.y / distance;
    const double upper = std::max(0.0, -0.35 * x + 0.94 * y);
    const double lower = std::max(0.0, -0.35 * x - 0.94 * y);
    return 64.0 + 68.0 * (upper * upper * upper + lower * lower * lower);
}

} // namespace

RetinaAnatomy::RetinaAnatomy(Kind kind, std::uint64_t seed)
    : m_kind(kind), m_nerveFibers(nerveFiberFigures), m_ganglionCells(ganglionCellFigures),
      m_innerNuclear(innerNuclearFigures), m_outerNuclear(outerNuclearFigures)
{
    if (kind == Kind::Drusen) {
        m_drusen.emplace(seed);
    }
    Random random(seed, Stream::Thickness);
    m_individual.ilmToGcl = 1.0 + 0.02 * random.bell();
    m_individual.gclToInl = 1.0 + 0.015 * random.bell();
    m_individual.inlToOnl = 1.0 + 0.015 * random.bell();
    m_individual.onlToIse = 1.0 + 0.015 * random.bell();
    m_individual.iseToBm = 1.0 + 0.005 * random.bell();
}

LayerThicknesses RetinaAnatomy::at(const Vector2d& position) const
{
    LayerThicknesses result = m_kind == Kind::Mouse ? mouse(position) : human(position);
    result.ilmToGcl *= m_individual.ilmToGcl;
    result.gclToInl *= m_individual.gclToInl;
    result.inlToOnl *= m_individual.inlToOnl;
    result.onlToIse *= m_individual.onlToIse;
    result.iseToBm *= m_individual.iseToBm;
    if (m_drusen) {
        const double height = m_drusen->heightAt(position);
        result.onlToIse -= outerNuclearYield * height;
        result.irpeToBm = irpeToBmBetweenDrusen + height;
        result.iseToBm = result.irpeToBm + iseToIrpe;
    }
    return result;
}

LayerThicknesses RetinaAnatomy::human(const Vector2d& position) const
{
    const Vector2d fromDisc = position - discCenter();
    const double atDisc = 1.0 - smoothStep(nearDisc, farFromDisc, fromDisc.length());
    const double macular = m_nerveFibers.at(position);

    LayerThicknesses result;
    result.ilmToGcl = macular + atDisc * (peripapillaryNerveFibers(fromDisc) - macular);
    result.gclToInl = m_ganglionCells.at(position);
    result.inlToOnl = m_innerNuclear.at(position);
    result.onlToIse = m_outerNuclear.at(position);
    const double t = std::min(1.0, position.squaredLength() / (bulgeRadius * bulgeRadius));
    result.iseToBm = iseToBmPeriphery + iseToBmBulge * (1.0 - t) * (1.0 - t);
    return result;
}

LayerThicknesses RetinaAnatomy::mouse(const Vector2d& position) const
{
    // No pit; the nerve fibres gather towards the disc, the other layers thin slightly outwards.
    const double toDisc = (position - discCenter()).length();
    const double outwards = 1.0 - 0.008 * position.squaredLength() / 4.0;

    LayerThicknesses result;
    result.ilmToGcl = 19.5 + 1.2 * (discCenter().length() - toDisc);
    result.gclToInl = 50.7 * outwards;
    result.inlToOnl = 39.0 * outwards;
    result.onlToIse = 85.8 * outwards;
    result.iseToBm = 78.0;
    return result;
}

} // namespace kelp::phantom
