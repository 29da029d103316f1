#pragma once

namespace kelp::oct {

/// Radii of the circles of the ETDRS grid, in millimetres. The header includes no other, since the
/// program that draws the trained model, which is built without this library, shows them too.
inline constexpr double etdrsRadii[] = {0.5, 1.5, 3.0};

} // namespace kelp::oct
