#pragma once

#include <QString>

namespace kelp::compare {

constexpr double micrometresPerMillimetre = 1000.0;

/// As tables and pictures write it.
inline const QString micrometreSign = QString::fromUtf8("\u00b5m");

} // namespace kelp::compare
