#pragma once

#include "CostFunction.h"
#include "SegmentationMask.h"
#include "VolumeLayer.h"
#include "kelpImage.h"

#include <vector>

namespace kelp::oct {

/// The unary capacities of one surface's columns in one B-scan, column after column: all but those
/// of the base nodes, so one less than the search range has rows. Masked columns have none.
///
/// The first node of a column carries its difference of costs as it stands, all others a thousand
/// times theirs. That is on purpose: a surface on the uppermost row of its range costs nearly what
/// it costs one row deeper, so that the edge of a range draws no surface to it.
std::vector<int> columnCapacities(const kelp::Image& image, const CostFunction& costFunction,
                                  const VolumeLayer& top, const VolumeLayer& bottom,
                                  const MaskMatrix& mask, unsigned bScan);

} // namespace kelp::oct
