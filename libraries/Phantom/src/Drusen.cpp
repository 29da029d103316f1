#include "Drusen.h"

#include "PhantomRandom.h"

#include <algorithm>
#include <cmath>

namespace kelp::phantom {

namespace {

constexpr double minimumHeight = 20.0;
constexpr double maximumHeight = 120.0;
/// On the slopes of the pit the surfaces are steep by themselves, so only low drusen stand there.
constexpr double pitRadius = 1.1;
constexpr double maximumHeightInPit = 40.0;
constexpr int nrDrusen = 30;

/// High drusen are wide ones: they are as steep as low ones.
double radiusOf(double height)
{
    return 0.2 + 0.3 * (height - minimumHeight) / (maximumHeight - minimumHeight);
}

} // namespace

Drusen::Drusen(std::uint64_t seed)
{
    Random random(seed, Stream::Drusen);
    for (int i = 0; i < nrDrusen; ++i) {
        const Vector2d center{random.uniform(-2.5, 2.5), random.uniform(-2.5, 2.5)};
        const double share = random.uniform();
        // Most drusen are low; the first is as high as they come, so that each eye has one.
        double height = i == 0 ? maximumHeight
                               : minimumHeight + (maximumHeight - minimumHeight) * share * share;
        if (center.length() < pitRadius + radiusOf(height)) {
            height = std::min(height, maximumHeightInPit);
        }
        m_drusen.push_back({center, radiusOf(height), height});
    }
}

double Drusen::heightAt(const Vector2d& position) const
{
    double height = 0.0;
    for (const Druse& druse : m_drusen) {
        const double t = (position - druse.center).squaredLength() / (druse.radius * druse.radius);
        if (t < 1.0) {
            height = std::max(height, druse.height * (1.0 - t) * (1.0 - t));
        }
    }
    return height;
}

} // namespace kelp::phantom
