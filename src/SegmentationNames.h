#pragma once

#include "Study.h"

#include <QDateTime>

namespace kelp::oct {

/// An id for a new segmentation: "Segment_", the date and time, and the first number from 1 to 999
/// that the study does not have yet, made into a legal id. The last of them when all are taken.
QString newSegmentationId(const Study& study, const QDateTime& time = QDateTime::currentDateTime());

} // namespace kelp::oct
