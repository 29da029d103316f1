#pragma once

#include <QList>
#include <QPolygonF>
#include <QString>

namespace kelp::command {

/// Exclusion polygons on the localizer, in mm: one polygon a line, its corners as "x,y" separated
/// by blanks. Empty lines and lines that begin with '#' do not count. Throws IOFailure for a file
/// that cannot be read and ParsingError with file, line and reason for one that does not fit.
QList<QPolygonF> readMaskFile(const QString& path);

} // namespace kelp::command
