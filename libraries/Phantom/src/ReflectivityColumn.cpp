#include "ReflectivityColumn.h"

#include <algorithm>
#include <cmath>

namespace kelp::phantom {

namespace {

// Grey values as the device shows a healthy retina.
constexpr double vitreous = 9.0;
constexpr double nerveFibers = 152.0;
constexpr double ganglionCells = 104.0;
constexpr double innerPlexiform = 134.0;
constexpr double innerNuclear = 80.0;
constexpr double outerPlexiform = 114.0;
constexpr double outerNuclear = 63.0;
constexpr double limitingMembrane = 92.0;
constexpr double myoid = 74.0;
constexpr double ellipsoid = 200.0;
constexpr double outerSegments = 138.0;
constexpr double interdigitation = 160.0;
constexpr double pigmentEpithelium = 212.0;
constexpr double druse = 128.0;
constexpr double bruchsMembrane = 190.0;

/// The external limiting membrane lies at this share of the way from the outer plexiform layer to
/// the ellipsoid band.
constexpr double limitingMembranePlace = 0.72;
constexpr double limitingMembraneRows = 1.3;

double between(double a, double b, double share)
{
    return a + share * (b - a);
}

} // namespace

void ReflectivityColumn::lineTo(double depth, double reflectivity)
{
    const double start = m_depth;
    const double startValue = m_reflectivity;
    m_reflectivity = reflectivity;
    if (!(depth > start)) {
        return;
    }
    m_depth = depth;
    const double slope = (reflectivity - startValue) / (depth - start);
    const double bottom = static_cast<double>(m_values.size());
    for (double from = std::max(start, 0.0); from < std::min(depth, bottom);) {
        const double row = std::floor(from);
        const double to = std::min(row + 1.0, depth);
        const double mean = startValue + slope * (0.5 * (from + to) - start);
        m_values[static_cast<std::size_t>(row)] += static_cast<float>(mean * (to - from));
        from = to;
    }
}

void ReflectivityColumn::paint(const SurfaceColumn& surfaces, Kind kind)
{
    std::fill(m_values.begin(), m_values.end(), 0.0F);
    m_depth = std::min(0.0, surfaces.depth[ILM]);
    m_reflectivity = vitreous;
    lineTo(surfaces.depth[ILM], vitreous);
    paintInnerRetina(surfaces);
    if (kind == Kind::Drusen) {
        paintOuterRetinaWithDrusen(surfaces);
    } else {
        paintOuterRetina(surfaces);
    }
}

void ReflectivityColumn::paintInnerRetina(const SurfaceColumn& surfaces)
{
    const auto& depth = surfaces.depth;
    stepTo(nerveFibers);
    lineTo(depth[GCL], 0.95 * nerveFibers);

    stepTo(ganglionCells);
    lineTo(between(depth[GCL], depth[INL], 0.36), ganglionCells);
    lineTo(between(depth[GCL], depth[INL], 0.5), innerPlexiform);
    lineTo(depth[INL], innerPlexiform);

    stepTo(innerNuclear);
    lineTo(between(depth[INL], depth[ONL], 0.52), innerNuclear);
    lineTo(between(depth[INL], depth[ONL], 0.64), outerPlexiform);
    lineTo(depth[ONL], outerPlexiform);

    stepTo(outerNuclear);
    const double membrane = between(depth[ONL], depth[ISe], limitingMembranePlace);
    lineTo(membrane - 0.5 * limitingMembraneRows, outerNuclear);
    stepTo(limitingMembrane);
    lineTo(membrane + 0.5 * limitingMembraneRows, limitingMembrane);
    stepTo(myoid);
    lineTo(depth[ISe], myoid);
}

void ReflectivityColumn::paintOuterRetina(const SurfaceColumn& surfaces)
{
    const double top = surfaces.depth[ISe];
    const double bottom = surfaces.depth[BM];
    stepTo(ellipsoid);
    lineTo(between(top, bottom, 0.28), ellipsoid);
    lineTo(between(top, bottom, 0.34), outerSegments);
    lineTo(between(top, bottom, 0.46), outerSegments);
    lineTo(between(top, bottom, 0.52), interdigitation);
    lineTo(between(top, bottom, 0.62), interdigitation);
    lineTo(between(top, bottom, 0.7), pigmentEpithelium);
    lineTo(bottom, pigmentEpithelium);
}

void ReflectivityColumn::paintOuterRetinaWithDrusen(const SurfaceColumn& surfaces)
{
    const double ise = surfaces.depth[ISe];
    const double irpe = surfaces.depth[IRPE];
    const double bottom = surfaces.depth[BM];
    stepTo(ellipsoid);
    lineTo(between(ise, irpe, 0.5), 0.95 * ellipsoid);
    lineTo(between(ise, irpe, 0.62), outerSegments);
    lineTo(irpe, outerSegments);

    // The lifted epithelium keeps its thickness; what lies between it and the membrane is the
    // druse.
    constexpr double epitheliumRows = 7.0;
    constexpr double membraneRows = 2.2;
    stepTo(pigmentEpithelium);
    const double epithelium = std::min(irpe + epitheliumRows, bottom - membraneRows);
    lineTo(epithelium, pigmentEpithelium);
    const double core = std::min(1.0, (bottom - membraneRows - epithelium) / 5.0);
    const double inside = between(pigmentEpithelium, druse, core);
    lineTo(std::min(epithelium + 1.5, bottom - membraneRows), inside);
    lineTo(bottom - membraneRows, inside);
    stepTo(between(pigmentEpithelium, bruchsMembrane, core));
    lineTo(bottom, m_reflectivity);
}

} // namespace kelp::phantom
