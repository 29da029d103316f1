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
constexpr double farthestHighest = 2.4;
constexpr std::size_t nrDrusen = 30;

/// High drusen are wide ones: they are as steep as low ones.
double radiusOf(double height)
{
    return 0.2 + 0.3 * (height - minimumHeight) / (maximumHeight - minimumHeight);
}

bool standsInPit(const Vector2d& center, double height)
{
    return center.length() < pitRadius + radiusOf(height);
}

Vector2d somewhere(Random& random)
{
    const double x = random.uniform(-2.5, 2.5);
    return {x, random.uniform(-2.5, 2.5)};
}

} // namespace

Drusen::Drusen(std::uint64_t seed)
{
    Random random(seed, Stream::Drusen);
    // Each eye has one that is as high as they come, where a scan of the macula sees all of it.
    Vector2d highest = somewhere(random);
    while (standsInPit(highest, maximumHeight) || highest.length() > farthestHighest) {
        highest = somewhere(random);
    }
    m_drusen.push_back({highest, radiusOf(maximumHeight), maximumHeight});
    while (m_drusen.size() < nrDrusen) {
        const Vector2d center = somewhere(random);
        // Most drusen are low.
        const double share = random.uniform();
        double height = minimumHeight + (maximumHeight - minimumHeight) * share * share;
        if (standsInPit(center, height)) {
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
