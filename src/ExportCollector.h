#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace kelp::oct {

/// The paths of all XML files in the folder and below it, each once: those of the folder first,
/// then folder by folder. Symbolic links to folders are not followed. goOn is asked at each entry
/// below the folder; nothing is returned when it says no.
std::optional<QStringList> collectExports(const QString& folder, const std::function<bool()>& goOn);

} // namespace kelp::oct
