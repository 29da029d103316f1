#pragma once

#include "MacularModel.h"

#include <QImage>

namespace macula {

/// The model as a figure: for each two neighbouring surfaces and for the whole retina the maps of
/// mean and standard deviation, and both along the two meridians through the fovea.
QImage drawModel(const MacularModel& model);

} // namespace macula
