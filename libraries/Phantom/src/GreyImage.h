#pragma once

#include <QImage>
#include <QString>

#include <vector>

namespace kelp::phantom {

/// Row by row to 8-bit grey, rounded and clamped.
QImage toGrey(const std::vector<float>& values, int columns, int rows);

/// To be called before writeImage runs on threads of its own. Throws kelp::IOFailure if images of
/// this format cannot be written here at all.
void prepareImageWriting(const QString& format);

/// Writes the image file whole or not at all. The format is that of the path's ending. Throws
/// kelp::IOFailure with path and reason.
void writeImage(const QString& path, QImage image, const QString& format);

} // namespace kelp::phantom
