#pragma once

#include "Vector2d.h"

#include <cstdint>
#include <vector>

namespace kelp::phantom {

/// Deposits between Bruch's membrane and the retinal pigment epithelium, which lift everything
/// above them.
class Drusen
{
public:
    explicit Drusen(std::uint64_t seed);

    /// Height in micrometres at a position relative to the fovea in mm, 0 between the drusen.
    double heightAt(const Vector2d& position) const;

private:
    struct Druse
    {
        Vector2d center;
        double radius; ///< mm
        double height; ///< micrometres
    };
    std::vector<Druse> m_drusen;
};

} // namespace kelp::phantom
